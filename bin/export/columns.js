'use strict';
// The columns of the tables, made of packed matches.

const { Column, Numbering, columnOf } = require('./column.js');
const { EVENT_FIELDS, EVENT_KINDS, PLAYER_FIELDS, PLAYER_KINDS, unpackMatch } = require('./packed-match.js');
const { TABLES } = require('./tables.js');

const TABLE_NAMES = Object.keys(TABLES);

// What makes a column. write(to, start, end, match): writes the numbers of a match, which comes from unpackMatch(), one for
// each row, to these places. meaningsOf(numberings): what they stand for. Places, and no subarray: there would be hundreds of
// thousands of them in an export.
const column = (write, meaningsOf = () => undefined) => ({ write, meaningsOf });

// The row's number within its match.
const rowNumber = column((to, start, end) => {
  for (let i = start; i < end; ++i) to[i] = i - start;
});

const matchId = column(
  (to, start, end, { id }) => to.fill(id, start, end),
  ({ ids }) => ids.list,
);

// A field of the match's block of that name.
function field(block, fields, name, meanings) {
  const place = fields.indexOf(name);
  const write = (to, start, end, { [block]: numbers }) => {
    let from = place * (end - start);
    for (let i = start; i < end; ++i) to[i] = numbers[from++];
  };
  return column(write, () => meanings);
}

const ofPlayer = (name, meanings) => field('players', PLAYER_FIELDS, name, meanings);
const ofEvent = (name, meanings) => field('events', EVENT_FIELDS, name, meanings);

// The numbers of a list of the match, at the places that another column tells; each place makes way for its number.
function picked(places, list, meaningsOf) {
  const write = (to, start, end, match) => {
    places.write(to, start, end, match);
    const from = match[list];
    for (let i = start; i < end; ++i) {
      const at = to[i];
      to[i] = at < from.length ? from[at] : NaN;
    }
  };
  return column(write, meaningsOf);
}

const personColumns = (role, numbers) => ({
  [`${role}_no`]: numbers,
  [`${role}_kind`]: picked(numbers, 'kinds', () => PLAYER_KINDS),
  [`${role}_account`]: picked(numbers, 'accounts', ({ accounts }) => accounts.list),
  [`${role}_name`]: picked(numbers, 'names', ({ names }) => names.list),
});

const timeMs = ofEvent('timeMs');

const eventTime = column((to, start, end, match) => {
  timeMs.write(to, start, end, match);
  const begun = match.start ?? NaN;
  for (let i = start; i < end; ++i) to[i] = begun + to[i] * 1000;
});

const MAKERS = {
  players: {
    match_id: matchId,
    ...personColumns('player', rowNumber),
    eliminations: ofPlayer('eliminations'),
    knocks: ofPlayer('knocks'),
    times_knocked: ofPlayer('timesKnocked'),
    deaths: ofPlayer('deaths'),
    ...personColumns('ended_by', ofPlayer('endedBy')),
    ended_at_ms: ofPlayer('endedAtMs'),
    self_inflicted: ofPlayer('selfInflicted', [false, true]),
  },
  eliminations: {
    match_id: matchId,
    event_no: rowNumber,
    time_ms: timeMs,
    event_time: eventTime,
    kind: ofEvent('kind', EVENT_KINDS),
    ...personColumns('attacker', ofEvent('attacker')),
    ...personColumns('victim', ofEvent('victim')),
    attacker_x: ofEvent('attackerX'),
    attacker_y: ofEvent('attackerY'),
    attacker_z: ofEvent('attackerZ'),
    victim_x: ofEvent('victimX'),
    victim_y: ofEvent('victimY'),
    victim_z: ofEvent('victimZ'),
    distance_m: ofEvent('distanceM'),
    damage_type: ofEvent('damageType'),
    damage_name: picked(ofEvent('damageType'), 'damages', ({ damages }) => damages.list),
  },
};

function columnsOfMatches(table, matches, numberings) {
  const rowsOf = ({ counts }) => counts[TABLE_NAMES.indexOf(table)];
  const length = matches.reduce((sum, match) => sum + rowsOf(match), 0);
  return TABLES[table].map(({ name }) => {
    const { write, meaningsOf } = MAKERS[table][name];
    const writeAll = (to) => {
      let at = 0;
      for (const match of matches) write(to, at, (at += rowsOf(match)), match);
    };
    return new Column(length, writeAll, meaningsOf(numberings));
  });
}

const columnsOfRows = (table, rows) => TABLES[table].map((_, i) => columnOf(rows.map((row) => row[i])));

// packs: of matches and failures, see packed-match.js. Returns for each table its Columns.
function columnsOf(packs) {
  const failures = packs.filter(({ failure }) => failure !== undefined);
  const [ids, accounts, names, damages] = Array.from({ length: 4 }, () => new Numbering());
  const numberings = { ids, accounts, names, damages };
  const matches = packs
    .filter(({ failure }) => failure === undefined)
    .map((pack) => unpackMatch(pack, numberings));
  return {
    matches: columnsOfRows(
      'matches',
      matches.map(({ row }) => row),
    ),
    players: columnsOfMatches('players', matches, numberings),
    eliminations: columnsOfMatches('eliminations', matches, numberings),
    failures: columnsOfRows(
      'failures',
      failures.map(({ failure }) => failure),
    ),
  };
}

module.exports = { columnsOf };
