'use strict';
// The reader that somebody would write in JavaScript instead of using the add-on: the whole file in a Buffer, fields
// taken from it one after the other, node:crypto, JSON.stringify. It is only as careful as complete files need.

const { createDecipheriv } = require('node:crypto');
const fs = require('node:fs');

class Cursor {
  constructor(bytes, at = 0) {
    this.bytes = bytes;
    this.at = at;
  }
  skip(count) {
    this.at += count;
  }
  take(count) {
    return this.bytes.subarray(this.at, (this.at += count));
  }
  u8() {
    return this.bytes[this.at++];
  }
  u16() {
    return this.bytes.readUInt16LE((this.at += 2) - 2);
  }
  u32() {
    return this.bytes.readUInt32LE((this.at += 4) - 4);
  }
  i32() {
    return this.bytes.readInt32LE((this.at += 4) - 4);
  }
  u64() {
    return Number(this.bytes.readBigUInt64LE((this.at += 8) - 8));
  }
  f32() {
    return this.bytes.readFloatLE((this.at += 4) - 4);
  }
  string() {
    const count = this.i32();
    const text =
      count < 0
        ? this.take(-2 * count).toString('utf16le')
        : this.take(this.bytes.indexOf(0, this.at) - this.at).toString('utf8');
    if (count >= 0) this.skip(1);
    return text.replace(/[ \t-\r]/g, '');
  }
  list(read) {
    return Array.from({ length: this.i32() }, read);
  }
}

function readMeta(cursor, size) {
  const [MagicNumber, FileVersion, LegthInMs, NetworkVersion, Changelist] = Array.from({ length: 5 }, () =>
    cursor.u32(),
  );
  const meta = { MagicNumber, FileVersion, LegthInMs, NetworkVersion, Changelist };
  meta.FriendlyName = cursor.string();
  meta.bIsLive = cursor.i32() !== 0;
  meta.Timestamp = cursor.u64();
  meta.bCompressed = cursor.i32() !== 0;
  meta.bEncrypted = cursor.i32() !== 0;
  const key = cursor.take(cursor.i32());
  const used = key.some((byte) => byte !== 0) ? [...key] : [];
  meta.EncryptionKey = used.map((byte) => byte.toString(16).padStart(2, '0') + ' ').join('');
  return [{ ...meta, TotalDataSizeInBytes: size, bIsValid: false }, key];
}

function readHeader(cursor) {
  const [magic, NetworkVersion, NetworkChecksum, EngineNetworkVersion, GameNetworkProtocolVersion] =
    Array.from({ length: 5 }, () => cursor.u32());
  const guid = cursor.take(16).toString('hex');
  const [major, minor, patch] = [cursor.u16(), cursor.u16(), cursor.u16()];
  cursor.skip(2);
  const changelist = cursor.u32();
  const EngineVersion = { branch: cursor.string(), major, minor, patch, changelist };
  const levels = cursor.list(() => {
    const level = cursor.string();
    cursor.skip(4);
    return level;
  });
  cursor.skip(4);
  const GameSpecificData = cursor.list(() => cursor.string());
  const numbers = {
    magic,
    NetworkVersion,
    NetworkChecksum,
    EngineNetworkVersion,
    GameNetworkProtocolVersion,
  };
  return { ...numbers, guid, EngineVersion, levels, GameSpecificData };
}

const COUNTERS = [
  ...['assists', 'kills', 'weapon_damage', 'other_damage', 'revives', 'damage_taken'],
  ...['damage_to_structures', 'materials_gathered', 'materials_used', 'total_traveled'],
];

function readMatchStats(cursor) {
  cursor.skip(4);
  const event = { evtName: 'AthenaMatchStats', accuracy: cursor.f32() };
  for (const name of COUNTERS) event[name] = cursor.u32();
  return event;
}

function readTeamStats(cursor) {
  cursor.skip(4);
  return { evtName: 'AthenaMatchTeamStats', finalRanking: cursor.u32(), totalPlayers: cursor.u32() };
}

function readPlayer(cursor, event, role) {
  const type = cursor.u8();
  if (type === 17) {
    cursor.skip(1);
    event[role] = cursor.take(16).toString('hex');
  } else {
    event[role + 'Bot'] = type === 3 ? 'Unnamed Bot' : type === 16 ? cursor.string() : '';
  }
}

function readElimination(cursor) {
  cursor.skip(cursor.i32() + 8);
  const [killedX, killedY, killedZ] = [cursor.f32(), cursor.f32(), cursor.f32()];
  cursor.skip(28);
  const [killerX, killerY, killerZ] = [cursor.f32(), cursor.f32(), cursor.f32()];
  cursor.skip(12);
  const event = { evtName: 'playerElim', killedX, killedY, killedZ, killerX, killerY, killerZ };
  readPlayer(cursor, event, 'killed');
  readPlayer(cursor, event, 'killer');
  event.damageType = cursor.u8();
  event.knocked = cursor.u32() === 1;
  return event;
}

const HANDLERS = {
  AthenaMatchStats: readMatchStats,
  AthenaMatchTeamStats: readTeamStats,
  playerElim: readElimination,
};

function readEvent(cursor, key) {
  cursor.string();
  const [group, metadata] = [cursor.string(), cursor.string()];
  const eventMeta = { time1: cursor.u32(), time2: cursor.u32() };
  let data = cursor.take(cursor.i32());
  const read = HANDLERS[metadata] ?? HANDLERS[group];
  if (!read) return undefined;
  if (key) {
    const decipher = createDecipheriv(`aes-${key.length * 8}-ecb`, key, null).setAutoPadding(false);
    data = Buffer.concat([decipher.update(data), decipher.final()]);
  }
  return { ...read(new Cursor(data)), eventMeta };
}

// The document of a replay as JSON text.
function readReplay(fileName) {
  const bytes = fs.readFileSync(fileName);
  const cursor = new Cursor(bytes);
  const [ReplayFileMeta, key] = readMeta(cursor, bytes.length);
  const document = { ReplayFileMeta, Creation: { timestamp: ReplayFileMeta.Timestamp, fileName } };
  const events = [];
  while (cursor.at < bytes.length) {
    const [type, size] = [cursor.u32(), cursor.i32()];
    const payload = new Cursor(bytes, cursor.at);
    if (type === 0) document.header = readHeader(payload);
    const event = type === 3 && readEvent(payload, ReplayFileMeta.bEncrypted ? key : null);
    if (event) events.push(event);
    cursor.skip(size);
  }
  if (events.length > 0) document.events = events;
  return JSON.stringify(document, null, 1);
}

module.exports = { readReplay };
