'use strict';
// Replaces the native add-on in child processes of the client (CORVANE_ADDON), and does on request what replays seldom
// do. The file name says what: its parts are separated by dots, as in "sleep.200.replay".

const { spawn } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');

const document = (fields) => Buffer.from(JSON.stringify({ pid: process.pid, ...fields }));

function sleep(ms) {
  Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, Number(ms));
}

// FILE.pid names a process; the file appears with its content.
function tellPid(file, pid) {
  fs.writeFileSync(`${file}.writing`, String(pid));
  fs.renameSync(`${file}.writing`, `${file}.pid`);
}

const READS = {
  pid: () => document(),
  key: (file, argument, key) => document({ key: Buffer.from(key).toString('hex') }),
  text: (file, bytes) => document({ text: 'ä'.repeat(bytes / 2) }),
  sleep(file, ms) {
    sleep(ms);
    return document();
  },
  // Blocks for good, as soon as FILE.pid says which process does.
  hang(file) {
    tellPid(file, process.pid);
    for (;;) sleep(1000);
  },
  // Says more than a reason has room for; the last line comes when it has ended.
  exit(file, status) {
    fs.writeSync(2, 'x'.repeat(50_000));
    spawn(process.execPath, ['-e', "console.error('\\nthe reason of the end')"], {
      detached: true, // or Windows ends it too
      stdio: ['ignore', 'ignore', 'inherit'],
    });
    process.exit(Number(status));
  },
  // Leaves a process behind, FILE.pid, that keeps its standard error open, and where it can, its channel; then returns, blocks,
  // or ends. That process says something, and then makes FILE.said.
  hold(file, then) {
    const channel = process.platform === 'linux' ? [3] : [];
    const said = JSON.stringify(`${file}.said`);
    const program = `setTimeout(() => {}, 600_000); try { fs.writeSync(2, 'late'); } catch {} fs.writeFileSync(${said}, '')`;
    const holder = spawn(process.execPath, ['-e', program], {
      detached: true,
      stdio: ['ignore', 'ignore', 'inherit', ...channel],
    });
    tellPid(file, holder.pid);
    if (then === 'return') return document();
    if (then !== 'hang') process.exit(Number(then));
    for (;;) sleep(1000);
  },
  // "meet.a.b" returns when "meet.b.a" has begun.
  meet(file, own) {
    const [, , other] = path.basename(file).split('.');
    fs.writeFileSync(file, '');
    while (!fs.existsSync(path.join(path.dirname(file), `meet.${other}.${own}`))) sleep(5);
    return document();
  },
  host: () => document({ execArgv: process.execArgv, env: process.env }),
  // What the file holds: a document, or "CODE reason".
  content(file) {
    const content = fs.readFileSync(file, 'utf8');
    if (content.startsWith('{')) return Buffer.from(content);
    const [code, ...reason] = content.split(' ');
    throw Object.assign(new Error(reason.join(' ')), { code });
  },
};

function readReplayDocument(file, key) {
  const [what, argument] = path.basename(file).split('.');
  return READS[what](file, argument, key);
}

// CORVANE_FAKE_WATCH names a file with what the watchers do, one line each, of which a start takes the first: its steps
// in JSON. { deliver: DOCUMENT }, { fail: FILE }, { sleep: MS } or { end: STATUS }; "no folder" fails the start itself.
function watchFolder(callback, key, folder) {
  const [line, ...rest] = fs.readFileSync(process.env.CORVANE_FAKE_WATCH, 'utf8').split('\n');
  fs.writeFileSync(process.env.CORVANE_FAKE_WATCH, rest.join('\n'));
  const steps = JSON.parse(line || '[]');
  if (steps === 'no folder') throw Object.assign(new Error(steps), { code: 'ERR_NO_DEMO_FOLDER' });
  const told = { pid: process.pid, key: Buffer.from(key).toString('hex'), folder };
  const next = () => {
    const step = steps.shift();
    if (step === undefined) return;
    if ('deliver' in step) callback(JSON.stringify({ ...step.deliver, ...told }), 'the path');
    if ('fail' in step) callback('the reason', step.fail, 'ERR_CORRUPT');
    if ('end' in step) process.exit(step.end);
    setTimeout(next, step.sleep ?? 0);
  };
  setImmediate(next);
  setInterval(() => {}, 60_000);
}

module.exports = { readReplayDocument, watchFolder };
