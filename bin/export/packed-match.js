'use strict';
// A match on its way from the process that reads it to the thread that writes its rows.
//
//     { counts, bytes }      a match; bytes: a block of its players, one of its events (number-block.js), and JSON
//     { counts, failure }    a replay that cannot be read
//
// counts: how many rows there are, in the order of the tables. JSON: { row, start, texts, damageNames }. row and failure: those
// of matches and failures. start: the match's first moment, in microseconds. texts: the players' accounts and names. Bytes are
// few objects for the garbage collector, on a way on which many matches wait.

const { packNumbers, unpackNumbers } = require('./number-block.js');
const { matchRow, microseconds } = require('./tables.js');

const utf8 = new TextDecoder();

const PLAYER_KINDS = ['account', 'bot', 'unknown'];
const EVENT_KINDS = ['elimination', 'knock'];

// The fields of a record and of an event in their blocks, and what writes them there: the first to block[at], each other one
// `count` numbers behind the one before. numberOf: Player -> player_no. NaN stands for what is unknown; undefined would become
// NaN too, but slowly.
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
  block[(at += count)] = numberOf.get(record.endedBy) ?? NaN;
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
  block[(at += count)] = attackerAt?.x ?? NaN;
  block[(at += count)] = attackerAt?.y ?? NaN;
  block[(at += count)] = attackerAt?.z ?? NaN;
  block[(at += count)] = victimAt?.x ?? NaN;
  block[(at += count)] = victimAt?.y ?? NaN;
  block[(at += count)] = victimAt?.z ?? NaN;
  block[(at += count)] = event.distanceM ?? NaN;
  block[(at += count)] = event.damageType;
}

function blockOf(items, fields, write, numberOf) {
  const count = items.length;
  const block = new Float64Array(fields.length * count);
  for (let i = 0; i < count; ++i) write(block, i, count, items[i], numberOf);
  return packNumbers(block, fields.length);
}

function numbersOf(players) {
  const numbers = new Map();
  for (let i = 0; i < players.length; ++i) numbers.set(players[i].player, i);
  return numbers;
}

// JSON has no BigInts, and a cell is no object otherwise. It writes -0 as 0.
const toJson = (cell) => (typeof cell === 'bigint' ? { integer: String(cell) } : cell);
const fromJson = (cell) => (cell?.integer === undefined ? cell : BigInt(cell.integer));

function contentOf(match) {
  const damageNames = [];
  for (const { damageType, damageName } of match.eliminations) damageNames[damageType] = damageName;
  return {
    row: matchRow(match).map(toJson),
    start: microseconds(match.recordedTicks),
    texts: match.players.map(({ player }) => player.id ?? player.name ?? null),
    damageNames,
  };
}

function reduce(match) {
  const { players, eliminations } = match;
  const numberOf = numbersOf(players);
  const ofPlayers = Buffer.from(blockOf(players, PLAYER_FIELDS, writePlayer, numberOf));
  const ofEvents = blockOf(eliminations, EVENT_FIELDS, writeEvent, numberOf);
  const bytes = Buffer.concat([ofPlayers, ofEvents, Buffer.from(JSON.stringify(contentOf(match)))]);
  return { counts: [1, players.length, eliminations.length, 0], bytes };
}

// bytes: the file's size, null if that is not known.
const packFailure = (path, { code, message }, bytes) => ({
  counts: [0, 0, 0, 1],
  failure: [path, code ?? null, message, bytes],
});

// { row, start, texts, damageNames, players, events }, the last two blocks of numbers.
function contentIn({ counts, bytes }) {
  const aligned = new Uint8Array(bytes); // a copy: a message may have them anywhere
  const players = unpackNumbers(aligned, PLAYER_FIELDS.length, counts[1]);
  const events = unpackNumbers(players.rest, EVENT_FIELDS.length, counts[2]);
  const { row, ...content } = JSON.parse(utf8.decode(events.rest));
  return { ...content, row: row.map(fromJson), players: players.block, events: events.block };
}

// The match with numbers of its id and of its damages' names, and for each player those of kind, account and name.
function unpackMatch(pack, { ids, accounts, names, damages }) {
  const match = contentIn(pack);
  const { texts } = match;
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
    counts: pack.counts,
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
