'use strict';
// The matches of a folder while they are recorded: what a watch tells of each file, as a match that grows.

const { setTimeout: sleep } = require('node:timers/promises');
const { matchOf } = require('./match.js');

// The game writes to a replay every few seconds for as long as it records.
const QUIET_MS = 60_000;

// A file may be written to again after its match has ended. No more of them are remembered.
const ENDED_KEPT = 100;

// One replay, under whatever name. Its document is what the watch has told of it so far, put together.
class Recording {
  #known = 0; // events that have been told
  #text; // of the latest document: it has all digits of the time
  #isClosed = false;

  isOver = false;
  hasClosed = false; // whether the latest result tells that the game has closed the file

  get isLive() {
    return Boolean(this.document.ReplayFileMeta.bIsLive);
  }

  get recordedAt() {
    return this.document.ReplayFileMeta.Timestamp;
  }

  // The events of a document without "Creation" follow those that are there; with it, they are all.
  take(path, document, text) {
    const wasLive = this.document !== undefined && this.isLive;
    const events = document.Creation ? [] : (this.document.events ?? []);
    this.document = { ...this.document, ...document, events: [...events, ...(document.events ?? [])] };
    this.path = path;
    this.#text = text;
    this.hasClosed = wasLive && !this.isLive;
    this.#isClosed = !this.isLive && (wasLive || this.#isClosed);
  }

  // The match as it is now, and those of its eliminations that have not been told.
  tell(type, damageNames) {
    const { events = [] } = this.document;
    const match = matchOf(this.document, { path: this.path, text: this.#text, damageNames });
    if (this.#isClosed) match.state = 'complete';
    const news = new Set(events.slice(this.#known));
    const ordered = events.filter(({ evtName }) => evtName === 'playerElim');
    ordered.sort((a, b) => a.eventMeta.time1 - b.eventMeta.time1);
    const added = match.eliminations.filter((_, i) => news.has(ordered[i]));
    this.#known = events.length;
    return { path: this.path, type, match, added };
  }

  get hasNews() {
    return (this.document.events?.length ?? 0) !== this.#known;
  }
}

class Recordings {
  #all = new Map(); // path -> Recording
  #quietAt = new Map(); // Recording that has not ended -> when it counts as ended, oldest first
  #options;

  constructor(options) {
    this.#options = options;
  }

  // Yields the updates that one result of the watch means.
  *take({ path, document, text, error }) {
    if (error) return yield { path: path ?? error.path, type: 'error', error };
    // A file without information so far need not be a replay.
    if (document.ReplayFileMeta === undefined) return;
    const known = this.#find(path, document);
    const recording = known ?? (document.Creation && new Recording());
    if (recording === undefined) return;
    recording.take(path, document, text);
    this.#all.set(path, recording);
    // What follows an end is a new beginning only if it tells something.
    if (!recording.isOver || recording.hasNews || recording.isLive) this.#wake(recording);
    if (known === undefined) yield this.#tell(recording, 'start');
    else if (recording.hasNews) yield this.#tell(recording, 'events');
    if (recording.hasClosed) yield this.#end(recording);
  }

  // Milliseconds until a match ends for lack of changes; undefined if none can.
  get patience() {
    const [next] = this.#quietAt.values();
    return next === undefined ? undefined : Math.max(next - performance.now(), 0);
  }

  *endQuiet() {
    for (const [recording, at] of this.#quietAt) {
      if (at > performance.now()) return;
      yield this.#end(recording);
    }
  }

  // A replay that is not told from its start is already known, perhaps under another name.
  #find(path, { Creation, ReplayFileMeta: { Timestamp } }) {
    const known = this.#all.get(path);
    if (known?.recordedAt === Timestamp) return known;
    const moved = Creation
      ? undefined
      : [...this.#all.values()].find((each) => each.recordedAt === Timestamp);
    if (moved) this.#all.delete(moved.path);
    return moved;
  }

  #wake(recording) {
    recording.isOver = false;
    this.#quietAt.delete(recording);
    this.#quietAt.set(recording, performance.now() + this.#options.endAfterMs);
  }

  #end(recording) {
    recording.isOver = true;
    this.#quietAt.delete(recording);
    this.#forgetOldest();
    return this.#tell(recording, 'end');
  }

  #forgetOldest() {
    const ended = [...this.#all].filter(([, { isOver }]) => isOver);
    for (const [path] of ended.slice(0, -ENDED_KEPT)) this.#all.delete(path);
  }

  #tell(recording, type) {
    return recording.tell(type, this.#options.damageNames);
  }
}

// The promise's value, or undefined after this many milliseconds.
async function within(promise, ms) {
  if (ms === undefined) return promise;
  const timer = new AbortController();
  const timeout = sleep(ms, undefined, { signal: timer.signal }).catch(() => {});
  return Promise.race([promise, timeout]).finally(() => timer.abort());
}

// watch(): starts a ReplayWatch, an async iterable of { path, document, text } and { path, error }. Yields { path, type, match,
// added } for each replay: 'start' when it is first told, 'events' for each addition, 'end'; and { path, type: 'error', error }.
async function* watchMatches(watch, { endAfterMs = QUIET_MS, damageNames } = {}) {
  const recordings = new Recordings({ endAfterMs, damageNames });
  const results = watch();
  const iterator = results[Symbol.asyncIterator]();
  try {
    for (let next = iterator.next(); ; ) {
      const result = await within(next, recordings.patience);
      if (result?.done) return;
      if (result === undefined) {
        yield* recordings.endQuiet();
      } else {
        next = iterator.next();
        yield* recordings.take(result.value);
      }
    }
  } finally {
    // Not iterator.return(), which would wait for the result that was already asked for.
    await results.close();
  }
}

module.exports = { watchMatches };
