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

// Of an elimination nothing can be read.
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
