'use strict';
// node samples/make-samples.js: writes the sample replays again, byte for byte the same. Both hold the same match, once
// plain and once encrypted.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');
const w = require('../tests/support/replay-writer.js');

// Accounts have 16 bytes, here made from names so that they are the same in every run.
const account = (name) => ({ type: 17, id: createHash('md5').update(name).digest() });
const [own, second, third, fourth] = ['own', 'second', 'third', 'fourth'].map(account);
const namedBot = { type: 16, id: 'Bot_Søren' };
const bot = { type: 3 };

const seconds = (value) => Math.round(value * 1000);
const elim = (time, killed, killedAt, killer, killerAt, damageType, knocked) => ({
  Id: `match_${time}`,
  Metadata: 'elimination',
  Time1: seconds(time),
  Time2: seconds(time),
  data: w.playerElim({ killed, killedAt, killer, killerAt, damageType, knocked }),
});
const summary = (Metadata, data) => ({
  Id: `match_${Metadata}`,
  Group: 'MatchSummary',
  Metadata,
  Time1: seconds(1260.4),
  Time2: seconds(1260.4),
  data,
});

const before = [
  elim(74.25, second, [-10240.5, 8831.25, 512], own, [-10101, 8790.75, 530.5], 3, 1),
  elim(80.9, second, [-10238, 8829.5, 512], own, [-10190.25, 8802, 512.75], 3, 0),
  elim(312.6, bot, [4410.125, -2210, 96.5], third, [4530, -2301.75, 101], 7, 0),
  elim(547, namedBot, [1200, 1187.5, -64.25], own, [1399.5, 1105.25, -60], 4, 0),
];
const after = [
  elim(988.333, own, [220.75, -310.5, 1880], fourth, [1020, 77.25, 2044.5], 12, 1),
  elim(1001.05, fourth, [1003.5, 80, 2040], bot, [990.25, 64.75, 2039], 1, 0),
  elim(1248.5, third, [-15, 20.5, 3010.25], own, [-12, 340, 3022], 3, 0),
  summary('AthenaMatchStats', w.matchStats(0.3125, [2, 3, 847, 35, 1, 290, 4120, 655, 410, 523817])),
  summary('AthenaMatchTeamStats', w.teamStats(1, 98)),
];

// The match as a replay; with a key its events are encrypted.
function match(key) {
  const events = (records) =>
    records.map((record) =>
      w.eventChunk({ ...record, data: key ? w.encrypt(record.data, key) : record.data }),
    );
  const info = {
    FileVersion: 6,
    LengthInMS: seconds(1263.1),
    NetworkVersion: 0x5d0a3c17,
    Changelist: 17882303,
    FriendlyName: 'Finale auf Îlot Corvane',
    Timestamp: 637489102335170000n,
    bEncrypted: key ? 1 : 0,
    EncryptionKey: key ?? Buffer.alloc(32),
  };
  const header = {
    Version: 14,
    NetworkChecksum: 0x9e3b1f60,
    EngineNetworkProtocolVersion: 19,
    Guid: createHash('md5').update('match').digest(),
    Major: 4,
    Minor: 26,
    Changelist: 17882303,
    Branch: '++Corvane+Main',
    levels: [
      ['/Game/Maps/Lobby', 0],
      ['/Game/Maps/Corvane_Isle', 5120],
    ],
    Flags: 3,
    GameSpecificData: ['SubGame=Duos', 'Region=EU'],
  };
  return w.replay(
    info,
    w.headerChunk(header),
    w.chunk(w.CHUNK.replayData, w.skipped(900)),
    events(before),
    w.chunk(w.CHUNK.checkpoint, w.skipped(300)),
    w.eventChunk({ Id: 'match_weather', Group: 'weather', data: w.skipped(24) }),
    events(after),
  );
}

const samples = {
  'match.replay': match(),
  'match-encrypted.replay': match(createHash('sha256').update('sample key').digest()),
};

if (require.main === module) {
  for (const [name, bytes] of Object.entries(samples)) {
    fs.writeFileSync(path.join(__dirname, name), bytes);
    console.log(`${name}: ${bytes.length} bytes`);
  }
}

module.exports = { samples };
