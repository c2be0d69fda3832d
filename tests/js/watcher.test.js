'use strict';
// The watcher in this process: demo folder, polling, parse and delivery, with replays that grow as the game writes them.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { afterEach, describe, it } = require('node:test');
const { DemoFolder, Watch, addonPath, idOf } = require('../support/demo-folder.js');
const w = require('../support/replay-writer.js');

const addon = require(addonPath);
const key = Buffer.from('000102030405060708090a0b0c0d0e0f', 'hex');
const keyHex = [...key].map((byte) => byte.toString(16).padStart(2, '0') + ' ').join('');
const elimination = { Group: 'playerElim', data: w.encrypt(w.playerElim({ damageType: 7 }), key) };
const encrypted = (id, EncryptionKey) =>
  w.replay(
    { Timestamp: BigInt(id), bEncrypted: 1, EncryptionKey },
    w.headerChunk(),
    w.eventChunk(elimination),
  );

describe('the watcher', { concurrency: 1 }, () => {
  const demo = new DemoFolder();
  afterEach(() => addon.StopCorvaneWatcher());

  it('takes a function and an ArrayBuffer, and nothing else', () => {
    assert.equal(addon.StopCorvaneWatcher(), undefined);
    const message = 'Expected 2 required arguments [jsCallbackFn, ArrayBuffer: encKey, <interval>]';
    const noKey = new ArrayBuffer(0);
    const callback = () => {};
    const sharedKey = new SharedArrayBuffer(16);
    for (const args of [
      [],
      [callback],
      [{}, noKey],
      ...[new Uint8Array(16), 'key', sharedKey].map((key) => [callback, key]),
    ]) {
      assert.throws(() => addon.StartCorvaneWatcher(...args), { name: 'TypeError', message });
    }
  });

  it('follows each file from created to erased and back', async () => {
    const files = {
      'ä世😀.replay': [1],
      'key in file.replay': [2, encrypted(2, key)],
      'key from JavaScript.replay': [3, encrypted(3, Buffer.alloc(16))],
      'sub/deeper/below.replay': [4],
      'not a replay.replay': [undefined, Buffer.from('something else that is long enough')],
      'CAPITALS.REPLAY': [6],
      'replay.txt': [7],
      '.replay': [8],
    };
    const names = Object.keys(files);
    const bystander = 'there before.replay';
    demo.write(bystander, 9);
    const keyForAll = Uint8Array.from(key).buffer;
    const watch = new Watch(addon).start(keyForAll, 'ignored');
    new Uint8Array(keyForAll).fill(0xff); // the watcher has its own copy
    const byId = (payloads) => new Map(payloads.map((payload) => [idOf(payload), payload]));
    const grow = () => names.forEach((name) => demo.grow(name));

    for (const [name, [id, bytes]] of Object.entries(files)) demo.write(name, id, bytes);
    fs.mkdirSync(demo.path('folder.replay'));
    assert.deepEqual(await watch.settle(demo), []);

    // Modified for the first time: all carry "Creation".
    grow();
    fs.writeFileSync(demo.path('folder.replay', 'inside'), ''); // a folder that is modified is no replay
    const first = byId(await watch.settle(demo));
    assert.deepEqual(new Set(first.keys()), new Set([1, 2, 3, 4, undefined]));
    for (const [name, [id]] of Object.entries(files).slice(0, 5)) {
      const { document, text } = first.get(id);
      const fileName = demo.path(...name.split('/'));
      assert.deepEqual(document.Creation, { fileName, timestamp: id ?? 0 });
      assert.equal(document.PlayerStateEncryptionKey, id === 2 ? 1 : undefined);
      assert.equal('GameAlive' in document, false);
      assert.ok(text.startsWith('{\n "Creation": {\n  "fileName": "'));
    }
    for (const id of [2, 3]) {
      assert.equal(first.get(id).document.ReplayFileMeta.EncryptionKey, keyHex);
      assert.equal(first.get(id).document.events[0].damageType, 7);
    }

    // Modified again: only what the file's state says, and for the file of which nothing is known "GameAlive".
    grow();
    const second = byId(await watch.settle(demo));
    assert.equal(second.size, 5);
    assert.deepEqual(second.get(undefined).document, { GameAlive: 1 });
    for (const [id, { document }] of second) {
      assert.equal('Creation' in document, false);
      assert.equal(document.PlayerStateEncryptionKey, id === 2 ? 1 : undefined);
      // The scan goes on where the last one ended, after all chunks with something to tell.
      if (id !== undefined) assert.deepEqual(Object.keys(document).slice(-1), ['ReplayFileMeta']);
    }

    // Erased, and created again: its state outlives it, so the next payload has no "Creation".
    fs.rmSync(demo.path(names[0]));
    assert.deepEqual(await watch.settle(demo), []);
    demo.write(names[0], 1);
    assert.deepEqual(await watch.settle(demo), []);
    demo.grow(names[0]);
    demo.grow(bystander);
    const third = byId(await watch.settle(demo));
    assert.equal('Creation' in third.get(1).document, false);
    assert.equal(third.get(9).document.Creation.timestamp, 9);
  });

  it('spaces payloads by 100 ms; Stop waits for those that are due, but not for the spaces', async () => {
    const ids = Array.from({ length: 200 }, (_, i) => 1000 + i);
    ids.forEach((id) => demo.write(`many ${id}.replay`, id));
    const files = ids.map((id) => fs.openSync(demo.path(`many ${id}.replay`), 'a'));
    const watch = new Watch(addon).start();
    // Quickly: the first look must find all of them modified.
    for (const file of files) fs.writeSync(file, 'more');
    files.forEach((file) => fs.closeSync(file));
    const few = await watch.take(10);
    const took = few[9].at - few[0].at; // 900 ms between sending them
    assert.ok(took >= 500, `${took}`);
    const began = performance.now();
    addon.StopCorvaneWatcher();
    assert.ok(performance.now() - began < 12_000); // with them it would be 19 s
    const all = [...few, ...(await watch.take(190))].map(idOf);
    assert.deepEqual(
      all.sort((a, b) => a - b),
      ids,
    );
    demo.clear();
    demo.create();
  });

  it('tells nothing after Stop, and starts afresh then', async () => {
    demo.write('a.replay', 20);
    const watches = Array.from({ length: 3 }, () => new Watch(addon));
    for (const watch of watches) {
      watch.start();
      demo.grow('a.replay');
      assert.ok('Creation' in (await watch.take(1))[0].document);
      addon.StopCorvaneWatcher();
      addon.StopCorvaneWatcher();
      demo.grow('a.replay');
    }
    assert.deepEqual(
      watches.map(({ payloads }) => payloads),
      [[], [], []],
    );
  });

  it('gives a callback that takes over what was not told yet, and each replay from its start', async () => {
    const ids = Array.from({ length: 20 }, (_, i) => 40 + i);
    ids.forEach((id) => demo.write(`${id}.replay`, id));
    const first = new Watch(addon).start();
    const grow = () => ids.forEach((id) => demo.grow(`${id}.replay`));
    grow();
    assert.equal((await first.settle(demo)).length, 20);
    grow();
    const told = await first.take(1);
    const second = new Watch(addon).start(); // in the middle of a cycle
    const rest = await second.settle(demo);
    assert.ok(rest.every(({ document }) => 'Creation' in document && 'header' in document));
    const all = [...told, ...first.payloads, ...rest].map(idOf).filter((id) => ids.includes(id));
    assert.deepEqual(
      [...new Set(all)].sort((a, b) => a - b),
      ids,
    );
    // The one that was being read goes to both.
    assert.ok(all.length <= ids.length + 1 && rest.length > 10, `${all.length}, ${rest.length}`);
  });

  it('can be started again and again inside deliveries', async () => {
    demo.write('a.replay', 21);
    let starts = 0;
    await new Promise((resolve) => {
      const callback = () => {
        if (++starts >= 8) return resolve(); // payloads queued meanwhile come here as well
        addon.StartCorvaneWatcher(callback, new ArrayBuffer(0));
        demo.grow('a.replay');
      };
      callback();
    });
    addon.StopCorvaneWatcher();
  });

  it('says so when there is no demo folder; a watcher that runs goes on with the new callback', async () => {
    const err = { err: "Couldn't locate Corvane's Demo Directory." };
    addon.StopCorvaneWatcher();
    demo.clear();
    const idle = new Watch(addon);
    const began = performance.now();
    idle.start();
    assert.ok(performance.now() - began >= 100);
    assert.deepEqual(idle.payloads, []);
    assert.deepEqual((await idle.take(1))[0].document, err);

    // Something that is there, but cannot be listed.
    fs.mkdirSync(path.dirname(demo.demos), { recursive: true });
    fs.writeFileSync(demo.demos, '');
    assert.throws(() => idle.start(), /recursive_directory_iterator::recursive_directory_iterator/);
    fs.rmSync(demo.demos);

    demo.create();
    const running = new Watch(addon).start();
    await running.settle(demo);
    fs.renameSync(demo.demos, demo.demos + ' aside');
    const next = new Watch(addon).start();
    assert.deepEqual((await next.take(1))[0].document, err);
    fs.renameSync(demo.demos + ' aside', demo.demos);
    await next.settle(demo);
    assert.deepEqual([running.payloads, idle.payloads], [[], []]);
  });
});
