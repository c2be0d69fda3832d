'use strict';
// How a process that watches ends: by itself, by process.exit(), by a broken replay, by an exception; and workers.

const assert = require('node:assert/strict');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder, addonPath } = require('../support/demo-folder.js');
const { start } = require('../support/run.js');

const script = path.join(__dirname, '..', 'support', 'watch-child.js');
// Runs a scenario to its end.
function run(...scenario) {
  const env = { ...process.env, CORVANE_ADDON: addonPath };
  return start(process.execPath, [script, ...scenario.map(String)], { env, timeout: 60_000 }).ended;
}

describe('a process that watches', { concurrency: 1 }, () => {
  const demo = new DemoFolder();

  it('ends by itself once the watcher is stopped, after the payloads that were due', async () => {
    const { status, stdout, stderr } = await run('stopped');
    assert.deepEqual([status, stdout, stderr], [0, 'stopped\npayload\n', '']);
  });

  it('ends by itself once it was told that there is no demo folder', async () => {
    demo.clear();
    const { status, stdout, stderr } = await run('noFolder');
    demo.create();
    assert.deepEqual([status, stderr], [0, '']);
    assert.equal(stdout, `{"err":"Couldn't locate Corvane's Demo Directory."}\n`);
  });

  it('gets what its callback throws as an uncaught exception', async () => {
    const [handled, unhandled] = await Promise.all([run('throws'), run('throwsUnhandled')]);
    assert.deepEqual([handled.status, handled.stderr], [0, '']);
    assert.match(handled.stdout, /^(the error\n){2,}$/); // the other process grows a file as well
    assert.equal(unhandled.status, 1);
    assert.match(unhandled.stderr, /Error: thrown by the callback/);
  });

  it('is ended by a replay that cannot be parsed, with its name and the reason on standard error', async () => {
    for (const [how, reason] of [
      ['empty', /\.replay\nThe Replay file had no data in it\.\n/],
      ['header', /\.replay\nReadReplayInfo: Found multiple header chunks\n/],
      ['key', /\.replay\n.*: Data was encrypted, but encryption key was not set\.\n/],
    ]) {
      const { status, signal, stderr } = await run('broken', how);
      assert.ok(signal === 'SIGABRT' || status === 3, `${how}: ${status} ${signal}`);
      assert.match(stderr, reason);
      demo.clear();
      demo.create();
    }
  });

  it('ends with its own exit code within two seconds of process.exit(), 50 times', async () => {
    const delays = Array.from({ length: 50 }, (_, i) => i * 16);
    const exitAll = async () => {
      while (delays.length > 0) {
        const delay = delays.pop();
        const { status, signal, stdout, stderr } = await run('exit', delay);
        const took = Date.now() - Number(/exiting at (\d+)/.exec(stdout)?.[1]);
        assert.deepEqual([status, signal, stderr], [7, null, ''], `after ${delay} ms`);
        assert.ok(took < 2000, `${took} ms`);
      }
    };
    await Promise.all(Array.from({ length: 4 }, exitAll));
  });

  it('outlives 50 workers that watch and end, and can then watch itself', async () => {
    for (const result of await Promise.all([run('workers', 50), run('workers', 50, 'addon first')])) {
      assert.deepEqual([result.status, result.stderr], [0, '']);
      assert.match(result.stdout, /^\n*done\n$/);
    }
  });
});
