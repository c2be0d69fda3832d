'use strict';
// Runs the examples of docs/api.md, in the folder of the samples, and the samples' scripts as the README shows them.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder, addonPath, sleep } = require('../support/demo-folder.js');
const { start } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');

// What each example prints; those that watch a folder in which nothing happens print nothing.
const EXPECTED = [
  /^1263\.1 s, 5 eliminations$/,
  /^ERR_UNREADABLE nothing-there\.replay$/,
  /^match\.replay 9\nnothing-there\.replay ERR_UNREADABLE\nmatch-encrypted\.replay \d+$/,
  /^$/,
  /^$/,
  /^true$/,
  /^\n*\+\+Corvane\+Main$/,
];

const examples = [
  ...fs.readFileSync(path.join(root, 'docs', 'api.md'), 'utf8').matchAll(/^```js\n(.*?)^```$/gms),
];

// Those that watch do so for an hour.
const shortened = (code) => code.replace('3_600_000', '1_000');

// DemoFolder sets the environment.
const run = (...args) =>
  start(process.execPath, args, {
    cwd: path.join(root, 'samples'),
    env: { ...process.env, CORVANE_ADDON: addonPath },
  });

describe('what the documents show', { concurrency: 1 }, () => {
  const demo = new DemoFolder();

  it('has an expectation for each example', () => assert.equal(examples.length, EXPECTED.length));

  examples.forEach(([, code], i) => {
    it(`docs/api.md, example ${i + 1}`, async () => {
      const type = /^import /m.test(code) ? 'module' : 'commonjs';
      const example = run(`--input-type=${type}`, '--eval', shortened(code));
      const { status, stdout, stderr } = await example.ended;
      assert.deepEqual([status, stderr], [0, '']);
      assert.match(stdout.trim(), EXPECTED[i]);
    });
  });

  it('README.md: samples/watch.js beside samples/grow-replay.js', async () => {
    const readme = fs.readFileSync(path.join(root, 'README.md'), 'utf8');
    const [, shown] = /node samples\/grow-replay\.js\n```\n\n```text\n(.*?)```/s.exec(readme);
    const watching = run('watch.js');
    while (watching.output().stdout === '') await sleep(10);
    // Slow enough for each chunk to have a polling cycle of its own.
    const growing = await run('grow-replay.js', '1200').ended;
    const { status, stdout } = await watching.ended;
    assert.deepEqual([status, growing.status], [0, 0]);
    // The add-on itself prints an empty line for each parse.
    assert.equal(stdout.replace(/^\n/gm, ''), shown);
    assert.deepEqual(fs.readdirSync(demo.demos), []);
  });
});
