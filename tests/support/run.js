'use strict';
// Runs programs with their output in files, since node.exe under Wine does not start with pipes.

const { spawn, spawnSync } = require('node:child_process');
const { once } = require('node:events');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

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

let outputs;
let count = 0;

// launch(stdio) starts the program. output(): { stdout, stderr } so far.
function launched(launch) {
  outputs ??= temporaryFolder();
  const files = ['stdout', 'stderr'].map((name) => path.join(outputs, `${++count} ${name}`));
  const descriptors = files.map((file) => fs.openSync(file, 'w'));
  const child = launch(['ignore', ...descriptors]);
  descriptors.forEach((descriptor) => fs.closeSync(descriptor));
  const output = () => {
    const [stdout, stderr] = files.map((file) => fs.readFileSync(file, 'utf8').replaceAll('\r\n', '\n'));
    return { stdout, stderr };
  };
  return { child, output };
}

// { status, signal, stdout, stderr } of a program that has ended. Options are those of spawnSync; one that hangs is ended
// after two minutes.
function run(program, args, options) {
  const { child, output } = launched((stdio) =>
    spawnSync(program, args, { timeout: 120_000, ...options, stdio }),
  );
  return { status: child.status, signal: child.signal, ...output() };
}

// A program that runs: { child, output(), ended }, the last a Promise of what run() gives.
function start(program, args, options) {
  const { child, output } = launched((stdio) => spawn(program, args, { ...options, stdio }));
  const ended = once(child, 'close').then(([status, signal]) => ({ status, signal, ...output() }));
  return { child, output, ended };
}

module.exports = { run, start, temporaryFolder };
