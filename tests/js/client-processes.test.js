'use strict';
// The client's child processes: what they are used for, how they are lost and given up, and that none is left behind. A
// fake add-on blocks and ends them.

const assert = require('node:assert/strict');
const { getEventListeners, once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { after, test } = require('node:test');
const { children, eventually, hasEnded, isAlive, livingChildren } = require('../support/client-processes.js');
const { start, temporaryFolder } = require('../support/run.js');
const { ReplayClient, closeClient, readReplay } = require('../../client');
const { ChildPool } = require('../../client/child-pool.js');
const { ChildProcess } = require('../../client/child-process.js');

const fakeAddon = path.join(__dirname, '..', 'support', 'fake-addon.js');
process.env.CORVANE_ADDON = fakeAddon;
ChildProcess.lastOutputMs = 60_000; // a wait for it is longer than any machine is slow
const folder = temporaryFolder();
const file = (name) => path.join(folder, name);
const client = new ReplayClient({ concurrency: 2 });
const one = new ReplayClient({ concurrency: 1 });
after(() => Promise.all([client.close(), one.close(), closeClient()]));

const failure = (reading) => reading.then(assert.fail, (error) => error);
const readPid = async (reader = client) => (await reader.readReplay(file('pid'))).pid;
const isBlocked = (name) => eventually(() => fs.existsSync(file(`${name}.pid`)));
const pidOf = (name) => Number(fs.readFileSync(file(`${name}.pid`), 'utf8'));
const isGone = (name) => eventually(() => !isAlive(pidOf(name)));

test('a child is used again, and there are no more than allowed', async () => {
  const first = await readPid();
  children[0].emit('error', new Error('kill EPERM')); // a failed kill is not its end
  assert.equal(await readPid(), first);
  const sleeping = Array.from({ length: 6 }, () => client.readReplay(file('sleep.100')));
  const pids = new Set((await Promise.all(sleeping)).map(({ pid }) => pid));
  assert.ok(pids.size === 2 && pids.has(first));
});

test('a child is Node.js without the flags and options of its application', async () => {
  process.env.Node_Options = process.env.NODE_OPTIONS = '--no-warnings';
  process.execArgv.push('--no-warnings');
  const { execArgv, env } = await new ReplayClient().readReplay(file('host'));
  process.execArgv.pop();
  delete process.env.Node_Options;
  delete process.env.NODE_OPTIONS;
  const given = Object.entries(env).filter(([name]) => /^(node_options|electron_run_as_node)$/i.test(name));
  assert.deepEqual([execArgv, given], [[], [['ELECTRON_RUN_AS_NODE', '1']]]);
});

for (const [name, options, code, reason] of [
  ['hang.timeout', { timeout: 300 }, 'ERR_TIMEOUT', /^more than 300 ms$/],
  ['text.1000', { maxDocumentBytes: 1000 }, 'ERR_DOCUMENT_TOO_LARGE', /^\d+ bytes; .*Bytes is 1000$/],
  // The reason is only the end of a long output.
  ['exit.7', {}, 'ERR_CHILD_LOST', /^exit code 7: x{4000}x*\nthe reason of the end$/],
]) {
  test(`${code} names its file and reason; other reads and the next one are not concerned`, async () => {
    const other = client.readReplay(file('sleep.600'));
    const error = await failure(client.readReplay(file(name), options));
    assert.deepEqual([error.code, error.path], [code, file(name)]);
    assert.match(error.reason, reason);
    assert.ok(error.message.startsWith(`${file(name)}: `) && error.message.endsWith(`(${error.reason})`));
    assert.ok((await other).pid);
    assert.ok(await readPid());
    if (fs.existsSync(file(`${name}.pid`))) assert.ok(await isGone(name));
  });
}

test('the timeout begins when the turn of the file has come, and counts until the result is there', async () => {
  await readPid(one);
  await Promise.all([one.readReplay(file('sleep.4000')), one.readReplay(file('pid'), { timeout: 3500 })]);
  const pool = new ChildPool(1, process.execPath, 10);
  const finish = () => Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 2100);
  const late = pool.run({ path: file('pid'), maxDocumentBytes: 1000 }, { timeout: 2000, finish });
  assert.equal((await failure(late)).code, 'ERR_TIMEOUT');
  assert.ok(await eventually(() => hasEnded(children.at(-1)))); // it was idle for 10 ms
  await pool.close();
});

test('one signal aborts what blocks and what waits: with its reason, without a warning or another child', async () => {
  const warnings = [];
  const onWarning = (warning) => warnings.push(warning);
  process.on('warning', onWarning);
  const controller = new AbortController();
  const options = { signal: controller.signal };
  const names = ['hang.abort', ...Array(5000).fill('pid')];
  const errors = Promise.all(names.map((name) => failure(one.readReplay(file(name), options))));
  assert.ok(await isBlocked('hang.abort'));
  const started = children.length;
  controller.abort(new Error('enough'));
  for (const { name, code, reason, cause } of await errors) {
    assert.deepEqual([name, code, reason, cause.message], ['AbortError', 'ERR_ABORTED', 'enough', 'enough']);
  }
  assert.equal(children.length, started);
  assert.deepEqual(getEventListeners(controller.signal, 'abort'), []);
  await assert.rejects(one.readReplay(file('pid'), options), { code: 'ERR_ABORTED' });
  assert.ok(await isGone('hang.abort'));
  process.off('warning', onWarning);
  assert.deepEqual(warnings, []);
});

test('a child that is killed from outside loses its read only; an idle one is replaced', async () => {
  const blocked = failure(one.readReplay(file('hang.kill')));
  assert.ok(await isBlocked('hang.kill'));
  process.kill(pidOf('hang.kill'), 'SIGKILL');
  const error = await blocked;
  assert.deepEqual([error.code, error.path], ['ERR_CHILD_LOST', file('hang.kill')]);
  assert.match(error.reason, /^(signal SIGKILL|exit code 1)$/);

  const idle = await readPid(one);
  const child = children.find(({ pid }) => pid === idle);
  const next = once(child, 'disconnect').then(() => readPid(one)); // its end is not yet reported
  child.kill('SIGKILL');
  assert.ok(await eventually(() => !child.connected));
  assert.notEqual(await next, idle);
});

test('an idle child ends after a while', async () => {
  const pool = new ChildPool(1, process.execPath, 50);
  const answer = (request) => pool.run(request, { finish: ({ text }) => JSON.parse(text) });
  const { pid } = await answer({ path: file('pid'), maxDocumentBytes: 1000 });
  assert.ok(await eventually(() => !isAlive(pid)));
});

test('a child that does not start is told apart from a lost one, and keeps no pipes', async () => {
  const openFiles = () => (process.platform === 'linux' ? fs.readdirSync('/proc/self/fd').length : 0);
  const before = openFiles();
  const lost = new ReplayClient({ execPath: file('no-program') });
  for (let i = 0; i < 20; ++i) {
    const { code, reason } = await failure(lost.readReplay(file('pid')));
    assert.deepEqual([code, /ENOENT/.test(reason)], ['ERR_CHILD_START', true], reason);
  }
  assert.ok(openFiles() <= before + 4);
});

test('an add-on that cannot be loaded, or is another one, is told with the cure', async () => {
  for (const [addon, message] of [
    [file('none.node'), /could not be loaded[^]*what to do/],
    [path.join(__dirname, '..', 'support', 'run.js'), /another add-on/],
  ]) {
    process.env.CORVANE_ADDON = addon;
    const reading = new ReplayClient().readReplay(file('pid'));
    process.env.CORVANE_ADDON = fakeAddon;
    const error = await failure(reading);
    assert.equal(error.code, 'ERR_CORVANE_ADDON');
    assert.match(error.message, message);
    assert.match(error.hint, /docs\/troubleshooting/);
  }
});

test('many are read at once and yielded in order, whatever they take; a failure is a result', async () => {
  const names = ['meet.a.b', 'meet.b.a', 'sleep.300', 'sleep.1', 'exit.1', 'text.40000000', 'pid'];
  const results = [];
  for await (const result of client.readReplays(names.map(file), { concurrency: 2 })) results.push(result);
  assert.deepEqual(
    results.map((result) => [path.basename(result.path), result.error?.code]),
    names.map((name) => [name, name === 'exit.1' ? 'ERR_CHILD_LOST' : undefined]),
  );
  assert.ok(results[5].document.text === 'ä'.repeat(20_000_000));
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
  assert.ok(asked <= 10 + 3 + 1, `${asked} paths were asked for`);
  assert.ok(livingChildren().length <= before);
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

test('closing a client ends what it reads, and its use; the shared one begins anew', async () => {
  const reads = ['hang.close', 'pid'].map((name) => failure(one.readReplay(file(name))));
  assert.ok(await isBlocked('hang.close'));
  const shared = (await readReplay(file('pid'))).pid;
  await Promise.all([one.close(), closeClient()]);
  assert.ok(!isAlive(pidOf('hang.close')) && !isAlive(shared));
  for (const error of await Promise.all(reads)) assert.equal(error.code, 'ERR_ABORTED');
  await assert.rejects(one.readReplay(file('pid')), { code: 'ERR_ABORTED' });
  await assert.rejects(one.readReplays([]).next(), { code: 'ERR_ABORTED' });
  assert.throws(() => one.watchReplays(), { code: 'ERR_ABORTED' });
  assert.notEqual((await readReplay(file('pid'))).pid, shared);
});

// Windows has no signals to send; there an interrupt comes from the console.
if (process.platform !== 'win32') {
  test("a terminal's interrupt is the application's business", async () => {
    const { pid } = await client.readReplay(file('pid'));
    process.kill(pid, 'SIGINT');
    assert.equal((await client.readReplay(file('pid'))).pid, pid);
  });
}

// Applications of their own.
const startHost = (what, name) =>
  start(process.execPath, [path.join(__dirname, '..', 'support', 'client-host.js'), what, file(name)]);

test('an idle child keeps no application from ending, and none outlives one that exits while it reads', async () => {
  const { status, stdout } = await startHost('idle', 'pid').ended;
  assert.equal(status, 3);
  assert.ok(await eventually(() => !isAlive(Number(stdout))));
  assert.equal((await startHost('exit', 'hang.exit').ended).status, 5);
  assert.ok(await isGone('hang.exit'));
});

test('nothing waits long for a process that a child has left behind with its pipes open', async () => {
  const began = Date.now();
  const { status, stdout } = await startHost('giveUp', 'hold.hang').ended;
  assert.deepEqual([status, stdout], [0, 'ERR_ABORTED\n']);
  assert.equal((await startHost('lose', 'hold.return.2').ended).status, 0);
  const own = new ReplayClient({ concurrency: 1 });
  const { pid } = await own.readReplay(file('hold.return'));
  process.kill(pid, 'SIGKILL');
  assert.ok(await eventually(() => hasEnded(children.findLast((child) => child.pid === pid))));
  assert.notEqual(await readPid(own), pid); // another child, at once
  await own.close();
  assert.ok(Date.now() - began < ChildProcess.lastOutputMs);
  for (const name of ['hold.hang', 'hold.return', 'hold.return.2']) {
    assert.ok(isAlive(pidOf(name)));
    process.kill(pidOf(name));
  }
});

test('what a child says last is part of the reason, also when the application was busy meanwhile', async () => {
  const own = new ReplayClient({ concurrency: 1 });
  const reading = failure(own.readReplay(file('hold.7')));
  const usual = ChildProcess.lastOutputMs;
  ChildProcess.lastOutputMs = 50;
  children.at(-1).once('exit', () => {
    const [atLeast, atMost] = [100, 20_000].map((ms) => Date.now() + ms);
    while (Date.now() < atLeast || (!fs.existsSync(file('hold.7.said')) && Date.now() < atMost));
  });
  const { code, reason } = await reading;
  ChildProcess.lastOutputMs = usual;
  assert.deepEqual([code, reason], ['ERR_CHILD_LOST', 'exit code 7: late']);
  await own.close();
  process.kill(pidOf('hold.7'));
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
