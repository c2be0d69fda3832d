'use strict';
// node watch-child.js SCENARIO ARGUMENT...: a process that watches the demo folder and ends as the scenario says.

const { createHook } = require('node:async_hooks');
const fs = require('node:fs');
const path = require('node:path');
const { setTimeout: sleep } = require('node:timers/promises');
const { Worker, isMainThread, parentPort, workerData } = require('node:worker_threads');
const w = require('./replay-writer.js');

const addonPath = process.env.CORVANE_ADDON;
const file = path.join(process.env.LOCALAPPDATA, 'CorvaneGame', 'Saved', 'Demos', `${process.pid}.replay`);
const noKey = new ArrayBuffer(0);
const say = (text) => fs.writeSync(1, text + '\n'); // at once, whatever happens next
const grow = () => fs.appendFileSync(file, w.chunk(w.CHUNK.replayData, Buffer.alloc(8)));
const create = (...chunks) => fs.writeFileSync(file, w.replay({ FileVersion: 5 }, ...chunks));
const start = (callback = () => say('payload')) => require(addonPath).StartCorvaneWatcher(callback, noKey);
const stop = () => require(addonPath).StopCorvaneWatcher();

// What a process does: when its function is done, nothing but the watcher may keep the process alive.
const scenarios = {
  // process.exit() while payloads are on their way.
  exit(milliseconds) {
    create();
    start(() => {});
    setInterval(grow, 20);
    setTimeout(() => {
      say(`exiting at ${Date.now()}`);
      process.exit(7);
    }, Number(milliseconds));
  },

  // process.exit() while workers load the add-on and get its errors.
  exitDuringErrors(milliseconds) {
    const workers = Array.from(
      { length: 4 },
      () => new Worker(__filename, { workerData: { isWrong: true } }),
    );
    const online = workers.map((worker) => new Promise((resolve) => worker.once('online', resolve)));
    Promise.all(online).then(() => setTimeout(() => process.exit(7), Number(milliseconds)));
  },

  async stopped() {
    create();
    start();
    start();
    await sleep(100);
    grow();
    stop();
    say('stopped');
  },

  stoppedByHook() {
    createHook({ init: (id, type) => type === 'fnReplayData' && stop() }).enable();
    start();
    stop();
    say('stopped');
  },

  // A key of this many bytes, in a file without blocks, makes a text of three times that. Another replay is told
  // afterwards.
  tooLong(bytes) {
    const [long, hidden] = [`${file}.replay`, `${file}.tmp`];
    const head = w.infoBlock({ EncryptionKey: Buffer.of(1), keySize: Number(bytes) });
    fs.writeFileSync(hidden, head);
    fs.truncateSync(hidden, head.length + Number(bytes) - 1);
    fs.utimesSync(hidden, 1, 1);
    fs.writeFileSync(long, '');
    create();
    let count = 0;
    start(() => {
      say('payload');
      if (++count === 2) stop();
      else grow();
    });
    fs.renameSync(hidden, long);
    grow();
  },

  noFolder() {
    start((text) => say(JSON.stringify(JSON.parse(text))));
  },

  throws() {
    create();
    const thrown = new Error('thrown by the callback');
    let count = 0;
    process.on('uncaughtException', (error) => {
      say(error === thrown ? 'the error' : `another: ${error}`);
      if (++count === 2) stop();
      else grow();
    });
    start(() => {
      throw thrown;
    });
    grow();
  },

  broken(what) {
    create();
    start();
    if (what === 'header') create(w.headerChunk(), w.headerChunk());
    else fs.writeFileSync(file, w.replay({ bEncrypted: 1 }, w.eventChunk({ data: w.playerElim() })));
  },

  // Workers that watch, each ended at another time, a third of them around the first delivery; then this thread can
  // still watch. With the add-on loaded by this thread first, or not: then it comes and goes with each worker.
  async workers(count, addonFirst) {
    create();
    if (addonFirst) require(addonPath);
    const growing = setInterval(grow, 20);
    for (let i = 0; i < Number(count); ++i) {
      const exitsItself = i % 2 === 1;
      if (addonFirst) start(() => {}); // and the worker takes over
      const milliseconds = i % 3 === 0 ? 490 + 3 * i : 2 * i;
      const worker = new Worker(__filename, { workerData: { exitsItself, milliseconds } });
      const ended = new Promise((resolve) => worker.once('exit', resolve));
      await new Promise((resolve) => worker.once('message', resolve));
      if (!exitsItself) worker.terminate();
      const code = await ended;
      if (code !== (exitsItself ? 5 : 1)) say(`worker ${i} ended with ${code}`);
    }
    await new Promise((resolve) => start(resolve));
    clearInterval(growing);
    stop();
    say('done');
  },
};

async function worker({ isWrong, exitsItself, milliseconds }) {
  while (isWrong) {
    try {
      require(addonPath).ReadCorvaneDemo();
    } catch {
      delete require.cache[addonPath];
    }
  }
  start(() => {});
  await sleep(milliseconds);
  parentPort.postMessage('watching');
  if (exitsItself) process.exit(5);
  setInterval(() => {}, 1000);
}

if (isMainThread) scenarios[process.argv[2]](...process.argv.slice(3));
else worker(workerData);
