'use strict';
// Replays for the benchmarks, of any size: the given number of data chunks of equal size, with the
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

// The least that a file needs for an event: 46 bytes for an elimination that becomes 290 bytes of text, 35 for one that the
// document does not show.
const smallest = (Metadata, data) => w.eventChunk({ Id: '', Group: '', Metadata, data });
const SMALLEST = {
  elimination: smallest('playerElim', Buffer.alloc(1)),
  statistics: smallest('AthenaMatchStats', w.matchStats(0, new Array(10).fill(0))),
  unknown: smallest('', Buffer.alloc(0)),
};

function beginning(encrypted, FriendlyName) {
  const info = {
    LengthInMS: 1263100,
    NetworkVersion: 0x5d0a3c17,
    Changelist: 17882303,
    FriendlyName,
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
    Guid: createHash('md5').update(FriendlyName).digest(),
  };
  return w.replay(info, w.headerChunk(header));
}

// Writes the file unless it is there; a gigabyte takes a while. of: events of that kind in SMALLEST, as many as make up the
// bytes. isSparse: without the network data's bytes on the disk.
function writeReplay(path, { bytes, chunks, events, encrypted = false, name = 'Final match', of, isSparse }) {
  if (fs.existsSync(path)) return;
  const eventChunks = of
    ? new Array(Math.floor(bytes / SMALLEST[of].length)).fill(SMALLEST[of])
    : Array.from({ length: events }, (_, i) => eventChunk(i, events, encrypted));
  const start = beginning(encrypted, name);
  const used = start.length + eventChunks.reduce((sum, { length }) => sum + length, 0);
  const dataBytes = Math.max(0, Math.floor((bytes - used) / chunks) - 8);
  const head = w.chunk(w.CHUNK.replayData, Buffer.alloc(0), dataBytes);
  const data = Buffer.alloc(isSparse ? 0 : dataBytes, 0x5a);
  const file = fs.openSync(`${path}.part`, 'w');
  let at = 0;
  const write = (part) => (at += fs.writeSync(file, part, 0, part.length, at));
  write(start);
  for (let i = 0, next = 0; i < chunks; ++i) {
    write(head);
    write(data);
    at += dataBytes - data.length;
    const end = Math.round((eventChunks.length * (i + 1)) / chunks);
    if (end > next) write(Buffer.concat(eventChunks.slice(next, end)));
    next = end;
  }
  fs.ftruncateSync(file, at);
  fs.closeSync(file);
  fs.renameSync(`${path}.part`, path);
}

module.exports = { writeReplay };
