'use strict';
// The loader's error: a copy of it stands in a folder with prebuilt files of the test's own.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { after, test } = require('node:test');

const host = `${process.platform}-${process.arch}`;
const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'corvane-loader-'));
after(() => fs.rmSync(folder, { recursive: true, force: true }));

// What loading fails with, given the content of each prebuilt file by its host.
function loadFailure(name, files, addon) {
  const root = path.join(folder, name);
  fs.mkdirSync(root);
  fs.copyFileSync(path.join(__dirname, '..', '..', 'load-addon.js'), path.join(root, 'load-addon.js'));
  for (const [folderName, content] of Object.entries(files)) {
    fs.mkdirSync(path.join(root, 'prebuilds', folderName), { recursive: true });
    fs.writeFileSync(path.join(root, 'prebuilds', folderName, 'corvane_napi.node'), content);
  }
  const before = process.env.CORVANE_ADDON;
  delete process.env.CORVANE_ADDON;
  if (addon) process.env.CORVANE_ADDON = addon;
  try {
    require(path.join(root, 'load-addon.js'))();
  } catch (error) {
    return { error, expectedFile: addon ?? path.join(root, 'prebuilds', host, 'corvane_napi.node') };
  } finally {
    delete process.env.CORVANE_ADDON;
    if (before !== undefined) process.env.CORVANE_ADDON = before;
  }
  return assert.fail('loaded');
}

const cases = [
  { name: 'none', files: {}, reason: /no such file/, advice: /The package is incomplete/ },
  {
    name: 'another-host',
    files: { 'plan9-x64': '' },
    reason: /no such file/,
    advice: /for one of: plan9-x64\./,
  },
  { name: 'broken', files: { [host]: 'no library' }, reason: /\S/, advice: /the system refused it/ },
  {
    name: 'relative',
    files: { [host]: '' },
    addon: 'a.node',
    reason: /not absolute/,
    advice: /CORVANE_ADDON must be/,
  },
];

for (const { name, files, addon, reason, advice } of cases) {
  test(`the error names host, file, reason and what to do: ${name}`, () => {
    const { error, expectedFile } = loadFailure(name, files, addon);
    assert.equal(error.code, 'ERR_CORVANE_ADDON');
    const fields = Object.fromEntries(
      [...error.message.matchAll(/^ {2}([^:]+): +(.*)$/gm)].map((m) => m.slice(1)),
    );
    assert.equal(fields.platform, process.platform);
    assert.equal(fields.architecture, process.arch);
    assert.match(fields.runtime, new RegExp(`^Node.js ${process.versions.node}, Node-API \\d+$`));
    assert.equal(fields.tried, expectedFile);
    assert.match(fields.reason, reason);
    assert.match(fields['what to do'], advice);
  });
}
