'use strict';
// The client's child processes: what they are used for, how they are lost and given up, and that none is left behind. A
// fake add-on blocks and ends them.

const assert = require('node:assert/strict');
const { getEventListeners, once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { after, test } = require('node:test');
const { children, eventually, isAlive, livingChildren } = require('../support/client-processes.js');
const { start, temporaryFolder } = require('../support/run.js');
const { ReplayClient, ReplayError } = require('../../client');

process.env.CORVANE_ADDON = path.join(__dirname, '..', 'support', 'fake-addon.js');
const folder = temporaryFolder();
const file = (name) => path.join(folder, name);
const client = new ReplayClient({ concurrency: 2 });
const one = new ReplayClient({ concurrency: 1 });
after(() => client.close());

const readPid = async (reader = client) => (await reader.readReplay(file('pid'))).pid;
const isBlocked = (name) => eventually(() => fs.existsSync(file(`${name}.pid`)));
const pidOf = (name) => Number(fs.readFileSync(file(`${name}.pid`), 'utf8'));

test('a child is used again, and there are no more than allowed', async () => {
  const first = await readPid();
  assert.equal(await readPid(), first);
  const sleeping = Array.from({ length: 6 }, () => client.readReplay(file('sleep.100')));
  const pids = new Set((await Promise.all(sleeping)).map(({ pid }) => pid));
  assert.ok(pids.size === 2 && pids.has(first));
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
  await readPid(one);
  const reads = Array.from({ length: 3 }, () => one.readReplay(file('sleep.600'), { timeout: 1500 }));
  assert.equal((await Promise.all(reads)).length, 3);
});

test('a blocked read and a waiting one are aborted; the reason is kept', async () => {
  const controller = new AbortController();
  const options = { signal: controller.signal };
  const reads = ['hang.abort', 'pid.waiting'].map((name) => one.readReplay(file(name), options));
  const errors = Promise.all(reads.map((read) => read.catch((error) => error)));
  const later = readPid(one);
  assert.ok(await isBlocked('hang.abort'));
  controller.abort(new Error('enough'));
  for (const error of await errors) {
    assert.ok(error instanceof ReplayError);
    assert.deepEqual([error.code, error.reason, error.cause.message], ['ERR_ABORTED', 'enough', 'enough']);
  }
  assert.notEqual(await later, pidOf('hang.abort'));
  await assert.rejects(one.readReplay(file('pid'), options), { code: 'ERR_ABORTED' });
  assert.ok(await eventually(() => !isAlive(pidOf('hang.abort'))));
});

test('one signal may abort many reads: without a warning, and without a child for those that waited', async () => {
  const warnings = [];
  const onWarning = (warning) => warnings.push(warning);
  process.on('warning', onWarning);
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
  const first = await readPid(one);
  const child = children.find(({ pid }) => pid === first);
  const next = once(child, 'disconnect').then(() => readPid(one)); // its end is not yet reported
  child.kill('SIGKILL');
  assert.ok(await eventually(() => !child.connected));
  assert.notEqual(await next, first);
});

test('what a child says at its end is the reason, be it that it did not start', async () => {
  await assert.rejects(client.readReplay(file('exit.7')), {
    code: 'ERR_CHILD_LOST',
    reason: 'exit code 7: the reason of the end',
    message: `${file('exit.7')}: the reading process ended (exit code 7: the reason of the end)`,
  });
  const lost = new ReplayClient({ execPath: file('no-program') });
  for (let i = 0; i < 2; ++i)
    await assert.rejects(lost.readReplay(file('pid')), { code: 'ERR_CHILD_START', reason: /ENOENT/ });
});

test('many are yielded in order, whatever they take; a failure is a result', async () => {
  const names = ['sleep.300', 'sleep.1', 'exit.1', 'text.40000000', 'pid', 'sleep.1'];
  const results = [];
  for await (const result of client.readReplays(names.map(file), { concurrency: 3 })) results.push(result);
  assert.deepEqual(
    results.map((result) => [path.basename(result.path), result.error?.code]),
    names.map((name) => [name, name === 'exit.1' ? 'ERR_CHILD_LOST' : undefined]),
  );
  assert.ok(results[3].document.text === 'ä'.repeat(20_000_000));
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
    if (++seen === 10) break;
  }
  assert.ok(asked <= 10 + 3, `${asked} paths were asked for`);
  assert.equal(livingChildren().length, before);
});

test('an abort ends the reading of many', async () => {
  const controller = new AbortController();
  const names = ['pid', 'hang.many', 'pid'];
  const results = client.readReplays(names.map(file), { concurrency: 1, signal: controller.signal });
  assert.ok((await results.next()).value.document);
  const second = results.next();
  assert.ok(await isBlocked('hang.many'));
  controller.abort();
  await assert.rejects(second, { name: 'AbortError', code: 'ERR_ABORTED' });
  assert.equal((await results.next()).done, true);
  assert.ok(!isAlive(pidOf('hang.many')));
});

test('closing a client ends what it reads, and its use', async () => {
  const reads = ['hang.close', 'pid'].map((name) => one.readReplay(file(name)).catch(({ code }) => code));
  assert.ok(await isBlocked('hang.close'));
  await one.close();
  assert.ok(!isAlive(pidOf('hang.close')));
  assert.deepEqual(await Promise.all(reads), ['ERR_ABORTED', 'ERR_ABORTED']);
  await assert.rejects(one.readReplay(file('pid')), { code: 'ERR_ABORTED' });
  await assert.rejects(one.readReplays([]).next(), { code: 'ERR_ABORTED' });
  assert.throws(() => one.watchReplays(), { code: 'ERR_ABORTED' });
});

// Applications of their own.
const startHost = (what, name) =>
  start(process.execPath, [path.join(__dirname, '..', 'support', 'client-host.js'), what, file(name)]);

test('an idle child keeps no application from ending', async () => {
  const began = Date.now();
  const { status, stdout } = await startHost('idle', 'pid').ended;
  assert.ok(Date.now() - began < 8000, 'it waited for the idle child to be ended');
  assert.equal(status, 0);
  assert.ok(await eventually(() => !isAlive(Number(stdout))));
});

test('no child outlives an application that exits while it reads', async () => {
  assert.equal((await startHost('exit', 'hang.exit').ended).status, 5);
  assert.ok(await eventually(() => !isAlive(pidOf('hang.exit'))));
});

for (const what of ['wait', 'watch']) {
  test(`no child outlives an application that is killed: ${what}`, async () => {
    process.env.CORVANE_FAKE_WATCH = file('watch-script');
    fs.writeFileSync(file('watch-script'), JSON.stringify([{ deliver: {} }]));
    const host = startHost(what, 'pid');
    assert.ok(await eventually(() => host.output().stdout !== ''));
    const pid = Number(host.output().stdout);
    assert.ok(isAlive(pid));
    host.child.kill('SIGKILL');
    await host.ended;
    assert.ok(await eventually(() => !isAlive(pid)));
  });
}
