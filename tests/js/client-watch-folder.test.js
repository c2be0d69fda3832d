'use strict';
// Watching a folder through the client and the built add-on: results with their files, and the matches that they make.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { Readable } = require('node:stream');
const { after, test } = require('node:test');
const { livingChildren } = require('../support/client-processes.js');
const { addonPath } = require('../support/reads.js');
const { temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');
const { ReplayClient } = require('../../client');
const { watchMatches } = require('../../client/match-watch.js');

process.env.CORVANE_ADDON = addonPath;
const key = Buffer.from('000102030405060708090a0b0c0d0e0f', 'hex');
const client = new ReplayClient();
after(async () => {
  await client.close();
  assert.deepEqual(livingChildren(), []);
});

const folder = temporaryFolder();
const file = (name) => path.join(folder, name);
const elimination = (Time1, name) =>
  w.eventChunk({ Time1, data: w.encrypt(w.playerElim({ killer: { type: 16, id: name } }), key) });
const info = { Timestamp: 638_000_000_000_000_000n, bEncrypted: 1 };
// As a whole, since the watch may look at any moment. On Windows no file takes the place of one that is being read.
function put(name, ...parts) {
  fs.writeFileSync(file('unfinished'), w.bytes(...parts));
  for (const end = performance.now() + 20_000; fs.existsSync(file('unfinished')); ) {
    try {
      fs.renameSync(file('unfinished'), file(name));
    } catch (error) {
      if (error.code === 'ENOENT' || performance.now() > end) throw error;
    }
  }
}

test('a match is told from its start to its end, whatever its file is called', async () => {
  put('before.replay', w.replay());
  const watch = client.watchReplays({ folder, key });
  await new Promise((resolve) => watch.once('watching', resolve));
  const told = watchMatches(() => watch);
  const next = async () => {
    const { path: name, type, match, added, error } = (await told.next()).value;
    const what = match && [match.state, match.eliminations.length, added.map(({ timeMs }) => timeMs)];
    return [path.basename(name), type, ...(what ?? [error.code])];
  };

  put('a.replay', w.replay({ ...info, bIsLive: 1 }), w.headerChunk(), elimination(20, 'Zoë'));
  assert.deepEqual(await next(), ['a.replay', 'start', 'recording', 1, [20]]);
  fs.appendFileSync(file('a.replay'), elimination(10, 'A'));
  assert.deepEqual(await next(), ['a.replay', 'events', 'recording', 2, [10]]);
  fs.renameSync(file('a.replay'), file('b.replay'));
  fs.appendFileSync(file('b.replay'), elimination(30, 'B'));
  assert.deepEqual(await next(), ['b.replay', 'events', 'recording', 3, [30]]);

  put('empty.replay'); // nothing to tell yet
  put('broken.replay', w.replay().subarray(0, 10));
  assert.deepEqual(await next(), ['broken.replay', 'error', 'ERR_CORRUPT']);

  // What is told last of a broken file does not count: it may be written anew.
  fs.appendFileSync(file('b.replay'), w.eventChunk({ data: w.skipped(20) }));
  assert.deepEqual(await next(), ['b.replay', 'error', 'ERR_CORRUPT']);
  const all = [elimination(20, 'Zoë'), elimination(10, 'A'), elimination(30, 'B'), elimination(40, 'D')];
  put('b.replay', w.replay({ ...info, bIsLive: 1 }), w.headerChunk(), ...all);
  assert.deepEqual(await next(), ['b.replay', 'events', 'recording', 4, [40]]);

  const game = fs.openSync(file('b.replay'), 'r+');
  fs.writeSync(game, w.u32(0), 0, 4, w.infoBlock({ FileVersion: 1, FriendlyName: '' }).length - 4);
  fs.closeSync(game);
  assert.deepEqual(await next(), ['b.replay', 'end', 'complete', 4, []]);

  // Another replay under the name of one is told from its start.
  put('b.replay', w.replay({ ...info, Timestamp: 1n }), w.headerChunk(), elimination(5, 'C'));
  assert.deepEqual(await next(), ['b.replay', 'start', null, 1, [5]]);
  await told.return();
});

test('a folder that is missing is told, and waited for', async () => {
  const watch = client.watchReplays({ folder: file('later') });
  const { code } = await new Promise((resolve) => watch.once('error', resolve));
  fs.mkdirSync(file('later'));
  await new Promise((resolve) => watch.once('watching', resolve));
  assert.equal(code, 'ERR_NO_DEMO_FOLDER');
  await watch.close();
});

test('a match ends once its own file has not changed for a while; a result without a document is none', async (t) => {
  let now = 0;
  t.mock.method(performance, 'now', () => now);
  const event = { evtName: 'AthenaMatchTeamStats', eventMeta: { time1: 1 } };
  const result = (name, Timestamp, events, more) => ({
    path: name,
    document: { ReplayFileMeta: { Timestamp }, events, ...more },
  });
  const all = (name, id) => result(name, id, [event], { Creation: {} });
  const source = Object.assign(new Readable({ objectMode: true, read() {} }), { close() {} });
  const told = watchMatches(() => source, { endAfterMs: 50 });
  const next = async (time, ...results) => {
    now = time;
    results.forEach((each) => source.push(each));
    const { path: of, type } = (await told.next()).value;
    return `${of} ${type}`;
  };

  const without = [{ Creation: {} }, { GameAlive: 1 }].map((document) => ({ path: 'a', document }));
  const again = all('a', 7); // from a child that was started again
  const stranger = result('unknown', 8);
  assert.equal(await next(0, without[0], all('a', 7)), 'a start');
  assert.equal(await next(20, again, without[1], stranger, all('b', 9)), 'b start');
  assert.equal(await next(40, result('b', 9, [event])), 'b events');
  assert.equal(await next(70), 'a end');
  assert.equal(await next(70, result('a', 7, []), result('b', 9, [event])), 'b events');
  assert.equal(await next(120), 'b end');
  // A file under the old name of one that was moved is another one.
  assert.equal(await next(120, result('c', 7, []), all('a', 7), { path: 'last', error: {} }), 'a start');
  await told.return();
});

test('of matches that have ended no more than 100 are remembered', async () => {
  const result = (number, bIsLive, more) => ({
    path: `${number}`,
    document: { ReplayFileMeta: { Timestamp: number + 1, bIsLive }, ...more },
  });
  const numbers = Array.from({ length: 101 }, (_, i) => i);
  const events = [{ evtName: 'AthenaMatchTeamStats', eventMeta: { time1: 1 } }];
  const results = numbers.flatMap((i) => [result(i, true, { Creation: {} }), result(i, false)]);
  const more = [0, 1].map((i) => result(i, false, { events }));
  async function* source() {
    yield* [...results, ...more];
  }
  const watch = Object.assign(source(), { close() {} });
  const told = [];
  for await (const { path: of, type } of watchMatches(() => watch)) if (type === 'events') told.push(of);
  assert.deepEqual(told, ['1']);
});
