'use strict';
// node child.js TASK: does one measurement in a process of its own. The task is a JSON file { name, addon, ... }; the
// result is written over it, since node.exe under Wine is given no pipes.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const { setTimeout: sleep } = require('node:timers/promises');

const median = (list) => [...list].sort((a, b) => a - b)[Math.floor(list.length / 2)];

const read = {
  addon: (addon) => require(addon).ReadCorvaneDemo,
  reader: () => require('./js-reader.js').readReplay,
};

function checkEqual(text, expected) {
  assert.deepEqual(JSON.parse(Buffer.from(text, 'latin1').toString('utf8')), JSON.parse(expected));
}

// Milliseconds so far: of processor time, which other programs on the machine hardly change; of time, where the system
// counts processor time in steps longer than a read.
function clock() {
  if (process.platform === 'win32') return performance.now();
  const { user, system } = process.cpuUsage();
  return (user + system) / 1000;
}

// Milliseconds for one read by each of the readers, which take turns.
function timeReads({ addon, file, readers, seconds }) {
  const functions = readers.map((name) => read[name](addon));
  const texts = functions.map((readFile) => readFile(file));
  if (texts.length > 1) checkEqual(...texts);
  const times = readers.map(() => []);
  const end = performance.now() + seconds * 1000;
  while (performance.now() < end || times[0].length < 5) {
    functions.forEach((readFile, i) => {
      // Nobody pays for what the other leaves behind: the second collection waits until the first one's buffers, which
      // are given back on another thread, are gone.
      global.gc();
      global.gc();
      const start = clock();
      readFile(file);
      times[i].push(clock() - start);
    });
  }
  return times.map(median);
}

// Linux keeps a process's peak, and can be told to forget it; elsewhere the peak since the start has to do.
function peakKiB() {
  if (process.platform !== 'linux') return process.resourceUsage().maxRSS;
  return Number(/^VmHWM:\s*(\d+)/m.exec(fs.readFileSync('/proc/self/status', 'latin1'))[1]);
}

function forgetPeak() {
  if (process.platform === 'linux') fs.writeFileSync('/proc/self/clear_refs', '5');
}

// KiB that the first read adds to the peak of the host, which has loaded everything.
function peakMemory({ addon, file, reader }) {
  const readFile = read[reader](addon);
  forgetPeak();
  const before = peakKiB();
  readFile(file);
  return peakKiB() - before;
}

// Milliseconds: for require, for the first call.
function timeLoad({ addon, call, file }) {
  const start = performance.now();
  const loaded = require(addon);
  const end = performance.now();
  loaded[call](file);
  return [end - start, performance.now() - end];
}

// Per cent of a core that the process uses, with or without a watcher.
async function idleLoad({ addon, watch, seconds, samples }) {
  if (watch) require(addon).StartCorvaneWatcher(() => {}, new ArrayBuffer(0));
  await sleep(1000);
  const loads = [];
  for (let i = 0; i < samples; ++i) {
    const [start, used] = [performance.now(), process.cpuUsage()];
    await sleep(seconds * 1000);
    const { user, system } = process.cpuUsage(used);
    loads.push((user + system) / 10 / (performance.now() - start));
  }
  if (watch) require(addon).StopCorvaneWatcher();
  return median(loads);
}

async function main() {
  const tasks = { timeReads, peakMemory, timeLoad, idleLoad };
  const taskFile = process.argv[2];
  const task = JSON.parse(fs.readFileSync(taskFile, 'utf8'));
  fs.writeFileSync(taskFile, JSON.stringify({ result: await tasks[task.name](task) }));
}

if (require.main === module) main();
module.exports = { median };
