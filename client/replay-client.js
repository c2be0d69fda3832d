'use strict';
// Reading without risk for the application: every replay is parsed in a child process.

const options = require('./options.js');
const { ChildPool } = require('./child-pool.js');
const { ReplayError } = require('./replay-error.js');
const { ReplayWatch } = require('./replay-watch.js');

async function readText(pool, path, { key, signal, timeout }) {
  const file = options.filePath(path);
  const name = typeof path === 'string' ? path : file;
  const { text, code, reason } = await pool.run({ path: file, key }, { path: name, signal, timeout });
  if (code !== undefined) throw new ReplayError(code, reason, name);
  try {
    return text.toString('utf8');
  } catch (error) {
    throw new ReplayError('ERR_OUT_OF_MEMORY', error.message, name, { cause: error });
  }
}

const readDocument = async (...reading) => JSON.parse(await readText(...reading));

async function taken(results) {
  const result = await results.shift();
  if (result.error?.code === 'ERR_ABORTED') throw result.error;
  return result;
}

// Yields what read(path) comes to, in the order of the paths, with as many reads ahead as keep the children busy.
async function* readInOrder(paths, ahead, read) {
  const results = [];
  for (const path of paths) {
    results.push(read(path).catch((error) => ({ path, error })));
    if (results.length > ahead) yield await taken(results);
  }
  while (results.length > 0) yield await taken(results);
}

// A set of child processes of its own. The package's functions belong to one client that is made of the defaults.
class ReplayClient {
  #concurrency;
  #execPath;
  #open = new Set(); // what close() has to close
  #isClosed = false;
  #pool;

  // concurrency: how many children read at once (default: one per processor). execPath: the program that runs the
  // children (default: the running one): Node.js, or what is Node.js with ELECTRON_RUN_AS_NODE.
  constructor(given) {
    const { concurrency, execPath } = options.object(given);
    this.#concurrency = options.concurrency(concurrency);
    this.#execPath = options.execPath(execPath);
    this.#pool = this.#added(() => new ChildPool(this.#concurrency, this.#execPath));
  }

  // Resolves with the document of one replay; rejects with a ReplayError.
  async readReplay(path, limits) {
    return readDocument(this.#pool, path, options.limits(limits));
  }

  // The same as JSON text, in which 64-bit numbers have all their digits.
  async readReplayText(path, limits) {
    return readText(this.#pool, path, options.limits(limits));
  }

  // Reads many, with `concurrency` children of its own that end with the iteration. Yields { path, document } or
  // { path, error } for each path, in order. Throws ERR_ABORTED, and ERR_INVALID_ARGUMENT for what concerns all paths.
  readReplays(paths, limits) {
    return this.#readMany('document', readDocument, paths, limits);
  }

  // The same with { path, text }.
  readReplayTexts(paths, limits) {
    return this.#readMany('text', readText, paths, limits);
  }

  // A ReplayWatch over the demo folder. Throws ERR_INVALID_ARGUMENT.
  watchReplays(limits) {
    const { key, signal } = options.limits(limits);
    const readAgain = (path, again) => readDocument(this.#pool, path, again);
    const watchOptions = { key, signal, readAgain, execPath: this.#execPath };
    const watch = this.#added(() => new ReplayWatch(watchOptions));
    watch.once('close', () => this.#open.delete(watch));
    return watch;
  }

  // Ends what is under way with ERR_ABORTED and closes the watches. Resolves when no child process is left. The client
  // is of no use afterwards.
  async close() {
    this.#isClosed = true;
    await Promise.all([...this.#open].map((part) => part.close()));
  }

  async *#readMany(name, readOne, paths, given = {}) {
    const limits = options.limits(given);
    const { concurrency = this.#concurrency } = given;
    const count = options.concurrency(concurrency);
    const list = options.pathList(paths);
    const pool = this.#added(() => new ChildPool(count, this.#execPath));
    try {
      yield* readInOrder(list, count, async (path) => ({ path, [name]: await readOne(pool, path, limits) }));
    } finally {
      this.#open.delete(pool);
      await pool.close();
    }
  }

  #added(make) {
    if (this.#isClosed) throw new ReplayError('ERR_ABORTED', 'the client is closed');
    const part = make();
    this.#open.add(part);
    return part;
  }
}

module.exports = { ReplayClient };
