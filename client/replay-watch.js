'use strict';
// The demo folder, watched from a child process that is started again whenever a replay has ended it.

const { EventEmitter } = require('node:events');
const fs = require('node:fs');
const { Readable } = require('node:stream');
const { ChildProcess } = require('./child-process.js');
const { demoFolder } = require('./demo-folder.js');
const { ReplayError } = require('./replay-error.js');

// The pause before a child is started again doubles until a child delivers something.
const FIRST_PAUSE_MS = 500;
const LONGEST_PAUSE_MS = 30_000;

// A demo folder that is missing is looked for by the child that runs, which costs next to nothing.
const FOLDER_PAUSE_MS = 1000;

// What the native watcher writes to standard error before a replay ends its process.
const ENDED_BY = /\[ orvel::corvane::WatchSession::OnReport \] Ending the process over (.*)$/m;

// Tells whether a file has changed. A name of other programs' making may be one that the system refuses.
function stamp(path) {
  try {
    const { mtimeMs, size } = fs.statSync(path);
    return `${mtimeMs} ${size}`;
  } catch ({ code }) {
    return code;
  }
}

// Events: 'replay' (document), 'error' (ReplayError; watching goes on), 'watching' (a child has begun), 'close'.
// Iterating yields the same as { document } or { error }, from the moment the iterator is made.
class ReplayWatch extends EventEmitter {
  #key;
  #signal;
  #execPath;
  #readAgain;
  #stop = new AbortController();
  #closing;
  #child;
  #nextStart; // the timer, while one is to come
  #pause = FIRST_PAUSE_MS;
  #culprit; // the replay that ended the child, until the next one has begun
  #readers = new Set();
  #missesFolder = false;
  #onAbort = () => this.close();

  // readAgain(path, signal): resolves with the document of one replay, read in another process.
  constructor({ key, signal, execPath, readAgain }) {
    super();
    this.#key = key;
    this.#signal = signal;
    this.#execPath = execPath;
    this.#readAgain = readAgain;
    signal?.addEventListener('abort', this.#onAbort);
    if (signal?.aborted) process.nextTick(this.#onAbort);
    else this.#start();
  }

  // Leaving the loop closes the watch.
  [Symbol.asyncIterator]() {
    const reader = new Readable({ objectMode: true, read() {} });
    if (this.#closing) reader.push(null);
    this.#readers.add(reader);
    reader.once('close', () => this.close());
    return reader[Symbol.asyncIterator]();
  }

  // Ends the child and the iterations. Resolves when the child is no more.
  close() {
    this.#closing ??= this.#end();
    return this.#closing;
  }

  async #end() {
    this.#stop.abort();
    this.#signal?.removeEventListener('abort', this.#onAbort);
    clearTimeout(this.#nextStart);
    for (const reader of this.#readers) reader.push(null);
    this.#child?.kill();
    await this.#child?.gone;
    this.emit('close');
  }

  #start() {
    this.#child = new ChildProcess(this.#execPath, {
      onMessage: (message) => this.#receive(message),
      onEnd: (code, reason) => this.#lost(code, reason),
    });
    this.#child.hold(true);
    this.#beginWatching();
  }

  #beginWatching() {
    this.#child.send({ key: this.#key });
  }

  #later(pause, start) {
    clearTimeout(this.#nextStart);
    this.#nextStart = setTimeout(() => {
      this.#nextStart = undefined;
      start();
    }, pause);
  }

  #receive({ watching, payload, code, reason, hint }) {
    if (watching) return this.#begun();
    if (code !== undefined) return this.#giveUp(new ReplayError(code, reason, undefined, { hint }));
    const document = JSON.parse(payload);
    if (document.err !== undefined) return this.#noFolder(document.err);
    this.#pause = FIRST_PAUSE_MS;
    this.#deliver(document);
  }

  #begun() {
    if (this.#nextStart) return; // there is no folder
    this.#missesFolder = false;
    this.emit('watching');
    // What the game wrote while nobody watched is no change to the new child.
    if (this.#culprit && stamp(this.#culprit.path) !== this.#culprit.stamp) this.#readCulprit();
    this.#culprit = undefined;
  }

  // No other child would do better.
  #giveUp(error) {
    this.#fail(error);
    this.close();
  }

  // The game makes the folder with its first replay: reported once, then waited for.
  #noFolder(reason) {
    this.#later(FOLDER_PAUSE_MS, () => this.#beginWatching());
    if (!this.#missesFolder) this.#fail(new ReplayError('ERR_NO_DEMO_FOLDER', reason, demoFolder()));
    this.#missesFolder = true;
  }

  #lost(code, reason) {
    this.#later(this.#pause, () => this.#start());
    this.#pause = Math.min(2 * this.#pause, LONGEST_PAUSE_MS);
    const path = ENDED_BY.exec(reason)?.[1];
    if (path === undefined) return this.#fail(new ReplayError(code, reason));
    this.#culprit = { path, stamp: stamp(path) };
    this.#readCulprit();
  }

  // Gives the failure its code and reason; or the document, if the game has completed the replay in the meantime.
  #readCulprit() {
    this.#readAgain(this.#culprit.path, this.#stop.signal).then(
      (document) => this.#deliver(document),
      (error) => this.#fail(error),
    );
  }

  #deliver(document) {
    if (this.#closing) return;
    for (const reader of this.#readers) reader.push({ document });
    this.emit('replay', document);
  }

  // An 'error' event that nobody listens for would end the application.
  #fail(error) {
    if (this.#closing) return;
    for (const reader of this.#readers) reader.push({ error });
    if (this.listenerCount('error') > 0) this.emit('error', error);
    else if (this.#readers.size === 0) process.emitWarning(error);
  }
}

module.exports = { ReplayWatch };
