'use strict';
// Runs part-files.js on its own thread, so that reading goes on at the same time. One order at a time.

const { once } = require('node:events');
const { isMainThread, parentPort, Worker } = require('node:worker_threads');

class PartWriter {
  #thread;

  writeTables(...args) {
    return this.#order('writeTables', args);
  }

  copyTables(...args) {
    return this.#order('copyTables', args);
  }

  async close() {
    await this.#thread?.terminate();
  }

  async #order(name, args) {
    this.#thread ??= new Worker(__filename);
    this.#thread.postMessage({ name, args });
    const [{ failure }] = await once(this.#thread, 'message');
    if (failure) throw Object.assign(new Error(failure.message), failure);
  }
}

// A posted error loses everything but its message.
async function obey({ name, args }) {
  try {
    await require('./part-files.js')[name](...args);
    parentPort.postMessage({});
  } catch (error) {
    const { message, code, syscall } = error;
    parentPort.postMessage({ failure: { message, code, syscall } });
  }
}

if (!isMainThread) parentPort.on('message', obey);

module.exports = { PartWriter };
