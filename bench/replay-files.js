'use strict';
// Replays of a wanted size to be read by the benchmarks: as many data chunks of equal size as asked for, with the
// events spread evenly among them.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const w = require('../tests/support/replay-writer.js');

const key = createHash('sha256').update('benchmark').digest();
const account = (i) => ({ type: 17, id: createHash('md5').update(`player ${i}`).digest() });

// Every eighth participant is a named bot, every eighth an unnamed one.
function participant(i) {
  if (i % 8 === 0) return { type: 16, id: `Bot_${i}` };
  return i % 8 === 1 ? { type: 3 } : account(i % 100);
}

function elimination(i) {
  const at = (step) => [step * 1.37 - 9000, 12000 - step * 3.11, (step % 512) + 0.25];
  return w.playerElim({
    killed: participant(i * 3 + 1),
    killedAt: at(i),
    killer: participant(i * 5 + 2),
    killerAt: at(i + 40),
    damageType: i % 16,
    knocked: i % 3 === 0 ? 1 : 0,
  });
}

function eventChunk(i, count, encrypted) {
  const last = [
    ['AthenaMatchStats', w.matchStats(0.3125, [2, 3, 847, 35, 1, 290, 4120, 655, 410, 523817])],
    ['AthenaMatchTeamStats', w.teamStats(1, 98)],
  ];
  const [Metadata, data] = last[i - (count - 2)] ?? ['elimination', elimination(i)];
  const Group = Metadata === 'elimination' ? 'playerElim' : 'MatchSummary';
  const times = { Time1: i * 500, Time2: i * 500 };
  return w.eventChunk({
    ...{ Id: `match_${i}`, Group, Metadata, ...times },
    data: encrypted ? w.encrypt(data, key) : data,
  });
}

function beginning(encrypted) {
  const info = {
    LengthInMS: 1263100,
    NetworkVersion: 0x5d0a3c17,
    Changelist: 17882303,
    FriendlyName: 'Final match',
    Timestamp: 637489102335170000n,
    bEncrypted: Number(encrypted),
    EncryptionKey: encrypted ? key : Buffer.alloc(32),
  };
  const header = {
    Version: 14,
    EngineNetworkProtocolVersion: 19,
    Major: 4,
    Minor: 26,
    Branch: '++Corvane+Main',
    levels: [['/Game/Maps/Corvane_Isle', 5120]],
    GameSpecificData: ['SubGame=Duos', 'Region=EU'],
  };
  return w.replay(info, w.headerChunk(header));
}

// Writes the file unless it is there; a gigabyte takes a while.
function writeReplay(path, { bytes, chunks, events, encrypted = false }) {
  if (fs.existsSync(path)) return;
  const eventChunks = Array.from({ length: events }, (_, i) => eventChunk(i, events, encrypted));
  const start = beginning(encrypted);
  const used = start.length + eventChunks.reduce((sum, { length }) => sum + length, 0);
  const data = w.chunk(w.CHUNK.replayData, Buffer.alloc(Math.max(0, (bytes - used) / chunks - 8), 0x5a));
  const file = fs.openSync(`${path}.part`, 'w');
  fs.writeSync(file, start);
  for (let i = 0, next = 0; i < chunks; ++i) {
    fs.writeSync(file, data);
    const end = Math.round((eventChunks.length * (i + 1)) / chunks);
    if (end > next) fs.writeSync(file, Buffer.concat(eventChunks.slice(next, end)));
    next = end;
  }
  fs.closeSync(file);
  fs.renameSync(`${path}.part`, path);
}

module.exports = { writeReplay };
