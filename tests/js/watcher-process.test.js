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

const noFolder = /^{"err":"Couldn't locate Corvane's Demo Directory\."}\n$/;
const ABORTED = process.platform === 'win32' ? 3 : 'SIGABRT';
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
  ...[
    ['header', /\.replay\nReadReplayInfo: Found multiple header chunks\n(?!\n)/],
    ['key', /\.replay\n.*: Data was encrypted, but encryption key was not set\.\n/],
  ].map(([broken, stderr]) => ({
    title: `is ended by a replay that cannot be parsed, with its name and the reason on standard error: ${broken}`,
    what: ['broken', broken],
    ...{ status: ABORTED, stdout: /^(\n.* not set\.\n)?$/, stderr },
  })),
  { title: 'outlives workers that watch', what: ['workers', 30], stdout: /^\n*done\n$/ },
  { title: 'outlives workers that take over', what: ['workers', 30, 'addon first'], stdout: /^\n*done\n$/ },
  { title: 'ends by itself once it was told that there is no folder', what: ['noFolder'], stdout: noFolder },
];

describe('a process that watches', { concurrency: 1 }, () => {
  const demo = new DemoFolder();

  for (const { title, what, status = 0, stdout = /^$/, stderr = /^$/ } of endings) {
    it(title, async () => {
      if (stdout === noFolder) demo.clear();
      const result = await run(...what);
      assert.match(result.stderr, stderr);
      assert.match(result.stdout, stdout);
      assert.equal(result.signal ?? result.status, status);
      demo.clear();
      demo.create();
    });
  }

  it('ends with its own exit code by process.exit(), whatever the add-on is doing', async () => {
    const runs = Array.from({ length: 24 }, (_, i) => ['exit', i * 33]);
    for (let i = 0; i < 8; ++i) runs.push(['exitDuringErrors', i * 4]);
    const exitAll = async () => {
      while (runs.length > 0) {
        const what = runs.pop();
        const { status, signal, stdout, stderr } = await run(...what);
        assert.deepEqual([status, signal, stderr], [7, null, ''], `${what}`);
        const began = /exiting at (\d+)/.exec(stdout)?.[1];
        assert.ok(!(Date.now() - began > 30_000), `${what}: ended late`);
      }
    };
    await Promise.all(Array.from({ length: 4 }, exitAll));
  });
});
