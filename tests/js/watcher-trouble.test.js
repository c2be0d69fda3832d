'use strict';
// What may happen to the demo folder while it is watched: none of it ends the process or hides a change for good.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { after, before, describe, it } = require('node:test');
const { DemoFolder, Watch, addonPath, idOf, sleep } = require('../support/demo-folder.js');
const w = require('../support/replay-writer.js');

const addon = require(addonPath);
const PROBE = 99;

describe('the watcher in trouble', { concurrency: 1 }, () => {
  const demo = new DemoFolder();
  after(() => addon.StopCorvaneWatcher());

  const remove = (folder) => fs.rmSync(folder, { recursive: true, maxRetries: 10 });
  // A replay that appears under its name as a whole, as the watcher may look at any moment.
  const put = (name, id) => {
    demo.write('unfinished.tmp', id);
    fs.renameSync(demo.path('unfinished.tmp'), demo.path(name));
  };

  // 5,000 files beside the demo folder: links to one, since those are made in a tenth of the time.
  const crowd = () => path.join(demo.game, 'crowd');
  before(() => {
    for (let i = 0; i < 5000; ++i) {
      const folder = path.join(crowd(), `${i % 50}`);
      if (i < 50) fs.mkdirSync(folder, { recursive: true });
      fs.linkSync(demo.marker, path.join(folder, `${i}.replay`));
    }
  });

  const troubles = {
    'the folder is removed and made again'() {
      remove(demo.demos);
      demo.create();
    },
    'a file is replaced by a folder of its name, and that by a file'() {
      remove(demo.path('a.replay'));
      fs.mkdirSync(demo.path('a.replay'));
      remove(demo.path('a.replay'));
      put('a.replay', 2);
    },
    '5,000 files appear at once, and go'() {
      fs.renameSync(crowd(), demo.path('crowd'));
      fs.renameSync(demo.path('crowd'), crowd());
    },
  };

  for (const [name, trouble] of Object.entries(troubles)) {
    it(`stops while, and goes on after ${name}`, async () => {
      put('a.replay', 1);
      new Watch(addon).start();
      trouble();
      addon.StopCorvaneWatcher();

      put('a.replay', 1);
      const watch = new Watch(addon).start();
      trouble();
      put('a.replay', 4);
      put('probe.replay', PROBE);
      await sleep(1200); // a cycle in which both are created or modified
      demo.grow('a.replay');
      demo.grow('probe.replay');
      const missing = new Set([4, PROBE]);
      while (missing.size > 0) {
        const [payload] = await watch.take(1);
        const { TotalDataSizeInBytes } = payload.document.ReplayFileMeta;
        if (TotalDataSizeInBytes === fs.statSync(demo.path('probe.replay')).size)
          missing.delete(idOf(payload));
      }
    });
  }

  const linuxOnly = process.platform === 'linux' ? it : () => {};
  linuxOnly('sees files whose names are no text', async () => {
    const file = w.bytes(Buffer.from(demo.path('no text ')), w.u8(0xff), Buffer.from('.replay'));
    fs.writeFileSync(file, w.replay({ FileVersion: 5 }));
    const watch = new Watch(addon).start();
    fs.appendFileSync(file, w.chunk(w.CHUNK.replayData, Buffer.alloc(8)));
    const [{ document }] = await watch.take(1);
    assert.equal(document.Creation.fileName, demo.path('no text \ufffd.replay'));
  });

  it('loses none of 2,000 modifications of 20 files that a cycle could see', async () => {
    const names = Array.from({ length: 20 }, (_, i) => `soak ${i}.replay`);
    names.forEach((name, i) => put(name, 100 + i));
    const watch = new Watch(addon).start();
    for (let i = 0; i < 100; ++i) {
      names.forEach((name) => demo.grow(name));
      await sleep(50);
    }
    const finalSize = fs.statSync(demo.path(names[0])).size;
    const seen = new Map(names.map((_, i) => [100 + i, { count: 0, size: 0 }]));
    for (let missing = 20; missing > 0; ) {
      const [payload] = await watch.take(1);
      const file = seen.get(idOf(payload));
      const size = payload.document.ReplayFileMeta.TotalDataSizeInBytes;
      assert.ok(size > file.size);
      file.size = size;
      if (size === finalSize) --missing;
      // All files change many times in each cycle, so no cycle is without one of them.
      ++file.count;
      const counts = [...seen.values()].map(({ count }) => count);
      assert.ok(Math.max(...counts) - Math.min(...counts) <= 1, `${counts}`);
    }
    await watch.none();
  });
});
