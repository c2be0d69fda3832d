'use strict';
// The two scripts of the samples, side by side, as the README shows them.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder, addonPath, sleep } = require('../support/demo-folder.js');
const { start } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');
const env = { ...process.env, CORVANE_ADDON: addonPath };
const run = (script, ...args) =>
  start(process.execPath, [path.join(root, 'samples', script), ...args], { env });

describe('samples/watch.js beside samples/grow-replay.js', () => {
  const demo = new DemoFolder();

  it('prints what the README shows', async () => {
    const readme = fs.readFileSync(path.join(root, 'README.md'), 'utf8');
    const [, shown] = /node samples\/grow-replay\.js\n```\n\n```text\n(.*?)```/s.exec(readme);
    const watching = run('watch.js');
    while (watching.output().stdout === '') await sleep(10);
    // Slow enough for each chunk to have a polling cycle of its own.
    const growing = await run('grow-replay.js', '800').ended;
    const { status, stdout } = await watching.ended;
    assert.deepEqual([status, growing.status], [0, 0]);
    // The add-on itself prints an empty line for each parse.
    assert.deepEqual(stdout.replace(/^\n/gm, ''), shown);
    assert.deepEqual(fs.readdirSync(demo.demos), []);
  });
});
