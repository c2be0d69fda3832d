'use strict';
// Runs the examples of docs/api.md, in the folder of the samples.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder } = require('../support/demo-folder.js');
const { addonPath } = require('../support/reads.js');
const { run } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');

// What each example prints; the one that watches an empty folder nothing.
const EXPECTED = [
  /^1263\.1 s, 5 eliminations$/,
  /^ERR_UNREADABLE nothing-there\.replay$/,
  /^match\.replay 9\nnothing-there\.replay ERR_UNREADABLE\nmatch-encrypted\.replay \d+$/,
  /^$/,
  /^true$/,
  /^\S+$/m,
];

const examples = [
  ...fs.readFileSync(path.join(root, 'docs', 'api.md'), 'utf8').matchAll(/^```js\n(.*?)^```$/gms),
];

// The one that watches does so for an hour.
const shortened = (code) => code.replace('3_600_000', '1_000');

function runExample(code) {
  const type = /^import /m.test(code) ? 'module' : 'commonjs';
  const env = { ...process.env, CORVANE_ADDON: addonPath };
  const options = { cwd: path.join(root, 'samples'), env };
  return run(process.execPath, [`--input-type=${type}`, '--eval', code], options);
}

describe('docs/api.md', { concurrency: 1 }, () => {
  new DemoFolder();

  it('has an expectation for each example', () => assert.equal(examples.length, EXPECTED.length));

  examples.forEach(([, code], i) => {
    it(`says what is true: example ${i + 1}`, () => {
      const { status, stdout, stderr } = runExample(shortened(code));
      assert.deepEqual([status, stderr], [0, '']);
      assert.match(stdout.trim(), EXPECTED[i]);
    });
  });
});
