'use strict';
// The two scripts of the samples, side by side, as the README shows them.

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder, addonPath, sleep } = require('../support/demo-folder.js');
const { temporaryFolder } = require('../support/reads.js');

const root = path.join(__dirname, '..', '..');
const output = path.join(temporaryFolder(), 'output');

// Output goes to a file: node.exe under Wine does not start with pipes.
function run(script, ...args) {
  const file = fs.openSync(output, 'a');
  const env = { ...process.env, CORVANE_ADDON: addonPath };
  const stdio = ['ignore', file, 'inherit'];
  const child = spawn(process.execPath, [path.join(root, 'samples', script), ...args], { env, stdio });
  fs.closeSync(file);
  return once(child, 'exit');
}

describe('samples/watch.js beside samples/grow-replay.js', () => {
  const demo = new DemoFolder();

  it('prints what the README shows', async () => {
    const readme = fs.readFileSync(path.join(root, 'README.md'), 'utf8');
    const [, shown] = /node samples\/grow-replay\.js\n```\n\n```text\n(.*?)```/s.exec(readme);
    const watching = run('watch.js');
    while (fs.statSync(output).size === 0) await sleep(10);
    // Slow enough for each chunk to have a polling cycle of its own.
    const [[watchStatus], [growStatus]] = await Promise.all([watching, run('grow-replay.js', '800')]);
    assert.deepEqual([watchStatus, growStatus], [0, 0]);
    const printed = fs.readFileSync(output, 'utf8').split(/\r?\n/);
    // The add-on itself prints an empty line for each parse.
    assert.deepEqual(printed.filter((line) => line !== '').join('\n') + '\n', shown);
    assert.deepEqual(fs.readdirSync(demo.demos), []);
  });
});
