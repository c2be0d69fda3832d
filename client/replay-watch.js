'use strict';
// A folder, watched from a child process that is started again if it ends.

const { EventEmitter } = require('node:events');
const { Readable } = require('node:stream');
const { ChildProcess } = require('./child-process.js');
const { demoFolder } = require('./demo-folder.js');
const { ReplayError } = require('./replay-error.js');

// The pause before a child is started again doubles until a child delivers something.
const FIRST_PAUSE_MS = 500;
const LONGEST_PAUSE_MS = 30_000;

// The running child looks for a missing folder, which costs almost nothing.
const FOLDER_PAUSE_MS = 1000;

// Events: 'replay' (document, path, text), 'error' (ReplayError; watching goes on), 'watching' (a child has begun), 'close'.
// Iterating yields the same as { path, document } or { path, error }, from the moment the iterator is made.
class ReplayWatch extends EventEmitter {
  #order; // what a child is told
  #signal;
  #execPath;
  #closing;
  #child;
  #nextStart; // the timer, while one is to come
  #pause = FIRST_PAUSE_MS;
  #readers = new Set();
  #missesFolder = false;
  #onAbort = () => this.close();

  // folder: undefined for the demo folder.
  constructor({ folder, key, maxDocumentBytes, signal, execPath }) {
    super();
    this.#order = { folder, key, maxDocumentBytes };
    this.#signal = signal;
    this.#execPath = execPath;
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

  // Ends the child and the iterations. Resolves when the child has ended.
  close() {
    this.#closing ??= this.#end();
    return this.#closing;
  }

  async #end() {
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
    this.#child.send(this.#order);
  }

  #later(pause, start) {
    clearTimeout(this.#nextStart);
    this.#nextStart = setTimeout(start, pause);
  }

  #receive({ watching, path, text, code, reason, hint }) {
    if (watching) return this.#begun();
    if (code === 'ERR_NO_DEMO_FOLDER') return this.#noFolder(reason);
    if (path === undefined) return this.#giveUp(new ReplayError(code, reason, this.#order.folder, { hint }));
    this.#pause = FIRST_PAUSE_MS;
    if (code !== undefined) return this.#fail(new ReplayError(code, reason, path, { hint }));
    this.#deliver({ path, document: JSON.parse(text), text });
  }

  #begun() {
    this.#missesFolder = false;
    this.emit('watching');
  }

  // Another child would fail too.
  #giveUp(error) {
    this.#fail(error);
    this.close();
  }

  // The game makes the folder with its first replay: reported once, then waited for.
  #noFolder(reason) {
    this.#later(FOLDER_PAUSE_MS, () => this.#beginWatching());
    const folder = this.#order.folder ?? demoFolder();
    if (!this.#missesFolder) this.#fail(new ReplayError('ERR_NO_DEMO_FOLDER', reason, folder));
    this.#missesFolder = true;
  }

  #lost(code, reason) {
    this.#later(this.#pause, () => this.#start());
    this.#pause = Math.min(2 * this.#pause, LONGEST_PAUSE_MS);
    this.#fail(new ReplayError(code, reason));
  }

  #deliver(result) {
    if (this.#closing) return;
    for (const reader of this.#readers) reader.push(result);
    this.emit('replay', result.document, result.path, result.text);
  }

  // An 'error' event that nobody listens for would end the application.
  #fail(error) {
    if (this.#closing) return;
    for (const reader of this.#readers) reader.push({ path: error.path, error });
    if (this.listenerCount('error') > 0) this.emit('error', error);
    else if (this.#readers.size === 0) process.emitWarning(error);
  }
}

module.exports = { ReplayWatch };
