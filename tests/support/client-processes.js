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
  const end = Date.now() + 20_000;
  while (!condition() && Date.now() < end) await new Promise((resolve) => setTimeout(resolve, 20));
  return condition();
}

const livingChildren = () => children.filter(({ pid }) => pid !== undefined && isAlive(pid));

module.exports = { children, eventually, isAlive, livingChildren };
