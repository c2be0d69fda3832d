'use strict';
// For the command line: what a module makes of many matches, in the children.

const { ChildPool } = require('./child-pool.js');
const { disposable, readInOrder } = require('./in-order.js');
const options = require('./options.js');
const { ReplayError } = require('./replay-error.js');

// A child gets this many replays at once at most: fewer messages are less work for the process that takes them.
const BATCH = 16;

// Fewer if there are few, so that all children have work to the end; and one if each has its own time limit.
function batchesOf(paths, children, timeout) {
  const most = timeout === undefined ? BATCH : 1;
  const size = Math.max(1, Math.min(most, Math.floor(paths.length / (4 * children))));
  const count = Math.ceil(paths.length / size);
  return Array.from({ length: count }, (_, i) => paths.slice(i * size, (i + 1) * size));
}

function resultOf(path, answer) {
  try {
    ReplayError.check(answer, path);
    return { path, match: answer.reduced };
  } catch (error) {
    return { path, error };
  }
}

// Resolves with a result for each path. A child that has made much of some replays leaves the rest of a batch. When a batch
// fails as a whole, each of its replays is read alone: then it shows which of them it was.
async function readBatch(pool, paths, order, limits) {
  const results = [];
  while (results.length < paths.length)
    results.push(...(await readSome(pool, paths.slice(results.length), order, limits)));
  return results;
}

async function readSome(pool, paths, order, { signal, timeout }) {
  const [path] = paths;
  const finish = (answer) => {
    ReplayError.check(answer, path);
    return answer.results.map((result, i) => resultOf(paths[i], result));
  };
  try {
    const replays = paths.map((name) => ({ name, path: options.filePath(name) }));
    return await pool.run({ ...order, replays }, { path, signal, timeout, finish });
  } catch (error) {
    if (error.code === 'ERR_ABORTED') throw error;
    if (paths.length === 1) return [{ path, error }];
    const alone = await Promise.all(paths.map((each) => readSome(pool, [each], order, { signal, timeout })));
    return alone.flat();
  }
}

async function* results(paths, reduce, given) {
  const limits = options.matchLimits(given, ['concurrency']);
  const { signal, timeout, concurrency, ...order } = limits;
  const ahead = options.concurrency(concurrency);
  const pool = new ChildPool(ahead, options.execPath());
  const read = (batch) => readBatch(pool, batch, { ...order, reduce }, limits);
  try {
    for await (const batch of readInOrder(batchesOf(paths, ahead, timeout), { ahead, signal, read }))
      yield* batch;
  } finally {
    await pool.close();
  }
}

// As readMatches(), for an array of strings, but each `match` is what reduce(match) of a module makes of it, in the child.
// reduce: the module's absolute path. What it returns must be such as can be cloned.
const reduceMatches = (...given) => disposable(results(...given));

module.exports = { reduceMatches };
