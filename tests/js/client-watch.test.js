'use strict';
// Watching through the client, with a fake add-on that delivers, and ends its process, to a script.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { afterEach, test } = require('node:test');
const { eventually, livingChildren } = require('../support/client-processes.js');
const { temporaryFolder } = require('../support/run.js');
const { ReplayClient } = require('../../client');

const folder = temporaryFolder();
const file = (name) => path.join(folder, name);
process.env.CORVANE_ADDON = path.join(__dirname, '..', 'support', 'fake-addon.js');
process.env.CORVANE_FAKE_WATCH = file('script');

let client;
afterEach(async () => {
  await client.close();
  assert.deepEqual(livingChildren(), []);
});

// starts: for each start of a child the steps that it does (fake-addon.js).
function startWatch(starts, options) {
  fs.writeFileSync(process.env.CORVANE_FAKE_WATCH, starts.map((steps) => JSON.stringify(steps)).join('\n'));
  client = new ReplayClient();
  return client.watchReplays(options);
}

// Collects what the events tell: each document's n, each error's code.
function record(watch) {
  const seen = [];
  watch.on('replay', ({ n }) => seen.push(n));
  watch.on('error', ({ code }) => seen.push(code));
  return seen;
}

// Unlike events.once, this does not listen for errors too.
const next = (emitter, name) => new Promise((resolve) => emitter.once(name, resolve));
const deliver = (n) => ({ deliver: { n } });

test('a replay that ends the child is named with its own failure, or delivered if it is whole by then', async () => {
  const broken = file('content.broken');
  const completed = file('content.completed');
  fs.writeFileSync(broken, 'ERR_CORRUPT the reason');
  fs.writeFileSync(completed, '{"n":"completed"}');
  const watch = startWatch([
    [deliver(1), { endBecauseOf: broken }],
    [{ endBecauseOf: completed }],
    [deliver(2)],
  ]);
  const seen = record(watch);
  const error = await next(watch, 'error');
  assert.deepEqual([error.name, error.path, error.reason], ['ReplayError', broken, 'the reason']);
  assert.ok(await eventually(() => seen.length === 4));
  assert.deepEqual(seen, [1, 'ERR_CORRUPT', 'completed', 2]);
});

test('what was written to it while no child watched is delivered once', async () => {
  const growing = file('content.growing');
  fs.writeFileSync(growing, 'ERR_CORRUPT half of it');
  const watch = startWatch([[{ endBecauseOf: growing }], [{ sleep: 400 }, deliver(2)]]);
  const seen = record(watch);
  await next(watch, 'error');
  fs.writeFileSync(growing, '{"n":"all of it"}');
  assert.ok(await eventually(() => seen.length === 3));
  assert.deepEqual(seen, ['ERR_CORRUPT', 'all of it', 2]);
});

test('a child that ends over and over is started again after pauses that double', async () => {
  const watch = startWatch([...Array(3).fill([{ end: 9 }]), [deliver(1), { end: 9 }], [deliver(2)]]);
  const times = [];
  watch.on('error', ({ code, reason }) => {
    assert.deepEqual([code, reason], ['ERR_CHILD_LOST', 'exit code 9']);
    times.push(performance.now());
  });
  const replays = [];
  watch.on('replay', () => replays.push(performance.now()));
  assert.ok(await eventually(() => replays.length === 2));
  const pauses = times.slice(1).map((time, i) => time - times[i]);
  assert.ok(pauses[0] >= 500 && pauses[1] >= 1000 && pauses[2] >= 2000, `${pauses}`);
  // A delivery ends the doubling.
  const last = replays[1] - times[3];
  assert.ok(last >= 500 && last < 3500, `${last}`);
});

test('a missing demo folder is told once, and waited for by the same child', async () => {
  const missing = { deliver: { err: "Couldn't locate Corvane's Demo Directory." } };
  const watch = startWatch([[missing], [missing], [{ sleep: 400 }, deliver(1)]]);
  const seen = record(watch);
  watch.on('watching', () => seen.push('watching'));
  const error = await next(watch, 'error');
  assert.match(error.reason, /^Couldn't locate/);
  const [child] = livingChildren();
  const { pid } = await next(watch, 'replay');
  assert.deepEqual([seen, pid], [['ERR_NO_DEMO_FOLDER', 'watching', 1], child.pid]);
});

test('iterating gives documents and errors; leaving the loop closes the watch', async () => {
  const watch = startWatch([
    [deliver(1), { end: 9 }],
    [deliver(2), deliver(3)],
  ]);
  const closed = next(watch, 'close');
  const seen = [];
  for await (const { document, error } of watch) {
    seen.push(document?.n ?? error.code);
    if (document?.n === 2) break;
  }
  assert.deepEqual(seen, [1, 'ERR_CHILD_LOST', 2]);
  await closed;
});

test('an abort ends watch, iteration and child without an error', async () => {
  const controller = new AbortController();
  const watch = startWatch([[deliver(1)]], { signal: controller.signal });
  const closed = next(watch, 'close');
  const seen = [];
  for await (const { document, error } of watch) {
    seen.push(document?.n ?? error.code);
    controller.abort();
  }
  assert.deepEqual(seen, [1]);
  await closed;
  assert.deepEqual(livingChildren(), []);
  const late = client.watchReplays({ signal: controller.signal });
  for await (const result of late) assert.fail(JSON.stringify(result));
});

test('an add-on that does not load ends the watch, and is an error of each read', async () => {
  const before = process.env.CORVANE_ADDON;
  process.env.CORVANE_ADDON = file('none.node');
  const watch = startWatch([]);
  const reading = client.readReplay(file('pid'));
  process.env.CORVANE_ADDON = before;
  const closed = next(watch, 'close');
  const seen = record(watch);
  await assert.rejects(reading, { code: 'ERR_CORVANE_ADDON', reason: /none\.node/ });
  await closed;
  assert.deepEqual(seen, ['ERR_CORVANE_ADDON']);
});

test('a failure that nobody listens for is a warning, and no end of the application', async () => {
  const warned = next(process, 'warning');
  const watch = startWatch([[{ end: 9 }], [deliver(1)]]);
  await next(watch, 'replay');
  const warning = await warned;
  assert.equal(warning.code, 'ERR_CHILD_LOST');
});

test('a key reaches the watcher and the reading of what ended it; a wrong one is refused at once', async () => {
  const key = Buffer.from('000102030405060708090a0b0c0d0e0f', 'hex');
  const watch = startWatch([[{ endBecauseOf: file('key') }]], { key });
  const document = await next(watch, 'replay');
  assert.equal(document.key, key.toString('hex'));
  assert.throws(() => client.watchReplays({ key: 'text' }), { code: 'ERR_INVALID_ARGUMENT' });
});
