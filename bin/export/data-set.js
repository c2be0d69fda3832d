'use strict';
// The folder of an export.
//
//     TABLE/part-NAME.EXTENSION   rows of some replays, the same ones in every table
//     _state/part-NAME.json       which replays these are, as they were when they were read, and how many rows each has
//     _state/commit-SHARD.json    new parts, and old parts that they replace: written when all new parts are complete
//                                 under temporary names, removed when they have replaced the old ones
//
// A run may be interrupted at any moment. If the commit file is there, the next run completes the commit; if not, it
// deletes the unfinished parts.

const fs = require('node:fs');
const path = require('node:path');
const { failureOf, usageFailure } = require('../failures.js');
const { FORMATS } = require('./formats.js');
const partFiles = require('./part-files.js');

const { TABLE_NAMES } = partFiles;
const PART = /^part-(\d+of\d+)-(\d+)\.json$/;
const TABLE_FILE = /^part-\d+of\d+-\d+\.(\w+)$/;

const readJson = (file) => JSON.parse(fs.readFileSync(file, 'utf8'));

// Turns a failure into one that the command line knows.
function writing(action) {
  return Promise.resolve()
    .then(action)
    .catch((error) => {
      throw error.syscall === undefined ? error : failureOf('ERR_OUTPUT', `cannot write: ${error.message}`);
    });
}

class DataSet {
  #folder;
  #format; // its name
  #shard;
  #writer;
  #parts = new Map(); // name -> what its state file holds
  #owners = new Map(); // path of a replay -> { part, size, mtimeMs, code }
  #lastNumber = 0;

  // shard: "1of1" or another share. Nobody else may write the same share at the same time. writer: writes the tables.
  constructor(folder, format, shard, writer = partFiles) {
    this.#folder = folder;
    this.#format = format;
    this.#shard = shard;
    this.#writer = writer;
  }

  // Makes the folder, or goes on with what is in it.
  open() {
    return writing(() => {
      for (const name of [...TABLE_NAMES, '_state'])
        fs.mkdirSync(path.join(this.#folder, name), { recursive: true });
      const shards = this.#shardsToRepair();
      for (const shard of shards) this.#complete(shard);
      for (const shard of shards) this.#removeTemporaries(shard);
      this.#checkFiles();
      this.#load();
    });
  }

  // How the replay at this absolute path was when it was read: { size, mtimeMs, code }; undefined if it was not.
  known(file) {
    return this.#owners.get(file);
  }

  // Adds replays, a list of { path, size, mtimeMs, code, rows }, and replaces what is known of them. rows: how many
  // rows each has in each table; packs: what the rows are made of, see packed-match.js. One call at a time.
  commit(replays, packs) {
    return writing(async () => {
      this.#checkFiles();
      const paths = new Set(replays.map((replay) => replay.path));
      const stale = this.#partsOf(paths);
      const add = [await this.#writePart(replays, packs)];
      for (const name of stale) {
        const kept = await this.#writeRest(name, paths);
        if (kept !== undefined) add.push(kept);
      }
      const commit = { format: this.#format, add, remove: [...stale] };
      this.#replaceFile(this.#commitFile(), commit);
      this.#apply(commit);
      for (const name of stale) this.#parts.delete(name);
      for (const name of add) this.#know(name, readJson(this.#stateFile(name)));
    });
  }

  // Without shards nobody else is at work, so the commits of other shards are completed too.
  #shardsToRepair() {
    if (this.#shard !== '1of1') return [this.#shard];
    const names = fs.readdirSync(path.join(this.#folder, '_state'));
    const found = names.map((name) => /^(?:commit-|\.)(\d+of\d+)[.~]/.exec(name)?.[1]).filter(Boolean);
    return [...new Set([this.#shard, ...found])];
  }

  #complete(shard) {
    const file = this.#commitFile(shard);
    if (!fs.existsSync(file)) return;
    const commit = readJson(file);
    this.#checkFormat(commit.format);
    this.#apply(commit, shard);
  }

  #checkFormat(format) {
    if (format === this.#format) return;
    throw usageFailure(`${this.#folder} holds an export as ${format}, and takes no other format`);
  }

  // Other shards may have written since.
  #checkFiles() {
    const names = fs.readdirSync(path.join(this.#folder, TABLE_NAMES[0]));
    const known = Object.entries(FORMATS);
    for (const name of names) {
      const [format] = known.find(([, { extension }]) => extension === TABLE_FILE.exec(name)?.[1]) ?? [];
      if (format !== undefined) this.#checkFormat(format);
    }
  }

  #commitFile(shard = this.#shard) {
    return path.join(this.#folder, '_state', `commit-${shard}.json`);
  }

  #stateFile(part) {
    return path.join(this.#folder, '_state', `${part}.json`);
  }

  #tableFile(part, table) {
    return path.join(this.#folder, table, `${part}.${FORMATS[this.#format].extension}`);
  }

  #tableFiles(part) {
    return TABLE_NAMES.map((table) => this.#tableFile(part, table));
  }

  #filesOf(part) {
    return [...this.#tableFiles(part), this.#stateFile(part)];
  }

  // Other programs and this one ignore such names.
  #temporary(file, shard = this.#shard) {
    return path.join(path.dirname(file), `.${shard}~${path.basename(file)}`);
  }

  #replaceFile(file, content) {
    const temporary = this.#temporary(file);
    fs.writeFileSync(temporary, JSON.stringify(content));
    fs.renameSync(temporary, file);
  }

  // Can be repeated after an interruption: new parts appear before the old ones go.
  #apply({ add, remove }, shard = this.#shard) {
    for (const file of add.flatMap((part) => this.#filesOf(part))) {
      const temporary = this.#temporary(file, shard);
      if (fs.existsSync(temporary)) fs.renameSync(temporary, file);
      else if (!fs.existsSync(file))
        throw failureOf('ERR_OUTPUT', `${file} is missing: another run has written here`);
    }
    for (const file of remove.flatMap((part) => this.#filesOf(part))) fs.rmSync(file, { force: true });
    fs.rmSync(this.#commitFile(shard), { force: true });
  }

  #removeTemporaries(shard) {
    for (const name of [...TABLE_NAMES, '_state']) {
      const folder = path.join(this.#folder, name);
      for (const file of fs.readdirSync(folder)) {
        if (file.startsWith(`.${shard}~`)) fs.rmSync(path.join(folder, file), { force: true });
      }
    }
  }

  // The other shards of the same number have other replays, and may be at work.
  #concerns(shard) {
    const [, count] = this.#shard.split('of');
    return shard === this.#shard || count === '1' || shard.split('of')[1] !== count;
  }

  #load() {
    for (const file of fs.readdirSync(path.join(this.#folder, '_state'))) {
      const [, shard, number] = PART.exec(file) ?? [];
      if (shard === undefined || !this.#concerns(shard)) continue;
      if (shard === this.#shard) this.#lastNumber = Math.max(this.#lastNumber, Number(number));
      const part = path.basename(file, '.json');
      this.#know(part, readJson(this.#stateFile(part)));
    }
  }

  #know(part, state) {
    this.#checkFormat(state.format);
    this.#parts.set(part, state);
    for (const { path: file, ...was } of state.replays) this.#owners.set(file, { part, ...was });
  }

  // The parts that hold rows of these replays.
  #partsOf(paths) {
    const parts = new Set();
    for (const file of paths) {
      const part = this.#owners.get(file)?.part;
      if (part !== undefined) parts.add(part);
    }
    for (const part of parts) {
      const isOwn = part.startsWith(`part-${this.#shard}-`) || this.#shard === '1of1';
      if (!isOwn) throw usageFailure(`${part} was written with another --shard: run once without --shard`);
    }
    return parts;
  }

  #newPart() {
    this.#lastNumber += 1;
    return `part-${this.#shard}-${String(this.#lastNumber).padStart(6, '0')}`;
  }

  #writeState(part, replays) {
    const state = { format: this.#format, replays };
    fs.writeFileSync(this.#temporary(this.#stateFile(part)), JSON.stringify(state));
  }

  #temporaryTables(part) {
    return this.#tableFiles(part).map((file) => this.#temporary(file));
  }

  async #writePart(replays, packs) {
    const part = this.#newPart();
    await this.#writer.writeTables(this.#format, this.#temporaryTables(part), packs);
    this.#writeState(part, replays);
    return part;
  }

  // Writes a part with the rows of this part's other replays. Undefined if there are none.
  async #writeRest(name, gone) {
    const { replays } = this.#parts.get(name);
    const kept = replays.filter((replay) => !gone.has(replay.path));
    if (kept.length === 0) return undefined;
    const part = this.#newPart();
    const flags = TABLE_NAMES.map((_, i) =>
      replays.flatMap(({ path: file, rows }) => Array(rows[i]).fill(!gone.has(file))),
    );
    await this.#writer.copyTables(this.#format, this.#tableFiles(name), this.#temporaryTables(part), flags);
    this.#writeState(part, kept);
    return part;
  }
}

module.exports = { DataSet };
