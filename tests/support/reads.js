'use strict';
// Reads replays in a process of their own, so that a test sees what the add-on prints and outlives a file that ends
// the process.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { run, temporaryFolder } = require('./run.js');

const root = path.join(__dirname, '..', '..');
const target = process.platform === 'win32' ? 'windows' : process.platform;
const addonPath = process.env.CORVANE_ADDON ?? path.join(root, 'build', target, 'corvane_napi.node');

// The text as the parser wrote it: each of the result's units carries one byte of UTF-8 in its low half.
const utf8Text = (text) => Buffer.from(text, 'latin1').toString('utf8');

// Reads each path and gives what came of it: { text, error, died, stdout, stderr }.
function readPaths(paths, host = process.execPath) {
  const script = path.join(__dirname, 'read-child.js');
  const outcomes = [];
  while (outcomes.length < paths.length) {
    const left = paths.slice(outcomes.length);
    // A file that makes the add-on loop fails its test.
    const { status, stdout, stderr } = run(host, [script, addonPath, ...left], { timeout: 60_000 });
    const parts = stdout.split('\0');
    for (let i = 0; i + 1 < parts.length; i += 2) {
      outcomes.push({ ...JSON.parse(parts[i + 1]), died: false, stdout: parts[i], stderr });
    }
    if (status !== 0) outcomes.push({ died: true, stdout: parts.at(-1), stderr });
  }
  return outcomes;
}

// Writes each of the given files and reads it; the outcomes are those of readPaths, with the file's name.
function readFiles(contents) {
  const folder = temporaryFolder();
  const files = contents.map((_, i) => path.join(folder, `${i}.replay`));
  files.forEach((file, i) => fs.writeFileSync(file, contents[i]));
  return readPaths(files).map((outcome, i) => ({ file: files[i], ...outcome }));
}

// The members of `actual` that `expected` names.
function sharedPart(actual, expected) {
  if (Array.isArray(actual)) return actual.map((item, i) => sharedPart(item, expected?.[i]));
  if (Object(actual) !== actual || Object(expected) !== expected) return actual;
  return Object.fromEntries(
    Object.keys(expected).map((key) => [key, sharedPart(actual[key], expected[key])]),
  );
}

// Registers a test for each row { name, bytes, ... }. The row says what reading these bytes must give:
//   dies: TEXT        the process ends with the text on its standard error
//   throws: REGEXP    a JavaScript Error is thrown whose message matches
//   empty: true       the result is ""
//   document: OBJECT  the result is a document; of its members those that are given are compared
// stdout (a string or a RegExp) is compared always; the default is the empty line that is printed after a key.
function testReads(rows) {
  const outcomes = readFiles(rows.map(({ bytes }) => bytes));
  rows.forEach((row, i) => test(row.name, () => checkOutcome(row, outcomes[i])));
}

function checkOutcome({ dies, throws, empty, document, stdout = '\n' }, outcome) {
  assert.equal(outcome.died, dies !== undefined, outcome.stderr);
  if (dies) assert.ok(outcome.stderr.startsWith(dies), outcome.stderr);
  if (stdout instanceof RegExp) assert.match(outcome.stdout, stdout);
  else assert.equal(outcome.stdout, stdout);
  if (throws) assert.match(outcome.error ?? 'nothing thrown', throws);
  else assert.equal(outcome.error, undefined);
  if (empty) assert.equal(outcome.text, '');
  if (document) {
    const actual = JSON.parse(utf8Text(outcome.text));
    assert.deepEqual(sharedPart(actual, document), document);
  }
}

module.exports = { addonPath, readFiles, readPaths, sharedPart, testReads, utf8Text };
