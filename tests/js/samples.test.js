'use strict';
// The sample replays are what their script writes, and read as the match that it tells.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { samples } = require('../../samples/make-samples.js');
const { readPaths, utf8Text } = require('../support/reads.js');

const names = Object.keys(samples);
const file = (name) => path.join(__dirname, '..', '..', 'samples', name);

test('the samples are those that their script writes', () => {
  for (const name of names) assert.ok(fs.readFileSync(file(name)).equals(samples[name]), name);
});

test('the encrypted sample holds the same match as the plain one', () => {
  const [plain, encrypted] = readPaths(names.map(file)).map(({ text }) => JSON.parse(utf8Text(text)));
  assert.ok(encrypted.ReplayFileMeta.bEncrypted);
  assert.equal(plain.events.length, 9);
  assert.deepEqual([encrypted.events, encrypted.header], [plain.events, plain.header]);
});
