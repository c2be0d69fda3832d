'use strict';
// The lock of a share: lock-SHARD.json names the process that writes it, { pid, host }. Shares i/n of the same n are
// written side by side; those of another n, and a run without --shard (1of1), have to wait.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { failureOf } = require('../failures.js');
const { readJson } = require('./files.js');

// Of a process on another machine nobody knows. A container that starts again may get the same number again.
function isAlive({ pid, host }) {
  if (host !== os.hostname()) return true;
  if (pid === process.pid) return false;
  try {
    return process.kill(pid, 0);
  } catch (error) {
    return error.code !== 'ESRCH';
  }
}

// Throws if a living process holds the lock; deletes the lock of one that has ended.
function clear(file) {
  const holder = readJson(file, 'delete it if no other export is at work');
  if (!isAlive(holder)) return fs.rmSync(file, { force: true });
  const text = `process ${holder.pid} on ${holder.host} is writing to this folder. If it is not, delete ${file}`;
  throw failureOf('ERR_OUTPUT', text);
}

// Returns a function that gives the lock back. Throws ERR_OUTPUT if somebody else is at work.
function lockShare(folder, shard) {
  const file = path.join(folder, `lock-${shard}.json`);
  const release = () => fs.rmSync(file, { force: true });
  if (fs.existsSync(file)) clear(file);
  try {
    fs.writeFileSync(file, JSON.stringify({ pid: process.pid, host: os.hostname() }), { flag: 'wx' });
    const [, count] = shard.split('of');
    for (const name of fs.readdirSync(folder)) {
      const other = /^lock-\d+of(\d+)\.json$/.exec(name)?.[1] ?? count;
      if (other !== count) clear(path.join(folder, name));
    }
  } catch (error) {
    if (error.code !== 'EEXIST') release();
    throw error;
  }
  return release;
}

module.exports = { lockShare };
