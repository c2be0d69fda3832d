'use strict';
// corvane-replay watch over any folder: a match from its start to its end, in each format.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { setTimeout: sleep } = require('node:timers/promises');
const { addonPath } = require('../support/reads.js');
const { run, start, temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');

const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
// A watch that does not end is killed, and the test fails.
const options = { env: { ...process.env, CORVANE_ADDON: addonPath }, timeout: 60_000 };
const folder = temporaryFolder();
const file = path.join(folder, 'live.replay');
const LIVE_AT = 25; // bIsLive, behind five numbers and an empty name

test('watch tells a match until it has ended', async () => {
  const levels = [['/Game/Maps/Corvane_Isle', 0]];
  const elimination = w.eventChunk({
    Time1: 61_500,
    data: w.playerElim({ killerAt: [300, 400, 0], killer: { type: 16, id: 'Zoë\x9b' } }),
  });
  fs.writeFileSync(
    file,
    w.replay(
      { FileVersion: 5, bIsLive: 1, Timestamp: 638_000_000_000_000_001n },
      w.headerChunk({ levels }),
      elimination,
      w.eventChunk({ Time1: 62_000, data: w.playerElim({ killedAt: [NaN, 0, 0] }) }),
    ),
  );
  const watch = (format) =>
    start(
      process.execPath,
      [program, 'watch', '--folder', folder, '--format', format, '--end-after-match'],
      options,
    );
  const [text, ndjson] = ['text', 'ndjson'].map(watch);
  const isSilent = ({ child, output }) =>
    (child.exitCode ?? child.signalCode) === null && Object.values(output()).includes('');
  while ([text, ndjson].some(isSilent)) {
    fs.appendFileSync(file, w.chunk(w.CHUNK.replayData, Buffer.alloc(8)));
    fs.writeFileSync(path.join(folder, 'broken.replay'), w.replay().subarray(0, 10));
    await sleep(100);
  }
  const game = fs.openSync(file, 'r+');
  fs.writeSync(game, w.u32(0), 0, 4, LIVE_AT);
  fs.closeSync(game);

  const told = await text.ended;
  assert.equal(told.status, 0, told.stdout + told.stderr);
  assert.match(told.stderr, /^(corvane-replay: .*broken\.replay: .*\n)+$/);
  assert.equal(
    told.stdout,
    'live.replay: a match begins on Corvane_Isle\nlive.replay: 0:01:01.500 Zoë eliminated Unnamed Bot over 5.0 m\n' +
      'live.replay: 0:01:02.000 Unnamed Bot eliminated Unnamed Bot\n' +
      'live.replay: the match has ended: 2 eliminations, 0 knock-downs\n',
  );
  const { status, stdout } = await ndjson.ended;
  const lines = stdout
    .trim()
    .split('\n')
    .map((line) => JSON.parse(line));
  const seen = lines.flatMap(({ path: of, type, match, added }) => [
    of,
    type,
    match.recordedTicks,
    added.length,
  ]);
  const ticks = '638000000000000001';
  assert.deepEqual([status, ...seen], [0, file, 'start', ticks, 2, file, 'end', ticks, 0]);
});

test('watch refuses to end after a match that it does not know as one', () => {
  const { status, stderr } = run(
    process.execPath,
    [program, 'watch', '--format', 'documents', '--end-after-match'],
    options,
  );
  assert.equal(status, 2);
  assert.match(stderr, /--end-after-match goes with/);
});
