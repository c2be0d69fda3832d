'use strict';
// Writes replay files field by field, for the samples and the tests. Every record takes an object whose members
// override the defaults. A Buffer given where a string or a list stands is written as it is, so that a broken
// file is as easy to write as a whole one.

const { createCipheriv } = require('node:crypto');

const REPLAY_MAGIC = 0x1ca2e27f;
const HEADER_MAGIC = 0x2cf5a13d;
const CHUNK = { header: 0, replayData: 1, checkpoint: 2, event: 3, unknown: 0xffffffff };

const number = (size, write) => (value) => {
  const out = Buffer.alloc(size);
  out[write](value);
  return out;
};
const u8 = number(1, 'writeUInt8');
const u16 = number(2, 'writeUInt16LE');
const u32 = number(4, 'writeUInt32LE');
const i32 = number(4, 'writeInt32LE');
const u64 = number(8, 'writeBigUInt64LE');
const f32 = number(4, 'writeFloatLE');

// The parts one after the other; a part may be a list of parts, and false stands for a field that is not there.
const bytes = (...parts) => Buffer.concat(parts.flat(Infinity).filter(Boolean));

// What the reader must skip is never zero, so that a field read from the wrong place shows.
const skipped = (count) => Buffer.alloc(count, 0xaa);

// Engine strings: a count that includes the final zero, negative for UTF-16.
const string8 = (text) => bytes(i32(Buffer.byteLength(text) + 1), Buffer.from(text), u8(0));
const string16 = (text) => bytes(i32(-(text.length + 1)), Buffer.from(text + '\0', 'utf16le'));

const isAscii = (text) => /^[\0-\x7f]*$/.test(text);
const string = (text) => (Buffer.isBuffer(text) ? text : isAscii(text) ? string8(text) : string16(text));
const list = (items, write = string) =>
  Buffer.isBuffer(items) ? items : bytes(i32(items.length), items.map(write));

// The information block: what its FileVersion has of it. keySize: what is said of EncryptionKey's length.
function infoBlock(fields = {}) {
  const f = {
    MagicNumber: REPLAY_MAGIC,
    FileVersion: 6,
    LengthInMS: 0,
    NetworkVersion: 0,
    Changelist: 0,
    FriendlyName: '',
    bIsLive: 0,
    Timestamp: 0n,
    bCompressed: 0,
    bEncrypted: 0,
    EncryptionKey: Buffer.alloc(0),
    ...fields,
  };
  return bytes(
    [f.MagicNumber, f.FileVersion, f.LengthInMS, f.NetworkVersion, f.Changelist].map(u32),
    string(f.FriendlyName),
    u32(f.bIsLive),
    f.FileVersion >= 3 && u64(f.Timestamp),
    f.FileVersion >= 2 && u32(f.bCompressed),
    f.FileVersion >= 6 && [u32(f.bEncrypted), i32(f.keySize ?? f.EncryptionKey.length), f.EncryptionKey],
  );
}

const chunk = (type, payload, SizeInBytes = payload.length) => bytes(u32(type), i32(SizeInBytes), payload);

// The header chunk's payload: what its Version has of it. levels: pairs of name and time.
function header(fields = {}) {
  const f = {
    Magic: HEADER_MAGIC,
    Version: 12,
    NetworkChecksum: 0,
    EngineNetworkProtocolVersion: 0,
    GameNetworkProtocolVersion: 0,
    Guid: Buffer.alloc(16),
    Major: 0,
    Minor: 0,
    Patch: 0,
    Changelist: 0,
    Branch: '',
    levels: [],
    Flags: 0,
    GameSpecificData: [],
    ...fields,
  };
  return bytes(
    [f.Magic, f.Version, f.NetworkChecksum].map(u32),
    [f.EngineNetworkProtocolVersion, f.GameNetworkProtocolVersion].map(u32),
    f.Version >= 12 && f.Guid,
    f.Version >= 11 && [[f.Major, f.Minor, f.Patch].map(u16), skipped(2)],
    u32(f.Changelist),
    f.Version >= 11 && string(f.Branch),
    levelNames(f.Version, f.levels),
    f.Version >= 9 && u32(f.Flags),
    list(f.GameSpecificData),
  );
}

function levelNames(version, levels) {
  if (Buffer.isBuffer(levels)) return levels;
  if (version < 6) return string(levels[0][0]);
  return list(levels, ([name, time]) => bytes(string(name), version > 6 && u32(time)));
}

const headerChunk = (fields) => chunk(CHUNK.header, header(fields));

// An event chunk's payload: its description, then the event's own data.
function event(fields = {}) {
  const f = {
    Id: 'event',
    Group: 'playerElim',
    Metadata: 'none',
    Time1: 0,
    Time2: 0,
    data: Buffer.alloc(0),
    ...fields,
  };
  return bytes(
    [f.Id, f.Group, f.Metadata].map(string),
    [f.Time1, f.Time2].map(u32),
    i32(f.SizeInBytes ?? f.data.length),
    f.data,
  );
}

const eventChunk = (fields) => chunk(CHUNK.event, event(fields));

// A player of an elimination: type 16 carries a name, 17 an account of 16 bytes, the others nothing.
function player({ type, id }) {
  return bytes(u8(type), type === 16 && string(id), type === 17 && [skipped(1), id]);
}

// The data of a "playerElim" event. extra: the bytes that are skipped at its start, extraSize what is said of them.
function playerElim(fields = {}) {
  const f = {
    extra: skipped(4),
    killedAt: [0, 0, 0],
    killerAt: [0, 0, 0],
    killed: { type: 3 },
    killer: { type: 3 },
    damageType: 0,
    knocked: 0,
    ...fields,
  };
  return bytes(
    [i32(f.extraSize ?? f.extra.length), f.extra, skipped(8)],
    [f.killedAt.map(f32), skipped(24), skipped(4)],
    [f.killerAt.map(f32), skipped(12)],
    [player(f.killed), player(f.killer), u8(f.damageType), u32(f.knocked)],
  );
}

// The data of an "AthenaMatchStats" event; counters: the ten numbers after the accuracy.
const matchStats = (accuracy, counters) => bytes(skipped(4), f32(accuracy), counters.map(u32));

// The data of an "AthenaMatchTeamStats" event.
const teamStats = (finalRanking, totalPlayers) => bytes(skipped(4), u32(finalRanking), u32(totalPlayers));

// AES-ECB by the key's size; padded to whole blocks as the game does it, unless the data are whole blocks already
// and padding is refused.
function encrypt(data, key, padding = true) {
  const cipher = createCipheriv(`aes-${key.length * 8}-ecb`, key, null).setAutoPadding(padding);
  return bytes(cipher.update(data), cipher.final());
}

const replay = (info, ...chunks) => bytes(infoBlock(info), chunks);

module.exports = {
  ...{ CHUNK, u8, u16, u32, i32, u64, f32, bytes, skipped, string8, string16, list },
  ...{ infoBlock, chunk, header, headerChunk, event, eventChunk, playerElim, matchStats, teamStats },
  ...{ encrypt, replay },
};
