'use strict';
// The header chunk.

const assert = require('node:assert/strict');
const { testReads } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

const fields = {
  NetworkChecksum: 0xf1e2d3c4,
  EngineNetworkProtocolVersion: 23,
  GameNetworkProtocolVersion: 0xffffffff,
  Guid: Buffer.from('0102030405060708090a0b0c0d0e0f10', 'hex'),
  Major: 0xfffe,
  Minor: 25,
  Patch: 3,
  Changelist: 0x12345678,
  Branch: '++Corvane+Main',
  levels: [
    ['/Game/Maps/Isle', 1],
    ['/Game/Maps/Île', 2],
  ],
  Flags: 0xffffffff,
  GameSpecificData: ['SubGame=Duos', 'Região=EU'],
};
const row = (name, bytes, expected) => ({ name, bytes, ...expected });
const withHeader = (more) => w.replay({}, w.headerChunk({ ...fields, ...more }));

const versionRow = (Version) =>
  row(`the header of version ${Version}`, withHeader({ Version }), {
    header: {
      magic: 0x2cf5a13d,
      NetworkVersion: Version,
      NetworkChecksum: 0xf1e2d3c4,
      EngineNetworkVersion: 23,
      GameNetworkProtocolVersion: 0xffffffff,
      guid: Version >= 12 ? '0102030405060708090a0b0c0d0e0f10' : '0'.repeat(32),
      EngineVersion: {
        branch: Version >= 11 ? '++Corvane+Main' : '',
        major: Version >= 11 ? 0xfffe : 0,
        minor: Version >= 11 ? 25 : 0,
        patch: Version >= 11 ? 3 : 0,
        changelist: 0x12345678,
      },
      levels: Version < 6 ? ['/Game/Maps/Isle'] : ['/Game/Maps/Isle', '/Game/Maps/Île\0'],
      GameSpecificData: ['SubGame=Duos', 'Região=EU\0'],
    },
  });

const line = (text) => `\n[ orvel::corvane::ReplayParser::ParseHeaderChunk ] ${text}\n`;
const tooOld = (version) =>
  line(`Header.Version < MIN_NETWORK_DEMO_VERSION. Header.Version: ${version}, MIN_NETWORK_DEMO_VERSION: 5`);
const refusedRows = [
  ['a wrong header magic', { Magic: 0x2cf5a13e }, line('Header.Magic != NETWORK_DEMO_MAGIC')],
  ['header version 4', { Version: 4 }, tooOld(4)],
  ['header version 0', { Version: 0 }, tooOld(0)],
  [
    'an engine network protocol after 23',
    { EngineNetworkProtocolVersion: 24 },
    line('EngineNetworkProtocolVersion != HISTORY_ENGINENETVERSION_LATEST'),
  ],
].map(([name, more, stdout]) => {
  const event = w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(3, 4) });
  return row(`${name} is reported, and the events are read`, w.bytes(withHeader(more), event), {
    stdout,
    header: undefined,
    check: (document) => assert.equal(document.events.length, 1),
  });
});

// Counts that the file cannot hold are data that run out, however large or negative they are.
const countRows = [-0x80000000, -1, 1, 0x10000000, 0x7fffffff].flatMap((count) => [
  row(
    `${count} level names that are not there`,
    withHeader({ levels: w.i32(count), GameSpecificData: w.bytes() }),
    {
      empty: true,
    },
  ),
  row(`${count} game data that are not there`, withHeader({ GameSpecificData: w.i32(count) }), {
    empty: true,
  }),
]);

const chunkBytes = w.headerChunk(fields);
testReads([
  ...Array.from({ length: 13 }, (_, i) => versionRow(i + 5)),
  ...refusedRows,
  ...countRows,
  row('no header chunk', w.replay({}), { header: undefined, check: (d) => assert.ok(d.ReplayFileMeta) }),
  row('a header after the events', w.bytes(w.replay({}, w.eventChunk()), chunkBytes), {
    header: { magic: 0x2cf5a13d },
  }),
  row('the impossible string length in the branch', withHeader({ Branch: w.i32(-0x80000000) }), {
    empty: true,
    stdout: /:23: Invalid SaveNum, corrupted FArchive\.\n$/,
  }),
  // A cut header is no failure of the table, but the document cannot be made.
  ...[8, 9, 20, 40, chunkBytes.length - 1].map((length) =>
    row(`a header chunk cut after ${length} bytes`, w.bytes(w.replay({}), chunkBytes.subarray(0, length)), {
      empty: true,
    }),
  ),
]);
