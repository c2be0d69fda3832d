'use strict';
// node child.js TASK: does one measurement in a process of its own. The task is a JSON file { name, addon, ... }; the
// result is written over it, since node.exe under Wine is given no pipes.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { setTimeout: sleep } = require('node:timers/promises');

const median = (list) => [...list].sort((a, b) => a - b)[Math.floor(list.length / 2)];

const read = {
  addon: (addon) => require(addon).ReadCorvaneDemo,
  reader: () => require('./js-reader.js').readReplay,
};

function checkEqual(text, expected) {
  assert.deepEqual(JSON.parse(Buffer.from(text, 'latin1').toString('utf8')), JSON.parse(expected));
}

// Milliseconds of processor time so far: other programs on the machine hardly change it. Windows counts processor time
// in steps longer than a read, so there it is elapsed time.
function clock() {
  if (process.platform === 'win32') return performance.now();
  const { user, system } = process.cpuUsage();
  return (user + system) / 1000;
}

// Functions that read the file, whose documents are the same.
function readersOf({ addon, file, readers }) {
  const functions = readers.map((name) => () => read[name](addon)(file));
  const texts = functions.map((readFile) => readFile());
  if (texts.length > 1) checkEqual(...texts);
  return functions;
}

// Milliseconds for one read by each of the readers, which take turns.
function timeInTurns(functions, seconds, timed) {
  const times = functions.map(() => []);
  const end = performance.now() + seconds * 1000;
  while (performance.now() < end || times[0].length < 5)
    functions.forEach((readFile, i) => times[i].push(timed(readFile)));
  return times.map(median);
}

// As an application that reads many replays has it: everything is compiled, and garbage is collected when V8 thinks fit.
function timeWarmReads(task) {
  return timeWarm(readersOf(task), task.seconds);
}

// The add-on alone, with several files in turn.
function timeWarmFiles({ addon, files, seconds }) {
  const functions = files.map((file) => () => read.addon(addon)(file));
  return timeWarm(functions, seconds);
}

function timeWarm(functions, seconds) {
  const timed = (readFile) => {
    const start = performance.now();
    readFile();
    return performance.now() - start;
  };
  timeInTurns(functions, seconds / 2, timed);
  return timeInTurns(functions, seconds, timed);
}

// Neither reader pays for what the other leaves behind. The first collection frees buffers on another thread; the
// second waits until they are gone.
function timeCollectedReads(task) {
  return timeInTurns(readersOf(task), task.seconds, (readFile) => {
    global.gc();
    global.gc();
    const start = clock();
    readFile();
    return clock() - start;
  });
}

// Linux keeps a process's peak and can reset it. Elsewhere the peak since the start must do.
function peakKiB() {
  if (process.platform !== 'linux') return process.resourceUsage().maxRSS;
  return Number(/^VmHWM:\s*(\d+)/m.exec(fs.readFileSync('/proc/self/status', 'latin1'))[1]);
}

function forgetPeak() {
  if (process.platform === 'linux') fs.writeFileSync('/proc/self/clear_refs', '5');
}

// What the first read adds to the peak of the host, which has loaded everything, in KiB; the length of the text.
function peakMemory({ addon, file, reader }) {
  const readFile = read[reader](addon);
  forgetPeak();
  const before = peakKiB();
  const { length } = readFile(file);
  return [peakKiB() - before, length];
}

// Medians over the files, one after the other: { singleMs, matchMs }, see below.
async function timeSingles(reading, files, matchOf) {
  const [reads, matches] = [[], []];
  for (const file of files) {
    const start = performance.now();
    const document = await reading.readReplay(file);
    const middle = performance.now();
    matchOf(document);
    reads.push(middle - start);
    matches.push(performance.now() - middle);
  }
  return { singleMs: median(reads), matchMs: median(matches) };
}

// Milliseconds for many replays: { clientMs, exportMs, readerMs } by the client with all cores, by an export to Parquet, by
// the JavaScript reader in this process; and for one: { singleMs, matchMs } to read it with the client, and to make a match
// of its document.
async function timeFolder({ addon, folder, client }) {
  process.env.CORVANE_ADDON = addon;
  const { ReplayClient, matchOf } = require(client);
  const { main: commandLine } = require(path.join(client, '..', 'bin', 'program.js'));
  const files = fs.readdirSync(folder).map((name) => path.join(folder, name));
  const reading = new ReplayClient();
  const readAll = async (list) => {
    for await (const result of reading.readReplayTexts(list)) if (result.error) throw result.error;
  };
  await readAll(files.slice(0, 100));
  const timed = async (action) => {
    const start = performance.now();
    await action();
    return performance.now() - start;
  };
  const out = fs.mkdtempSync(path.join(folder, '..', 'export-'));
  const clientMs = await timed(() => readAll(files));
  const exportMs = await timed(() => commandLine(['node', 'corvane-replay', 'export', folder, '--out', out]));
  fs.rmSync(out, { recursive: true });
  const readerMs = await timed(() => files.forEach(read.reader()));
  const singles = await timeSingles(reading, files.slice(0, 500), matchOf);
  await reading.close();
  return { clientMs, exportMs, readerMs, ...singles };
}

// Milliseconds: for require, for the first call, for both.
function timeLoad({ addon, call, file }) {
  const start = performance.now();
  const loaded = require(addon);
  const end = performance.now();
  loaded[call](file);
  const now = performance.now();
  return [end - start, now - end, now - start];
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
  const tasks = {
    timeWarmReads,
    timeWarmFiles,
    timeCollectedReads,
    peakMemory,
    timeFolder,
    timeLoad,
    idleLoad,
  };
  const taskFile = process.argv[2];
  const task = JSON.parse(fs.readFileSync(taskFile, 'utf8'));
  fs.writeFileSync(taskFile, JSON.stringify({ result: await tasks[task.name](task) }));
}

if (require.main === module) main();
module.exports = { median };
