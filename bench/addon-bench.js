'use strict';
// node addon-bench.js ADDON EMPTY-ADDON FOLDER RESULT: measures the add-on in this Node.js, with replays in FOLDER that
// stay there for the next run. Writes a JSON file { reading, eliminations, memory, loading, idle }.

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
  const name = [row.bytes, row.chunks, row.events, row.encrypted ? 'encrypted' : 'plain'].join('-');
  const file = path.join(folder, `${name}.replay`);
  writeReplay(file, row);
  return file;
}

async function timeRow(row) {
  const task = { file: replay(row), readers: BOTH, seconds: 1 };
  // A gigabyte does not fit into every host's memory; the add-on does not mind.
  const [addonMs, readerMs] =
    (await measure('timeReads', task)) ?? (await measure('timeReads', { ...task, readers: ['addon'] }));
  return { ...row, addonMs, readerMs };
}

async function timeRows(rows) {
  const timed = [];
  for (const row of rows) timed.push(await timeRow(row));
  return timed;
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
    SIZES.flatMap(([bytes, chunks]) =>
      [false, true].map((encrypted) => ({ bytes, chunks, events: 200, encrypted })),
    ),
  );

const eliminations = () =>
  timeRows(
    [1000, 10_000, 100_000].flatMap((events) =>
      [false, true].map((encrypted) => ({ bytes: MB, chunks: 20, events, encrypted })),
    ),
  );

// Runs of each task in turn; the median of what of() makes of a run's result.
async function medians(runs, name, taskList, of = (result) => result) {
  const results = taskList.map(() => []);
  for (let i = 0; i < runs; ++i) {
    for (const [j, task] of taskList.entries()) results[j].push(of((await measure(name, task)) ?? NaN));
  }
  return results.map(median);
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
    const [addonKiB, readerKiB] = await medians(
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
  const results = [[], []];
  for (let i = 0; i < 11; ++i) {
    for (const [j, task] of list.entries()) results[j].push(await measure('timeLoad', task));
  }
  const part = (of) => results.map((runs) => median(runs.map(of)));
  return {
    require: part(([load]) => load),
    firstCall: part(([, call]) => call),
    both: part(([load, call]) => load + call),
  };
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
  for (const group of [loading, idle, eliminations, reading, memory]) {
    console.error(`  ${group.name}`);
    results[group.name] = await group();
    fs.writeFileSync(resultFile, JSON.stringify(results, null, 1));
  }
}

main();
