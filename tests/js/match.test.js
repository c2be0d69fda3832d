'use strict';
// The match model: what it makes of a document, and how matches are read.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { addonPath } = require('../support/reads.js');
const { temporaryFolder } = require('../support/run.js');
const { makeSeason } = require('../../samples/make-season.js');
const w = require('../support/replay-writer.js');

process.env.CORVANE_ADDON = addonPath;
const { matchOf, readMatch, readMatches } = require('../../client');
const { documentOfRows } = require('../../client/event-rows.js');
const { reduceMatches } = require('../../client/match-reduction.js');

const folder = temporaryFolder();
const sample = path.join(__dirname, '..', '..', 'samples', 'match.replay');
let count = 0;
function read(bytes, options) {
  const file = path.join(folder, `match-${++count}.replay`);
  fs.writeFileSync(file, bytes);
  return readMatch(file, options);
}

const account = (digit) => ({ type: 17, id: Buffer.alloc(16, digit) });
const id = (digit) => Buffer.alloc(16, digit).toString('hex');
const elimination = (fields, Time1 = 0) => w.eventChunk({ Time1, data: w.playerElim(fields) });
const matchWith = (...events) => read(w.replay({}, events));

test('a match tells what the replay says', async () => {
  const match = await readMatch(sample, { damageNames: { 3: 'rifle' } });
  assert.equal(match.path, sample);
  assert.equal(match.id, match.document.header.guid);
  assert.equal(match.recordedTicks, 637489102335170000n);
  assert.equal(match.recordedAt.toISOString(), '2021-02-14T14:37:13.517Z');
  assert.deepEqual([match.durationMs, match.map], [1263100, 'Corvane_Isle']);
  assert.deepEqual(match.settings, { SubGame: 'Duos', Region: 'EU' });
  assert.deepEqual(match.engine, { version: '4.26.0', branch: '++Corvane+Main', changelist: 17882303 });
  assert.deepEqual(match.team, { place: 1, of: 98 });
  assert.deepEqual([match.own.eliminations, match.own.accuracy, match.own.traveledM], [3, 0.3125, 5238.17]);
  const [knock] = match.eliminations;
  assert.deepEqual([knock.timeMs, knock.kind, knock.damageName], [74250, 'knock', 'rifle']);
  assert.deepEqual(knock.victimAt, { x: -102.405, y: 88.3125, z: 5.12 });
  assert.equal(knock.distanceM.toFixed(3), '1.464');
  const own = match.players.find(({ player }) => player === knock.attacker);
  assert.deepEqual([own.eliminations, own.knocks, own.timesKnocked, own.deaths], [3, 1, 1, 0]);
  assert.deepEqual(JSON.parse(JSON.stringify(match)).recordedTicks, '637489102335170000');
});

test('what the replay does not say is null', async () => {
  const match = await read(w.replay({ FileVersion: 1 }));
  for (const name of ['name', 'recordedAt', 'recordedTicks', 'durationMs', 'map', 'engine', 'own', 'team']) {
    assert.equal(match[name], null, name);
  }
  const bare = await read(w.replay({}, w.headerChunk({ Version: 10, levels: [] })));
  assert.deepEqual(bare.engine, { version: null, branch: null, changelist: null });
  const teams = [w.teamStats(3, 0), w.teamStats(0, 98)]; // the last one counts
  const half = await matchWith(...teams.map((data) => w.eventChunk({ Group: 'AthenaMatchTeamStats', data })));
  assert.deepEqual(half.team, { place: null, of: 98 });
  const { eliminations } = await matchWith(
    elimination({ killedAt: [NaN, 1, 1], killerAt: [300, 0, 0] }),
    elimination({ killedAt: [0, 0, 0], killerAt: [300, 0, 400] }),
    elimination({}),
    elimination({ killedAt: [300, 0, 0], killer: { type: 0 } }),
  );
  assert.deepEqual(
    eliminations.map(({ distanceM, attackerAt }) => [distanceM, attackerAt]),
    [
      [null, { x: 3, y: 0, z: 0 }],
      [5, { x: 3, y: 0, z: 4 }],
      [null, null],
      [null, null],
    ],
  );
});

test('a match without a GUID is known by its content', async () => {
  const replay = (Timestamp) => w.replay({ Timestamp }, w.headerChunk({ Version: 11 }));
  const [first, copy, other] = await Promise.all(
    [0n, 0n, 1n].map((digit) => read(replay(2n ** 60n + digit))),
  );
  assert.match(first.id, /^[0-9a-f]{32}$/);
  assert.equal(first.id, copy.id);
  assert.notEqual(first.id, other.id);
});

test('players: accounts and named bots are the same in all events, unnamed ones never are', async () => {
  const [a, b] = [account(1), account(2)];
  const named = { type: 16, id: 'Søren B' };
  const match = await matchWith(
    elimination({ killed: b, killer: b }, 900),
    elimination({ killed: b, killer: b, knocked: 1 }, 850),
    elimination({ killed: b, killer: a }, 800),
    elimination({ killed: named, killer: a, knocked: 1 }, 100),
    elimination({ killed: named, killer: { type: 0 } }, 200),
    elimination({ killed: { type: 3 }, killer: { type: 3 } }, 300),
    elimination({ killed: a, killer: named }, 400),
    elimination({ killed: { type: 16, id: w.string16('') }, killer: { type: 16, id: '' } }, 500),
    w.eventChunk({ Time1: 600, data: w.playerElim({ killed: account(3), killer: a }).subarray(0, -15) }),
  );
  assert.deepEqual(
    match.eliminations.map(({ timeMs }) => timeMs),
    [100, 200, 300, 400, 500, 600, 800, 850, 900],
  );
  const facts = match.players.map(({ player, eliminations, knocks, timesKnocked, deaths, ...end }) => [
    player.id ?? player.name ?? player.kind,
    ...[eliminations, knocks, timesKnocked, deaths],
    end.endedBy && (end.endedBy.id ?? end.endedBy.name ?? end.endedBy.kind),
    end.selfInflicted,
  ]);
  const bot = match.players[2].player.name;
  assert.deepEqual(facts, [
    [id(2), 0, 0, 1, 2, id(2), true],
    [id(1), 1, 1, 0, 1, bot, false],
    [bot, 1, 0, 1, 1, 'unknown', null],
    ['unknown', 1, 0, 0, 0, null, null],
    ['bot', 1, 0, 0, 0, null, null],
    ['bot', 0, 0, 0, 1, 'bot', null],
    ['bot', 1, 0, 0, 0, null, null],
    ['bot', 0, 0, 0, 1, 'bot', null],
    ['unknown', 1, 0, 0, 0, null, null],
    [id(3), 0, 0, 0, 1, 'unknown', null],
  ]);
});

test('accounts are told apart, however alike the ends of their ids are', () => {
  const ids = [...Array.from({ length: 40 }, (_, i) => `${i}-7f3`), '7f3', '7f2', '3'];
  const event = (killer) => ({ evtName: 'playerElim', eventMeta: { time1: 0 }, killer, killedBot: 'Bot' });
  const { players } = matchOf({ events: [...ids, ...[...ids].reverse(), ...ids].map(event) });
  const accounts = players.filter(({ player }) => player.kind === 'account');
  assert.deepEqual(
    accounts.map(({ player, eliminations }) => [player.id, eliminations]),
    ids.map((each) => [each, 3]),
  );
});

test('texts are as the file has them: blanks stay, final zeros go', async () => {
  const header = w.headerChunk({
    Branch: 'x y',
    levels: ['Lobby', 'Isle of Ash'].map((name) => [`/Game/Maps/${name}.${name}`, 0]),
    GameSpecificData: ['Sub Game = é = b', 'Ranked', '=x'],
  });
  const named = (text) => elimination({ killed: { type: 16, id: text }, killer: { type: 16, id: text } });
  const events = ['Unnamed Bot', 'Søren B', ''].map(named);
  const match = await read(w.replay({ FriendlyName: ' Finale é' }, header, events));
  assert.deepEqual([match.name, match.map, match.engine.branch], [' Finale é', 'Isle of Ash', 'x y']);
  assert.deepEqual(match.settings, { 'Sub Game': 'é = b', Ranked: null });
  assert.deepEqual(
    match.eliminations.map(({ victim }) => victim.name),
    ['Unnamed Bot', 'Søren B', null],
  );
});

test('a cut replay is broken, or says where it is cut if what is whole is enough', async () => {
  const whole = fs.readFileSync(sample);
  const complete = await readMatch(sample);
  assert.deepEqual([complete.state, complete.warnings, complete.cutAtByte], ['complete', [], null]);
  assert.equal((await read(w.replay({ bIsLive: 1 }))).state, 'recording');
  const cut = whole.subarray(0, -3);
  await assert.rejects(read(cut), { code: 'ERR_CORRUPT' });
  const match = await read(cut, { salvage: true });
  assert.deepEqual([match.state, match.fileBytes], ['truncated', cut.length]);
  assert.deepEqual(match.eliminations, complete.eliminations);
  assert.match(match.warnings[0], new RegExp(`cut: what follows byte ${match.cutAtByte} of ${cut.length}`));
});

test('many are read in order, from any kind of source, and a late path holds nothing back', async () => {
  const season = makeSeason(path.join(folder, 'season'), 12);
  let gotFirst;
  const first = new Promise((resolve) => (gotFirst = resolve));
  async function* paths() {
    yield season[0].file;
    await first; // never comes if the first result waits for the second path
    for (const { file } of season.slice(1)) yield file;
    yield path.join(folder, 'none');
  }
  const results = [];
  for await (const result of readMatches(paths(), { concurrency: 2 })) {
    gotFirst();
    results.push(result);
  }
  assert.equal(results.pop().error.code, 'ERR_UNREADABLE');
  for (const [i, { match }] of results.entries()) {
    const { file, mode, map, place, total, own } = season[i];
    assert.deepEqual([match.path, match.settings.SubGame, match.map], [file, mode, map]);
    assert.deepEqual([match.team, match.own.eliminations], [{ place, of: total }, own.kills]);
  }
});

test('what cannot be made of a match is a failure of its file, and no end of the child', async () => {
  const reduce = path.join(folder, 'reduce.js');
  const wrong =
    "[() => JSON.parse('no'), () => { throw new RangeError('Invalid string length'); }, () => open]";
  // A new child would begin again with the first of them.
  fs.writeFileSync(
    reduce,
    `const open = () => {}; const all = ${wrong}; exports.reduce = () => all.shift()?.();`,
  );
  const codes = [];
  for await (const { error } of reduceMatches(Array(4).fill(sample), reduce, { concurrency: 1 }))
    codes.push(error?.code);
  assert.deepEqual(codes, ['ERR_CORRUPT', 'ERR_OUT_OF_MEMORY', 'ERR_CORRUPT', undefined]);
});

test('a batch fails only for the replay that ends its child or cannot be sent; with a time limit there are none', async () => {
  const reduce = path.join(folder, 'batch.js');
  fs.writeFileSync(
    reduce,
    `let count = 0;
    exports.reduce = ({ path }) => {
      if (/lost/.test(path)) process.exit(7);
      setImmediate(() => (count = 0)); // when the order is done
      return /unsent/.test(path) ? () => {} : ++count;
    };`,
  );
  const paths = Array.from({ length: 16 }, (_, i) =>
    path.join(folder, `${{ 5: 'lost', 10: 'unsent' }[i]}-${i}`),
  );
  for (const file of paths) fs.copyFileSync(sample, file);
  // A document after which the rest of its batch is left for another order.
  fs.writeFileSync(paths[12], w.replay({ FriendlyName: 'x'.repeat(2 ** 22) }));
  const resultsOf = async (limits) => {
    const results = [];
    for await (const result of reduceMatches(paths, reduce, { concurrency: 1, ...limits })) {
      assert.equal(result.path, paths[results.length]);
      results.push(result.match ?? result.error.code);
    }
    return results;
  };
  const alone = paths.map((_, i) => ({ 5: 'ERR_CHILD_LOST', 10: 'ERR_CORRUPT' })[i] ?? 1);
  assert.deepEqual(await resultsOf({ timeout: 60_000 }), alone);
  const batched = await resultsOf();
  assert.deepEqual([batched[5], batched[10], batched[3]], [alone[5], alone[10], 4]);
  assert.deepEqual(batched.slice(12), [1, 1, 2, 3]);
  assert.deepEqual(batched.filter(Number.isInteger).length, 14);
  const stop = new AbortController();
  const first = reduceMatches(paths, reduce, { signal: stop.signal }).next();
  setImmediate(() => stop.abort());
  await assert.rejects(first, { code: 'ERR_ABORTED' });
});

test('the limit of a document is that of its whole text and facts where they are read as rows', async () => {
  const unknown = Array.from({ length: 100 }, (_, i) => w.eventChunk({ Group: `group ${i}`, Metadata: '' }));
  const eliminations = Array.from({ length: 100 }, (_, i) => elimination({}, i));
  const file = path.join(folder, 'large.replay');
  fs.writeFileSync(file, w.replay({}, eliminations, unknown));
  const { text, facts } = require(addonPath).readReplayDocument(file, new ArrayBuffer(0), { facts: true });
  const reduce = require.resolve('../../bin/export/packed-match.js');
  for (const [less, code] of [
    [0, undefined],
    [1, 'ERR_DOCUMENT_TOO_LARGE'],
  ]) {
    const limits = { maxDocumentBytes: text.length + facts.length - less };
    const { error } = (await reduceMatches([file], reduce, limits).next()).value;
    assert.equal(error?.code, code);
  }
});

const withoutUndefined = (object) =>
  Object.fromEntries(Object.entries(object).filter(([, value]) => value !== undefined));

test('a document with eliminations as rows is the same document', () => {
  const bots = Array.from({ length: 1100 }, (_, i) => ({ type: 16, id: `Bot_${i}` }));
  const others = [account(7), { type: 16, id: 'Bot "é"\u0000' }, { type: 3 }, { type: 9 }];
  const persons = [...others, { type: 16, id: 'x'.repeat(65) }, ...bots, ...others, ...bots];
  const places = [NaN, -1.5, 1e9, Infinity, 1e-40, -0, 0.1];
  const at = (i) => [0, 3, 5].map((shift) => places[(i + shift) % places.length]);
  const events = persons.flatMap((killed, i) => [
    elimination(
      {
        killed,
        killer: persons.at(-i),
        killedAt: at(i),
        killerAt: at(i + 1),
        damageType: i % 256,
        knocked: i % 2,
      },
      i,
    ),
    w.eventChunk({ Metadata: 'AthenaMatchTeamStats', data: w.teamStats(i, 98) }),
  ]);
  const file = path.join(folder, 'rows.replay');
  fs.writeFileSync(file, w.replay({}, events));
  for (const replay of [file, sample]) {
    const textOf = (rows) =>
      require(addonPath)
        .readReplayDocument(replay, new ArrayBuffer(0), { facts: true, rows })
        .text.toString();
    assert.match(textOf(true), /^ {2}\[/m);
    const { events: found, ...rest } = documentOfRows(textOf(true));
    assert.deepEqual({ ...rest, events: found.map(withoutUndefined) }, JSON.parse(textOf(false)));
  }
  assert.deepEqual(documentOfRows('{}'), {});
});

test('a signal ends the wait for a path; await using ends the children', async () => {
  const stuck = { [Symbol.asyncIterator]: () => ({ next: () => new Promise(() => {}) }) };
  const stop = new AbortController();
  const reading = readMatches(stuck, { signal: stop.signal }).next();
  setImmediate(() => stop.abort());
  await assert.rejects(reading, { code: 'ERR_ABORTED' });
  await assert.rejects(readMatches(stuck, { signal: stop.signal }).next(), { code: 'ERR_ABORTED' });
  if (Symbol.asyncDispose === undefined) return;
  const matches = readMatches([sample, sample]);
  await matches.next();
  await matches[Symbol.asyncDispose]();
  assert.ok((await matches.next()).done);
});

test('a document of ReadCorvaneDemo will do, without the last digits of the time', () => {
  const addon = require(addonPath);
  const document = JSON.parse(addon.ReadCorvaneDemo(sample));
  const match = matchOf(document);
  assert.deepEqual([match.recordedTicks, match.state], [null, null]);
  assert.equal(match.recordedAt.getUTCFullYear(), 2021);
});
