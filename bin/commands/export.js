'use strict';
// corvane-replay export: tables for other programs, written part by part.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');
const { InvalidArgumentError, Option } = require('commander');
const { reduceMatches } = require('../../client/match-reduction.js');
const { TABLES } = require('../export/tables.js');
const { packFailure } = require('../export/packed-match.js');
const { eachMatch, listReplays, withReading } = require('../matches.js');
const { namesOf } = require('../name-file.js');
const { PATHS } = require('../replay-paths.js');

// A part is written when it has this many replays, or this many eliminations: that limits the memory.
const PART_REPLAYS = 500;
const PART_EVENTS = 60_000;
const EVENTS = Object.keys(TABLES).indexOf('eliminations');

// A later attempt may succeed with the same file.
const PASSING = [
  ...['ERR_TIMEOUT', 'ERR_CHILD_LOST', 'ERR_CHILD_START', 'ERR_OUT_OF_MEMORY', 'ERR_KEY_REQUIRED'],
  'ERR_UNREADABLE',
];

function shardOf(text) {
  const [, index, count] = /^(\d+)\/(\d+)$/.exec(text)?.map(Number) ?? [];
  if (index >= 1 && index <= count) return { index, count };
  throw new InvalidArgumentError('It must be i/n, with i from 1 to n.');
}

// The same on every machine.
function isInShard(file, { index, count }) {
  if (count === 1) return true;
  const hash = createHash('sha256').update(file.replaceAll('\\', '/')).digest().readUInt32BE();
  return hash % count === index - 1;
}

// What rows depend on beside the replay: with another key or other names it is read again.
function settingsOf({ key, damageNames }) {
  const names = JSON.stringify(damageNames);
  return createHash('sha256')
    .update(key ?? '')
    .update(names)
    .digest('hex')
    .slice(0, 16);
}

// Size and time of change, taken before the file is read; null where they are not known.
function stampOf(file) {
  try {
    const { size, mtimeMs } = fs.statSync(file);
    return { size, mtimeMs };
  } catch {
    return { size: null, mtimeMs: null }; // reading it fails too, and says why
  }
}

// The failure's own advice is to use this option.
const isHelped = (code, { salvage, maxMib }) =>
  (code === 'ERR_CORRUPT' && salvage) || (code === 'ERR_DOCUMENT_TOO_LARGE' && maxMib !== undefined);

function isUnchanged(known, { size, mtimeMs, settings }, options) {
  if (known === undefined || PASSING.includes(known.code) || isHelped(known.code, options)) return false;
  return known.size === size && known.mtimeMs === mtimeMs && known.settings === settings;
}

// Results that are read but not yet written. A part is written while the next one is read.
class Batch {
  #dataSet;
  #replays = [];
  #packs = [];
  #events = 0;
  #written = Promise.resolve();

  constructor(dataSet) {
    this.#dataSet = dataSet;
  }

  // replay: { path, size, mtimeMs, settings, code }; pack: what it comes to, see packed-match.js.
  async add(replay, pack) {
    this.#replays.push({ ...replay, rows: pack.counts });
    this.#packs.push(pack);
    this.#events += pack.counts[EVENTS];
    if (this.#replays.length >= PART_REPLAYS || this.#events >= PART_EVENTS) await this.#write();
  }

  // Resolves when all is written.
  async end() {
    await this.#write();
    await this.#written;
  }

  async #write() {
    const [replays, packs] = [this.#replays, this.#packs];
    this.#replays = [];
    this.#packs = [];
    this.#events = 0;
    await this.#written;
    if (replays.length > 0) this.#written = this.#dataSet.commit(replays, packs);
    this.#written.catch(() => {}); // whoever waits for it is told
  }
}

// The children make the packs, with all processors.
const readPacks = (files, options) =>
  reduceMatches(files, require.resolve('../export/packed-match.js'), options);

// Reads the replays into the data set. Resolves with the numbers of replays and failures.
async function exportReplays(todo, dataSet, context, tally) {
  const batch = new Batch(dataSet);
  const counts = { read: 0, failed: 0 };
  const onMatch = (pack, i) => {
    counts.read += 1;
    return batch.add({ ...todo[i], code: null }, pack);
  };
  const onFailure = async (_, error, i) => {
    counts.failed += 1;
    const { path: file, size } = todo[i];
    const hasRows = dataSet.known(file)?.code === null;
    if (hasRows && PASSING.includes(error.code)) return; // the earlier rows stay
    await batch.add({ ...todo[i], code: error.code }, packFailure(file, error, size));
  };
  const files = todo.map((replay) => replay.path);
  try {
    await eachMatch(files, context, { tally, onMatch, onFailure, read: readPacks });
  } finally {
    await batch.end();
  }
  return counts;
}

async function run(context) {
  const { PartWriter } = require('../export/part-writer.js');
  const writer = new PartWriter();
  try {
    return await exportWith(writer, context);
  } finally {
    await writer.close();
  }
}

async function exportWith(writer, context) {
  const { DataSet } = require('../export/data-set.js');
  const { options } = context;
  const shard = options.shard ?? { index: 1, count: 1 };
  const damageNames = namesOf(options.damageNames);
  const dataSet = new DataSet(options.out, options.format, `${shard.index}of${shard.count}`, writer);
  try {
    await dataSet.open();
    return await exportInto(dataSet, shard, { ...context, damageNames });
  } finally {
    await dataSet.close();
  }
}

async function exportInto(dataSet, shard, context) {
  const { args, options, terminal } = context;
  const [names] = args;
  const tally = { status: 0 };
  const listed = (await listReplays(names, context, tally)).map((file) => path.resolve(file));
  const settings = settingsOf(context);
  const replays = listed
    .filter((file) => isInShard(file, shard))
    .map((file) => ({ path: file, ...stampOf(file), settings }));
  const todo = options.update
    ? replays.filter((replay) => !isUnchanged(dataSet.known(replay.path), replay, options))
    : replays;
  dataSet.checkReplaceable(todo.map((replay) => replay.path));
  const { read, failed } = await exportReplays(todo, dataSet, context, tally);
  const unchanged = replays.length - todo.length;
  terminal.write(
    `corvane-replay: ${read} read, ${failed} failed, ${unchanged} unchanged, in ${options.out}\n`,
  );
  return tally.status;
}

module.exports = {
  order: 80,
  define: (command) =>
    withReading(command)
      .description(
        'write tables for DuckDB, pandas, Polars, Spark and others: matches, players, eliminations, failures',
      )
      .argument('<path...>', PATHS)
      .requiredOption(
        '--out <folder>',
        'folder for the tables; one of an earlier export is brought up to date',
      )
      .addOption(
        new Option('--format <format>', 'format of the files')
          .choices(['parquet', 'csv', 'ndjson'])
          .default('parquet'),
      )
      .option('--update', 'read only what is new or has changed since the last run')
      .option('--shard <i/n>', 'write the i-th of n shares, each in a process of its own', shardOf),
  run,
};
