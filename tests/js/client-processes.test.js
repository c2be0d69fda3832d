'use strict';
// The client's child processes: what they are used for, how they are lost and given up, and that none is left behind. A
// fake add-on blocks and ends them.

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const { getEventListeners } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { after, test } = require('node:test');
const { children, eventually, isAlive, livingChildren } = require('../support/client-processes.js');
const { temporaryFolder } = require('../support/reads.js');
const { ReplayClient, ReplayError } = require('../../client');

process.env.CORVANE_ADDON = path.join(__dirname, '..', 'support', 'fake-addon.js');
const folder = temporaryFolder();
const file = (name) => path.join(folder, name);
const client = new ReplayClient({ concurrency: 2 });
after(() => client.close());

const readPid = async (reader = client) => (await reader.readReplay(file('pid'))).pid;
const isBlocked = (name) => eventually(() => fs.existsSync(file(`${name}.pid`)));
const pidOf = (name) => Number(fs.readFileSync(file(`${name}.pid`), 'utf8'));
const collect = async (iterable) => {
  const all = [];
  for await (const one of iterable) all.push(one);
  return all;
};

test('a child is used again, and there are no more than allowed', async () => {
  const first = await readPid();
  assert.equal(await readPid(), first);
  const pids = new Set();
  const sleeping = Array.from({ length: 6 }, () => client.readReplay(file('sleep.100')));
  for (const { pid } of await Promise.all(sleeping)) pids.add(pid);
  assert.equal(pids.size, 2);
  assert.ok(pids.has(first));
});

test('a document of 40 MB arrives whole', async () => {
  const { text } = await client.readReplay(file('text.40000000'));
  assert.equal(text.length, 20_000_000);
  assert.match(text.slice(-1), /ä/);
});

test('a blocked read ends at its timeout, its child with it; others and the next one are not concerned', async () => {
  const other = client.readReplay(file('sleep.600'));
  const blocked = client.readReplay(file('hang.timeout'), { timeout: 300 });
  const { code, path: name, reason } = await blocked.catch((error) => error);
  assert.deepEqual([code, name, reason], ['ERR_TIMEOUT', file('hang.timeout'), 'more than 300 ms']);
  assert.ok((await other).pid);
  assert.ok(await readPid());
  assert.ok(await eventually(() => livingChildren().length <= 2));
});

test('the timeout begins when the turn of the file has come', async () => {
  const one = new ReplayClient({ concurrency: 1 });
  await readPid(one);
  const reads = Array.from({ length: 3 }, () => one.readReplay(file('sleep.600'), { timeout: 1500 }));
  assert.equal((await Promise.all(reads)).length, 3);
  await one.close();
});

test('a blocked read and a waiting one are aborted; the reason is kept', async () => {
  const one = new ReplayClient({ concurrency: 1 });
  const controller = new AbortController();
  const options = { signal: controller.signal };
  const blocked = one.readReplay(file('hang.abort'), options).catch((error) => error);
  const waiting = one.readReplay(file('pid.waiting'), options).catch((error) => error);
  const later = readPid(one);
  assert.ok(await isBlocked('hang.abort'));
  controller.abort(new Error('enough'));
  for (const error of await Promise.all([blocked, waiting])) {
    assert.ok(error instanceof ReplayError);
    assert.deepEqual([error.code, error.reason, error.cause.message], ['ERR_ABORTED', 'enough', 'enough']);
  }
  assert.notEqual(await later, pidOf('hang.abort'));
  await assert.rejects(one.readReplay(file('pid'), options), { code: 'ERR_ABORTED' });
  await one.close();
  assert.ok(!isAlive(pidOf('hang.abort')));
});

test('one signal may abort many reads: without a warning, and without a child for those that waited', async () => {
  const warnings = [];
  const onWarning = (warning) => warnings.push(warning);
  process.on('warning', onWarning);
  const one = new ReplayClient({ concurrency: 1 });
  const controller = new AbortController();
  const names = ['hang.crowd', ...Array(19).fill('pid')];
  const reads = names.map((name) =>
    one.readReplay(file(name), { signal: controller.signal }).catch(({ code }) => code),
  );
  assert.ok(await isBlocked('hang.crowd'));
  const started = children.length;
  controller.abort();
  assert.deepEqual(new Set(await Promise.all(reads)), new Set(['ERR_ABORTED']));
  assert.equal(children.length, started);
  assert.deepEqual(getEventListeners(controller.signal, 'abort'), []);
  await one.close();
  process.off('warning', onWarning);
  assert.deepEqual(warnings, []);
});

test('a child that is killed from outside loses its read only', async () => {
  const blocked = client.readReplay(file('hang.kill')).catch((error) => error);
  assert.ok(await isBlocked('hang.kill'));
  process.kill(pidOf('hang.kill'), 'SIGKILL');
  const error = await blocked;
  assert.deepEqual([error.code, error.path], ['ERR_CHILD_LOST', file('hang.kill')]);
  assert.match(error.reason, /^(signal SIGKILL|exit code 1)$/);
  assert.ok(await readPid());
});

test('an idle child that is killed from outside is replaced', async () => {
  const one = new ReplayClient({ concurrency: 1 });
  const first = await readPid(one);
  const child = children.find(({ pid }) => pid === first);
  child.kill('SIGKILL');
  assert.ok(await eventually(() => !child.connected));
  assert.notEqual(await readPid(one), first);
  await one.close();
});

test('what a child says at its end is the reason', async () => {
  await assert.rejects(client.readReplay(file('exit.7')), {
    code: 'ERR_CHILD_LOST',
    reason: 'exit code 7: the reason of the end',
    message: `the reading process ended: ${file('exit.7')} (exit code 7: the reason of the end)`,
  });
});

test('a program that does not start and an add-on that does not load are errors of each read', async () => {
  const lost = new ReplayClient({ execPath: file('no-program') });
  await assert.rejects(lost.readReplay(file('pid')), { code: 'ERR_CHILD_LOST', reason: /ENOENT/ });
  await assert.rejects(lost.readReplay(file('pid')), { code: 'ERR_CHILD_LOST' });
  const unloaded = new ReplayClient();
  const before = process.env.CORVANE_ADDON;
  process.env.CORVANE_ADDON = file('no-addon.node');
  const failing = unloaded.readReplay(file('pid'));
  process.env.CORVANE_ADDON = before;
  await assert.rejects(failing, { code: 'ERR_CORVANE_ADDON', reason: /no-addon\.node/ });
  await unloaded.close();
});

test('many are yielded in order, whatever they take; a failure is a result', async () => {
  const names = ['sleep.300', 'sleep.1', 'exit.1', 'sleep.100', 'pid', 'sleep.1'];
  const results = await collect(client.readReplays(names.map(file), { concurrency: 3 }));
  assert.deepEqual(
    results.map((result) => [path.basename(result.path), result.error?.code]),
    names.map((name) => [name, name === 'exit.1' ? 'ERR_CHILD_LOST' : undefined]),
  );
});

test('many are read no further ahead than their consumer needs, and leaving the loop ends their children', async () => {
  let asked = 0;
  function* paths() {
    for (; asked < 1000; ++asked) yield file('pid');
  }
  const before = livingChildren().length;
  let seen = 0;
  for await (const { document } of client.readReplays(paths(), { concurrency: 3 })) {
    assert.ok(document.pid);
    await new Promise((resolve) => setTimeout(resolve, 20));
    if (++seen === 10) break;
  }
  assert.ok(asked <= 10 + 3, `${asked} paths were asked for`);
  assert.equal(livingChildren().length, before);
});

test('an abort ends the reading of many', async () => {
  const controller = new AbortController();
  const names = ['pid', 'pid', 'hang.many', 'pid'];
  const results = client.readReplays(names.map(file), { concurrency: 1, signal: controller.signal });
  assert.ok((await results.next()).value.document);
  assert.ok((await results.next()).value.document);
  const third = results.next();
  assert.ok(await isBlocked('hang.many'));
  controller.abort();
  await assert.rejects(third, { name: 'ReplayError', code: 'ERR_ABORTED' });
  assert.equal((await results.next()).done, true);
  assert.ok(!isAlive(pidOf('hang.many')));
});

test('closing a client ends what it reads, and its use', async () => {
  const one = new ReplayClient({ concurrency: 1 });
  const names = ['hang.close', 'pid'];
  const reads = names.map((name) => one.readReplay(file(name)).catch(({ code }) => code));
  assert.ok(await isBlocked('hang.close'));
  await one.close();
  assert.ok(!isAlive(pidOf('hang.close')));
  assert.deepEqual(await Promise.all(reads), ['ERR_ABORTED', 'ERR_ABORTED']);
  await assert.rejects(one.readReplay(file('pid')), { code: 'ERR_ABORTED' });
  await assert.rejects(one.readReplays([]).next(), { code: 'ERR_ABORTED' });
  assert.throws(() => one.watchReplays(), { code: 'ERR_ABORTED' });
});

// Applications of their own. Their output goes to a file: node.exe under Wine does not start with pipes.
function startHost(what, name) {
  const out = file(`out.${what}`);
  const descriptors = ['', '.err'].map((ending) => fs.openSync(out + ending, 'w'));
  const script = path.join(__dirname, '..', 'support', 'client-host.js');
  const host = spawn(process.execPath, [script, what, file(name)], { stdio: ['ignore', ...descriptors] });
  descriptors.forEach((descriptor) => fs.closeSync(descriptor));
  host.ended = new Promise((resolve) => host.once('close', resolve));
  host.output = () => fs.readFileSync(out, 'utf8').trim();
  return host;
}

test('an idle child keeps no application from ending', async () => {
  const began = Date.now();
  const host = startHost('idle', 'pid');
  assert.equal(await host.ended, 0);
  assert.ok(Date.now() - began < 8000, 'it waited for the idle child to be ended');
  assert.match(host.output(), /^\d+$/);
  assert.ok(await eventually(() => !isAlive(Number(host.output()))));
});

test('no child outlives an application that exits while it reads', async () => {
  const host = startHost('exit', 'hang.exit');
  assert.equal(await host.ended, 5);
  assert.ok(await eventually(() => !isAlive(pidOf('hang.exit'))));
});

for (const what of ['wait', 'watch']) {
  test(`no child outlives an application that is killed: ${what}`, async () => {
    process.env.CORVANE_FAKE_WATCH = file('watch-script');
    fs.writeFileSync(file('watch-script'), JSON.stringify([{ deliver: {} }]));
    const host = startHost(what, 'pid');
    assert.ok(await eventually(() => host.output() !== ''));
    const pid = Number(host.output());
    assert.ok(isAlive(pid));
    host.kill('SIGKILL');
    await host.ended;
    assert.ok(await eventually(() => !isAlive(pid)));
  });
}
