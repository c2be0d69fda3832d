// Who eliminated whom, as counts: the accounts with the most events each have a row and a column, everyone else is pooled.
// A bot's name is no identity over many matches, so bots are pooled by whether they have one.

import { isEnd } from './match.js';

const POOLS = ['otherAccounts', 'namedBots', 'unnamedBots', 'unknown'];

function poolOf({ kind }) {
  if (kind === 'account') return 'otherAccounts';
  if (kind === 'unknown') return 'unknown';
  return kind === 'bot' ? 'namedBots' : 'unnamedBots';
}

// { heads: [{ player } | { pool }], rows: [[count]], rowSums, columnSums, sum, most }. most: the highest count between two
// different accounts. Pools that nobody is in are left out.
export function matrixOf(events, players) {
  const places = new Map([...players, ...POOLS].map((head, i) => [head, i]));
  const placeOf = (player) => places.get(player) ?? places.get(poolOf(player));
  const counts = Array.from(places, () => new Array(places.size).fill(0));
  for (const { attacker, victim } of events.filter(isEnd)) counts[placeOf(attacker)][placeOf(victim)] += 1;
  const total = (list) => list.reduce((a, b) => a + b, 0);
  const isUsed = (i) => i < players.length || total(counts[i]) + total(counts.map((row) => row[i])) > 0;
  const kept = [...counts.keys()].filter(isUsed);
  const rows = kept.map((i) => kept.map((j) => counts[i][j]));
  const between = rows
    .slice(0, players.length)
    .flatMap((row, i) => row.slice(0, players.length).filter((_, j) => j !== i));
  return {
    heads: kept.map((i) =>
      i < players.length ? { player: players[i] } : { pool: POOLS[i - players.length] },
    ),
    rows,
    rowSums: rows.map(total),
    columnSums: rows.map((_, j) => total(rows.map((row) => row[j]))),
    sum: total(rows.map(total)),
    most: Math.max(0, ...between),
  };
}
