'use strict';
// node client-host.js WHAT FILE: an application over the client for tests of its end. Prints the pid of its child.

const { eventually, isAlive } = require('./client-processes.js');
const { readReplay, watchReplays } = require('../../client');
const { ChildProcess } = require('../../client/child-process.js');

// Longer than anything takes that does not wait for it.
ChildProcess.lastOutputMs = 60_000;
const failIfLate = () => setTimeout(() => process.exit(6), 20_000).unref();

const [what, file] = process.argv.slice(2);
const WHATS = {
  // Nothing keeps it from ending, with 3 if its child has not ended before.
  idle: async () => {
    const { pid } = await readReplay(file);
    console.log(pid);
    process.prependListener('exit', () => (process.exitCode = isAlive(pid) ? 3 : 4));
  },
  // Waits, with an idle child.
  wait: async () => {
    console.log((await readReplay(file)).pid);
    setInterval(() => {}, 60_000);
  },
  // Gives its only read up when there is FILE.pid; then nothing keeps it from ending.
  giveUp: () => {
    const stop = new AbortController();
    readReplay(file, { signal: stop.signal }).catch(({ code }) => console.log(code));
    const timer = setInterval(() => {
      if (!require('node:fs').existsSync(`${file}.pid`)) return;
      clearInterval(timer);
      stop.abort();
      failIfLate();
    }, 20);
  },
  // Its idle child is killed; then nothing keeps it from ending.
  lose: async () => {
    const { pid } = await readReplay(file);
    process.kill(pid, 'SIGKILL');
    await eventually(() => !isAlive(pid));
    failIfLate();
  },
  // Ends while a child reads.
  exit: () => {
    readReplay(file);
    setInterval(() => require('node:fs').existsSync(`${file}.pid`) && process.exit(5), 20);
  },
  watch: () => watchReplays().on('replay', ({ pid }) => console.log(pid)),
};
WHATS[what]();
