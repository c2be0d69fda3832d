'use strict';
// Watching the demo folder through the client and the built add-on, with replays that end the watcher's process.

const assert = require('node:assert/strict');
const { describe, it } = require('node:test');
const { eventually, livingChildren } = require('../support/client-processes.js');
const { DemoFolder, addonPath } = require('../support/demo-folder.js');
const w = require('../support/replay-writer.js');
const { ReplayClient } = require('../../client');

process.env.CORVANE_ADDON = addonPath;
const key = Buffer.from('000102030405060708090a0b0c0d0e0f', 'hex');
const client = new ReplayClient();

// The documents and errors of a watch from its start on.
function startWatch(options) {
  const watch = client.watchReplays(options);
  const seen = [];
  watch.on('replay', (document) => seen.push({ document }));
  watch.on('error', (error) => seen.push({ error }));
  const take = async () => {
    assert.ok(await eventually(() => seen.length > 0), 'nothing came');
    return seen.shift();
  };
  return { take, watching: () => new Promise((resolve) => watch.once('watching', resolve)) };
}

describe('a watch of the demo folder', { concurrency: 1 }, () => {
  const demo = new DemoFolder();

  it('outlives broken replays, names them, and reads on', async () => {
    const elimination = { data: w.encrypt(w.playerElim({ killer: { type: 16, id: 'Zoë' } }), key) };
    const encrypted = w.replay({ Timestamp: 2n, bEncrypted: 1 }, w.headerChunk(), w.eventChunk(elimination));
    demo.write('Broken Jörg.replay', 1, w.replay().subarray(0, 10));
    demo.write('good.replay', 2, encrypted);
    const { take, watching } = startWatch({ key });
    await watching();

    demo.grow('good.replay');
    const first = (await take()).document;
    assert.equal(first.Creation.fileName, demo.path('good.replay'));
    assert.equal(first.events[0].killerBot, 'Zoë\0');

    demo.grow('Broken Jörg.replay', Buffer.from([1]));
    const { error } = await take();
    const expected = ['ERR_CORRUPT', demo.path('Broken Jörg.replay'), 'the file ends too early'];
    assert.deepEqual([error.code, error.path, error.reason], expected, error.stack);

    await watching();
    demo.grow('good.replay');
    const again = (await take()).document;
    assert.deepEqual([again.Creation, again.events], [first.Creation, first.events]);

    await client.close();
    assert.deepEqual(livingChildren(), []);
  });
});
