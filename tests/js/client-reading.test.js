'use strict';
// Isolated reading through the built add-on: documents, keys, the code of each failure, and a long run with broken files.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { pathToFileURL } = require('node:url');
const { children, livingChildren } = require('../support/client-processes.js');
const { addonPath, temporaryFolder, utf8Text } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

process.env.CORVANE_ADDON = addonPath;
const addon = require(addonPath);
const { readReplay, readReplayText, readReplays, readReplayTexts } = require('../../client');

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
  for (const name of ['match.replay', 'match-encrypted.replay']) {
    const file = path.join(samples, name);
    const text = utf8Text(addon.ReadCorvaneDemo(file));
    assert.equal(await readReplayText(file), text);
    assert.deepEqual(await readReplay(pathToFileURL(file)), JSON.parse(text));
  }
});

test('text arrives as characters, 64-bit numbers with all their digits', async () => {
  const name = 'Zoë-火🔥';
  const bytes = w.replay({ FriendlyName: name, Timestamp: 637489102335170001n });
  const file = write(`${name}.replay`, bytes);
  const { Creation, ReplayFileMeta } = await readReplay(file);
  assert.deepEqual([Creation.fileName, ReplayFileMeta.FriendlyName], [file, `${name}\0`]);
  assert.match(await readReplayText(file), /"Timestamp": 637489102335170001,/);
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
  const keyed = write('keyed.replay', encrypted(key, encryptedTeam));
  assert.equal((await readReplay(keyed, { key: Buffer.alloc(32, 7) })).events[0].finalRanking, 3);
});

test('an empty document has no events, and is no failure', async () => {
  const { events, header } = await readReplay(write('empty.replay', w.replay()));
  assert.deepEqual([events, header], [undefined, undefined]);
});

// Ten ways in which a file can be broken; undefined is a file that is not there, null a folder.
const invalidUtf8 = Buffer.from([5, 0, 0, 0, 0xc3, 0x28, 0xa0, 0xff, 0]);
const BROKEN = [
  { bytes: undefined, code: 'ERR_UNREADABLE', reason: /^ENOENT: no such file/ },
  { bytes: null, code: 'ERR_UNREADABLE', reason: /^not a regular file$/ },
  { bytes: Buffer.from('PK\x03\x04 is no replay'), code: 'ERR_NOT_A_REPLAY', reason: /magic number/ },
  { bytes: Buffer.alloc(0), code: 'ERR_CORRUPT', reason: /^The Replay file had no data in it\.$/ },
  { bytes: w.replay().subarray(0, 10), code: 'ERR_CORRUPT', reason: /^ios_base::failbit set$/ },
  {
    bytes: w.replay({}, w.headerChunk(), w.headerChunk()),
    code: 'ERR_CORRUPT',
    reason: /^ReadReplayInfo: Found multiple header chunks$/,
  },
  {
    bytes: w.replay({}, w.eventChunk({ SizeInBytes: 1000 })),
    code: 'ERR_CORRUPT',
    reason: /^ReadReplayInfo: Invalid event disk size$/,
  },
  { bytes: keyless, code: 'ERR_KEY_REQUIRED', reason: /encryption key was not set\.$/ },
  {
    bytes: w.replay({ FriendlyName: w.i32(-0x80000000) }),
    code: 'ERR_CORRUPT',
    reason: /Invalid SaveNum, corrupted FArchive\.$/,
  },
  { bytes: w.replay({ FriendlyName: invalidUtf8 }), code: 'ERR_CORRUPT', reason: /invalid UTF-8/ },
];

function writeBroken(name, bytes) {
  if (bytes === null) fs.mkdirSync(path.join(folder, name));
  return bytes ? write(name, bytes) : path.join(folder, name);
}

// More ways, beyond those of the long run.
const ALSO_BROKEN = [
  {
    bytes: encrypted(key, w.skipped(20)),
    code: 'ERR_CORRUPT',
    reason: /^Decryption failed: 20 bytes of event 0/,
  },
  {
    bytes: encrypted(Buffer.alloc(15, 1), w.skipped(32)),
    code: 'ERR_CORRUPT',
    reason: /^Decryption failed: .* a key of 15$/,
  },
];

test('each way of being broken has its code and its reason', async () => {
  for (const [i, { bytes, code, reason }] of [...BROKEN, ...ALSO_BROKEN].entries()) {
    const file = writeBroken(`broken-${i}.replay`, bytes);
    const error = await failure(readReplay(file));
    assert.deepEqual([error.name, error.code, error.path], ['ReplayError', code, file], error.message);
    assert.match(error.reason, reason);
  }
});

test('an event that nobody shows may be undecryptable', async () => {
  const unknown = w.eventChunk({ Group: 'another', data: w.skipped(20) });
  const info = { bEncrypted: 1, EncryptionKey: key };
  const { events } = await readReplay(write('unknown.replay', w.replay(info, unknown, team(encryptedTeam))));
  assert.equal(events.length, 1);
});

test('500 replays, 50 of them broken in ten ways: 450 documents and 50 coded errors, in order', async (t) => {
  const before = new Set(livingChildren());
  const startedBefore = children.length;
  const began = Date.now();
  const files = Array.from({ length: 500 }, (_, i) => {
    const broken = i % 10 === 7 ? BROKEN[(i / 10) % 10 | 0] : undefined;
    const bytes = broken ? broken.bytes : w.replay({ FriendlyName: `${i}` }, team(w.teamStats(i, 500)));
    return { path: writeBroken(`run-${i}.replay`, bytes), code: broken?.code };
  });
  const results = [];
  const paths = files.map((file) => file.path);
  for await (const result of readReplays(paths, { concurrency: 3 })) results.push(result);
  const ms = Date.now() - began;

  assert.deepEqual(
    results.map(({ path, error }) => ({ path, code: error?.code })),
    files,
  );
  const documents = results.filter(({ document }) => document);
  documents.forEach(({ path, document: { Creation, events } }) => {
    assert.equal(Creation.fileName, path);
    assert.equal(`run-${events[0].finalRanking}.replay`, path.slice(folder.length + 1));
  });
  const left = livingChildren().filter((child) => !before.has(child));
  assert.deepEqual([documents.length, results.length - documents.length, left.length], [450, 50, 0]);

  const counts = {};
  for (const { error } of results) if (error) counts[error.code] = (counts[error.code] ?? 0) + 1;
  const codes = Object.entries(counts).map(([code, count]) => `${count} ${code}`);
  t.diagnostic(`${results.length} replays in ${ms} ms: ${documents.length} documents; ${codes.join(', ')}`);
  t.diagnostic(`${children.length - startedBefore} child processes, ${left.length} left`);
});

test('many can be had as text', async () => {
  const paths = [path.join(samples, 'match.replay'), path.join(folder, 'none.replay')];
  const results = [];
  for await (const result of readReplayTexts(new Set(paths))) results.push(result);
  assert.equal(results[0].text, utf8Text(addon.ReadCorvaneDemo(paths[0])));
  assert.equal(results[1].error.code, 'ERR_UNREADABLE');
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
    [readReplays(file).next(), 'paths'],
    [readReplays([file], null).next(), 'options'],
    [readReplays([file], { concurrency: 0 }).next(), 'concurrency'],
    [readReplays([file], { key: Buffer.alloc(1) }).next(), 'key'],
  ]) {
    const error = await failure(reading);
    assert.equal(error.code, 'ERR_INVALID_ARGUMENT', error.stack);
    assert.match(error.reason, new RegExp(what));
  }
});

test('the internal export is not enumerated, and refuses other arguments', () => {
  assert.ok(!Object.keys(addon).includes('readReplayDocument'));
  for (const args of [
    [],
    ['a'],
    ['a', Buffer.alloc(0)],
    ['a', new ArrayBuffer(0), 1],
    [1, new ArrayBuffer(0)],
  ]) {
    assert.throws(() => addon.readReplayDocument(...args), {
      name: 'TypeError',
      message: /Expected 2 required/,
    });
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
