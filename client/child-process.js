'use strict';
// One child process that reads or watches: its start, its channel, and why it ended.

const { fork } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

// Bytes of the end of a child's standard error that are kept for the reason of its end.
const KEPT_STDERR = 4096;

// Variables that a child does not get from the application; an inspector's port, for example, cannot be shared. On
// Windows the case of a name does not matter.
const NOT_INHERITED = /^(NODE_OPTIONS|ELECTRON_RUN_AS_NODE)$/i;

// Children that still run. A child ends by itself when its parent is gone, but not while it reads.
const running = new Set();
process.on('exit', () => running.forEach((child) => child.kill('SIGKILL')));

// In Electron the program is the application itself; ELECTRON_RUN_AS_NODE makes it Node.js.
function environment() {
  const inherited = Object.entries(process.env).filter(([name]) => !NOT_INHERITED.test(name));
  return { ...Object.fromEntries(inherited), ELECTRON_RUN_AS_NODE: '1' };
}

// Outside Electron's archive, if a copy is unpacked there: only Electron's own Node.js can read inside the archive.
function program() {
  const file = path.join(__dirname, 'child.js');
  const unpacked = file.replace(/\bapp\.asar(?=[\\/])/, 'app.asar.unpacked');
  return fs.existsSync(unpacked) ? unpacked : file;
}

function start(execPath) {
  return fork(program(), [], {
    execPath,
    execArgv: [],
    env: environment(),
    serialization: 'advanced',
    stdio: ['ignore', 'ignore', 'pipe', 'ipc'],
    windowsHide: true,
  });
}

class ChildProcess {
  // For how many milliseconds the last output of a child that has ended is waited for. Its pipes have no end while another
  // process holds them, such as a program that it started, or the console that Wine gives it.
  static lastOutputMs = 3000;

  #process;
  #stderr = '';
  #isReady = false;
  #isHeld = true;
  #isKilled = false;
  #hasExited = false;
  #lastOutputTimer;
  #onMessage;
  #onEnd;
  #resolveGone;

  // Resolves when the process has ended.
  gone = new Promise((resolve) => (this.#resolveGone = resolve));

  // onMessage(message): what the child sends. onEnd(code, reason): it has ended (ERR_CHILD_LOST) or did not start
  // (ERR_CHILD_START); called once. Neither is called after kill(), or before this constructor has returned.
  constructor(execPath, { onMessage, onEnd }) {
    this.#onMessage = onMessage;
    this.#onEnd = onEnd;
    try {
      this.#process = start(execPath);
    } catch (error) {
      this.#failToStart(error);
      return;
    }
    running.add(this.#process);
    this.#listen();
  }

  get isConnected() {
    return !this.#hasExited && (this.#process?.connected ?? false);
  }

  // A lost message needs no handling: the child has then ended, and that is reported.
  send(message) {
    if (this.isConnected) this.#process.send(message, () => {});
  }

  // Whether this process waits for the child before it ends by itself. At first it does.
  hold(wanted) {
    this.#isHeld = wanted;
    const change = wanted ? 'ref' : 'unref';
    const parts = [this.#process, this.#process?.channel, this.#process?.stderr, this.#lastOutputTimer];
    for (const part of parts) part?.[change]();
  }

  // Ends the child at once, whatever it does.
  kill() {
    this.#onMessage = this.#onEnd = () => {};
    this.#isKilled = true;
    this.hold(true);
    if (this.#hasExited) setImmediate(() => this.#ended());
    else this.#process?.kill('SIGKILL');
  }

  #listen() {
    const child = this.#process;
    child.on('message', (message) => this.#receive(message));
    child.stderr?.setEncoding('utf8').on('data', (text) => {
      this.#stderr = (this.#stderr + text).slice(-KEPT_STDERR);
    });
    const onEnd = (...how) => this.#ended(this.#reason(...how));
    child.on('exit', (...how) => {
      this.#hasExited = true;
      // What has come while the application was busy is read in the turn after the timer's.
      const onLate = () => setImmediate(onEnd, ...how);
      this.#lastOutputTimer = setTimeout(onLate, this.#isKilled ? 0 : ChildProcess.lastOutputMs);
      this.hold(this.#isHeld);
    });
    child.on('close', onEnd);
    // Unless it could not be started, a kill has failed, as on Windows that of a child that is just ending.
    child.on('error', (error) => child.pid === undefined && this.#failToStart(error));
  }

  #receive(message) {
    if (message.ready) this.#isReady = true;
    else this.#onMessage(message);
  }

  // Not at once: the system closes the failed child's pipes in the next turn of the event loop, and no other child
  // should start before that.
  #failToStart({ message }) {
    setImmediate(() => this.#ended(message));
  }

  #reason(status, signal) {
    const how = signal === null ? `exit code ${status}` : `signal ${signal}`;
    return [how, this.#stderr.trim()].filter(Boolean).join(': ');
  }

  #ended(reason) {
    running.delete(this.#process);
    clearTimeout(this.#lastOutputTimer);
    this.#process?.stderr?.destroy();
    if (this.#process?.connected) this.#process.disconnect();
    const report = this.#onEnd;
    this.#onMessage = this.#onEnd = () => {};
    report(this.#isReady ? 'ERR_CHILD_LOST' : 'ERR_CHILD_START', reason);
    this.#resolveGone();
  }
}

module.exports = { ChildProcess };
