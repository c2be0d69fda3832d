'use strict';
// The cells of the tables, made of packed matches. A function for a column gets a match from unpackMatch() and returns
// the cells of all its rows.

const { unpackMatch, EVENT_KINDS } = require('./packed-match.js');
const { TABLES } = require('./tables.js');

const repeated = (cell, count) => new Array(count).fill(cell);

function counted(count) {
  const cells = [];
  for (let i = 0; i < count; ++i) cells.push(i);
  return cells;
}

// NaN becomes null.
function cellsIn(numbers) {
  const cells = [];
  for (let i = 0; i < numbers.length; ++i) cells.push(Number.isNaN(numbers[i]) ? null : numbers[i]);
  return cells;
}

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
  [`${role}_no`]: (match) => cellsIn(numbersOf(match)),
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
  eliminations: ({ players }) => cellsIn(players.eliminations),
  knocks: ({ players }) => cellsIn(players.knocks),
  times_knocked: ({ players }) => cellsIn(players.timesKnocked),
  deaths: ({ players }) => cellsIn(players.deaths),
  ...personColumns('ended_by', ({ players }) => players.endedBy),
  ended_at_ms: ({ players }) => cellsIn(players.endedAtMs),
  self_inflicted: ({ players }) => picked([false, true], players.selfInflicted),
};

function eventTimes({ start, events }) {
  if (start === null) return repeated(null, events.count);
  return cellsIn(events.timeMs.map((timeMs) => start + timeMs * 1000));
}

const ELIMINATIONS = {
  match_id: ({ row, events }) => repeated(row[0], events.count),
  event_no: ({ events }) => counted(events.count),
  time_ms: ({ events }) => cellsIn(events.timeMs),
  event_time: eventTimes,
  kind: ({ events }) => picked(EVENT_KINDS, events.kind),
  ...personColumns('attacker', ({ events }) => events.attacker),
  ...personColumns('victim', ({ events }) => events.victim),
  attacker_x: ({ events }) => cellsIn(events.attackerX),
  attacker_y: ({ events }) => cellsIn(events.attackerY),
  attacker_z: ({ events }) => cellsIn(events.attackerZ),
  victim_x: ({ events }) => cellsIn(events.victimX),
  victim_y: ({ events }) => cellsIn(events.victimY),
  victim_z: ({ events }) => cellsIn(events.victimZ),
  distance_m: ({ events }) => cellsIn(events.distanceM),
  damage_type: ({ events }) => cellsIn(events.damageType),
  damage_name: ({ damageNames, events }) => picked(damageNames, events.damageType),
};

const cellsOfRows = (table, rows) => TABLES[table].map((_, i) => rows.map((row) => row[i]));

const cellsOfMatches = (table, makers, matches) =>
  TABLES[table].map(({ name }) => [].concat(...matches.map(makers[name])));

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
