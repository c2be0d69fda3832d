'use strict';
// A result that no JavaScript string can hold is dropped with a line, and watching goes on. In a 32-bit process the memory
// for such a text runs out before it is one.

const assert = require('node:assert/strict');
const path = require('node:path');
const { describe, it } = require('node:test');
const { DemoFolder, addonPath } = require('../support/demo-folder.js');
const { start } = require('../support/run.js');

// Too much once three characters stand for each.
const KEY_BYTES = 180e6;

if (process.arch !== 'ia32') {
  describe('a text that no string can hold', () => {
    new DemoFolder();

    it('is dropped', async () => {
      const script = path.join(__dirname, '..', 'support', 'watch-child.js');
      const env = { ...process.env, CORVANE_ADDON: addonPath };
      const options = { env, timeout: 120_000 };
      const { status, stdout, stderr } = await start(
        process.execPath,
        [script, 'tooLong', KEY_BYTES],
        options,
      ).ended;
      assert.match(stderr, /^\[ .* \] Dropping a result of [0-9]+ bytes: no string can hold it\n$/);
      assert.deepEqual([status, stdout.match(/payload/g)], [0, ['payload', 'payload']]);
    });
  });
}
