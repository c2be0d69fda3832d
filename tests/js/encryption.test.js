'use strict';
// Encrypted events: agreement with the host's own cipher, and what is wrong with keys and payloads.

const assert = require('node:assert/strict');
const { createCipheriv } = require('node:crypto');
const { test } = require('node:test');
const { expectedElim, expectedTeamStats } = require('../support/expected-events.js');
const { readFiles, testReads, utf8Text } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

const key = Buffer.from('6b1d5e0f42a97c3388d1f00e5b7a9c24', 'hex');
const eventMeta = { time1: 0, time2: 0 };
const failedLine = '[ orvel::util::data::decrypt ] Decryption failed.\n';
const missingKey =
  /^\n\[ orvel::corvane::ReplayParser::ParseReplay \] \[Replay Exception\] [^\n]*ue4-binary-streams[^\n:]*:51: Data was encrypted, but encryption key was not set\.\n$/;

const team = (ranking) => w.teamStats(ranking, 100);
const teamEvents = (...rankings) =>
  rankings.map((ranking) => ({ ...expectedTeamStats(ranking, 100), eventMeta }));
const chunks = (...payloads) => payloads.map((data) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data }));
const row = (name, info, payloads, expected) => ({
  name,
  bytes: w.replay({ bEncrypted: 1, EncryptionKey: key, ...info }, chunks(...payloads)),
  ...expected,
});

testReads([
  row('a key of zeros does not decrypt', { EncryptionKey: Buffer.alloc(16) }, [w.encrypt(team(1), key)], {
    stdout: missingKey,
    empty: true,
  }),
  row('no key', { EncryptionKey: Buffer.alloc(0) }, [w.encrypt(team(1), key)], {
    stdout: missingKey,
    empty: true,
  }),
  row('no key, and a payload of no bytes', { EncryptionKey: Buffer.alloc(0) }, [Buffer.alloc(0)], {
    stdout: missingKey,
    empty: true,
  }),
  row('no key, but nothing to decrypt', { EncryptionKey: Buffer.alloc(0) }, [], { events: undefined }),
  row('a key is not used on a replay that is not encrypted', { bEncrypted: 0 }, [team(1)], {
    events: teamEvents(1),
  }),
  row('any value but 0 means encrypted', { bEncrypted: 0x100 }, [w.encrypt(team(1), key)], {
    events: teamEvents(1),
  }),
  row(
    'payloads that are no whole blocks are skipped, the others read',
    {},
    [w.encrypt(team(1), key), w.skipped(20), w.encrypt(team(2), key), w.skipped(1)],
    { events: teamEvents(1, 2), stdout: '\n' + failedLine + failedLine },
  ),
  ...[1, 15, 17, 20, 33, 64].map((length) =>
    row(`a key of ${length} bytes`, { EncryptionKey: Buffer.alloc(length, 7) }, [w.skipped(32)], {
      events: undefined,
      stdout: '\n' + failedLine,
    }),
  ),
]);

// Random bytes that are the same in every run.
const stream = createCipheriv('aes-256-ctr', Buffer.alloc(32, 1), Buffer.alloc(16));
const random = (length) => stream.update(Buffer.alloc(length));
const randomElim = () => ({
  extra: random(random(2).readUInt16LE() % 700),
  killedAt: [...random(3)],
  killerAt: [...random(3)],
  killed: { type: 17, id: random(16) },
  killer: { type: 17, id: random(16) },
  damageType: random(1)[0],
  knocked: random(1)[0] % 2,
});

// Payloads of 8 to 52 blocks, with all that the document shows at their ends.
for (const keyBytes of [16, 24, 32]) {
  const files = Array.from({ length: 8 }, () => {
    const fileKey = random(keyBytes);
    const elims = Array.from({ length: 40 }, randomElim);
    const events = elims.map((elim) => w.eventChunk({ data: w.encrypt(w.playerElim(elim), fileKey) }));
    return { elims, bytes: w.replay({ bEncrypted: 1, EncryptionKey: fileKey }, events) };
  });
  test(`random events under random keys of ${keyBytes} bytes`, () => {
    readFiles(files.map(({ bytes }) => bytes)).forEach(({ text }, i) => {
      const expected = files[i].elims.map((elim) => ({ ...expectedElim(elim), eventMeta }));
      assert.deepEqual(JSON.parse(utf8Text(text)).events, expected);
    });
  });
}
