'use strict';
// The folder that the add-on watches, and a watcher whose payloads a test can wait for. On Linux each test process has
// a folder of its own. On Windows there is one per user (under Wine, one per prefix), so test processes take turns.

const assert = require('node:assert/strict');
const { once } = require('node:events');
const fs = require('node:fs');
const net = require('node:net');
const path = require('node:path');
const { after, before } = require('node:test');
const { setTimeout: sleep } = require('node:timers/promises');
const { addonPath } = require('./reads.js');
const { temporaryFolder } = require('./run.js');
const w = require('./replay-writer.js');

const TURN_PORT = 21763; // below those that systems give out

// Having the port is having the turn: even a killed process gives it back.
async function takeTurn() {
  for (;;) {
    const server = net.createServer();
    server.listen(TURN_PORT, '127.0.0.1');
    try {
      await once(server, 'listening');
      return server.unref();
    } catch (error) {
      if (error.code !== 'EADDRINUSE') throw error;
      await sleep(200);
    }
  }
}

class DemoFolder {
  // Claims the folder for the tests of the suite in which it is called, from its first one to its last.
  constructor() {
    let turn;
    before(async () => {
      if (process.platform === 'win32') turn = await takeTurn();
      else process.env.LOCALAPPDATA = temporaryFolder();
      this.game = path.join(process.env.LOCALAPPDATA, 'CorvaneGame');
      this.marker = path.join(this.game, 'made by tests');
      this.demos = path.join(this.game, 'Saved', 'Demos');
      this.clear();
      this.create();
    });
    after(() => {
      this.clear();
      turn?.close();
    });
  }

  create() {
    fs.mkdirSync(this.demos, { recursive: true });
    fs.writeFileSync(this.marker, '');
  }

  // Never the folder of a person who plays the game.
  clear() {
    if (!fs.existsSync(this.game)) return;
    assert.ok(fs.existsSync(this.marker), `${this.game} is not the tests' own: they leave it alone`);
    fs.rmSync(this.game, { recursive: true, force: true, maxRetries: 10 });
  }

  path(...names) {
    return path.join(this.demos, ...names);
  }

  // A replay whose payloads tell by their "Timestamp" which one they are of; reading version 5 prints nothing. It appears
  // under its name as a whole, since the watcher may look at any moment.
  write(name, id, bytes = w.replay({ FileVersion: 5, Timestamp: BigInt(id) }, w.headerChunk())) {
    fs.mkdirSync(path.dirname(this.path(name)), { recursive: true });
    fs.writeFileSync(this.path('unfinished.tmp'), bytes);
    fs.renameSync(this.path('unfinished.tmp'), this.path(name));
  }

  grow(name, bytes = w.chunk(w.CHUNK.replayData, Buffer.alloc(8))) {
    fs.appendFileSync(this.path(name), bytes);
  }
}

// One callback for StartCorvaneWatcher.
class Watch {
  constructor(addon) {
    this.addon = addon;
    this.payloads = []; // { at: ms, text, document } that no test has taken yet
    this.callback = (...args) => {
      assert.equal(args.length, 1);
      this.payloads.push({ at: performance.now(), text: args[0], document: JSON.parse(args[0]) });
    };
  }

  start(key = new ArrayBuffer(0), ...interval) {
    assert.equal(this.addon.StartCorvaneWatcher(this.callback, key, ...interval), undefined);
    return this;
  }

  // The next payloads, in the order in which they came.
  async take(count, patience = 30_000) {
    for (const end = performance.now() + patience; this.payloads.length < count; await sleep(5)) {
      assert.ok(performance.now() < end, `${this.payloads.length} of ${count} payloads came`);
    }
    return this.payloads.splice(0, count);
  }

  // All payloads of what has happened so far. A probe is written again and again. The cycle that tells it first may have
  // looked before; the next one tells all that has happened, and that has come when the probe is told for the third time.
  async settle(demo) {
    const seen = [];
    for (let told = 0; told < 3; await sleep(50)) {
      if (fs.existsSync(demo.path('probe.replay'))) demo.grow('probe.replay');
      else demo.write('probe.replay', PROBE);
      const payloads = this.payloads.splice(0);
      told += payloads.filter((payload) => idOf(payload) === PROBE).length;
      seen.push(...payloads.filter((payload) => idOf(payload) !== PROBE));
    }
    return seen;
  }
}

const PROBE = 4711;

const idOf = (payload) => payload.document.ReplayFileMeta?.Timestamp;

module.exports = { DemoFolder, Watch, addonPath, idOf, sleep };
