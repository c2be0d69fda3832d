'use strict';
// Runs the JavaScript and the command lines of README.md against the installed package, in every host, and compares what
// they print.

const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const w = require('../support/replay-writer.js');
const { hosts, isWindows, runIn } = require('./install.js');

// Each example as a file of the folder, with the output that the README gives for it; one without output runs until it
// is interrupted.
function writeExamples(readme, folder) {
  return [...readme.matchAll(/```js\n(.*?)```(?:\n\n```text\n(.*?)```)?/gs)].map(([, code, output], i) => {
    const file = `example-${i}.${code.startsWith('import') ? 'mjs' : 'cjs'}`;
    fs.writeFileSync(path.join(folder, file), code);
    return { file, output };
  });
}

function testOutput(host, folder, { file, output }) {
  test(`${file} prints what the README says: ${host.join(' ')}`, () => {
    const { status, stdout, stderr } = runIn(host, folder, [file]);
    assert.equal(status, 0, stderr);
    // The add-on itself has printed an empty line for the replay's key.
    assert.equal(stdout.trimStart(), output);
  });
}

// Lets a replay in the demo folder grow by an event at a time until the example has told of one.
function testWatching(host, folder, { file }) {
  test(`${file} prints what a growing replay brings: ${host.join(' ')}`, async () => {
    const demos = path.join(folder, 'CorvaneGame', 'Saved', 'Demos');
    fs.mkdirSync(demos, { recursive: true });
    const live = path.join(demos, 'live.replay');
    fs.writeFileSync(live, w.replay({}));
    const growing = setInterval(() => fs.appendFileSync(live, w.eventChunk({ data: w.playerElim() })), 300);
    const child = spawn(host[0], [file], {
      cwd: folder,
      env: { ...process.env, LOCALAPPDATA: folder },
      timeout: 60_000,
    });
    let stdout = '';
    child.stdout.on('data', (text) => (stdout += text) && /Unnamed Bot/.test(stdout) && child.kill());
    await new Promise((resolve) => child.on('close', resolve));
    clearInterval(growing);
    assert.ok(stdout.startsWith(live) && stdout.includes('Unnamed Bot'), stdout);
  });
}

// The lines of the shell, in their order; all but the one that watches, which is an example of its own.
function testCommands(host, folder, readme) {
  const [, block, output] = /```sh\n(npx .*?)```\n\n.*?\n\n```text\n(.*?)```/s.exec(readme);
  const lines = block
    .replace(/ +#.*$/gm, '')
    .trim()
    .split('\n');
  test(`the command lines of the README print what it says: ${host.join(' ')}`, () => {
    for (const name of ['match.replay', 'replays', 'tables']) {
      fs.rmSync(path.join(folder, name), { recursive: true, force: true });
    }
    const program = path.join('node_modules', 'corvane_napi', 'bin', 'corvane-replay.js');
    for (const line of lines.filter((each) => !each.endsWith('watch'))) {
      const [, , ...args] = line.split(' ');
      if (args[0] === 'events') args.push('--table'); // as on a terminal
      const { status, stdout, stderr } = runIn(host, folder, [program, ...args]);
      assert.equal(status, 0, `${line}\n${stderr}`);
      if (args[0] === 'events') assert.equal(stdout, output);
    }
  });
}

// folder: where the package is installed and match.replay lies.
function testExamples(readme, folder) {
  const examples = writeExamples(readme, folder);
  assert.ok(examples.length >= 4);
  for (const host of hosts) {
    for (const example of examples) {
      if (example.output) testOutput(host, folder, example);
      // Under Wine the demo folder is one for all: the tests of the watcher watch there.
      else if (!isWindows(host)) testWatching(host, folder, example);
    }
    testCommands(host, folder, readme);
  }
}

module.exports = { testExamples };
