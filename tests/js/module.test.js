'use strict';
// The module itself: its functions, their arguments and paths, files in use, threads, hosts, and how it is linked.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Worker } = require('node:worker_threads');
const { ElfFile } = require('../support/elf-file.js');
const { DYNAMIC_BASE, NX_COMPAT, PeFile } = require('../support/pe-file.js');
const { addonPath, readPaths, temporaryFolder, utf8Text } = require('../support/reads.js');
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
});

test('anything but one string is a TypeError', () => {
  const expected = { name: 'TypeError', message: 'Expected 1 required argument [replayFilePath]' };
  const file = write('arguments.replay');
  for (const args of [
    [],
    [file, file],
    [file, undefined],
    [42],
    [null],
    [undefined],
    [[file]],
    [new String(file)],
  ]) {
    assert.throws(
      () => addon.ReadCorvaneDemo(...args),
      (error) => error instanceof TypeError,
    );
    assert.throws(() => addon.ReadCorvaneDemo(...args), expected);
  }
});

test('what is no file gives ""', () => {
  const file = write('file.replay');
  const paths = [
    '',
    '.',
    folder,
    folder + path.sep,
    path.join(folder, 'none.replay'),
    path.join(file, 'x'),
    '\ud800',
  ];
  for (const name of paths) assert.equal(addon.ReadCorvaneDemo(name), '', name);
});

test('the path is given back as it came', () => {
  write('Benutzer Jörg/火🔥.replay');
  fs.mkdirSync(path.join(folder, '\ud800'));
  const inFolder = (...parts) => [folder, ...parts].join(path.sep);
  const roundabout = ['Benutzer Jörg', '.', '火🔥.replay'];
  assert.equal(read(inFolder(...roundabout)).Creation.fileName, inFolder(...roundabout));
  const unpaired = ['\ud800', '..', 'Benutzer Jörg', '火🔥.replay'];
  assert.equal(
    read(inFolder(...unpaired)).Creation.fileName,
    inFolder(...unpaired).replace('\ud800', '\ufffd'),
  );
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

test('a failed read, which keeps its file open, keeps nobody from writing it', () => {
  const file = write(
    'cut.replay',
    silentReplay.subarray(0, w.replay({ FileVersion: 5, FriendlyName: 'plain' }).length + 20),
  );
  assert.equal(addon.ReadCorvaneDemo(file), '');
  fs.writeFileSync(file, silentReplay);
  assert.equal(read(file).events.length, 1);
});

test('a file of more than 4 GiB is read to its end without being read through', () => {
  const gap = 0x7fffffff;
  const file = write('large.replay', w.replay({ FileVersion: 5 }));
  const writer = fs.openSync(file, 'r+');
  let end = fs.fstatSync(writer).size;
  for (let i = 0; i < 4; ++i) {
    fs.writeSync(writer, w.chunk(w.CHUNK.replayData, Buffer.alloc(0), gap), 0, undefined, end);
    end += 8 + gap;
  }
  fs.writeSync(writer, team(9), 0, undefined, end);
  fs.closeSync(writer);
  const began = process.hrtime.bigint();
  const document = read(file);
  const ms = Number(process.hrtime.bigint() - began) / 1e6;
  assert.equal(document.ReplayFileMeta.TotalDataSizeInBytes, end + team(9).length);
  assert.deepEqual(
    document.events.map((event) => event.finalRanking),
    [9],
  );
  assert.ok(ms < 500, `${ms} ms`);
});

test('several threads load the module and read at once', async () => {
  const file = write(
    'threads.replay',
    w.bytes(
      silentReplay,
      Array.from({ length: 500 }, (_, i) => team(i)),
    ),
  );
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

  test('the module needs nothing but what every Windows has, and its host', () => {
    const bytes = fs.readFileSync(addonPath);
    const pe = new PeFile(bytes);
    const everyWindowsHas = ['kernel32.dll', 'msvcrt.dll', 'shell32.dll', 'user32.dll', 'advapi32.dll'];
    assert.equal(pe.machine, process.arch);
    assert.equal(pe.dllFlags & (DYNAMIC_BASE | NX_COMPAT), DYNAMIC_BASE | NX_COMPAT);
    assert.ok(pe.imports.includes('kernel32.dll'));
    assert.deepEqual(
      pe.imports.filter((name) => !everyWindowsHas.includes(name)),
      [],
    );
    assert.ok(bytes.includes('NODE.EXE\0'), 'the host is named, but in the delay-load descriptor only');
  });
}

if (process.platform === 'linux') {
  test('the module is hardened', () => {
    const elf = new ElfFile(fs.readFileSync(addonPath));
    assert.ok(!elf.stackIsExecutable);
    assert.ok(elf.hasFullRelro);
    assert.ok(elf.names('__stack_chk_fail'), 'functions with buffers guard their return address');
  });
}
