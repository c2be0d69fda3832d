'use strict';
// node addon-bench.js ADDON EMPTY-ADDON FOLDER RESULT: measures the add-on in this Node.js, with replays in FOLDER that
// stay there for the next run. Writes a JSON file { warm, beyondAscii, smallest, client, reading, eliminations, memory,
// loading, idle }.

const { spawn } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { median } = require('./child.js');
const { writeReplay } = require('./replay-files.js');

const [addon, emptyAddon, folder, resultFile] = process.argv.slice(2);
const MB = 1e6;
const BOTH = ['addon', 'reader'];

let tasks = 0;

// The result of a task of child.js; undefined if its process dies.
async function measure(name, task) {
  const file = path.join(folder, `task-${process.platform}-${++tasks}.json`);
  fs.writeFileSync(file, JSON.stringify({ name, addon, ...task }));
  const output = fs.openSync(`${file}.out`, 'w');
  const child = spawn(process.execPath, ['--expose-gc', path.join(__dirname, 'child.js'), file], {
    stdio: ['ignore', output, output],
  });
  const [status] = await once(child, 'close');
  fs.closeSync(output);
  const { result } = JSON.parse(fs.readFileSync(file, 'utf8'));
  if (status !== 0)
    console.error(fs.readFileSync(`${file}.out`, 'utf8').trim().split('\n').slice(-5).join('\n'));
  fs.rmSync(file);
  fs.rmSync(`${file}.out`);
  return result;
}

function replay(row) {
  const { bytes, chunks, events, encrypted, name, of } = row;
  const parts = [bytes, chunks, of ?? events, encrypted ? 'encrypted' : 'plain', name && 'beyond-ascii'];
  const file = path.join(folder, `${parts.filter(Boolean).join('-')}.replay`);
  writeReplay(file, row);
  return file;
}

async function timeRow(name, row) {
  const task = { file: replay(row), readers: BOTH, seconds: 1 };
  // A gigabyte does not fit into every host's memory; the add-on does not mind.
  const [addonMs, readerMs] =
    (await measure(name, task)) ?? (await measure(name, { ...task, readers: ['addon'] }));
  return { ...row, addonMs, readerMs };
}

async function timeRows(name, rows) {
  const timed = [];
  for (const row of rows) timed.push(await timeRow(name, row));
  return timed;
}

const plainAndEncrypted = (rows) =>
  rows.flatMap((row) => [false, true].map((encrypted) => ({ ...row, encrypted })));

const MANY_EVENTS = [200, 10_000, 100_000].map((events) => ({ bytes: MB, chunks: 20, events }));
const MANY_CHUNKS = [20, 200, 2000].map((chunks) => ({ bytes: 100 * MB, chunks, events: 200 }));

const warm = () => timeRows('timeWarmReads', plainAndEncrypted([...MANY_EVENTS, ...MANY_CHUNKS]));

// Milliseconds for a text of ASCII and for one with a character beyond it.
const beyondAscii = () =>
  measure('timeWarmFiles', {
    files: [undefined, 'Finale Ö'].map((name) => replay({ bytes: MB, chunks: 20, events: 10_000, name })),
    seconds: 2,
  });

// What files of nothing but the smallest events add to the host's peak.
async function smallest() {
  const rows = [];
  for (const [of, name] of [['elimination'], ['elimination', 'Finale Ö'], ['statistics'], ['unknown']]) {
    const file = replay({ bytes: 8 << 20, chunks: 1, of, name });
    const [[kiB, textBytes]] = await medians(3, 'peakMemory', [{ file, reader: 'addon' }]);
    rows.push({ of, name, kiB, textBytes });
  }
  return rows;
}

// The client over a season of replays, which lie sparse on the disk.
async function client() {
  const season = path.join(folder, 'matches');
  fs.mkdirSync(season, { recursive: true });
  const count = 6000;
  for (let i = 0; i < count; ++i) {
    const row = {
      bytes: 0.3 * MB + (2.7 * MB * i) / count,
      chunks: 20,
      events: 200,
      isSparse: true,
      name: `Match ${i}`,
    };
    writeReplay(path.join(season, `${i}.replay`), row);
  }
  const task = { folder: season, client: path.join(__dirname, '..', 'client') };
  return { count, ...(await measure('timeFolder', task)) };
}

const SIZES = [
  ...[
    [MB, 20],
    [10 * MB, 200],
  ],
  ...[20, 200, 2000].map((chunks) => [100 * MB, chunks]),
  ...[20, 2000].map((chunks) => [1000 * MB, chunks]),
];

const reading = () =>
  timeRows(
    'timeCollectedReads',
    plainAndEncrypted(SIZES.map(([bytes, chunks]) => ({ bytes, chunks, events: 200 }))),
  );

const eliminations = () =>
  timeRows(
    'timeCollectedReads',
    plainAndEncrypted([1000, 10_000, 100_000].map((events) => ({ bytes: MB, chunks: 20, events }))),
  );

// Runs of each task in turn; of the results, which are lists, the medians of each place.
async function medians(runs, name, taskList) {
  const results = taskList.map(() => []);
  for (let i = 0; i < runs; ++i) {
    for (const [j, task] of taskList.entries()) results[j].push((await measure(name, task)) ?? []);
  }
  return results.map((list) =>
    (list[0] ?? []).map((_, place) => median(list.map((result) => result[place]))),
  );
}

async function memory() {
  const rows = [];
  for (const [bytes, chunks] of [
    [MB, 20],
    [100 * MB, 200],
    [100 * MB, 2000],
    [1000 * MB, 2000],
  ]) {
    const row = { bytes, chunks, events: 200, encrypted: true };
    const file = replay(row);
    const [[addonKiB], [readerKiB]] = await medians(
      3,
      'peakMemory',
      BOTH.map((reader) => ({ file, reader })),
    );
    rows.push({ ...row, addonKiB, readerKiB });
  }
  return rows;
}

async function loading() {
  const file = replay({ bytes: MB, chunks: 20, events: 2 });
  const list = [
    { call: 'ReadCorvaneDemo', file },
    { addon: emptyAddon, call: 'nothing', file },
  ];
  const results = await medians(11, 'timeLoad', list);
  const [require, firstCall, both] = [0, 1, 2].map((place) => results.map((result) => result[place]));
  return { require, firstCall, both };
}

// The demo folder: on Windows the user's own, which must not be there yet.
async function idle() {
  if (process.platform !== 'win32')
    process.env.LOCALAPPDATA = fs.mkdtempSync(path.join(os.tmpdir(), 'bench-'));
  const game = path.join(process.env.LOCALAPPDATA, 'CorvaneGame');
  const demos = path.join(game, 'Saved', 'Demos');
  if (fs.existsSync(game)) throw new Error(`${game} is in the way`);
  fs.mkdirSync(demos, { recursive: true });
  try {
    for (let i = 0; i < 1000; ++i) fs.writeFileSync(path.join(demos, `match-${i}.replay`), 'x');
    const task = { seconds: 2, samples: 3 };
    const [watching, host] = await Promise.all(
      [true, false].map((watch) => measure('idleLoad', { ...task, watch })),
    );
    return { watching, host };
  } finally {
    fs.rmSync(game, { recursive: true, force: true, maxRetries: 10 });
  }
}

async function main() {
  fs.mkdirSync(folder, { recursive: true });
  const results = { node: `Node.js ${process.version}, ${process.platform} ${process.arch}` };
  for (const group of [loading, idle, warm, beyondAscii, smallest, memory, client, eliminations, reading]) {
    console.error(`  ${group.name}`);
    results[group.name] = await group();
    fs.writeFileSync(resultFile, JSON.stringify(results, null, 1));
  }
}

main();
