'use strict';
// The folder of an export.
//
//     TABLE/part-NAME.EXTENSION   rows of some replays, the same ones in every table
//     _state/part-NAME.json       which replays these are, as they were when they were read, and how many rows each has
//     _state/commit-SHARD.json    new parts, and old parts that they replace: written when all new parts are complete
//                                 under temporary names, removed when they have replaced the old ones
//     _state/lock-SHARD.json      see share-lock.js
//
// A run may be interrupted at any moment. If the commit file is there, the next run completes the commit; if not, it
// deletes the unfinished parts. Temporary names end in .tmp: patterns for the tables, such as *.parquet, leave them out.

const fs = require('node:fs');
const path = require('node:path');
const { failureOf, usageFailure } = require('../failures.js');
const { flush, readJson } = require('./files.js');
const { FORMATS } = require('./formats.js');
const partFiles = require('./part-files.js');
const { lockShare } = require('./share-lock.js');

const { TABLE_NAMES } = partFiles;
const FOLDERS = [...TABLE_NAMES, '_state'];
const PART = /^part-(\d+of\d+)-(\d+)\.json$/;
const TABLE_FILE = /^(part-(\d+of\d+)-\d+)\.(\w+)$/;

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
  #owners = new Map(); // path of a replay -> { part, size, mtimeMs, settings, code }
  #lastNumber = 0;
  #release = () => {}; // gives the lock back

  // shard: "1of1" or another share. writer: writes the tables.
  constructor(folder, format, shard, writer = partFiles) {
    this.#folder = folder;
    this.#format = format;
    this.#shard = shard;
    this.#writer = writer;
  }

  // Makes the folder, or goes on with what is in it. Fails while somebody else is writing the share. close() must follow,
  // whether it fails or not.
  open() {
    return writing(() => {
      for (const name of FOLDERS) fs.mkdirSync(path.join(this.#folder, name), { recursive: true });
      this.#release = lockShare(path.join(this.#folder, '_state'), this.#shard);
      const shards = this.#shardsToRepair();
      for (const shard of shards) this.#complete(shard);
      for (const shard of shards) this.#removeTemporaries(shard);
      this.#checkCommits();
      this.#checkFiles();
      this.#load();
    });
  }

  close() {
    return writing(this.#release);
  }

  // How the replay at this absolute path was when it was read: { size, mtimeMs, settings, code }; undefined if it was not.
  known(file) {
    return this.#owners.get(file);
  }

  // Fails if a share would have to replace rows of a run without shares: the other shares may need the same part.
  checkReplaceable(files) {
    if (this.#shard === '1of1') return;
    const isJoined = (file) => this.#owners.get(file)?.part.startsWith('part-1of1-');
    const found = files.find(isJoined);
    if (found === undefined) return;
    throw usageFailure(
      `${found} was exported without --shard: go on without it, or export into a new folder`,
    );
  }

  // Adds replays, a list of { path, size, mtimeMs, settings, code, rows }, and replaces what is known of them. rows: how many
  // rows each has in each table; packs: what the rows are made of, see packed-match.js. One call at a time.
  commit(replays, packs) {
    return writing(async () => {
      this.#checkFiles();
      const commit = await this.#prepare(replays, packs).catch((error) => this.#giveUp(error));
      if (!this.#apply(commit))
        throw failureOf('ERR_OUTPUT', `somebody else has deleted new files in ${this.#folder}`);
      for (const name of commit.remove) this.#parts.delete(name);
      for (const name of commit.add) this.#know(name);
    });
  }

  // Writes the new parts under temporary names, and the commit file.
  async #prepare(replays, packs) {
    const paths = new Set(replays.map((replay) => replay.path));
    const stale = this.#partsOf(paths);
    const add = [await this.#writePart(replays, packs)];
    for (const name of stale) {
      const kept = await this.#writeRest(name, paths);
      if (kept !== undefined) add.push(kept);
    }
    const commit = { format: this.#format, add, remove: [...stale] };
    this.#writeTemporary(this.#commitFile(), commit);
    fs.renameSync(this.#temporary(this.#commitFile()), this.#commitFile());
    return commit;
  }

  // Half files would only fill a full disk.
  #giveUp(error) {
    try {
      this.#removeTemporaries(this.#shard);
    } catch {
      // the first failure is the one to tell
    }
    throw error;
  }

  // Without shards nobody else is at work, so what other shards left is completed or deleted too.
  #shardsToRepair() {
    if (this.#shard !== '1of1') return [this.#shard];
    const names = FOLDERS.flatMap((name) => fs.readdirSync(path.join(this.#folder, name)));
    const found = names.map((name) => /^(?:commit-|\.)(\d+of\d+)[.~]/.exec(name)?.[1]).filter(Boolean);
    return [...new Set([this.#shard, ...found])];
  }

  #complete(shard) {
    const file = this.#commitFile(shard);
    if (!fs.existsSync(file)) return;
    const commit = readJson(file, 'export into a new folder');
    this.#checkFormat(commit.format);
    this.#apply(commit, shard);
  }

  #checkFormat(format) {
    if (format === this.#format) return;
    throw usageFailure(`${this.#folder} holds an export as ${format}, and takes no other format`);
  }

  // A share may have to replace rows of a run without shares, but cannot complete its commit: other shares may be at it.
  #checkCommits() {
    if (this.#shard === '1of1' || !fs.existsSync(this.#commitFile('1of1'))) return;
    throw failureOf(
      'ERR_OUTPUT',
      `a run without --shard was interrupted in ${this.#folder}: repeat it first`,
    );
  }

  // Other shards may have written since. A part's tables appear before its state.
  #checkFiles() {
    const names = fs.readdirSync(path.join(this.#folder, TABLE_NAMES[0]));
    const states = new Set(fs.readdirSync(path.join(this.#folder, '_state')));
    const known = Object.entries(FORMATS);
    for (const name of names) {
      const [, part, shard, suffix] = TABLE_FILE.exec(name) ?? [];
      const [format] = known.find(([, { extension }]) => extension === suffix) ?? [];
      if (format === undefined) continue;
      this.#checkFormat(format);
      // Without its state a part's rows would stay beside those that are read anew.
      if (this.#sharesReplays(shard) && !states.has(`${part}.json`)) {
        throw failureOf('ERR_OUTPUT', `${this.#stateFile(part)} is not there: ${this.#advice(part)}`);
      }
    }
  }

  #advice(part) {
    return `delete ${part}.* in all folders of ${this.#folder}, and export again`;
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

  #temporary(file, shard = this.#shard) {
    return path.join(path.dirname(file), `.${shard}~${path.basename(file)}.tmp`);
  }

  #writeTemporary(file, content) {
    const temporary = this.#temporary(file);
    fs.writeFileSync(temporary, JSON.stringify(content));
    flush(temporary);
  }

  // Can be repeated after an interruption: new parts appear before the old ones go. False if files of the new parts are
  // missing: then the rest of them goes, and the old ones stay.
  #apply({ add, remove }, shard = this.#shard) {
    const added = add.flatMap((part) => this.#filesOf(part));
    const isTemporary = (file) => fs.existsSync(this.#temporary(file, shard));
    const isWhole = added.every((file) => isTemporary(file) || fs.existsSync(file));
    const renamed = isWhole ? added.filter(isTemporary) : [];
    const gone = isWhole ? remove.flatMap((part) => this.#filesOf(part)) : added;
    for (const file of renamed) fs.renameSync(this.#temporary(file, shard), file);
    for (const file of gone) fs.rmSync(file, { force: true });
    fs.rmSync(this.#commitFile(shard), { force: true });
    return isWhole;
  }

  #removeTemporaries(shard) {
    for (const name of FOLDERS) {
      const folder = path.join(this.#folder, name);
      for (const file of fs.readdirSync(folder)) {
        if (file.startsWith(`.${shard}~`)) fs.rmSync(path.join(folder, file), { force: true });
      }
    }
  }

  // Other shares of the same number have other replays, and may be at work.
  #sharesReplays(shard) {
    return shard === this.#shard || [shard, this.#shard].includes('1of1');
  }

  // Whether the parts of a share matter here.
  #concerns(shard) {
    if (this.#sharesReplays(shard)) return true;
    const [own, other] = [this.#shard, shard].map((each) => each.split('of')[1]);
    if (own === other) return false;
    throw usageFailure(
      `${this.#folder} was written with another --shard, i/${other}: use that, or export into a new folder`,
    );
  }

  #load() {
    for (const file of fs.readdirSync(path.join(this.#folder, '_state'))) {
      const [, shard, number] = PART.exec(file) ?? [];
      if (shard === undefined || !this.#concerns(shard)) continue;
      if (shard === this.#shard) this.#lastNumber = Math.max(this.#lastNumber, Number(number));
      this.#know(path.basename(file, '.json'));
    }
  }

  #know(part) {
    const state = readJson(this.#stateFile(part), this.#advice(part));
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
    return parts;
  }

  #newPart() {
    this.#lastNumber += 1;
    return `part-${this.#shard}-${String(this.#lastNumber).padStart(6, '0')}`;
  }

  #writeState(part, replays) {
    this.#writeTemporary(this.#stateFile(part), { format: this.#format, replays });
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
