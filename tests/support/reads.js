'use strict';
// Reads replays in a process of their own, so that a test sees what the add-on prints and outlives a file that ends
// the process. Works in Node.js on Linux and in node.exe; there standard output is in text mode, with CRLF.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { test } = require('node:test');

const root = path.join(__dirname, '..', '..');
const target = process.platform === 'win32' ? 'windows' : process.platform;
const addonPath = process.env.CORVANE_ADDON ?? path.join(root, 'build', target, 'corvane_napi.node');

// A folder that goes when this process ends; what a failed read holds open in this process, Windows lets nobody delete.
function temporaryFolder() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'corvane-'));
  process.on('exit', () => {
    try {
      fs.rmSync(folder, { recursive: true, force: true });
    } catch (error) {
      if (process.platform !== 'win32') throw error;
    }
  });
  return folder;
}

// The text as the parser wrote it: each of the result's units carries one byte of UTF-8 in its low half.
const utf8Text = (text) => Buffer.from(text, 'latin1').toString('utf8');

// One process of `host` over the plan's files from plan.first on, with its output in files: node.exe under Wine cannot
// start with both on one pipe.
function runChild(plan, host) {
  const planFile = path.join(plan.folder, 'plan.json');
  fs.writeFileSync(planFile, JSON.stringify(plan));
  const names = ['stdout', 'stderr'].map((name) => path.join(plan.folder, name));
  const files = names.map((name) => fs.openSync(name, 'w'));
  const script = path.join(__dirname, 'read-child.js');
  const { status, signal, error } = spawnSync(host, [script, planFile], {
    stdio: ['ignore', ...files],
    cwd: plan.folder,
    timeout: 60000, // a file that makes the add-on loop fails its test
  });
  files.forEach((file) => fs.closeSync(file));
  if (error && error.code !== 'ETIMEDOUT') throw error;
  const [stdout, stderr] = names.map((name) => fs.readFileSync(name, 'latin1'));
  return { stdout, stderr, died: status !== 0 || signal !== null };
}

const toLf = (text) => text.replaceAll('\r\n', '\n');

// Reads each path and gives what came of it: { text, error, ms, died, stdout, stderr }.
function readPaths(paths, host = process.execPath) {
  const folder = temporaryFolder();
  const outcomes = [];
  while (outcomes.length < paths.length) {
    const child = runChild({ addon: addonPath, folder, paths, first: outcomes.length }, host);
    let stdoutEnd = 0;
    for (let i = outcomes.length; i < paths.length; ++i) {
      const result = path.join(folder, `${i}.json`);
      const returned = fs.existsSync(result) ? JSON.parse(fs.readFileSync(result, 'utf8')) : null;
      if (!returned && !child.died) throw new Error(`no result for ${paths[i]}: ${child.stderr}`);
      const stdout = toLf(child.stdout.slice(stdoutEnd, returned?.stdoutEnd));
      outcomes.push({ ...returned, died: !returned, stdout, stderr: toLf(child.stderr) });
      if (!returned) break;
      stdoutEnd = returned.stdoutEnd;
    }
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

// What `actual` has of the members that `expected` names.
function sharedPart(actual, expected) {
  if (Array.isArray(actual)) return actual.map((item, i) => sharedPart(item, expected?.[i]));
  if (Object(actual) !== actual || Object(expected) !== expected) return actual;
  return Object.fromEntries(
    Object.keys(expected).map((key) => [key, sharedPart(actual[key], expected[key])]),
  );
}

// Registers a test for each row { name, bytes, ... }, which says what is to come of reading a file of these bytes:
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
  if (throws) assert.match(outcome.error?.message ?? 'nothing thrown', throws);
  else assert.equal(outcome.error, undefined);
  if (empty) assert.equal(outcome.text, '');
  if (document) {
    const actual = JSON.parse(utf8Text(outcome.text));
    assert.deepEqual(sharedPart(actual, document), document);
  }
}

module.exports = { addonPath, readFiles, readPaths, temporaryFolder, testReads, utf8Text };
