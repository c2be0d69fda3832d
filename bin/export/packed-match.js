'use strict';
// A match on its way from the process that reads it to the thread that writes its rows: numbers in blocks, which are
// passed on unchanged, and each player's text once.
//
//     { counts, row, start, players, texts, events, damageNames }    a match
//     { counts, failure }                                            a replay that cannot be read
//
// counts: how many rows there are, in the order of the tables. row and failure: those of matches and failures. start: the
// match's first moment, in microseconds. players and events: blocks. texts: the players' accounts and names, as JSON.

const { matchRow, microseconds } = require('./tables.js');

const PLAYER_KINDS = ['account', 'bot', 'unknown'];
const EVENT_KINDS = ['elimination', 'knock'];

// The fields of each record or event in a block; numberOf: Player -> player_no.
const PLAYER_FIELDS = {
  kind: ({ player }) => PLAYER_KINDS.indexOf(player.kind),
  eliminations: (record) => record.eliminations,
  knocks: (record) => record.knocks,
  timesKnocked: (record) => record.timesKnocked,
  deaths: (record) => record.deaths,
  endedBy: (record, numberOf) => numberOf.get(record.endedBy),
  endedAtMs: (record) => record.endedAtMs,
  selfInflicted: ({ selfInflicted }) => (selfInflicted === null ? null : Number(selfInflicted)),
};

const EVENT_FIELDS = {
  timeMs: (event) => event.timeMs,
  kind: (event) => EVENT_KINDS.indexOf(event.kind),
  attacker: (event, numberOf) => numberOf.get(event.attacker),
  victim: (event, numberOf) => numberOf.get(event.victim),
  attackerX: ({ attackerAt }) => attackerAt?.x,
  attackerY: ({ attackerAt }) => attackerAt?.y,
  attackerZ: ({ attackerAt }) => attackerAt?.z,
  victimX: ({ victimAt }) => victimAt?.x,
  victimY: ({ victimAt }) => victimAt?.y,
  victimZ: ({ victimAt }) => victimAt?.z,
  distanceM: (event) => event.distanceM,
  damageType: (event) => event.damageType,
};

// One field after the other, each for all items. NaN stands for null.
function blockOf(items, fields, numberOf) {
  const block = new Float64Array(Object.keys(fields).length * items.length);
  let at = 0;
  for (const field of Object.values(fields)) {
    for (const item of items) block[at++] = field(item, numberOf) ?? NaN;
  }
  return block;
}

// { count, FIELD: the numbers of all items, … }: views of the block, which cost the garbage collector nothing.
function fieldsOf(block, fields) {
  const names = Object.keys(fields);
  const count = block.length / names.length;
  const numbers = names.map((name, i) => [name, block.subarray(i * count, (i + 1) * count)]);
  return { count, ...Object.fromEntries(numbers) };
}

function reduce(match) {
  const { players, eliminations } = match;
  const numberOf = new Map(players.map(({ player }, i) => [player, i]));
  const damageNames = [];
  for (const { damageType, damageName } of eliminations) damageNames[damageType] = damageName;
  return {
    counts: [1, players.length, eliminations.length, 0],
    row: matchRow(match),
    start: microseconds(match.recordedTicks),
    players: blockOf(players, PLAYER_FIELDS, numberOf),
    texts: JSON.stringify(players.map(({ player }) => player.id ?? player.name ?? null)),
    events: blockOf(eliminations, EVENT_FIELDS, numberOf),
    damageNames: Array.from(damageNames, (name) => name ?? null),
  };
}

// bytes: the file's size, null if that is not known.
const packFailure = (path, { code, message }, bytes) => ({
  counts: [0, 0, 0, 1],
  failure: [path, code ?? null, message, bytes],
});

// The match with its blocks by field, and for each player the kind, and the account or the name.
function unpackMatch({ players, events, ...rest }) {
  const texts = JSON.parse(rest.texts);
  const records = fieldsOf(players, PLAYER_FIELDS);
  const kind = texts.map((_, i) => PLAYER_KINDS[records.kind[i]]);
  const only = (wanted) => texts.map((text, i) => (kind[i] === wanted ? text : null));
  const persons = { kind, account: only('account'), name: only('bot') };
  return { ...rest, persons, players: records, events: fieldsOf(events, EVENT_FIELDS) };
}

module.exports = { EVENT_KINDS, packFailure, reduce, unpackMatch };
