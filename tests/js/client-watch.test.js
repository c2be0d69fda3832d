'use strict';
// Watching through the client, with a fake add-on that delivers, and ends its process, to a script.

const assert = require('node:assert/strict');
const { getEventListeners } = require('node:events');
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

test('a replay that cannot be read is an error with its name, and watching goes on', async () => {
  const watch = startWatch([[deliver(1), { fail: 'a\nb.replay' }, deliver(2)]]);
  const seen = record(watch);
  const error = await next(watch, 'error');
  assert.deepEqual([error.name, error.path, error.reason], ['ReplayError', 'a\nb.replay', 'the reason']);
  assert.ok(await eventually(() => seen.length === 3));
  assert.deepEqual(seen, [1, 'ERR_CORRUPT', 2]);
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
  assert.ok(last >= 500 && last < 4000, `${last}`);
});

test('a missing demo folder is told once each time, and waited for by the same child', async () => {
  const watch = startWatch(['no folder', 'no folder', [deliver(1), { end: 9 }], 'no folder', [deliver(2)]]);
  const seen = record(watch);
  watch.on('watching', () => seen.push('watching'));
  const error = await next(watch, 'error');
  assert.equal(error.reason, 'no folder');
  const [child] = livingChildren();
  const { pid } = await next(watch, 'replay');
  assert.equal(pid, child.pid);
  assert.ok(await eventually(() => seen.length === 7));
  const missed = 'ERR_NO_DEMO_FOLDER';
  assert.deepEqual(seen, [missed, 'watching', 1, 'ERR_CHILD_LOST', missed, 'watching', 2]);
});

test('iterating gives documents and errors; leaving the loop closes the watch', async () => {
  const { signal } = new AbortController();
  const starts = [
    [deliver(1), { end: 9 }],
    [deliver(2), deliver(3)],
  ];
  const watch = startWatch(starts, { signal });
  const closed = next(watch, 'close');
  const seen = [];
  for await (const { path: name, document, error } of watch) {
    seen.push(name, document?.n ?? error.code);
    if (document?.n === 2) break;
  }
  assert.deepEqual(seen, ['the path', 1, undefined, 'ERR_CHILD_LOST', 'the path', 2]);
  await closed;
  assert.deepEqual(getEventListeners(signal, 'abort'), []);
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

test('key and folder reach the child; wrong ones are refused at once', async () => {
  const key = Buffer.from('000102030405060708090a0b0c0d0e0f', 'hex');
  const watch = startWatch([[deliver(1)]], { key, folder: 'here' });
  const document = await next(watch, 'replay');
  assert.deepEqual([document.key, document.folder], [key.toString('hex'), path.resolve('here')]);
  for (const options of [{ key: 'text' }, { folder: 1 }]) {
    assert.throws(() => client.watchReplays(options), { code: 'ERR_INVALID_ARGUMENT' });
    assert.throws(() => client.watchMatches(options), { code: 'ERR_INVALID_ARGUMENT' });
  }
  assert.throws(() => client.watchMatches({ endAfterMs: 0 }), { code: 'ERR_INVALID_ARGUMENT' });
});
