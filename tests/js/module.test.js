'use strict';
// The module itself: its functions, their arguments and paths, files in use, threads, and hosts.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { addonPath, readPaths, utf8Text } = require('../support/reads.js');
const { temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');

const addon = require(addonPath);
const folder = temporaryFolder();

// Reading version 5 prints nothing, so these files may be read in this process.
const team = (ranking) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(ranking, 100) });
const silentReplay = w.replay({ FileVersion: 5, FriendlyName: 'plain' }, w.headerChunk(), team(1));
function write(name, bytes = silentReplay) {
  const file = path.join(folder, name);
  fs.mkdirSync(path.dirname(file), { recursive: true });
  fs.writeFileSync(file, bytes);
  return file;
}
const read = (file) => JSON.parse(utf8Text(addon.ReadCorvaneDemo(file)));

test('the module has its three functions, in their order', () => {
  assert.deepEqual(Object.keys(addon), ['ReadCorvaneDemo', 'StartCorvaneWatcher', 'StopCorvaneWatcher']);
  assert.ok(Object.values(addon).every((value) => typeof value === 'function'));
  assert.deepEqual(require('../../native.js'), { ...addon });
});

test('anything but one string is a TypeError', () => {
  const message = 'Expected 1 required argument [replayFilePath]';
  const file = write('arguments.replay');
  for (const args of [[], [file, file], [file, undefined], [42], [null], [[file]], [new String(file)]]) {
    assert.throws(() => addon.ReadCorvaneDemo(...args), { constructor: TypeError, message });
  }
});

test('what is no file gives ""', () => {
  const paths = [
    '',
    folder,
    folder + path.sep,
    path.join(folder, 'none'),
    path.join(write('file'), 'x'),
    '\ud800',
    write('file') + '\0x',
  ];
  for (const name of paths) assert.equal(addon.ReadCorvaneDemo(name), '', name);
});

test('the path is given back as it came', () => {
  write('Benutzer Jörg/火🔥.replay');
  fs.mkdirSync(path.join(folder, '\ud800'));
  const inFolder = (...parts) => [folder, ...parts, 'Benutzer Jörg', '.', '火🔥.replay'].join(path.sep);
  assert.equal(read(inFolder()).Creation.fileName, inFolder());
  assert.equal(read(inFolder('\ud800', '..')).Creation.fileName, inFolder('\ufffd', '..'));
});

test('a file can be read, and grow, while others hold it open for writing', () => {
  const file = write('growing.replay');
  const game = fs.openSync(file, 'r+');
  assert.equal(read(file).events.length, 1);
  fs.writeSync(game, team(2), 0, undefined, silentReplay.length);
  const [ofAnotherProcess] = readPaths([file]);
  assert.deepEqual(JSON.parse(ofAnotherProcess.text).events, read(file).events);
  assert.equal(read(file).events.length, 2);
  fs.closeSync(game);
});

test('several threads load the module and read at once', async () => {
  const events = Array.from({ length: 500 }, (_, i) => team(i));
  const file = write('threads.replay', w.bytes(silentReplay, events));
  const code = `
    const { parentPort, workerData } = require('node:worker_threads');
    const addon = require(workerData.addonPath);
    const texts = new Set(Array.from({ length: 40 }, () => addon.ReadCorvaneDemo(workerData.file)));
    parentPort.postMessage([...texts]);`;
  const inWorker = () =>
    new Promise((resolve, reject) => {
      const worker = new Worker(code, { eval: true, workerData: { addonPath, file } });
      worker.on('message', resolve).on('error', reject);
    });
  const texts = await Promise.all(Array.from({ length: 4 }, inWorker));
  for (const ofOne of texts) assert.deepEqual(ofOne, [addon.ReadCorvaneDemo(file)]);
});

if (process.platform === 'win32') {
  test('a host under another name loads the module', () => {
    const host = process.env.CORVANE_RENAMED_HOST;
    assert.ok(host && path.basename(host).toLowerCase() !== 'node.exe', `CORVANE_RENAMED_HOST is ${host}`);
    const [outcome] = readPaths([write('renamed.replay')], host);
    assert.equal(outcome.stderr, '');
    assert.equal(JSON.parse(outcome.text).ReplayFileMeta.FriendlyName, 'plain');
  });
}
