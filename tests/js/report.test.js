'use strict';
// Reports as text: what stands in the page agrees with the matches, whoever gives them. tests/browser/ looks at the page.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const zlib = require('node:zlib');
const { readMatches, renderReport } = require('../../client');
const { RecordingPlayerGuess } = require('../../client/recording-player.js');
const { unpack } = require('../../client/report-columns.js');
const { OWN, makeSeason } = require('../../samples/make-season.js');
const { addonPath } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');

process.env.CORVANE_ADDON ??= addonPath;
const folder = temporaryFolder();
const files = makeSeason(folder, 6).map(({ file }) => file);

// The data that a page's script would read.
function dataOf(html) {
  const [, json] = /<script type="application\/json" id="data">([^<]*)<\/script>/.exec(html);
  const { deflated, ...data } = JSON.parse(json);
  return deflated ? JSON.parse(zlib.inflateSync(Buffer.from(deflated, 'base64'))) : data;
}

async function matchesOf(paths) {
  const matches = [];
  for await (const { match } of readMatches(paths)) matches.push(match);
  return matches;
}

const tenth = (value) => (value === null ? null : Math.round(value * 10) / 10);
const at = (point) => point && { x: tenth(point.x), y: tenth(point.y) };
const who = ({ kind, id, name }, digits) => (kind === 'account' ? id.slice(0, digits) : (name ?? kind));
const row = (event, digits) => ({
  ...{ kind: event.kind, damageType: event.damageType, distanceM: tenth(event.distanceM) },
  ...{ timeMs: Math.round(event.timeMs / 100) * 100, victimAt: at(event.victimAt) },
  attackerAt: event.victimAt && at(event.attackerAt),
  ...{ attacker: who(event.attacker, digits), victim: who(event.victim, digits) },
});

test('one match and many hold the events of the model; the recording player is found', async () => {
  const matches = await matchesOf(files);
  matches[2].eliminations[3].victimAt = matches[2].eliminations[4].distanceM = null;
  for (const [given, digits] of [
    [matches.slice(2, 3), 32],
    [matches, 8],
  ]) {
    const data = dataOf(await renderReport(given));
    const unnamed = (event) => JSON.parse(JSON.stringify(event).replaceAll('"unnamed"', '"bot"'));
    const found = unpack(data).map(({ events }) => events.map((event) => unnamed(row(event, digits))));
    assert.deepEqual(
      found,
      given.map(({ eliminations }) => eliminations.map((event) => row(event, digits))),
    );
    if (given.length === 1) continue;
    assert.deepEqual(data.recording, { id: OWN, isGuess: true });
    const digitCounts = data.accounts.map((given) => [given].flat()[0].length);
    assert.deepEqual(new Set(digitCounts), new Set([32, 8]));
  }
});

test('who recorded is guessed from the number of eliminations, unless that agrees too rarely', () => {
  // own: those of the recording player in each match; kills: those of each account.
  const account = (id, eliminations) => ({ player: { kind: 'account', id }, eliminations });
  const guessOf = (own, ...kills) => {
    const guess = new RecordingPlayerGuess();
    const players = (i) => kills.map((list, id) => account(id, list[i]));
    own.forEach((eliminations, i) => guess.add({ own: { eliminations }, players: players(i) }));
    return guess.best();
  };
  assert.deepEqual([guessOf([3], [1], [3]), guessOf([3], [3], [3])], [1, null]);
  assert.deepEqual([guessOf([3, 2, 2], [3, 1, 1]), guessOf([3, 2, 2], [3, 2, 1])], [null, 0]);
});

test('names and the recording player are those that the caller gives', async () => {
  const [match] = await matchesOf(files.slice(0, 1));
  const given = {
    player: OWN.slice(0, 8).toUpperCase(),
    names: { [OWN]: `A\u200D\u202E</script>${'🔥'.repeat(300)}` },
    title: '<i>',
  };
  const html = await renderReport(match, given);
  assert.deepEqual(dataOf(html).recording, { id: OWN, isGuess: false });
  assert.deepEqual(dataOf(html).accounts.filter(Array.isArray), [
    [OWN, `A\u200D\uFFFD</script>${'🔥'.repeat(188)}…`],
  ]);
  assert.match(html, /<title>&lt;i&gt;<\/title>/);
  assert.equal(html.split('</script>').length, 3);
  for (const [options, reason] of [
    [{ player: 'x' }, /player/],
    [{ names: 'file' }, /names/],
    [{ title: 1 }, /title/],
  ]) {
    await assert.rejects(renderReport(match, options), { code: 'ERR_INVALID_ARGUMENT', message: reason });
  }
  await assert.rejects(renderReport(null), { code: 'ERR_INVALID_ARGUMENT' });
});

test('the command writes the file whole, names what it could not read, and leaves no file for none', () => {
  const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
  const report = (...args) =>
    run(process.execPath, [program, 'report', ...args], { cwd: folder, env: process.env });
  fs.writeFileSync(path.join(folder, 'names.csv'), `id,name\n${OWN},Ada\n`);
  fs.writeFileSync(path.join(folder, 'text.replay'), 'no replay');
  const { status, stderr } = report('.', '--out', 'new/season.html', '--names', 'names.csv');
  assert.deepEqual([status, stderr.trim().split('\n').length], [4, 1], stderr);
  const data = dataOf(fs.readFileSync(path.join(folder, 'new', 'season.html'), 'utf8'));
  assert.deepEqual([data.matches.length, data.failures.map(({ file }) => file)], [6, ['text.replay']]);
  assert.deepEqual(data.accounts.filter(Array.isArray), [[OWN, 'Ada']]);
  assert.equal(report('nothing.replay', '--out', 'none.html', '--player', 'nobody').status, 2);
  assert.ok(!fs.existsSync(path.join(folder, 'none.html')));
});
