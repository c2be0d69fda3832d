'use strict';
// The cells of the tables, made of packed matches. A function for a column gets a match from unpackMatch() and returns
// the cells of all its rows: a list, or a Float64Array with NaN for null.

const { unpackMatch, EVENT_KINDS } = require('./packed-match.js');
const { TABLES } = require('./tables.js');

const repeated = (cell, count) => new Array(count).fill(cell);

const counted = (count) => new Float64Array(count).map((_, i) => i);

// For each number the cell at that place; nothing for NaN.
function picked(list, numbers) {
  const cells = [];
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i];
    cells.push(number < list.length ? list[number] : null);
  }
  return cells;
}

// numbersOf(match): the players' numbers.
const personColumns = (role, numbersOf) => ({
  [`${role}_no`]: numbersOf,
  [`${role}_kind`]: (match) => picked(match.persons.kind, numbersOf(match)),
  [`${role}_account`]: (match) => picked(match.persons.account, numbersOf(match)),
  [`${role}_name`]: (match) => picked(match.persons.name, numbersOf(match)),
});

const PLAYERS = {
  match_id: ({ row, players }) => repeated(row[0], players.count),
  player_no: ({ players }) => counted(players.count),
  player_kind: ({ persons }) => persons.kind,
  player_account: ({ persons }) => persons.account,
  player_name: ({ persons }) => persons.name,
  eliminations: ({ players }) => players.eliminations,
  knocks: ({ players }) => players.knocks,
  times_knocked: ({ players }) => players.timesKnocked,
  deaths: ({ players }) => players.deaths,
  ...personColumns('ended_by', ({ players }) => players.endedBy),
  ended_at_ms: ({ players }) => players.endedAtMs,
  self_inflicted: ({ players }) => picked([false, true], players.selfInflicted),
};

function eventTimes({ start, events }) {
  if (start === null) return new Float64Array(events.count).fill(NaN);
  return events.timeMs.map((timeMs) => start + timeMs * 1000);
}

const ELIMINATIONS = {
  match_id: ({ row, events }) => repeated(row[0], events.count),
  event_no: ({ events }) => counted(events.count),
  time_ms: ({ events }) => events.timeMs,
  event_time: eventTimes,
  kind: ({ events }) => picked(EVENT_KINDS, events.kind),
  ...personColumns('attacker', ({ events }) => events.attacker),
  ...personColumns('victim', ({ events }) => events.victim),
  attacker_x: ({ events }) => events.attackerX,
  attacker_y: ({ events }) => events.attackerY,
  attacker_z: ({ events }) => events.attackerZ,
  victim_x: ({ events }) => events.victimX,
  victim_y: ({ events }) => events.victimY,
  victim_z: ({ events }) => events.victimZ,
  distance_m: ({ events }) => events.distanceM,
  damage_type: ({ events }) => events.damageType,
  damage_name: ({ damageNames, events }) => picked(damageNames, events.damageType),
};

const cellsOfRows = (table, rows) => TABLES[table].map((_, i) => rows.map((row) => row[i]));

// Columns of numbers without nulls stay arrays of numbers, which cost the garbage collector nothing.
function joined(parts) {
  if (!(parts[0] instanceof Float64Array)) return [].concat(...parts);
  const numbers = new Float64Array(parts.reduce((sum, { length }) => sum + length, 0));
  let at = 0;
  for (const part of parts) {
    numbers.set(part, at);
    at += part.length;
  }
  return numbers.some(Number.isNaN)
    ? Array.from(numbers, (cell) => (Number.isNaN(cell) ? null : cell))
    : numbers;
}

const cellsOfMatches = (table, makers, matches) =>
  TABLES[table].map(({ name }) => joined(matches.map(makers[name])));

// packs: of matches and failures. Returns for each table its columns' cells.
function cellsOf(packs) {
  const failures = packs.filter(({ failure }) => failure !== undefined);
  const matches = packs.filter(({ failure }) => failure === undefined).map(unpackMatch);
  return {
    matches: cellsOfRows(
      'matches',
      matches.map(({ row }) => row),
    ),
    players: cellsOfMatches('players', PLAYERS, matches),
    eliminations: cellsOfMatches('eliminations', ELIMINATIONS, matches),
    failures: cellsOfRows(
      'failures',
      failures.map(({ failure }) => failure),
    ),
  };
}

module.exports = { cellsOf };
