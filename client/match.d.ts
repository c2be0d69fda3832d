// Types of the match model. docs/model.md describes every field: unit, origin, and when it is null.

import type { ReplayDocument } from '../index.js';

/** A match as one replay tells it. What the replay does not say is `null`. `JSON.stringify` leaves `document` out. */
export interface Match {
  path: string | null;
  /** 32 hexadecimal digits: the header's GUID; where it has none, a hash of what the file holds. */
  id: string;
  /** The replay's name. */
  name: string | null;
  /** The game writes no time zone: its clock's time stands here as UTC. */
  recordedAt: Date | null;
  /** The same in units of 100 ns since the first day of the year 1; `null` if the document has lost digits of it. */
  recordedTicks: bigint | null;
  durationMs: number | null;
  /** The last part of the last level's name. */
  map: string | null;
  /** What the game added to the header, as `Key=Value`; a text without `=` is a key with the value `null`. */
  settings: Record<string, string | null>;
  /** `null` without a header. */
  engine: MatchEngine | null;
  /** `null` where nothing is known of the reading. A watch says `'complete'` once it has seen the game close the file. */
  state: MatchState | null;
  /** What is missing or odd, one English sentence each. */
  warnings: string[];
  /** Events that were passed over; `null` where nothing is known of the reading. */
  skipped: SkippedEvents[] | null;
  /** Where the first chunk begins that the file does not hold as a whole. */
  cutAtByte: number | null;
  /** The size of the file. */
  fileBytes: number | null;
  /** In the order of time. */
  eliminations: Elimination[];
  /** Everyone whom an elimination mentions, in the order in which the file first does. */
  players: PlayerRecord[];
  /** The recording player's figures at the end. Which of the players that is, the replay does not say. */
  own: OwnStatistics | null;
  /** The recording player's team. */
  team: TeamResult | null;
  document: ReplayDocument;
}

/** 'recording': the game had not finished the file. 'truncated': the file ends too early, or is broken. */
export type MatchState = 'complete' | 'recording' | 'truncated';

export interface MatchEngine {
  /** major.minor.patch */
  version: string | null;
  branch: string | null;
  changelist: number | null;
}

export interface SkippedEvents {
  /** The kind of the events; of an unknown one `group/metadata`. */
  name: string;
  count: number;
  reason: 'undecryptable' | 'tooShort' | 'broken' | 'unknown';
}

/**
 * The same object wherever the match mentions the same player. Each mention of an unnamed bot or of an unknown player is
 * an object of its own.
 */
export type Player = AccountPlayer | BotPlayer | UnknownPlayer;

export interface AccountPlayer {
  kind: 'account';
  /** 32 hexadecimal digits. */
  id: string;
  name?: never;
}

export interface BotPlayer {
  kind: 'bot';
  name: string | null;
  id?: never;
}

export interface UnknownPlayer {
  kind: 'unknown';
  id?: never;
  name?: never;
}

/** Metres, in the game's axes. */
export interface Point {
  x: number;
  y: number;
  z: number;
}

export interface Elimination {
  /** Milliseconds into the replay. */
  timeMs: number;
  kind: 'knock' | 'elimination';
  attacker: Player;
  victim: Player;
  attackerAt: Point | null;
  victimAt: Point | null;
  /** In a straight line. */
  distanceM: number | null;
  /** The game's number for it. */
  damageType: number;
  /** From `damageNames`. */
  damageName: string | null;
}

/** What a player did to others, and how the player went out. */
export interface PlayerRecord {
  player: Player;
  /** Others eliminated. */
  eliminations: number;
  /** Others knocked down. */
  knocks: number;
  timesKnocked: number;
  /** Times eliminated: more than one after coming back. */
  deaths: number;
  /** Who eliminated this player last; `null` if nobody did. */
  endedBy: Player | null;
  endedAtMs: number | null;
  /** `null` if nobody ended this player, or where the two cannot be told apart. */
  selfInflicted: boolean | null;
}

export interface OwnStatistics {
  timeMs: number;
  /** The share of shots that hit, 0 to 1. */
  accuracy: number | null;
  eliminations: number;
  assists: number;
  revives: number;
  weaponDamage: number;
  otherDamage: number;
  damageTaken: number;
  damageToStructures: number;
  materialsGathered: number;
  materialsUsed: number;
  traveledM: number;
}

export interface TeamResult {
  place: number | null;
  /** The number of players. */
  of: number | null;
}

/** What the reading of a replay knows beside its document. */
export interface ReadingFacts {
  end: 'complete' | 'cut' | 'live' | 'failed';
  fileBytes: number;
  /** Where the first chunk begins that the file does not hold as a whole. */
  cutAt: number | null;
  failure: { code: string; reason: string } | null;
  skipped: SkippedEvents[];
  warnings: string[];
  /** Texts as the file has them: with their blanks and final zeros. */
  texts: {
    FriendlyName: string;
    branch: string;
    levels: string[];
    GameSpecificData: string[];
    names: [eventIndex: number, field: 'killedBot' | 'killerBot', text: string][];
  };
}

export interface MatchOptions {
  /** Names of damage types by their numbers. */
  damageNames?: Record<number, string>;
}

export interface MatchOfOptions extends MatchOptions {
  /** The replay's path. Default: as the document has it. */
  path?: string;
  /** The document's JSON text: it has all digits of the time. */
  text?: string;
  facts?: ReadingFacts;
}

/** The match that a document tells. */
export function matchOf(document: ReplayDocument, options?: MatchOfOptions): Match;
