'use strict';
// The information block, the chunk table, and the files that are not what they should be.

const assert = require('node:assert/strict');
const { utf8Text, testReads } = require('../support/reads.js');
const w = require('../support/replay-writer.js');
const { CHUNK } = w;

const clearedLine =
  '[ ue4::FLocalFileNetworkReplayStreamer::ReadReplayInfo ] ReadReplayInfo: Skipping unknown (cleared) chunk.\n\n';
const saveNumLine =
  /^\n?\[ orvel::corvane::ReplayParser::ParseReplay \] \[Replay Exception\] [^\n]*ue4-binary-streams[^\n:]*:23: Invalid SaveNum, corrupted FArchive\.\n$/;
const key = Buffer.from('000aff107f80', 'hex');

// An event that shows in the document, by a time of its own.
const ranking = (Time1, more) =>
  w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(1, 2), Time1, ...more });
const times = (document) => document.events?.map((event) => event.eventMeta.time1) ?? [];
const eventTimes = (...expected) => ({ check: (document) => assert.deepEqual(times(document), expected) });

// Every version has the block's fields that its gates allow, and the table begins right after them.
const block = {
  LengthInMS: 0x80000001,
  NetworkVersion: 0xfffffffe,
  Changelist: 3000000000,
  FriendlyName: 'Last one standing',
  bIsLive: 2,
  Timestamp: 0x0102030405060708n,
  bCompressed: 0x100,
  bEncrypted: 0,
  EncryptionKey: key,
};
const versionRow = (FileVersion) => {
  const bytes = w.replay({ ...block, FileVersion }, ranking(7));
  return {
    name: `the information block of version ${FileVersion}`,
    bytes,
    stdout: FileVersion >= 6 ? '\n' : '',
    ReplayFileMeta: {
      MagicNumber: 0x1ca2e27f,
      FileVersion,
      LegthInMs: 0x80000001,
      NetworkVersion: 0xfffffffe,
      Changelist: 3000000000,
      FriendlyName: 'Lastonestanding',
      Timestamp: FileVersion >= 3 ? Number(block.Timestamp) : 0,
      TotalDataSizeInBytes: bytes.length,
      bIsLive: true,
      bIsValid: false,
      bCompressed: FileVersion >= 2,
      bEncrypted: false,
      EncryptionKey: FileVersion >= 6 ? '00 0a ff 10 7f 80 ' : '',
    },
    check: (document) => {
      assert.deepEqual(times(document), [7]);
      assert.equal(document.Creation.timestamp, document.ReplayFileMeta.Timestamp);
    },
  };
};

const blockRows = [
  ...[0, 1, 2, 3, 4, 5, 6, 7, 0xffffffff].map(versionRow),
  {
    name: 'the largest numbers are unsigned',
    bytes: w.replay({ Timestamp: 0xffffffffffffffffn, LengthInMS: 0xffffffff }),
    check: (document, { text }) => {
      assert.equal(text.match(/"(T|t)imestamp": 18446744073709551615\b/g)?.length, 2);
      assert.match(text, /"LegthInMs": 4294967295,/);
    },
  },
  ...[
    ['a key of zeros is no key', Buffer.alloc(16), ''],
    ['a key with one byte that is not zero counts as it stands', Buffer.from([0, 0, 1]), '00 00 01 '],
    ['a key longer than any cipher takes is shown whole', Buffer.alloc(100000, 5), '05 '.repeat(100000)],
  ].map(([name, value, EncryptionKey]) => ({
    name,
    bytes: w.replay({ EncryptionKey: value }, ranking(1)),
    ReplayFileMeta: { EncryptionKey },
    ...eventTimes(1),
  })),
  ...[
    [
      'a wrong magic number is no failure and gives no file information',
      w.replay({ MagicNumber: 0x1ca2e27e }, ranking(1)),
    ],
    ['a file of four bytes that is no replay', Buffer.from('zzzz')],
  ].map(([name, bytes]) => ({
    name,
    bytes,
    stdout: '',
    check: (document) =>
      assert.deepEqual([Object.keys(document), document.Creation.timestamp], [['Creation'], 0]),
  })),
];

// Strings, as the friendly name shows them.
const nameRows = [
  ['8-bit', w.string8('Match'), 'Match'],
  ['8-bit that lies about its length', w.bytes(w.i32(2000000000), Buffer.from('Match\0')), 'Match'],
  [
    '8-bit with a length of 0, which still reads to the next zero',
    w.bytes(w.i32(0), Buffer.from('Match\0')),
    'Match',
  ],
  ['8-bit and empty', w.string8(''), ''],
  ['8-bit with whitespace everywhere', w.string8(' A\tB\n C\r\v\f'), 'ABC'],
  ['8-bit, very long', w.string8('name'.repeat(150000)), 'name'.repeat(150000)],
  ['8-bit with characters of more than one byte', w.string8('Grüße 火🔥'), 'Grüße火🔥'],
  ['UTF-16, which keeps its final zero', w.string16('Grüße 火🔥'), 'Grüße火🔥\0'],
  ['UTF-16 with unpaired surrogates', w.string16('a\ud800b\udc00'), 'a\ufffdb\ufffd\0'],
  ['UTF-16 with a no-break space, which is no whitespace', w.string16('a\u00a0b'), 'a\u00a0b\0'],
].map(([name, FriendlyName, expected]) => ({
  name: `a name in ${name}`,
  bytes: w.replay({ FriendlyName }),
  ReplayFileMeta: { FriendlyName: expected },
}));

const textRows = [
  {
    name: 'each byte of UTF-8 is one unit of the text, sign-extended',
    bytes: w.replay({ FriendlyName: w.string8('é火') }),
    check: (document, { text }) =>
      assert.ok(text.includes('"FriendlyName": "\uffc3\uffa9\uffe7\uff81\uffab"')),
  },
  {
    name: 'a name that is not UTF-8 is a JavaScript error, and the process lives',
    bytes: w.replay({ FriendlyName: w.bytes(w.i32(3), Buffer.from([0x61, 0xff, 0])) }),
    throws: /invalid UTF-8 byte at index 1: 0xFF/,
  },
  {
    name: 'the text of a document, character by character',
    bytes: w.replay({ FileVersion: 1, FriendlyName: 'a"\\' }, w.headerChunk(), ranking(9, { Time2: 10 })),
    stdout: '',
    check: (document, { text }) => {
      const fileName = JSON.stringify(document.Creation.fileName);
      assert.equal(
        utf8Text(text),
        wholeText.replace('FILE', () => fileName),
      );
    },
  },
];
const wholeText = `{
 "Creation": {
  "fileName": FILE,
  "timestamp": 0
 },
 "ReplayFileMeta": {
  "Changelist": 0,
  "EncryptionKey": "",
  "FileVersion": 1,
  "FriendlyName": "a\\"\\\\",
  "LegthInMs": 0,
  "MagicNumber": 480436863,
  "NetworkVersion": 0,
  "Timestamp": 0,
  "TotalDataSizeInBytes": 181,
  "bCompressed": false,
  "bEncrypted": false,
  "bIsLive": false,
  "bIsValid": false
 },
 "events": [
  {
   "eventMeta": {
    "time1": 9,
    "time2": 10
   },
   "evtName": "AthenaMatchTeamStats",
   "finalRanking": 1,
   "totalPlayers": 2
  }
 ],
 "header": {
  "EngineNetworkVersion": 0,
  "EngineVersion": {
   "branch": "",
   "changelist": 0,
   "major": 0,
   "minor": 0,
   "patch": 0
  },
  "GameNetworkProtocolVersion": 0,
  "GameSpecificData": [],
  "NetworkChecksum": 0,
  "NetworkVersion": 12,
  "guid": "00000000000000000000000000000000",
  "levels": [],
  "magic": 754295101
 }
}`;

// Cut anywhere between its information block and its last event's data.
const cutFiles = () => {
  const before = w.replay({ FileVersion: 5 }, ranking(1));
  const last = ranking(2);
  const description = last.length - w.teamStats(1, 2).length;
  return Array.from({ length: description }, (_, length) => w.bytes(before, last.subarray(0, length)));
};

const other = (type, SizeInBytes) => w.chunk(type, w.skipped(5), SizeInBytes);
const tableRows = [
  {
    name: 'chunks of other types are passed over in silence',
    bytes: w.replay(
      {},
      [1, 2, 4, 0x7fffffff, 0xfffffffe].map((type) => other(type)),
      ranking(1),
    ),
    ...eventTimes(1),
  },
  {
    name: 'a cleared chunk is reported and passed over',
    bytes: w.replay({}, other(CHUNK.unknown), ranking(1), other(CHUNK.unknown)),
    stdout: '\n' + clearedLine + clearedLine,
    ...eventTimes(1),
  },
  {
    name: 'an event chunk ends where its size says, whatever its description took',
    bytes: w.replay(
      {},
      w.chunk(CHUNK.event, w.bytes(event(1), w.skipped(40))),
      w.chunk(CHUNK.event, event(2)),
      ranking(3),
    ),
    ...eventTimes(1, 2, 3),
  },
  {
    name: 'an event whose data end with the file is whole',
    bytes: w.replay({}, ranking(1)),
    ...eventTimes(1),
  },
  ...[
    ['goes back to itself', -8],
    ['goes back by one', -1],
    ['goes back to the start', -0x7fffffff],
    ['goes back as far as it can', -0x80000000],
    ['goes on past the end', 0x7fffffff],
  ].map(([name, size]) => ({
    name: `a chunk that ${name} ends the table`,
    bytes: w.replay({}, ranking(1), other(CHUNK.replayData, size), ranking(2)),
    ...eventTimes(1),
  })),
  {
    name: 'an event whose chunk goes back is the last one',
    bytes: w.replay({}, ranking(1), w.chunk(CHUNK.event, event(2), -8), ranking(3)),
    ...eventTimes(1, 2),
  },
  {
    name: 'a table cut inside a chunk keeps what came before the cut',
    bytes: cutFiles(),
    stdout: '',
    ...eventTimes(1),
  },
  {
    name: 'an event description that claims two billion characters is dropped',
    bytes: w.replay({}, ranking(1), ranking(2, { Id: w.i32(-2000000000) })),
    ...eventTimes(1),
  },
];
function event(Time1) {
  return w.event({ Group: 'AthenaMatchTeamStats', data: w.teamStats(1, 2), Time1 });
}

const invalidSize = 'ReadReplayInfo: Invalid event disk size';
const failureRows = [
  { name: 'an empty file', bytes: Buffer.alloc(0), stdout: '', dies: 'The Replay file had no data in it.\n' },
  ...[3, 10, 45].map((length) => ({
    name: `an information block cut after ${length} bytes`,
    bytes: w.replay({ EncryptionKey: key }).subarray(0, length),
    stdout: '',
    dies: 'ios_base::failbit set',
  })),
  ...[-1, 7, 0x7fffffff].map((count) => ({
    name: `a key that claims ${count} bytes of 6`,
    bytes: w.replay({ EncryptionKey: key, keySize: count }),
    stdout: '',
    dies: 'ios_base::failbit set',
  })),
  {
    name: 'a name that claims two billion characters',
    bytes: w.replay({ FriendlyName: w.i32(-0x7fffffff) }),
    stdout: '',
    dies: 'ios_base::failbit set',
  },
  {
    name: 'a second header chunk',
    bytes: w.replay({}, w.headerChunk(), other(CHUNK.unknown), w.headerChunk()),
    stdout: '\n' + clearedLine, // what was printed before the end is not lost
    dies: 'ReadReplayInfo: Found multiple header chunks\n',
  },
  {
    name: 'an event whose data end one byte past the end of the file',
    bytes: w.replay({}, ranking(1), ranking(2)).subarray(0, -1),
    dies: invalidSize,
  },
  {
    name: 'an event of negative size',
    bytes: w.replay({}, ranking(1, { SizeInBytes: -1 })),
    dies: invalidSize,
  },
  {
    name: 'an event of two billion bytes',
    bytes: w.replay({}, ranking(1, { SizeInBytes: 0x7fffffff })),
    dies: invalidSize,
  },
  ...[
    ['the name', w.replay({ FriendlyName: w.i32(-0x80000000) })],
    ["an event's id", w.replay({}, ranking(1, { Id: w.i32(-0x80000000) }))],
  ].map(([where, bytes]) => ({
    name: `the impossible string length in ${where} gives ""`,
    bytes,
    stdout: saveNumLine,
    empty: true,
  })),
];

testReads([...blockRows, ...nameRows, ...textRows, ...tableRows, ...failureRows]);
