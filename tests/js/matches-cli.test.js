'use strict';
// The commands about matches: what is asked of a season in one command each, and where its replays are looked for.

const assert = require('node:assert/strict');
const { spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { Command } = require('commander');
const { condition, sorter } = require('../../bin/match-columns.js');
const { Output } = require('../../bin/output.js');
const { replayPaths } = require('../../bin/replay-paths.js');
const { OWN, makeSeason } = require('../../samples/make-season.js');
const { addonPath } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');

process.env.CORVANE_ADDON = addonPath;
const { readMatches } = require('../../client');

const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
const folder = temporaryFolder();
const season = path.join(folder, 'season');
const truth = makeSeason(season, 30);
const cli = (...args) => run(process.execPath, [program, ...args], { cwd: folder });

// Runs a command in this process, which takes less time than to start another one; resolves with what it writes.
async function written(name, args, stream, terminal = { write() {} }) {
  const module = require(`../../bin/commands/${name}.js`);
  const command = new Command(name);
  module.define(command);
  command.parse(['-j', '1', ...args], { from: 'user' });
  const texts = [];
  const write = (text, done) => {
    texts.push(text);
    done();
  };
  const output = new Output({ ...stream, on() {}, write }, assert.fail);
  const context = { args: command.processedArgs, options: command.opts(), terminal, output };
  const status = await module.run(context);
  assert.equal(status, 0);
  return texts.join('');
}

async function lines(name, ...args) {
  const text = name === 'compare' ? cli(name, ...args).stdout : await written(name, args, {});
  return text.split('\n').slice(0, -1).map(JSON.parse);
}

// What the command writes on a terminal of so many columns.
const onTerminal = (name, ...args) => onColumns(80, name, ...args);
async function onColumns(columns, name, ...args) {
  const text = await written(name, args, { isTTY: true, columns });
  for (const line of text.split('\n')) assert.ok(line.length <= columns, line);
  return text;
}

const events = [];
test('the season is read once, to know what is true of it', async () => {
  for await (const { match } of readMatches(truth.map(({ file }) => file))) {
    for (const event of match.eliminations) events.push({ ...event, match });
  }
});
const ends = () => events.filter(({ kind }) => kind === 'elimination');
const countBy = (list, keyOf) => {
  const counts = new Map();
  for (const each of list) counts.set(keyOf(each), (counts.get(keyOf(each)) ?? 0) + 1);
  return counts;
};

const wonOf = (list) => list.filter(({ place }) => place === 1);
const won = wonOf(truth);

const median = (list) => {
  const sorted = [...list].sort((a, b) => a - b);
  const middle = (sorted.length - 1) / 2;
  return (sorted[Math.floor(middle)] + sorted[Math.ceil(middle)]) / 2;
};

const namesFile = path.join(folder, 'names.json');
const ofOpponents = ['stats', season, '--by', 'opponent'];
const checkNemesis = ([first]) => {
  const counts = countBy(
    ends().filter((e) => e.victim.id === OWN && e.attacker.id && e.attacker !== e.victim),
    ({ attacker }) => attacker.id,
  );
  assert.equal(first.eliminated_player, Math.max(...counts.values()));
  assert.equal(first.eliminated_player, counts.get(first.opponent));
};

// Each question with the one command that answers it; rows: what the command gave.
const QUESTIONS = [
  {
    question: 'which matches were won',
    args: ['list', season, '--where', 'place=1', '--sort', '-eliminations'],
    check: (rows) => {
      const kills = won.map(({ own }) => own.kills).sort((a, b) => b - a);
      assert.deepEqual(
        rows.map((row) => row.own_eliminations),
        kills,
      );
    },
  },
  {
    question: 'who was best by rate',
    args: ['stats', season, '--sort', 'eliminations_per_match', '--min-matches', '5', '--top', '3'],
    check: ([best, ...others]) => {
      assert.equal(others.length, 2);
      const attacks = ends().filter(({ attacker, victim }) => attacker.id && attacker !== victim);
      const rate = countBy(attacks, ({ attacker }) => attacker.id).get(best.player) / best.matches;
      assert.equal(best.eliminations_per_match, rate);
      assert.ok(others.every((row) => row.eliminations_per_match <= rate && row.matches >= 5));
    },
  },
  {
    question: 'the longest distances',
    args: ['stats', season, '--by', 'player', '--sort', 'longest_distance_m', '--top', '1'],
    check: ([first]) => assert.equal(first.longest_distance_m, Math.max(...ends().map((e) => e.distanceM))),
  },
  {
    question: 'the damage mix',
    args: ['stats', season, '--by', 'damage', '--damage-names', path.join(folder, 'damage.csv')],
    check: (rows) => {
      const rifle = rows.find(({ damage }) => damage === 'rifle, "heavy"');
      const distances = ends().flatMap((e) => (e.damageType === 12 ? [e.distanceM] : []));
      assert.equal(rifle.eliminations, distances.length);
      assert.equal(rifle.median_distance_m, median(distances));
      assert.ok(Math.abs(rows.reduce((sum, { share }) => sum + share, 0) - 1) < 1e-9);
    },
  },
  {
    question: 'how one player did',
    args: ['stats', season, '--player', 'ME', '--names', namesFile],
    check: ([{ player, name, matches }, ...more]) =>
      assert.deepEqual([player, name, matches, more], [OWN, 'me', truth.length, []]),
  },
  {
    question: 'the nemesis',
    args: [...ofOpponents, '--player', OWN.slice(0, 9).toUpperCase()],
    check: checkNemesis,
  },
  { question: 'the nemesis of who is in most matches', args: ofOpponents, check: checkNemesis },
  {
    question: 'how place changed over time',
    args: ['stats', season, '--by', 'week'],
    check: (rows) => {
      assert.deepEqual(
        rows.map(({ week, matches, wins }) => [week, matches, wins]),
        [
          ['2020-W53', 19, wonOf(truth.slice(0, 19)).length],
          ['2021-W01', 11, wonOf(truth.slice(19)).length],
        ],
      );
    },
  },
  {
    question: 'the median place on each map, also of an even number of matches',
    args: ['stats', season, '--by', 'map'],
    check: (rows) => {
      for (const { map, median_place } of rows) {
        const places = truth.filter((each) => each.map === map).map(({ place }) => place);
        assert.equal(median_place, median(places));
      }
    },
  },
  {
    question: 'what differs between two sets',
    args: ['compare', 'season/match-0000*', '--', 'season/match-0001*', 'season/match-00020.replay'],
    check: (rows) => {
      const [a, b] = [truth.slice(0, 9), truth.slice(9, 20)].map((list) => wonOf(list).length);
      assert.deepEqual(rows[0], { figure: 'matches', a: 9, b: 11 });
      assert.deepEqual(rows[1], { figure: 'wins', a, b });
    },
  },
];

fs.writeFileSync(path.join(folder, 'damage.csv'), '\ufeff12,"rifle, ""heavy"""\r\n');
fs.writeFileSync(path.join(folder, 'semicolons.csv'), `${OWN};me\n`);
fs.writeFileSync(namesFile, `\ufeff${JSON.stringify({ [OWN]: 'me' })}`);

for (const { question, args, check } of QUESTIONS) test(question, async () => check(await lines(...args)));

test('conditions hold as they read, and what is not known meets none but "!="', () => {
  const match = {
    recordedAt: new Date('2021-02-14T10:00Z'),
    durationMs: 750_999,
    map: 'Saltmarsh',
    name: null,
  };
  Object.assign(match, { team: { place: 3, of: 98 }, own: { accuracy: 0.25 } });
  const held =
    'Date=2021-02 date<2021-03 length=12:30 length<1:12:30 accuracy=25% Map~MARSH place<=3 name!=x';
  for (const text of held.split(' ')) assert.ok(condition(text)(match), text);
  for (const text of 'date=2021-03 place<3 length>1:02:30 map=Salt name=x name>a'.split(' '))
    assert.ok(!condition(text)(match), text);
  assert.ok(sorter('-accuracy').compare(null, 1) > 0);
});

test('a match at a glance, and tables, fit the terminal', async () => {
  const [first] = truth;
  const summary = await onTerminal('summary', first.file);
  assert.match(summary, new RegExp(`^${first.map} · ${first.mode} · 2020-12-31 08:26 · \\d+:\\d\\d`));
  assert.match(summary, new RegExp(`^place ${first.place} of ${first.total} · ${first.own.kills} elim`, 'm'));
  assert.match(summary, /^eliminations +[▁▂▃▄▅▆▇█ ]{30,}$/m);
  const distances = ends()
    .filter((event) => event.match.path === first.file)
    .map((event) => event.distanceM);
  assert.equal(/^longest [^]*?\bover\s+(\S+)/m.exec(summary)[1], Math.max(...distances).toFixed(1));
  const list = await onTerminal('list', season, '--where', 'map=Saltmarsh', '--where', 'length>=16:00');
  assert.equal(list.match(/Saltmarsh/g).length, truth.filter(({ map }) => map === 'Saltmarsh').length);
  assert.match(
    await onColumns(60, 'list', season),
    /^DATE +MAP +LENGTH +PLACE +FILE\n[^]*match-00030\.replay\n$/,
  );
  // A terminal that does not know its width is taken for one of 80 columns.
  assert.equal(
    await written('list', [season], { isTTY: true, columns: 0 }),
    await onColumns(80, 'list', season),
  );
  const stream = { isTTY: true, write: assert.fail }; // progress would stand among the lines of JSON
  await written('list', [season, '--json'], stream, stream);
  const cut = path.join(folder, 'cut.replay');
  fs.writeFileSync(cut, fs.readFileSync(first.file).subarray(0, 5000));
  const notes = [];
  await written('stats', [first.file, cut, '--salvage'], {}, { write: (text) => notes.push(text) });
  assert.deepEqual(notes, ['corvane-replay: 1 of 2 matches not complete; see list\n']);
  const trend = await onTerminal('stats', season, '--by', 'day');
  assert.match(trend, /^PLACE +[▁▂▃▄▅▆▇█]+ {2}[\d.]+ → [\d.]+$/m);
});

test('replays are found in folder trees, by patterns and on standard input, each once', () => {
  const tree = 'tree (x86)';
  const deep = path.join(folder, tree, 'a', 'b');
  for (const each of [deep, path.join(folder, tree, 'none')]) fs.mkdirSync(each, { recursive: true });
  for (const name of ['x.replay', 'y.REPLAY', 'z.txt']) fs.copyFileSync(truth[0].file, path.join(deep, name));
  const isWindows = process.platform === 'win32';
  const linked = isWindows ? tree : 'linked';
  if (!isWindows) {
    fs.symlinkSync('..', path.join(folder, tree, 'a', 'loop'));
    fs.symlinkSync(tree, path.join(folder, linked));
  }
  for (const [count, ...paths] of [
    [2, tree],
    [isWindows ? 2 : 1, path.join(tree, '**', '*.replay')],
    [2, tree, path.join(tree, 'a', 'b', 'x.replay'), linked],
    [2, path.join(folder, tree, '**')],
    [2, `${tree}/?/b/*`],
    [1, `${tree}/?/b/*.txt`],
  ]) {
    const { status, stdout } = cli('list', ...paths);
    const found = stdout.split('\n').length - 1;
    assert.deepEqual([found, status], [count, 0], paths.join(' '));
  }
  const { status, stderr } = cli('list', `${tree}/none*`, 'season/match-00001.replay');
  assert.deepEqual([status, stderr], [3, `corvane-replay: no replay matches ${tree}/none*\n`]);
});

test('a folder that a pattern cannot look into is named', async (t) => {
  const { readdir } = fs;
  const error = Object.assign(new Error('EACCES: no'), { code: 'EACCES' });
  const guarded = (place, options, done) =>
    /locked.?$/.test(place) ? done(error) : readdir(place, options, done);
  t.mock.method(fs, 'readdir', guarded);
  for (const name of ['locked', 'open'])
    fs.mkdirSync(path.join(folder, 'guarded', name), { recursive: true });
  fs.copyFileSync(truth[0].file, path.join(folder, 'guarded', 'open', 'x.replay'));
  const failures = [];
  const patterns = ['*/*.replay', '**'].map((pattern) => path.join(folder, 'guarded', pattern));
  const found = await replayPaths(patterns, ({ message }) => failures.push(message));
  assert.deepEqual(
    found.map((file) => path.basename(file)),
    ['x.replay', 'x.replay'],
  );
  assert.deepEqual(failures, Array(2).fill('the folder cannot be read: EACCES: no'));
});

// node.exe gets no pipe from these tests, and Windows has no bash.
if (process.platform !== 'win32') {
  test('a list on standard input', () => {
    const list = `\ufeff${truth[3].file}\r\n\n${truth[1].file}\n`;
    for (const input of [
      Buffer.from(list),
      Buffer.from(list, 'utf16le'),
      Buffer.from(list, 'utf16le').swap16(),
    ]) {
      const { stdout } = spawnSync(process.execPath, [program, 'list', '-'], { input, encoding: 'utf8' });
      const paths = stdout
        .trimEnd()
        .split('\n')
        .map((line) => JSON.parse(line).path);
      assert.deepEqual(paths, [truth[3].file, truth[1].file]);
    }
  });

  test('bash completes commands, options and values', () => {
    const script = cli('completion', 'bash').stdout;
    for (const [words, expected] of [
      [['corvane-replay', 'st'], 'stats'],
      [['corvane-replay', 'stats', '--by', 'd'], 'damage day'],
      [['corvane-replay', 'export', '--sh'], '--shard'],
    ]) {
      const call = `COMP_WORDS=(${words.join(' ')}); COMP_CWORD=${words.length - 1}; _corvane_replay; echo "\${COMPREPLY[@]}"`;
      assert.equal(run('bash', ['-c', `${script}\n${call}`]).stdout, `${expected}\n`);
    }
  });
}

test('what makes no sense is said', () => {
  for (const [args, text] of [
    [['list', season, '--where', 'place'], /no condition/],
    [['list', season, '--where', 'place< '], /no number/],
    [['list', season, '--sort', 'colour'], /no column colour/],
    [['stats', season, '--sort', 'colour'], /no figure colour/],
    [['stats', season, '--by', 'opponent', '--min-matches', '2'], /does not go with/],
    [['stats', season, '--by', 'map', '--player', OWN], /--player goes with/],
    [['stats', season, '--player', OWN.slice(0, 1)], /\d accounts fit/],
    [['stats', season, '--names', 'semicolons.csv'], /no line like/],
    [['compare', 'season'], /two sets/],
    [['compare', 'season', '--', 'season', '--json'], /options come before/],
    [['export', season, '--out', 'x', '--shard', '5/4'], /i\/n/],
  ]) {
    const { status, stderr } = cli(...args);
    assert.deepEqual([status, text.test(stderr)], [2, true], stderr);
  }
});
