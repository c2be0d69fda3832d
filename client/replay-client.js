'use strict';
// Reading without risk for the application: every replay is parsed in a child process.

const options = require('./options.js');
const { ChildPool } = require('./child-pool.js');
const { disposable, readInOrder } = require('./in-order.js');
const { matchOf } = require('./match.js');
const { ReplayError } = require('./replay-error.js');
const { ReplayWatch } = require('./replay-watch.js');
const { watchMatches } = require('./match-watch.js');

// Each makes a result from a child's answer { text, facts?, code, reason, hint } and the name of the file.
function textOf(answer, name) {
  ReplayError.check(answer, name);
  return decoded(answer.text, name);
}

function decoded(bytes, name) {
  try {
    return bytes.toString('utf8');
  } catch (error) {
    throw new ReplayError('ERR_OUT_OF_MEMORY', error.message, name, { cause: error });
  }
}

const documentOf = (answer, name) => JSON.parse(textOf(answer, name));

function matchOfAnswer(answer, name, { damageNames }) {
  const text = textOf(answer, name);
  const facts = answer.facts && JSON.parse(decoded(answer.facts, name));
  return matchOf(JSON.parse(text), { path: name, text, facts, damageNames });
}

// make: one of those above.
async function read(pool, make, path, { key, maxDocumentBytes, signal, timeout, salvage, ...more }) {
  const file = options.filePath(path);
  const name = typeof path === 'string' ? path : file;
  const request = { path: file, key, maxDocumentBytes };
  if (make === matchOfAnswer) Object.assign(request, { facts: true, salvage });
  return pool.run(request, { path: name, signal, timeout, finish: (answer) => make(answer, name, more) });
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
    const { concurrency, execPath } = options.clientOptions(given);
    this.#concurrency = options.concurrency(concurrency);
    this.#execPath = options.execPath(execPath);
    this.#pool = this.#added(() => new ChildPool(this.#concurrency, this.#execPath));
  }

  // Resolves with the document of one replay; rejects with a ReplayError.
  async readReplay(path, limits) {
    return read(this.#pool, documentOf, path, options.limits(limits));
  }

  // The same as JSON text, in which 64-bit numbers have all their digits.
  async readReplayText(path, limits) {
    return read(this.#pool, textOf, path, options.limits(limits));
  }

  // Reads many, with `concurrency` children of its own that end with the iteration. Yields { path, document } or
  // { path, error } for each path, in order. Throws ERR_ABORTED, and ERR_INVALID_ARGUMENT for what concerns all paths.
  readReplays(paths, limits) {
    return this.#readMany('document', documentOf, paths, options.limits, limits);
  }

  // The same with { path, text }.
  readReplayTexts(paths, limits) {
    return this.#readMany('text', textOf, paths, options.limits, limits);
  }

  // Resolves with the match of one replay. salvage: what is whole of a broken one is enough.
  async readMatch(path, limits) {
    return read(this.#pool, matchOfAnswer, path, options.matchLimits(limits));
  }

  // The same for many, as readReplays(): yields { path, match } or { path, error }.
  readMatches(paths, limits) {
    return this.#readMany('match', matchOfAnswer, paths, options.matchLimits, limits);
  }

  // A ReplayWatch over a folder. Throws ERR_INVALID_ARGUMENT.
  watchReplays(given) {
    return this.#watch(options.watchLimits(given));
  }

  // The matches of a folder while they are recorded: match-watch.js. Throws ERR_INVALID_ARGUMENT.
  watchMatches(given) {
    const { endAfterMs, damageNames, ...limits } = options.matchWatchLimits(given);
    let watch;
    const matches = watchMatches(() => (watch = this.#watch(limits)), { endAfterMs, damageNames });
    const end = matches.return.bind(matches);
    // The generator itself would wait for the next change first.
    matches.return = async (value) => {
      await watch?.close();
      return end(value);
    };
    return disposable(matches);
  }

  #watch(limits) {
    const watch = this.#added(() => new ReplayWatch({ ...limits, execPath: this.#execPath }));
    watch.once('close', () => this.#open.delete(watch));
    return watch;
  }

  // Ends what is under way with ERR_ABORTED and closes the watches. Resolves when no child process is left. The client
  // is of no use afterwards.
  async close() {
    this.#isClosed = true;
    await Promise.all([...this.#open].map((part) => part.close()));
  }

  #readMany(...reading) {
    return disposable(this.#results(...reading));
  }

  async *#results(name, make, paths, limitsOf, given) {
    const { concurrency = this.#concurrency, ...limits } = limitsOf(given, ['concurrency']);
    const ahead = options.concurrency(concurrency);
    const list = options.pathList(paths);
    const pool = this.#added(() => new ChildPool(ahead, this.#execPath));
    const readOne = async (path) => ({ path, [name]: await read(pool, make, path, limits) });
    try {
      yield* readInOrder(list, { ahead, signal: limits.signal, read: readOne });
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

if (Symbol.asyncDispose) ReplayClient.prototype[Symbol.asyncDispose] = ReplayClient.prototype.close;

module.exports = { ReplayClient };
