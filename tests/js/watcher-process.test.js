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

const noFolder = `{"err":"Couldn't locate Corvane's Demo Directory."}\n`;
const endings = [
  {
    title: 'ends by itself once it is stopped, after what was due',
    what: ['stopped'],
    stdout: /^stopped\npayload\n$/,
  },
  {
    title: 'may be stopped by an async hook during the start',
    what: ['stoppedByHook'],
    stdout: /^stopped\n$/,
  },
  { title: 'gets what its callback throws', what: ['throws'], stdout: /^(the error\n){2,}$/ },
  {
    title: 'ends by what its callback throws',
    what: ['throwsUnhandled'],
    status: 1,
    stderr: /Error: thrown by the callback/,
  },
  { title: 'outlives workers that watch', what: ['workers', 30], stdout: /^\n*done\n$/ },
  { title: 'outlives workers that take over', what: ['workers', 30, 'addon first'], stdout: /^\n*done\n$/ },
];

describe('a process that watches', { concurrency: 1 }, () => {
  const demo = new DemoFolder();

  for (const { title, what, status = 0, stdout = /^$/, stderr = /^$/ } of endings) {
    it(title, async () => {
      const result = await run(...what);
      assert.match(result.stderr, stderr);
      assert.match(result.stdout, stdout);
      assert.equal(result.status, status);
      demo.clear();
      demo.create();
    });
  }

  it('ends by itself once it was told that there is no demo folder', async () => {
    demo.clear();
    const { status, stdout, stderr } = await run('noFolder');
    demo.create();
    assert.deepEqual([status, stdout, stderr], [0, noFolder, '']);
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

  it('ends with its own exit code by process.exit(), whatever the add-on is doing', async () => {
    const runs = Array.from({ length: 24 }, (_, i) => ['exit', i * 33]);
    for (let i = 0; i < 8; ++i) runs.push(['exitDuringErrors', i * 4]);
    const exitAll = async () => {
      while (runs.length > 0) {
        const what = runs.pop();
        const { status, signal, stdout, stderr } = await run(...what);
        assert.deepEqual([status, signal, stderr], [7, null, ''], `${what}`);
        const began = /exiting at (\d+)/.exec(stdout)?.[1];
        assert.ok(!(Date.now() - began > 10_000), `${what}: ended late`);
      }
    };
    await Promise.all(Array.from({ length: 4 }, exitAll));
  });
});
