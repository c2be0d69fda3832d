'use strict';
// The exit status of tools/lz_decode, which is built beside the add-on. The C++ tests check what it decodes.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { addonPath } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');

const tool = path.join(path.dirname(addonPath), process.platform === 'win32' ? 'lz_decode.exe' : 'lz_decode');
const stream = path.join(__dirname, '..', 'data', 'lz', 'chunk_array_16');
const raw = fs.readFileSync(`${stream}.raw`);
const size = String(raw.length);
const out = path.join(temporaryFolder(), 'out');

for (const [status, stderr, ...args] of [
  [1, /\S/, String(raw.length + 1), `${stream}.lz`, out],
  [1, /cannot read/, size, `${stream}.none`, out],
  [1, /cannot write/, size, `${stream}.lz`, path.join(out, 'below')],
  [2, /^usage:/, size, `${stream}.lz`],
  [2, /^usage:/, `${size}x`, `${stream}.lz`, out],
  [2, /^usage:/, '--repeat', '0', size, `${stream}.lz`],
  [2, /^usage:/, '--repeat', '1000001', size, `${stream}.lz`],
  [0, /^$/, '--repeat', '2', size, `${stream}.lz`],
  [0, /^$/, size, `${stream}.lz`, out],
]) {
  test(`exit status ${status}: lz_decode ${args.map((arg) => path.basename(arg)).join(' ')}`, () => {
    const result = run(tool, args);
    assert.equal(result.status, status);
    assert.match(result.stderr, stderr);
    if (status === 0 && args.includes(out)) assert.deepEqual(fs.readFileSync(out), raw);
    else assert.equal(fs.existsSync(out), false);
  });
}
