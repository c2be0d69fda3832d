'use strict';
// The loader's error: a copy of it stands in a folder with prebuilt files of the test's own.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { temporaryFolder } = require('../support/run.js');

const host = `${process.platform}-${process.arch}`;

// prebuilt: the host that there is a file for. addon: the value of CORVANE_ADDON.
const cases = [
  { reason: /no such file/, advice: /The package is incomplete/ },
  { prebuilt: 'plan9-x64', reason: /no such file/, advice: /for one of: plan9-x64\./ },
  { prebuilt: host, reason: /\S/, advice: /the system refused it/ },
  { prebuilt: host, addon: 'a.node', reason: /not absolute/, advice: /CORVANE_ADDON must be/ },
];

for (const { prebuilt, addon, reason, advice } of cases) {
  test(`the error names host, file, reason and what to do: ${advice}`, () => {
    const root = temporaryFolder();
    const file = (name) => path.join(root, 'prebuilds', name, 'corvane_napi.node');
    fs.copyFileSync(path.join(__dirname, '..', '..', 'load-addon.js'), path.join(root, 'load-addon.js'));
    if (prebuilt) {
      fs.mkdirSync(path.dirname(file(prebuilt)), { recursive: true });
      fs.writeFileSync(file(prebuilt), 'no library');
    }
    process.env.CORVANE_ADDON = addon ?? '';
    assert.throws(require(path.join(root, 'load-addon.js')), ({ code, message }) => {
      const fields = Object.fromEntries(
        [...message.matchAll(/^ {2}([^:]+): +(.*)$/gm)].map((m) => m.slice(1)),
      );
      assert.deepEqual([code, fields.platform], ['ERR_CORVANE_ADDON', process.platform]);
      assert.equal(fields.architecture, process.arch);
      assert.match(fields.runtime, new RegExp(`^Node.js ${process.versions.node}, Node-API \\d+$`));
      assert.equal(fields.tried, addon ?? file(host));
      assert.match(fields.reason, reason);
      assert.match(fields['what to do'], advice);
      return true;
    });
  });
}
