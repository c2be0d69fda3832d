'use strict';
// One child process that reads or watches: its start, its channel, and why it ended.

const { fork } = require('node:child_process');
const path = require('node:path');

const PROGRAM = path.join(__dirname, 'child.js');

// So many characters of the end of a child's standard error are kept for the reason of its end.
const KEPT_STDERR = 4096;

// Children that still run. A child ends by itself when its parent is gone, but not while it reads.
const running = new Set();
process.on('exit', () => running.forEach((child) => child.kill('SIGKILL')));

// In Electron and its like the program is the application; with ELECTRON_RUN_AS_NODE it is Node.js. Flags and
// NODE_OPTIONS are the application's own: an inspector's port, for one, cannot be shared.
function environment() {
  const env = { ...process.env, ELECTRON_RUN_AS_NODE: '1' };
  delete env.NODE_OPTIONS;
  return env;
}

function start(execPath) {
  return fork(PROGRAM, [], {
    execPath,
    execArgv: [],
    env: environment(),
    serialization: 'advanced',
    stdio: ['ignore', 'ignore', 'pipe', 'ipc'],
    windowsHide: true,
  });
}

class ChildProcess {
  #process;
  #stderr = '';
  #onMessage;
  #onEnd;
  #resolveGone;

  // Resolves when the process is no more.
  gone = new Promise((resolve) => (this.#resolveGone = resolve));

  // onMessage(message): what the child sends. onEnd(reason): it has ended, or could not be started; called once. After
  // kill() neither is called, and none of them before this constructor has returned.
  constructor(execPath, { onMessage, onEnd }) {
    this.#onMessage = onMessage;
    this.#onEnd = onEnd;
    try {
      this.#process = start(execPath);
    } catch (error) {
      process.nextTick(() => this.#ended(error.message));
      return;
    }
    running.add(this.#process);
    this.#listen();
  }

  get isConnected() {
    return this.#process?.connected ?? false;
  }

  // A lost message needs no care of its own: the child has ended then, and that is reported.
  send(message) {
    if (this.isConnected) this.#process.send(message, () => {});
  }

  // Whether this process waits for the child before it ends by itself. At first it does.
  hold(wanted) {
    const change = wanted ? 'ref' : 'unref';
    for (const part of [this.#process, this.#process?.channel, this.#process?.stderr]) part?.[change]();
  }

  // Ends the child at once, whatever it does.
  kill() {
    this.#onMessage = this.#onEnd = () => {};
    this.hold(true);
    this.#process?.kill('SIGKILL');
  }

  #listen() {
    const child = this.#process;
    child.on('message', (message) => this.#onMessage(message));
    child.stderr?.setEncoding('utf8').on('data', (text) => {
      this.#stderr = (this.#stderr + text).slice(-KEPT_STDERR);
    });
    // Not 'exit': the last of standard error may come after it. 'error' is for a child that could not be started.
    child.on('close', (status, signal) => this.#ended(this.#reason(status, signal)));
    child.on('error', (error) => this.#ended(error.message));
  }

  #reason(status, signal) {
    const how = signal === null ? `exit code ${status}` : `signal ${signal}`;
    return [how, this.#stderr.trim()].filter(Boolean).join(': ');
  }

  #ended(reason) {
    running.delete(this.#process);
    const report = this.#onEnd;
    this.#onMessage = this.#onEnd = () => {};
    report(reason);
    this.#resolveGone();
  }
}

module.exports = { ChildProcess };
