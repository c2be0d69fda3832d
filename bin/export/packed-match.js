'use strict';
// A match on its way from the process that reads it to the thread that writes its rows.
//
//     { counts, bytes }      a match; bytes: { row, start, players, texts, events, damageNames }, serialised
//     { counts, failure }    a replay that cannot be read
//
// counts: how many rows there are, in the order of the tables. row and failure: those of matches and failures. start: the
// match's first moment, in microseconds. players and events: blocks of numbers. texts: the players' accounts and names, as
// JSON. Bytes and blocks are few objects for the garbage collector, on a way on which many matches wait.

const v8 = require('node:v8');
const { matchRow, microseconds } = require('./tables.js');

const PLAYER_KINDS = ['account', 'bot', 'unknown'];
const EVENT_KINDS = ['elimination', 'knock'];

// The fields of a record and of an event in their blocks, and what writes them there: the first to block[at], each other one
// `count` numbers behind the one before. numberOf: Player -> player_no. NaN stands for what is unknown; a block takes
// undefined for it, but null for 0.
const PLAYER_FIELDS = [
  ...['kind', 'eliminations', 'knocks', 'timesKnocked', 'deaths'],
  ...['endedBy', 'endedAtMs', 'selfInflicted'],
];

function writePlayer(block, at, count, record, numberOf) {
  block[at] = PLAYER_KINDS.indexOf(record.player.kind);
  block[(at += count)] = record.eliminations;
  block[(at += count)] = record.knocks;
  block[(at += count)] = record.timesKnocked;
  block[(at += count)] = record.deaths;
  block[(at += count)] = numberOf.get(record.endedBy);
  block[(at += count)] = record.endedAtMs ?? NaN;
  block[(at += count)] = record.selfInflicted === null ? NaN : Number(record.selfInflicted);
}

const EVENT_FIELDS = [
  ...['timeMs', 'kind', 'attacker', 'victim'],
  ...['attackerX', 'attackerY', 'attackerZ', 'victimX', 'victimY', 'victimZ'],
  ...['distanceM', 'damageType'],
];

function writeEvent(block, at, count, event, numberOf) {
  const { attackerAt, victimAt } = event;
  block[at] = event.timeMs;
  block[(at += count)] = EVENT_KINDS.indexOf(event.kind);
  block[(at += count)] = numberOf.get(event.attacker);
  block[(at += count)] = numberOf.get(event.victim);
  block[(at += count)] = attackerAt?.x;
  block[(at += count)] = attackerAt?.y;
  block[(at += count)] = attackerAt?.z;
  block[(at += count)] = victimAt?.x;
  block[(at += count)] = victimAt?.y;
  block[(at += count)] = victimAt?.z;
  block[(at += count)] = event.distanceM ?? NaN;
  block[(at += count)] = event.damageType;
}

// One field after the other, each for all items.
function blockOf(items, fields, write, numberOf) {
  const count = items.length;
  const block = new Float64Array(fields.length * count);
  for (let i = 0; i < count; ++i) write(block, i, count, items[i], numberOf);
  return block;
}

function reduce(match) {
  const { players, eliminations } = match;
  const numberOf = new Map(players.map(({ player }, i) => [player, i]));
  const damageNames = [];
  for (const { damageType, damageName } of eliminations) damageNames[damageType] = damageName;
  const content = {
    row: matchRow(match),
    start: microseconds(match.recordedTicks),
    players: blockOf(players, PLAYER_FIELDS, writePlayer, numberOf),
    texts: JSON.stringify(players.map(({ player }) => player.id ?? player.name ?? null)),
    events: blockOf(eliminations, EVENT_FIELDS, writeEvent, numberOf),
    damageNames: Array.from(damageNames, (name) => name ?? null),
  };
  return { counts: [1, players.length, eliminations.length, 0], bytes: v8.serialize(content) };
}

// bytes: the file's size, null if that is not known.
const packFailure = (path, { code, message }, bytes) => ({
  counts: [0, 0, 0, 1],
  failure: [path, code ?? null, message, bytes],
});

// The match with numbers of its id and of its damages' names, and for each player those of kind, account and name.
function unpackMatch({ counts, bytes }, { ids, accounts, names, damages }) {
  const match = v8.deserialize(bytes);
  const texts = JSON.parse(match.texts);
  const [kindNumbers, accountNumbers, nameNumbers] = [0, 1, 2].map(() =>
    new Float64Array(texts.length).fill(NaN),
  );
  for (let i = 0; i < texts.length; ++i) {
    const kind = match.players[i]; // the first field
    kindNumbers[i] = kind;
    if (PLAYER_KINDS[kind] === 'account') accountNumbers[i] = accounts.numberOf(texts[i]);
    else nameNumbers[i] = names.numberOf(texts[i]);
  }
  return {
    ...match,
    counts,
    id: ids.numberOf(match.row[0]),
    kinds: kindNumbers,
    accounts: accountNumbers,
    names: nameNumbers,
    damages: match.damageNames.map((name) => damages.numberOf(name)),
  };
}

module.exports = {
  EVENT_FIELDS,
  EVENT_KINDS,
  PLAYER_FIELDS,
  PLAYER_KINDS,
  packFailure,
  reduce,
  unpackMatch,
};
