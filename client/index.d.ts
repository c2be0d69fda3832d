// Types of corvane_napi/client. docs/api.md tells the whole of it.

import { EventEmitter } from 'node:events';
import type { ReplayDocument, ReplayFileMeta, WatcherReplay } from '../index.js';
import type { Elimination, Match, MatchOptions } from './match.js';

export * from './match.js';
export * from './report.js';

export type ReplayErrorCode =
  | 'ERR_UNREADABLE'
  | 'ERR_NOT_A_REPLAY'
  | 'ERR_KEY_REQUIRED'
  | 'ERR_CORRUPT'
  | 'ERR_OUT_OF_MEMORY'
  | 'ERR_DOCUMENT_TOO_LARGE'
  | 'ERR_TIMEOUT'
  | 'ERR_ABORTED'
  | 'ERR_CHILD_START'
  | 'ERR_CHILD_LOST'
  | 'ERR_CORVANE_ADDON'
  | 'ERR_NO_DEMO_FOLDER'
  | 'ERR_INVALID_ARGUMENT';

/** Every failure of the client. */
export class ReplayError extends Error {
  private constructor();
  /** `'AbortError'` for `ERR_ABORTED`. */
  readonly name: 'ReplayError' | 'AbortError';
  readonly code: ReplayErrorCode;
  /** What the native side, the system or the child process said. */
  readonly reason: string;
  /** What to do about it. */
  readonly hint: string;
  /** The file as it was named, or the missing folder; absent when the error is about none. */
  readonly path?: string;
  /** For `JSON.stringify` and for posting to another thread: an `Error` loses its code there. */
  toJSON(): ReplayErrorFields;
}

export interface ReplayErrorFields {
  name: string;
  code: ReplayErrorCode;
  message: string;
  reason: string;
  hint: string;
  path?: string;
}

/** The path of a replay, or its `file:` URL. */
export type ReplayPath = string | URL;

/** 16, 24 or 32 bytes. Not used on a replay that carries a key of its own. */
export type ReplayKey = ArrayBufferLike | ArrayBufferView;

export interface LimitOptions {
  key?: ReplayKey;
  signal?: AbortSignal;
  /** A larger document is refused, in bytes of JSON. Default: 64 MiB, or less if the heap of the application is small. */
  maxDocumentBytes?: number;
}

export interface WatchOptions extends LimitOptions {
  /** Watched with all folders in it. Default: the game's demo folder. A folder that is not there is waited for. */
  folder?: ReplayPath;
}

export interface WatchMatchesOptions extends WatchOptions, MatchOptions {
  /** A match has ended when its file has not changed for this many milliseconds. Default: 60,000. */
  endAfterMs?: number;
}

export interface ReadOptions extends LimitOptions {
  /** Milliseconds until the result is there; waiting for other files does not count. */
  timeout?: number;
}

export interface ReadManyOptions extends ReadOptions {
  /** How many files are read at once: 1 to 64. Default: that of the client. */
  concurrency?: number;
}

export interface ReadMatchOptions extends ReadOptions, MatchOptions {
  /** Gives what is whole of a replay that is broken or cut short, instead of an error. Default: false. */
  salvage?: boolean;
}

export interface ReadMatchesOptions extends ReadMatchOptions, ReadManyOptions {}

/** A document of the client: a file without the information block is an error there. */
export interface ReadDocument extends ReplayDocument {
  ReplayFileMeta: ReplayFileMeta;
}

export type ReadResult<Path extends ReplayPath = ReplayPath> =
  | { path: Path; document: ReadDocument; error?: never }
  | { path: Path; document?: never; error: ReplayError };

export type ReadTextResult<Path extends ReplayPath = ReplayPath> =
  | { path: Path; text: string; error?: never }
  | { path: Path; text?: never; error: ReplayError };

export type ReadMatchResult<Path extends ReplayPath = ReplayPath> =
  | { path: Path; match: Match; error?: never }
  | { path: Path; match?: never; error: ReplayError };

/** The paths of many replays. A source that gives them late does not hold back the results of those that it has given. */
export type ReplayPaths<Path extends ReplayPath = ReplayPath> =
  | (Iterable<Path> & object)
  | AsyncIterable<Path>;

/** `path`: the file; absent for a failure that concerns no file. `text`: the document as JSON, with all digits. */
export type WatchResult =
  | { path: string; document: WatcherReplay; text: string; error?: never }
  | { path?: string; document?: never; text?: never; error: ReplayError };

/**
 * 'start': the replay is told for the first time. 'events': something was added to it. 'end': the game has closed the
 * file, or has not written to it for `endAfterMs`. `added`: those of the match's eliminations that are new.
 */
export type MatchUpdate =
  | { path: string; type: 'start' | 'events' | 'end'; match: Match; added: Elimination[]; error?: never }
  | { path?: string; type: 'error'; match?: never; added?: never; error: ReplayError };

/** Reads one replay in a child process. */
export function readReplay(path: ReplayPath, options?: ReadOptions): Promise<ReadDocument>;

/** The same as JSON text, in which 64-bit numbers have all their digits. */
export function readReplayText(path: ReplayPath, options?: ReadOptions): Promise<string>;

/**
 * Reads many replays with child processes of its own, which end with the iteration, and yields a result for each path, in
 * order: a file that fails does not end the run.
 */
export function readReplays<Path extends ReplayPath>(
  paths: ReplayPaths<Path>,
  options?: ReadManyOptions,
): AsyncGenerator<ReadResult<Path>, void, undefined>;

/** The same with JSON text. */
export function readReplayTexts<Path extends ReplayPath>(
  paths: ReplayPaths<Path>,
  options?: ReadManyOptions,
): AsyncGenerator<ReadTextResult<Path>, void, undefined>;

/** Reads one replay in a child process, as a match. */
export function readMatch(path: ReplayPath, options?: ReadMatchOptions): Promise<Match>;

/** Reads many replays as matches, like `readReplays`. */
export function readMatches<Path extends ReplayPath>(
  paths: ReplayPaths<Path>,
  options?: ReadMatchesOptions,
): AsyncGenerator<ReadMatchResult<Path>, void, undefined>;

/**
 * Ends the child processes and the watches of the module's functions; reads under way reject with `ERR_ABORTED`. Resolves
 * when no child process is left. Called again, the functions start new ones.
 */
export function closeClient(): Promise<void>;

/** Watches a folder in a child process, which is started again if it ends. */
export function watchReplays(options?: WatchOptions): ReplayWatch;

/** The matches of a folder while they are recorded. Watching begins with the first result that is asked for. */
export function watchMatches(options?: WatchMatchesOptions): AsyncGenerator<MatchUpdate, void, undefined>;

export interface ReplayWatchEvents {
  /** A replay was made or changed. */
  replay: [document: WatcherReplay, path: string, text: string];
  /** A replay could not be read, or the folder is missing; watching goes on, unless 'close' follows. */
  error: [error: ReplayError];
  /** A child process watches from now on: after the start, and after each restart. */
  watching: [];
  close: [];
}

/**
 * Iterating yields what the events 'replay' and 'error' tell, from the moment the iterator is made; leaving the loop
 * closes the watch. A failure for which there is neither an iterator nor a listener becomes a process warning.
 */
export interface ReplayWatch extends EventEmitter, AsyncIterable<WatchResult> {
  on<Name extends keyof ReplayWatchEvents>(
    name: Name,
    listener: (...args: ReplayWatchEvents[Name]) => void,
  ): this;
  once<Name extends keyof ReplayWatchEvents>(
    name: Name,
    listener: (...args: ReplayWatchEvents[Name]) => void,
  ): this;
  off<Name extends keyof ReplayWatchEvents>(
    name: Name,
    listener: (...args: ReplayWatchEvents[Name]) => void,
  ): this;
  [Symbol.asyncIterator](): AsyncIterableIterator<WatchResult>;
  /** Stops watching and ends iterations. Resolves when the child process has ended. */
  close(): Promise<void>;
}

export interface ReplayClientOptions {
  /** How many replays are read at once: 1 to 64. Default: the number of processors. */
  concurrency?: number;
  /** The program of the child processes. Default: `process.execPath`, run with `ELECTRON_RUN_AS_NODE`. */
  execPath?: string;
}

/** Child processes of its own. The functions of the module belong to one client that is made of the defaults. */
export class ReplayClient {
  constructor(options?: ReplayClientOptions);
  readReplay: typeof readReplay;
  readReplayText: typeof readReplayText;
  readMatch: typeof readMatch;
  readMatches: typeof readMatches;
  readReplays: typeof readReplays;
  readReplayTexts: typeof readReplayTexts;
  watchMatches: typeof watchMatches;
  watchReplays: typeof watchReplays;
  /** Ends what is under way with `ERR_ABORTED` and closes the watches. Resolves when no child process is left. */
  close(): Promise<void>;
  [Symbol.asyncDispose](): Promise<void>;
}
