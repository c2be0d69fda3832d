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

// Writes each of the given files and reads it.
function readFiles(contents) {
  const folder = temporaryFolder();
  return readPaths(
    contents.map((bytes, i) => {
      const file = path.join(folder, `${i}.replay`);
      fs.writeFileSync(file, bytes);
      return file;
    }),
  );
}

// Registers a test for each row { name, bytes, ... }, which says what is to come of reading a file of these bytes, or
// each of a list of files:
//   dies: TEXT      the process ends with the text on its standard error
//   throws: REGEXP  a JavaScript Error is thrown whose message matches
//   empty: true     the result is ""
//   otherwise a document, whose members under the names of MEMBERS are compared where the row has such a name
//   (undefined: the document has no such member; of ReplayFileMeta and header only the members given are compared);
//   check(document, outcome) sees all of it.
// stdout (a string or a RegExp) is compared always; the default is the empty line that is printed after a key.
const MEMBERS = ['ReplayFileMeta', 'header', 'events'];

function testReads(rows) {
  const files = rows.map((row) => [row.bytes].flat());
  const outcomes = readFiles(files.flat());
  rows.forEach((row, i) => {
    const own = outcomes.splice(0, files[i].length);
    test(row.name, () => own.forEach((outcome) => checkOutcome(row, outcome)));
  });
}

function checkOutcome(row, outcome) {
  const stdout = row.stdout ?? '\n';
  assert.equal(outcome.died, 'dies' in row, outcome.stderr);
  if (row.dies) assert.ok(outcome.stderr.startsWith(row.dies), outcome.stderr);
  if (stdout instanceof RegExp) assert.match(outcome.stdout, stdout);
  else assert.equal(outcome.stdout, stdout);
  if (row.throws) assert.match(outcome.error?.message ?? 'nothing thrown', row.throws);
  else assert.equal(outcome.error, undefined);
  if (row.empty) assert.equal(outcome.text, '');
  else if (outcome.text !== undefined) checkDocument(row, JSON.parse(utf8Text(outcome.text)), outcome);
}

function checkDocument(row, document, outcome) {
  for (const name of MEMBERS.filter((name) => name in row)) {
    const expected = row[name];
    let actual = document[name];
    if (actual && expected && !Array.isArray(expected)) {
      actual = Object.fromEntries(Object.keys(expected).map((key) => [key, actual[key]]));
    }
    assert.deepEqual(actual, expected);
  }
  row.check?.(document, outcome);
}

module.exports = { addonPath, readFiles, readPaths, temporaryFolder, testReads, utf8Text };
