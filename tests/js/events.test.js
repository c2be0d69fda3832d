'use strict';
// Event chunks: which handler an event goes to, what an elimination's fields become, and encryption.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { readFiles, testReads, utf8Text } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

const key = Buffer.from('6b1d5e0f42a97c3388d1f00e5b7a9c24', 'hex');
const hex = key.toString('hex');
const whole = {
  killedAt: [1.5, -2.25, 0.5],
  killed: { type: 17, id: key },
  killer: { type: 16, id: 'Bot_7' },
  damageType: 255,
  knocked: 1,
};
const elimination = (more) => w.eventChunk({ data: w.playerElim({ ...whole, ...more }) });

// An elimination of which nothing can be read.
const unread = { killedX: 0, killerZ: 0, killedBot: '', killerBot: '', damageType: 0, knocked: false };

// Fields of an elimination, and what of it is expected.
const ELIMINATIONS = [
  [
    {},
    { killed: hex, killedBot: undefined, killerBot: 'Bot_7', killedX: 1.5, damageType: 255, knocked: true },
  ],
  [{ killed: { type: 16, id: w.string16('Bot Ä') } }, { killedBot: 'BotÄ\0', killed: undefined }],
  [{ killed: { type: 3 } }, { killedBot: 'Unnamed Bot' }],
  [{ killed: { type: 0 } }, { killedBot: '', knocked: true }],
  [{ killed: { type: 255 } }, { killedBot: '', knocked: true }],
  ...[0, 2, 0x80000001].map((knocked) => [{ knocked }, { knocked: false }]),
  [{ killedAt: [NaN, Infinity, -Infinity] }, { killedX: null, killedY: null, killedZ: null }],
  ...[0, 1, 70000].map((size) => [{ extra: w.skipped(size) }, { killedX: 1.5, knocked: true }]),
  ...[-0x80000000, -1, 1000, 0x7fffffff].map((extraSize) => [{ extraSize }, unread]),
  [{ killer: { type: 16, id: w.i32(-0x7fffffff) } }, { killed: hex, killerBot: '', damageType: 0 }],
];

// Where an elimination's fields end in its payload.
const ENDS = {
  ...{ killedX: 20, killedY: 24, killedZ: 28, killerX: 60, killerY: 64, killerZ: 68 },
  ...{ killed: 98, killerBot: 109, damageType: 110, knocked: 114 },
};
const full = { ...{ killedX: 1.5, killedY: -2.25, killedZ: 0.5, killerX: 4, killerY: 5, killerZ: 6 } };
Object.assign(full, { killed: hex, killerBot: 'Bot_7', damageType: 255, knocked: true });
const zeroOf = { number: 0, string: '', boolean: false };

// What is left of an elimination whose payload is cut.
function cutElimination(length) {
  const fields = Object.entries(full).map(([name, value]) => {
    const isTyped = name !== 'killed' || length > 80;
    return [isTyped ? name : 'killedBot', length >= ENDS[name] ? value : zeroOf[typeof value]];
  });
  return Object.fromEntries(fields);
}

// Names with one character each that JSON must escape, or need not; and lengths beside the writer's limit.
const NAMES = ['a"b/', 'a\\b', '\x1f', '\x7f', 'ä🔥', ...[63, 64, 65, 5000].map((size) => 'n'.repeat(size))];

// A text that is not UTF-8, by the index of the byte that shows it.
const badText = (index) => w.bytes(w.i32(1), Buffer.from('a'.repeat(index) + '\xff\0', 'latin1'));
const withBadTexts = (FriendlyName, bot, level, ...more) =>
  w.replay(
    { FriendlyName },
    w.headerChunk({ levels: [[level, 0]] }),
    elimination({ killer: { type: 16, id: bot } }),
    elimination({ killer: { type: 16, id: badText(7) } }),
    more,
  );

// The description of an event with a team's statistics, and whether they are read.
const DESCRIPTIONS = [
  [{ Metadata: 'AthenaMatchTeamStats', Group: 'playerElim' }, true],
  [{ Metadata: 'other', Group: 'AthenaMatchTeamStats' }, true],
  [{ Metadata: 'AthenaMatchTeamStats2', Group: 'athenamatchteamstats' }, false],
  [{ Group: w.string16('AthenaMatchTeamStats') }, false], // its final zero belongs to the name
  [{ Group: 'x', Id: 'AthenaMatchTeamStats' }, false],
  [{ Group: 'AthenaMatchTeamStats', data: Buffer.alloc(0) }, false],
];

const missingKey =
  /^\n\[ orvel::\S+ \] \[Replay Exception\] .*:51: Data was encrypted, but encryption key was not set\.\n$/;
const failedLine = '[ orvel::util::data::decrypt ] Decryption failed.\n';
const encrypted = (EncryptionKey, ...payloads) =>
  w.replay(
    { bEncrypted: 1, EncryptionKey },
    payloads.map((data) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data })),
  );
const team = (ranking) => w.encrypt(w.teamStats(ranking, 100), key);

testReads([
  {
    name: 'the fields of an elimination',
    bytes: w.replay(
      {},
      ELIMINATIONS.map(([fields]) => elimination(fields)),
    ),
    document: { events: ELIMINATIONS.map(([, expected]) => expected) },
  },
  {
    name: 'the metadata name the handler, else the group',
    bytes: w.replay(
      {},
      DESCRIPTIONS.map(([description], i) => w.eventChunk({ data: w.teamStats(i, 2), ...description })),
    ),
    document: { events: DESCRIPTIONS.flatMap(([, read], i) => (read ? [{ finalRanking: i }] : [])) },
  },
  {
    name: 'an impossible string length in an elimination',
    bytes: w.replay({}, elimination({ killer: { type: 16, id: w.i32(-0x80000000) } })),
    stdout: /:23: Invalid SaveNum, corrupted FArchive\.\n$/,
    empty: true,
  },
  {
    name: 'an elimination that is cut anywhere',
    bytes: w.replay(
      {},
      Array.from({ length: 114 }, (_, i) =>
        w.eventChunk({ data: w.playerElim({ ...whole, killerAt: [4, 5, 6] }).subarray(0, i + 1) }),
      ),
    ),
    document: { events: Array.from({ length: 114 }, (_, i) => cutElimination(i + 1)) },
  },
  {
    name: 'statistics are read whole or not at all',
    bytes: w.replay({}, [
      [47, 48].map((size) => w.eventChunk({ Group: 'AthenaMatchStats', data: Buffer.alloc(size, 1) })),
      [11, 12].map((size) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data: Buffer.alloc(size, 1) })),
    ]),
    document: { events: [{ kills: 0x01010101 }, { totalPlayers: 0x01010101 }] },
    stdout:
      '\n[ orvel::corvane::ReadMatchStats ] Skipping event: payload of 47 bytes, 48 expected.\n' +
      '[ orvel::corvane::ReadMatchTeamStats ] Skipping event: payload of 11 bytes, 12 expected.\n',
  },
  {
    name: 'names of all characters and lengths',
    bytes: w.replay(
      {},
      NAMES.map((id) => elimination({ killer: { type: 16, id } })),
    ),
    document: {
      events: NAMES.map((name) => ({ killerBot: /^[\0-\x7f]*$/.test(name) ? name : `${name}\0` })),
    },
  },
  ...[
    [badText(1), badText(2), badText(3), 1],
    ['', badText(2), badText(3), 2],
    ['', '', badText(3), 7],
  ].map(([name, bot, level, index]) => ({
    name: `of texts that are not UTF-8, the document's first is named (${index})`,
    bytes: withBadTexts(name, bot, level),
    throws: new RegExp(`invalid UTF-8 byte at index ${index}: 0xFF`),
  })),
  {
    name: 'a text that is not UTF-8 counts after what is broken further on',
    bytes: withBadTexts(badText(1), '', '', elimination({ killer: { type: 16, id: w.i32(-0x80000000) } })),
    stdout: /:23: Invalid SaveNum, corrupted FArchive\.\n$/,
    empty: true,
  },
  { name: 'no key', bytes: encrypted(Buffer.alloc(16), team(1)), stdout: missingKey, empty: true },
  {
    name: 'no key, but nothing to decrypt',
    bytes: encrypted(Buffer.alloc(0)),
    document: { events: undefined },
  },
  {
    name: 'payloads that are no whole blocks are left out',
    bytes: encrypted(key, team(1), w.skipped(20), team(2), w.skipped(1)),
    document: { events: [{ finalRanking: 1 }, { finalRanking: 2 }] },
    stdout: '\n' + failedLine + failedLine,
  },
  {
    name: 'a key of 15 bytes',
    bytes: encrypted(Buffer.alloc(15, 7), w.skipped(32)),
    document: { events: undefined },
    stdout: '\n' + failedLine,
  },
]);

test('what the host encrypts under a key of any size is read like what is not encrypted', () => {
  const payloads = Array.from({ length: 40 }, (_, i) => w.playerElim({ ...whole, extra: w.skipped(17 * i) }));
  const keys = [16, 24, 32].map((size) => Buffer.from(hex.repeat(2), 'hex').subarray(0, size));
  const plain = w.replay(
    {},
    payloads.map((data) => w.eventChunk({ data })),
  );
  const files = keys.map((fileKey) =>
    w.replay(
      { bEncrypted: 1, EncryptionKey: fileKey },
      payloads.map((data) => w.eventChunk({ data: w.encrypt(data, fileKey) })),
    ),
  );
  const [expected, ...events] = readFiles([plain, ...files]).map(
    ({ text }) => JSON.parse(utf8Text(text)).events,
  );
  assert.equal(expected.length, payloads.length);
  for (const ofOne of events) assert.deepEqual(ofOne, expected);
});
