// Types of the three functions and of the documents that they hand over as JSON text. docs/document.md describes every
// field: unit, origin, and when it is absent.

/**
 * Reads one replay file on the calling thread and returns its document as JSON text, or `''` when the file cannot be
 * opened or read.
 *
 * Each byte of the text from 0x80 stands as one unit U+FF80 to U+FFFF. `Buffer.from(text, 'latin1').toString('utf8')`
 * gives the characters; parse that as a {@link ReplayDocument}.
 *
 * Some broken files end the process; `corvane_napi/client` reads in a child process.
 *
 * @throws {TypeError} unless given exactly one argument, a string.
 */
export function ReadCorvaneDemo(replayFilePath: string): string;

/**
 * Watches the game's demo folder and calls `jsCallbackFn` with the document of every replay that changes, as JSON text
 * in plain characters: parse it as a {@link WatcherPayload}.
 *
 * A second start replaces the first. The watcher keeps the process alive until it is stopped; a broken replay ends the
 * process.
 *
 * @param encKey The AES key for replays that carry none: 16, 24 or 32 bytes, or an empty buffer. Not a typed array.
 * @param interval Accepted and not used: the folder is polled every 500 ms.
 * @throws {TypeError} for other arguments.
 */
export function StartCorvaneWatcher(
  jsCallbackFn: (payload: string) => void,
  encKey: ArrayBuffer,
  interval?: number,
): void;

/** Stops the watcher; does nothing when none runs. */
export function StopCorvaneWatcher(): void;

/** A float of the replay; `null` where the replay holds no number (NaN, an infinity). */
export type ReplayFloat = number | null;

/** What one replay comes to, as `ReadCorvaneDemo` returns it. */
export interface ReplayDocument {
  Creation: Creation;
  /** Absent when the file is no replay (another magic number). */
  ReplayFileMeta?: ReplayFileMeta;
  /** Absent when the replay has no header chunk, or one of an unknown version. */
  header?: ReplayHeader;
  /** In file order. Absent when the replay has no event of the three known kinds. */
  events?: ReplayEvent[];
}

export interface Creation {
  /** The path as it was given. */
  fileName: string;
  /** `Timestamp` of the replay's `ReplayFileMeta`, 0 without one. */
  timestamp: number;
}

/** The file's information block. */
export interface ReplayFileMeta {
  MagicNumber: number;
  FileVersion: number;
  /** The replay's length in milliseconds. The name is spelt so. */
  LegthInMs: number;
  NetworkVersion: number;
  Changelist: number;
  FriendlyName: string;
  /** 64 bits as the game wrote them: `JSON.parse` rounds what is above 2^53. */
  Timestamp: number;
  /** The size of the file in bytes. */
  TotalDataSizeInBytes: number;
  /** The game was still recording. */
  bIsLive: boolean;
  /** Written before the file is checked: says nothing. */
  bIsValid: false;
  bCompressed: boolean;
  bEncrypted: boolean;
  /** The key in effect, each byte as two hexadecimal digits and a blank; `''` without one. */
  EncryptionKey: string;
}

/** The network demo header. */
export interface ReplayHeader {
  magic: number;
  NetworkVersion: number;
  NetworkChecksum: number;
  EngineNetworkVersion: number;
  GameNetworkProtocolVersion: number;
  /** 32 hexadecimal digits; zeros below `NetworkVersion` 12. */
  guid: string;
  EngineVersion: EngineVersion;
  levels: string[];
  GameSpecificData: string[];
}

export interface EngineVersion {
  branch: string;
  major: number;
  minor: number;
  patch: number;
  changelist: number;
}

/** One event; `evtName` tells which. */
export type ReplayEvent = EliminationEvent | MatchStatsEvent | TeamStatsEvent;

export interface EventMeta {
  /** Milliseconds into the replay. */
  time1: number;
  /** Milliseconds into the replay. */
  time2: number;
}

/** A player was knocked down or eliminated. */
export type EliminationEvent = EliminationFields & KilledId & KillerId;

/** What every elimination has, whoever took part in it. */
export interface EliminationFields {
  evtName: 'playerElim';
  eventMeta: EventMeta;
  killedX: ReplayFloat;
  killedY: ReplayFloat;
  killedZ: ReplayFloat;
  killerX: ReplayFloat;
  killerY: ReplayFloat;
  killerZ: ReplayFloat;
  /** A byte. */
  damageType: number;
  /** True for a knock-down, false for an elimination. */
  knocked: boolean;
}

/** Who was eliminated: an account (32 hexadecimal digits), or whoever has none (a bot's name, `Unnamed Bot`, `''`). */
export type KilledId = { killed: string; killedBot?: never } | { killed?: never; killedBot: string };

/** Who eliminated, likewise. */
export type KillerId = { killer: string; killerBot?: never } | { killer?: never; killerBot: string };

/** The local player's figures at the end of the match. */
export interface MatchStatsEvent {
  evtName: 'AthenaMatchStats';
  eventMeta: EventMeta;
  accuracy: ReplayFloat;
  assists: number;
  kills: number;
  weapon_damage: number;
  other_damage: number;
  revives: number;
  damage_taken: number;
  damage_to_structures: number;
  materials_gathered: number;
  materials_used: number;
  total_traveled: number;
}

/** The local team's place at the end of the match. */
export interface TeamStatsEvent {
  evtName: 'AthenaMatchTeamStats';
  eventMeta: EventMeta;
  finalRanking: number;
  totalPlayers: number;
}

/** What the watcher's callback is given, after `JSON.parse`. */
export type WatcherPayload = WatcherReplay | WatcherFolderError;

/**
 * A replay changed. The first payload of a file holds all that was in it and its `Creation`; later ones hold what the
 * game has added since, so `header` and earlier events are not repeated.
 */
export interface WatcherReplay extends Partial<ReplayDocument> {
  /** The replay carries its own key. */
  PlayerStateEncryptionKey?: 1;
  /** The payload holds nothing else: the game writes the file, but there is nothing to read in it. */
  GameAlive?: 1;
  err?: never;
}

/** There is no folder to watch; sent once, and nothing is watched. */
export interface WatcherFolderError {
  err: string;
}
