'use strict';
// For tests of the client: the child processes that it starts, and whether they are gone. To be required before the
// client.

const childProcess = require('node:child_process');

const children = [];
const { fork } = childProcess;
childProcess.fork = (...args) => {
  const child = fork(...args);
  children.push(child);
  return child;
};

function isAlive(pid) {
  try {
    return process.kill(pid, 0);
  } catch {
    return false;
  }
}

// Polls until condition() holds or a generous time is over; resolves with what it came to.
async function eventually(condition) {
  const end = performance.now() + 60_000;
  while (!condition() && performance.now() < end) await new Promise((resolve) => setTimeout(resolve, 20));
  return condition();
}

const hasEnded = ({ exitCode, signalCode }) => (exitCode ?? signalCode) !== null;

// Their numbers would not do: Windows soon gives that of an ended process to another.
const livingChildren = () => children.filter((child) => child.pid !== undefined && !hasEnded(child));

module.exports = { children, eventually, hasEnded, isAlive, livingChildren };
