'use strict';
// The header chunk: what each version has, and what is refused.

const { testReads } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

const fields = {
  NetworkChecksum: 0xf1e2d3c4,
  EngineNetworkProtocolVersion: 23,
  GameNetworkProtocolVersion: 0xffffffff,
  Guid: Buffer.from('0102030405060708090a0b0c0d0e0f10', 'hex'),
  ...{ Major: 0xfffe, Minor: 25, Patch: 3, Changelist: 0x12345678, Branch: '++Corvane+Main' },
  levels: [
    ['/Game/Maps/Isle', 1],
    ['/Game/Maps/Île', 2],
  ],
  Flags: 0xffffffff,
  GameSpecificData: ['SubGame=Duos', 'Região=EU'],
};
const event = w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(3, 4) });
const withHeader = (more) => w.replay({}, w.headerChunk({ ...fields, ...more }), event);

const versionRow = (Version) => ({
  name: `the header of version ${Version}`,
  bytes: withHeader({ Version }),
  document: {
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
  },
});

const refusedRow = (name, more, text) => ({
  name: `${name} is reported, and the events are read`,
  bytes: withHeader(more),
  stdout: `\n[ orvel::corvane::ReplayParser::ParseHeaderChunk ] ${text}\n`,
  document: { header: undefined, events: [{ finalRanking: 3 }] },
});

testReads([
  ...Array.from({ length: 13 }, (_, i) => versionRow(i + 5)),
  refusedRow('a wrong magic', { Magic: 0x2cf5a13e }, 'Header.Magic != NETWORK_DEMO_MAGIC'),
  refusedRow(
    'version 4',
    { Version: 4 },
    'Header.Version < MIN_NETWORK_DEMO_VERSION. Header.Version: 4, MIN_NETWORK_DEMO_VERSION: 5',
  ),
  refusedRow(
    'an engine network protocol after 23',
    { EngineNetworkProtocolVersion: 24 },
    'EngineNetworkProtocolVersion != HISTORY_ENGINENETVERSION_LATEST',
  ),
  {
    name: 'a header after the events',
    bytes: w.replay({}, event, w.headerChunk(fields)),
    document: { header: { magic: 0x2cf5a13d } },
  },
  ...[-1, -0x80000000, 0x7fffffff].map((count) => ({
    name: `${count} level names that are not there`,
    bytes: withHeader({ levels: w.i32(count) }),
    empty: true,
  })),
  {
    name: 'an impossible string in a list with an impossible count',
    bytes: withHeader({ GameSpecificData: w.bytes(w.i32(1000), w.i32(-0x80000000)) }),
    stdout: /:23: Invalid SaveNum, corrupted FArchive\.\n$/,
    empty: true,
  },
]);
