'use strict';
// A whole document, the information block of every version, the chunk table, and how broken files end.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { addonPath, readFiles, readPaths, testReads, utf8Text } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');
const { CHUNK } = w;

const key = Buffer.from('6b1d5e0f42a97c3388d1f00e5b7a9c24', 'hex');
const clearedLine =
  '[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] ReadReplayInfo: Skipping unknown (cleared) chunk.\n\n';

// Everything there is, encrypted.
const rich = w.replay(
  {
    LengthInMS: 0x80000001,
    NetworkVersion: 0xfffffffe,
    Changelist: 3000000000,
    FriendlyName: ' Grüße "火🔥"\t\\',
    bIsLive: 2,
    Timestamp: 0xffffffffffffffffn,
    bCompressed: 0x100,
    bEncrypted: 0x100,
    EncryptionKey: key,
  },
  w.chunk(CHUNK.unknown, w.skipped(5)),
  w.headerChunk({ EngineNetworkProtocolVersion: 23, Branch: 'b', Major: 0xfffe, levels: [['/Île', 1]] }),
  [
    {
      Time1: 0xfffffffe,
      Time2: 2,
      data: w.playerElim({
        killedAt: [1.5, -2.25, 512],
        killerAt: [NaN, 0.1, -0.5],
        killed: { type: 17, id: key },
        killer: { type: 16, id: 'Bot Ä' },
        damageType: 255,
        knocked: 1,
      }),
    },
    { Group: 'AthenaMatchStats', data: w.matchStats(0.3, [1, 2, 3, 4, 5, 6, 7, 8, 9, 0xffffffff]) },
    { Metadata: 'AthenaMatchTeamStats', data: w.teamStats(3, 98) },
  ].map(({ data, ...event }) => w.eventChunk({ ...event, data: w.encrypt(data, key) })),
);

test('a whole document, character by character', () => {
  const [{ file, text, stdout }] = readFiles([rich]);
  const expected = fs.readFileSync(path.join(__dirname, '..', 'data', 'whole-document.json'), 'utf8');
  assert.equal(
    utf8Text(text) + '\n',
    expected.replace('"FILE"', () => JSON.stringify(file)),
  );
  assert.ok(text.includes('/\uffc3\uff8ele'), 'each byte from 0x80 is one unit, sign-extended');
  assert.equal(stdout, '\n' + clearedLine);
});

// An event that shows in the document, by a time of its own.
const stats = { Group: 'AthenaMatchTeamStats', data: w.teamStats(1, 2) };
const event = (Time1, more) => w.eventChunk({ ...stats, Time1, ...more });
const withTimes = (...times) => ({ events: times.map((time1) => ({ eventMeta: { time1 } })) });

// Each version has the block's fields that its gates allow, and the table begins right after them.
const versionRow = (FileVersion) => ({
  name: `the information block of version ${FileVersion}`,
  bytes: w.replay({ FileVersion, Timestamp: 9n, bCompressed: 1, EncryptionKey: key }, event(7)),
  stdout: FileVersion >= 6 ? '\n' : '',
  document: {
    ReplayFileMeta: {
      FileVersion,
      Timestamp: FileVersion >= 3 ? 9 : 0,
      bCompressed: FileVersion >= 2,
      bEncrypted: false,
      EncryptionKey: FileVersion >= 6 ? '6b 1d 5e 0f 42 a9 7c 33 88 d1 f0 0e 5b 7a 9c 24 ' : '',
    },
    ...withTimes(7),
  },
});

const other = (type, SizeInBytes) => w.chunk(type, w.skipped(5), SizeInBytes);
const table = (name, chunks, ...times) => ({
  name,
  bytes: w.replay({}, chunks),
  document: withTimes(...times),
});

const saveNumLine =
  /^\n?\[ orvel::\S+ \] \[Replay Exception\] .*:23: Invalid SaveNum, corrupted FArchive\.\n$/;
const broken = (name, bytes, outcome) => ({ name, bytes, stdout: /^\n?$/, ...outcome });

testReads([
  ...[0, 1, 2, 3, 4, 5, 6, 7, 0xffffffff].map(versionRow),
  {
    name: 'a key of zeros is no key',
    bytes: w.replay({ EncryptionKey: Buffer.alloc(16) }),
    document: { ReplayFileMeta: { EncryptionKey: '' } },
  },
  {
    name: 'what is no replay gives no file information',
    bytes: Buffer.from('zzzz'),
    stdout: '',
    document: { Creation: { timestamp: 0 }, ReplayFileMeta: undefined, events: undefined },
  },
  table(
    'chunks of other types are passed over',
    [[1, 2, 4, 0x7fffffff, 0xfffffffe].map((type) => other(type)), event(1)],
    1,
  ),
  table(
    'an event chunk ends where its size says',
    [w.chunk(CHUNK.event, w.bytes(w.event({ ...stats, Time1: 1 }), w.skipped(40))), event(2)],
    ...[1, 2],
  ),
  ...[-8, -1, -0x80000000, 0x7fffffff].map((size) =>
    table(`a chunk of ${size} bytes ends the table`, [event(1), other(CHUNK.replayData, size), event(2)], 1),
  ),
  broken('an empty file', Buffer.alloc(0), { dies: 'The Replay file had no data in it.\n' }),
  broken('a cut information block', w.replay({}).subarray(0, 10), { dies: 'ios_base::failbit set' }),
  broken('a key that is not there', w.replay({ keySize: 7 }), { dies: 'ios_base::failbit set' }),
  broken('a second header chunk', w.replay({}, other(CHUNK.unknown), w.headerChunk(), w.headerChunk()), {
    dies: 'ReadReplayInfo: Found multiple header chunks\n',
    stdout: '\n' + clearedLine, // what was printed before the end is not lost
  }),
  broken('an event that ends past the end of the file', w.replay({}, event(1)).subarray(0, -1), {
    dies: 'ReadReplayInfo: Invalid event disk size',
  }),
  broken('an event of negative size', w.replay({}, event(1, { SizeInBytes: -1 })), {
    dies: 'ReadReplayInfo: Invalid event disk size',
  }),
  broken('an impossible string', w.replay({}, event(1, { Id: w.i32(-0x80000000) })), {
    empty: true,
    stdout: saveNumLine,
  }),
  broken(
    'a name that is not UTF-8',
    w.replay({ FriendlyName: w.bytes(w.i32(3), Buffer.from('a\xff\0', 'latin1')) }),
    {
      throws: /invalid UTF-8 byte at index 1: 0xFF/,
    },
  ),
]);

// Each failed read keeps its file open.
test('failed reads keep nobody from their files, and leave room for a good one', () => {
  const folder = temporaryFolder();
  const [bad, good] = ['bad', 'good'].map((name) => path.join(folder, `${name}.replay`));
  fs.writeFileSync(bad, w.replay({}, event(1, { Id: w.i32(-0x80000000) })));
  fs.writeFileSync(good, w.replay({}, event(1)));
  const script = `
    const fs = require('node:fs');
    const addon = require(${JSON.stringify(addonPath)});
    const [bad, good] = process.argv.slice(1);
    for (let i = 0; i < 2000; ++i) if (addon.ReadCorvaneDemo(bad) !== '') throw new Error('no failure');
    const isOpen = process.platform !== 'linux' || fs.readdirSync('/proc/self/fd').length > 500;
    if (!isOpen) throw new Error('a failed read has closed its file');
    fs.appendFileSync(bad, 'x');
    fs.renameSync(bad, bad + '.old');
    fs.unlinkSync(bad + '.old');
    console.error(addon.ReadCorvaneDemo(good).length > 100);`;
  const { stderr } = run(process.execPath, ['-e', script, bad, good]);
  assert.equal(stderr.trim(), 'true');
});

const DEVICES =
  process.platform === 'win32'
    ? ['NUL', 'C:\\NUL', 'COM1', 'CON', 'C:\\', '\\\\.\\C:']
    : ['/dev/null', '/dev/zero', '/'];

test('a device is no replay', () => {
  for (const { text } of readPaths(DEVICES)) assert.equal(text, '');
});
