'use strict';
// Isolated reading through the built add-on: documents, keys, the code of each failure, and a long run with broken files.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { pathToFileURL } = require('node:url');
const { livingChildren } = require('../support/client-processes.js');
const { addonPath, utf8Text } = require('../support/reads.js');
const { temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');

process.env.CORVANE_ADDON = addonPath;
const addon = require(addonPath);
const { ReplayClient, readReplay, readReplayText, readReplays, readReplayTexts } = require('../../client');

const samples = path.join(__dirname, '..', '..', 'samples');
const folder = temporaryFolder();
function write(name, bytes) {
  fs.writeFileSync(path.join(folder, name), bytes);
  return path.join(folder, name);
}
const failure = (reading) =>
  reading.then(
    () => assert.fail('it was read'),
    (error) => error,
  );

const key = Buffer.from('6b1d5e0f42a97c3388d1f00e5b7a9c24', 'hex');
const team = (data) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data });
const encrypted = (EncryptionKey, ...payloads) =>
  w.replay({ bEncrypted: 1, EncryptionKey, FriendlyName: 'encrypted' }, payloads.map(team));
const encryptedTeam = w.encrypt(w.teamStats(3, 100), key);
const keyless = encrypted(Buffer.alloc(16), encryptedTeam);

test('a document is the one that ReadCorvaneDemo gives', async () => {
  const files = ['match.replay', 'match-encrypted.replay'].map((name) => path.join(samples, name));
  const expected = files.map((file) => utf8Text(addon.ReadCorvaneDemo(file)));
  const texts = [];
  for await (const { text } of readReplayTexts(new Set(files))) texts.push(text);
  assert.deepEqual(texts, expected);
  assert.equal(await readReplayText(files[0]), expected[0]);
  assert.deepEqual(await readReplay(pathToFileURL(files[1])), JSON.parse(expected[1]));
});

test('a relative path is that of the reading process, and stays in errors as it was given', async () => {
  write('relative.replay', w.replay());
  const relative = path.relative(process.cwd(), path.join(folder, 'relative.replay'));
  assert.equal((await readReplay(relative)).Creation.fileName, path.resolve(relative));
  assert.equal((await failure(readReplay(`${relative}-none`))).path, `${relative}-none`);
});

test('a key opens a replay that has none, in any kind of buffer; a replay that has one keeps it', async () => {
  const file = write('keyless.replay', keyless);
  const inside = Buffer.concat([Buffer.alloc(5), key, Buffer.alloc(5)]).subarray(5, 21);
  for (const given of [key, Uint8Array.from(key), Uint8Array.from(key).buffer, inside]) {
    assert.equal((await readReplay(file, { key: given })).events[0].finalRanking, 3);
  }
  const longKey = Buffer.alloc(24, 9);
  const long = write('long.replay', encrypted(Buffer.alloc(16), w.encrypt(w.teamStats(4, 100), longKey)));
  assert.equal((await readReplay(long, { key: longKey })).events[0].finalRanking, 4);
  const keyed = write('keyed.replay', encrypted(key, encryptedTeam));
  assert.equal((await readReplay(keyed, { key: Buffer.alloc(32, 7) })).events[0].finalRanking, 3);
});

// Ways in which a file can be broken; undefined is a file that is not there, null a folder.
const withName = (...parts) => w.replay({ FriendlyName: w.bytes(...parts) });
const BROKEN = [
  ['ERR_UNREADABLE', /^ENOENT: no such file/, undefined],
  ['ERR_UNREADABLE', /^not a regular file$/, null],
  ['ERR_NOT_A_REPLAY', /magic number/, Buffer.from('PK\x03\x04 is no replay')],
  ['ERR_CORRUPT', /^The Replay file had no data in it\.$/, Buffer.alloc(0)],
  ['ERR_CORRUPT', /^the file ends too early$/, w.replay().subarray(0, 3)],
  ['ERR_CORRUPT', /: Found multiple header chunks$/, w.replay({}, w.headerChunk(), w.headerChunk())],
  ['ERR_CORRUPT', /: Invalid event disk size$/, w.replay({}, w.eventChunk({ SizeInBytes: 1000 }))],
  ['ERR_KEY_REQUIRED', /encryption key was not set\.$/, keyless],
  ['ERR_CORRUPT', /Invalid SaveNum, corrupted FArchive\.$/, withName(w.i32(-0x80000000))],
  ['ERR_CORRUPT', /invalid UTF-8/, withName(w.i32(3), w.u8(0xc3), w.u8(40), w.u8(0))],
  ['ERR_CORRUPT', /^Decryption failed: 20 bytes of event 0/, encrypted(key, w.skipped(20))],
  ['ERR_CORRUPT', /^Decryption failed: .* 15$/, encrypted(Buffer.alloc(15, 1), w.skipped(32))],
].map(([code, reason, bytes]) => ({ code, reason, bytes }));

function writeBroken(name, bytes) {
  if (bytes === null) fs.mkdirSync(path.join(folder, name));
  return bytes ? write(name, bytes) : path.join(folder, name);
}

test('an event that nobody shows may be undecryptable', async () => {
  const unknown = w.eventChunk({ Group: 'another', data: w.skipped(20) });
  const info = { bEncrypted: 1, EncryptionKey: key };
  const { events } = await readReplay(write('unknown.replay', w.replay(info, unknown, team(encryptedTeam))));
  assert.equal(events.length, 1);
});

test('500 replays, 50 of them broken: 450 documents and 50 errors with code and reason, in order', async () => {
  const before = new Set(livingChildren());
  const files = Array.from({ length: 500 }, (_, i) => {
    const broken = i % 10 === 7 ? BROKEN[Math.floor(i / 10) % BROKEN.length] : undefined;
    const bytes = broken ? broken.bytes : w.replay({}, team(w.teamStats(i, 500)));
    return { broken, path: writeBroken(`run-${i}.replay`, bytes) };
  });
  const paths = files.map((file) => file.path);
  let i = 0;
  for await (const { path, document, error } of readReplays(paths, { concurrency: 3 })) {
    const { broken } = files[i];
    assert.equal(path, paths[i]);
    assert.deepEqual([error?.code, error?.path], broken ? [broken.code, path] : [undefined, undefined]);
    if (broken) assert.match(error.reason, broken.reason);
    else assert.deepEqual([document.Creation.fileName, document.events[0].finalRanking], [path, i]);
    i += 1;
  }
  assert.equal(i, 500);
  assert.deepEqual(
    livingChildren().filter((child) => !before.has(child)),
    [],
  );
});

test('wrong arguments are rejected, each by name', async () => {
  const file = path.join(samples, 'match.replay');
  for (const [reading, what] of [
    [readReplay(), 'path'],
    [readReplay(42), 'path'],
    [readReplay(''), 'path'],
    [readReplay(new URL('https://example.org/match.replay')), 'file'],
    [readReplay(file, null), 'options'],
    [readReplay(file, { key: 'abc' }), 'key'],
    [readReplay(file, { key: Buffer.alloc(15) }), 'key'],
    [readReplay(file, { signal: {} }), 'signal'],
    [readReplay(file, { signal: { aborted: false } }), 'signal'],
    [readReplay(file, { timeout: 0 }), 'timeout'],
    [readReplay(file, { timeout: Infinity }), 'timeout'],
    [readReplay(file, { timout: 500 }), 'no option timout; there are .*timeout'],
    [readReplay(file, { concurrency: 2 }), 'no option concurrency'],
    [readReplay(file, { maxDocumentBytes: 0 }), 'maxDocumentBytes'],
    [readReplay(file, { maxDocumentBytes: 2 ** 31 }), 'maxDocumentBytes'],
    [readReplays(file).next(), 'paths'],
    [readReplays([file], null).next(), 'options'],
    [readReplays([file], { concurrency: 0 }).next(), 'concurrency'],
    [readReplays([file], { key: Buffer.alloc(1) }).next(), 'key'],
  ]) {
    const error = await failure(reading);
    assert.equal(error.code, 'ERR_INVALID_ARGUMENT', error.stack);
    assert.match(error.reason, new RegExp(what));
  }
  for (const options of [null, { concurrency: 65 }, { execPath: '' }, { key }]) {
    assert.throws(() => new ReplayClient(options), { code: 'ERR_INVALID_ARGUMENT' });
  }
});

test('an error says what to do, in plain words, and keeps its code on its way to JSON', async () => {
  const error = await failure(readReplay(write('told.replay', keyless)));
  const told = JSON.parse(JSON.stringify(error));
  assert.deepEqual(Object.keys(told), ['name', 'code', 'message', 'reason', 'hint', 'path']);
  assert.deepEqual([told.name, told.code, told.path], ['ReplayError', 'ERR_KEY_REQUIRED', error.path]);
  assert.equal(told.message, `${error.path}: the replay is encrypted and carries no key`);
  assert.match(told.hint, /options\.key.*--key-file/);
  assert.match(told.reason, /encryption key was not set/);
});

test('the internal export is not enumerated, and refuses other arguments', () => {
  assert.ok(!Object.keys(addon).includes('readReplayDocument'));
  const buffer = new ArrayBuffer(0);
  for (const args of [[], ['a'], ['a', Buffer.alloc(0)], ['a', buffer, 1], [1, buffer]]) {
    const expected = { name: 'TypeError', message: /Expected 2 required/ };
    assert.throws(() => addon.readReplayDocument(...args), expected);
  }
});

test('a failed read holds nothing', () => {
  const openFiles = () => (process.platform === 'win32' ? 0 : fs.readdirSync('/proc/self/fd').length);
  const before = openFiles();
  for (const [i, { bytes }] of BROKEN.filter(({ bytes }) => bytes).entries()) {
    const file = write(`held-${i}.replay`, bytes);
    assert.throws(() => addon.readReplayDocument(file, new ArrayBuffer(0)), { code: /^ERR_/ });
    // Windows deletes no file that is open.
    fs.rmSync(file);
  }
  assert.equal(openFiles(), before);
});
