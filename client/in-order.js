'use strict';
// Many reads at once whose results come in the order of their paths.

const { ReplayError } = require('./replay-error.js');

const ignore = () => {};

// The paths one after the other: next is the promise of an iterator's result, null once there are no more. An aborted
// signal rejects it, since the source itself may be stuck.
class PathSource {
  #iterator;
  #signal;
  #reject;
  #onAbort = () => this.#reject(ReplayError.aborted(this.#signal));

  constructor(paths, signal) {
    this.#iterator = (paths[Symbol.asyncIterator] ?? paths[Symbol.iterator]).call(paths);
    this.#signal = signal;
    signal?.addEventListener('abort', this.#onAbort);
    this.next = this.#advance();
  }

  // The next path was got.
  taken({ done }) {
    this.next = done ? null : this.#advance();
  }

  // Does not wait for the source to end.
  close() {
    this.#signal?.removeEventListener('abort', this.#onAbort);
    if (this.next !== null) this.#end().catch(ignore);
  }

  async #end() {
    return this.#iterator.return?.();
  }

  #advance() {
    const next = new Promise((resolve, reject) => {
      this.#reject = reject;
      this.#step().then(resolve, reject);
      if (this.#signal?.aborted) this.#onAbort();
    });
    next.catch(ignore); // nobody may be waiting for it now
    return next;
  }

  async #step() {
    return this.#iterator.next();
  }
}

async function checked(result) {
  const { error } = await result;
  if (error?.code === 'ERR_ABORTED') throw error;
  return result;
}

// Yields the result of read(path), or { path, error }, in the order of the paths, with enough reads ahead to keep the
// children busy. A result does not wait for the next path, which may come late.
async function* readInOrder(paths, { ahead, signal, read }) {
  const source = new PathSource(paths, signal);
  const results = [];
  try {
    while (source.next !== null || results.length > 0) {
      const awaited = results.slice(0, 1).map((first) => first.then(() => null));
      if (source.next !== null && results.length <= ahead) awaited.unshift(source.next);
      const step = await Promise.race(awaited);
      if (step === null) yield await checked(results.shift());
      else {
        source.taken(step);
        if (!step.done) results.push(read(step.value).catch((error) => ({ path: step.value, error })));
      }
    }
  } finally {
    source.close();
  }
}

// Makes `await using` end the iteration in versions of Node.js whose generators do not do so themselves.
function disposable(generator) {
  if (Symbol.asyncDispose !== undefined && !(Symbol.asyncDispose in generator)) {
    generator[Symbol.asyncDispose] = async () => void (await generator.return());
  }
  return generator;
}

module.exports = { disposable, readInOrder };
