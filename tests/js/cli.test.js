'use strict';
// The command line: what it prints where, its exit status for each kind of failure, and that nothing is written half.

const assert = require('node:assert/strict');
const { spawn, spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { Writable } = require('node:stream');
const { test } = require('node:test');
const w = require('../support/replay-writer.js');
const { addonPath, temporaryFolder } = require('../support/reads.js');
const { progress } = require('../../bin/progress.js');
const { version } = require('../../package.json');

const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
const folder = temporaryFolder();
const env = { ...process.env, CORVANE_ADDON: addonPath };

const key = Buffer.alloc(16, 7);
const stats = w.matchStats(0.5, [1, 2, 3, 4, 5, 6, 7, 8, 9, 10]);
const statsChunk = (data) => w.eventChunk({ Group: 'AthenaMatchStats', Time1: 61_001, data });
const replays = {
  'whole.replay': w.replay({ Timestamp: 637489102335170001n, FriendlyName: 'a\\n b' }, statsChunk(stats)),
  'other.replay': w.replay({ LengthInMS: 2 }),
  'cut.replay': w.replay({}).subarray(0, 10),
  'encrypted.replay': w.replay({ bEncrypted: 1 }, statsChunk(w.encrypt(stats, key))),
  'text.replay': Buffer.from('no replay at all'),
};
for (const [name, bytes] of Object.entries(replays)) fs.writeFileSync(path.join(folder, name), bytes);

// Output goes through files: node.exe under Wine cannot start with both on one pipe.
function run(args, { environment = env, stdout = path.join(folder, 'stdout') } = {}) {
  const errors = path.join(folder, 'stderr');
  const files = [fs.openSync(stdout, 'w'), fs.openSync(errors, 'w')];
  const stdio = ['ignore', ...files];
  const { status } = spawnSync(process.execPath, [program, ...args], {
    cwd: folder,
    env: environment,
    stdio,
  });
  files.forEach((file) => fs.closeSync(file));
  return { status, stdout: fs.readFileSync(stdout, 'utf8'), stderr: fs.readFileSync(errors, 'utf8') };
}

test('one replay is printed as its text, with every digit of a 64-bit number', () => {
  const { status, stdout, stderr } = run(['read', 'whole.replay']);
  assert.deepEqual({ status, stderr }, { status: 0, stderr: '' });
  assert.match(stdout, /^ {2}"Timestamp": 637489102335170001,$/m);
  assert.equal(JSON.parse(stdout).events.length, 1);
});

test('several replays are lines in order; a broken one is a message, and its kind the exit status', () => {
  const { status, stdout, stderr } = run([
    'read',
    'whole.replay',
    'cut.replay',
    'none.replay',
    'other.replay',
  ]);
  const [first, second, ...more] = stdout.split('\n');
  assert.equal(JSON.parse(first).ReplayFileMeta.FriendlyName, 'a\\nb');
  assert.equal(JSON.parse(second).ReplayFileMeta.LegthInMs, 2);
  assert.deepEqual(more, ['']);
  assert.match(stderr, /^corvane-replay: .*cut\.replay.*\ncorvane-replay: .*none\.replay.*\n$/);
  assert.equal(status, 5);
});

const failures = [
  { args: [], status: 2, stderr: /Usage/ },
  { args: ['read'], status: 2, stderr: /missing required argument/ },
  { args: ['read', 'whole.replay', '--jobs', '0'], status: 2, stderr: /--jobs/ },
  { args: ['read', 'whole.replay', '--timeout', 'soon'], status: 2, stderr: /--timeout/ },
  { args: ['events', 'whole.replay', '--key', 'abc'], status: 2, stderr: /--key/ },
  { args: ['read', 'none.replay'], status: 3, stderr: /none\.replay/ },
  { args: ['read', 'text.replay'], status: 4, stderr: /text\.replay/ },
  { args: ['events', 'cut.replay'], status: 5, stderr: /cut\.replay/ },
  { args: ['read', 'encrypted.replay'], status: 6, stderr: /encrypted\.replay/ },
  { args: ['read', 'whole.replay'], addon: 'none.node', status: 10, stderr: /could not be loaded/ },
];
for (const { args, addon, status, stderr } of failures) {
  test(`exit status ${status}, and nothing on standard output: ${args.join(' ')}`, () => {
    const result = run(args, { environment: { ...env, ...(addon && { CORVANE_ADDON: addon }) } });
    assert.match(result.stderr, stderr);
    assert.deepEqual([result.status, result.stdout], [status, '']);
  });
}

test('a key is given as hexadecimal digits, with or without blanks', () => {
  for (const digits of [key.toString('hex'), '07 '.repeat(16)]) {
    const { status, stdout } = run(['read', '--key', digits, 'encrypted.replay']);
    assert.equal(status, 0);
    assert.equal(JSON.parse(stdout).events[0].accuracy, 0.5);
  }
});

test('--out writes whole files: a broken replay leaves none, and none in place of an older one', () => {
  const out = path.join(folder, 'new', 'out');
  fs.mkdirSync(out, { recursive: true });
  fs.writeFileSync(path.join(out, 'cut.json'), 'older');
  fs.writeFileSync(path.join(out, 'whole.json'), 'older');
  const { status, stdout } = run(['read', 'whole.replay', 'cut.replay', 'text.replay', '--out', out]);
  assert.deepEqual([status, stdout], [5, '']);
  assert.deepEqual(fs.readdirSync(out), ['cut.json', 'whole.json']);
  assert.equal(fs.readFileSync(path.join(out, 'cut.json'), 'utf8'), 'older');
  assert.equal(fs.readFileSync(path.join(out, 'whole.json'), 'utf8'), run(['read', 'whole.replay']).stdout);
});

test('--out writes nothing when a document cannot take its place', () => {
  const out = path.join(folder, 'taken');
  fs.mkdirSync(path.join(out, 'whole.json', 'in-the-way'), { recursive: true });
  assert.equal(run(['read', 'whole.replay', '--out', out]).status, 12);
  assert.deepEqual(fs.readdirSync(out), ['whole.json']);
});

test('replays whose documents would have one name are refused before anything is written', () => {
  const out = path.join(folder, 'twice');
  const { status, stderr } = run([
    'read',
    'whole.replay',
    path.join('.', 'sub', 'Whole.replay'),
    '--out',
    out,
  ]);
  assert.equal(status, 2);
  assert.match(stderr, /would both become Whole\.json/);
  assert.equal(fs.existsSync(out), false);
});

test('a folder stands for its replays, one line each', () => {
  const sub = path.join(folder, 'folder');
  fs.mkdirSync(sub);
  fs.writeFileSync(path.join(sub, 'notes.txt'), '');
  assert.equal(run(['read', sub]).status, 2);
  fs.writeFileSync(path.join(sub, 'b.replay'), replays['whole.replay']);
  const { status, stdout } = run(['read', sub]);
  assert.equal(status, 0);
  assert.equal(JSON.parse(stdout.trim().split('\n')[0]).events.length, 1);
  assert.equal(stdout.split('\n').length, 2);
});

test('the table of events is aligned, and a name cannot steer the terminal', () => {
  const elimination = (Time1, fields) => w.eventChunk({ Time1, data: w.playerElim(fields) });
  const account = { type: 17, id: Buffer.alloc(16, 0xab) };
  const hostile = { type: 16, id: '\x1b[31mSøren\u202e玩\x07' };
  const file = path.join(folder, 'table.replay');
  const events = [
    elimination(1_234, {
      killed: account,
      killer: hostile,
      killedAt: [300, 0, 0],
      killerAt: [0, 400, 0],
      knocked: 1,
    }),
    elimination(4_510_123, { killed: { type: 9 }, killedAt: [NaN, 0, 0], damageType: 12 }),
    statsChunk(stats),
    w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(3, 98) }),
  ];
  fs.writeFileSync(file, w.replay({}, ...events));
  assert.equal(
    run(['events', file]).stdout,
    [
      '       TIME  WHO          DID           WHOM                              DISTANCE  DAMAGE',
      '0:00:01.234  [31mSøren玩  knocked down  abababababababababababababababab     5.0 m       0',
      '1:15:10.123  Unnamed Bot  eliminated    ?                                        ?      12',
      'player at 0:01:01.001: accuracy 0.5, assists 1, damage taken 6, damage to structures 7, kills 2, ' +
        'materials gathered 8, materials used 9, other damage 4, revives 5, total traveled 10, weapon damage 3',
      'team at 0:00:00.000: final ranking 3, total players 98',
      '',
    ].join('\n'),
  );
});

test('the version and the help go to standard output', () => {
  assert.deepEqual(run(['--version']), { status: 0, stdout: `${version}\n`, stderr: '' });
  const { status, stdout } = run(['read', '--help']);
  assert.equal(status, 0);
  assert.match(stdout, /--out <folder>/);
});

test('a reader that goes away ends the run without a message', async () => {
  const many = Array(400).fill('whole.replay');
  const child = spawn(process.execPath, [program, 'read', ...many], { cwd: folder, env });
  let stderr = '';
  child.stderr.on('data', (text) => (stderr += text));
  child.stdout.once('data', () => child.stdout.destroy());
  const status = await new Promise((resolve) => child.on('close', resolve));
  assert.deepEqual({ status, stderr }, { status: 0, stderr: '' });
});

test("the progress bar is a terminal's only, and messages stand on lines of their own", () => {
  let shown = '';
  const stream = new Writable({ write: (chunk, _, done) => done(void (shown += chunk)) });
  const use = (total) => {
    shown = '';
    const bar = progress(total, stream);
    bar.step();
    bar.message('a message\n');
    bar.stop();
    return shown;
  };
  assert.equal(use(3), 'a message\n');
  Object.assign(stream, {
    isTTY: true,
    columns: 100,
    rows: 20,
    cursorTo() {},
    moveCursor() {},
    clearLine() {},
  });
  assert.equal(use(1), 'a message\n');
  assert.match(use(3), /\x1b\[2Ka message\n/);
  assert.match(shown, / 1\/3 replays/);
});

// Resolves with { status, line } of a run that is interrupted when the first line has come.
function interrupted(args, environment = env) {
  const child = spawn(process.execPath, [program, ...args], { cwd: folder, env: environment });
  let stdout = '';
  child.stdout.on('data', (text) => (stdout += text));
  child.stdout.once('data', () => child.kill('SIGINT'));
  return new Promise((resolve) => {
    child.on('close', (status) => resolve({ status, line: JSON.parse(stdout.split('\n')[0]) }));
  });
}

// Windows has no signals to send; there an interrupt comes from the console.
if (process.platform !== 'win32') {
  test('an interrupt ends reading with status 130', async () => {
    const { status, line } = await interrupted(['read', ...Array(20_000).fill('whole.replay')]);
    assert.deepEqual([status, line.events.length], [130, 1]);
  });

  test('watching prints a line for each change, and an interrupt is its ordinary end', async () => {
    const demos = path.join(folder, 'data', 'CorvaneGame', 'Saved', 'Demos');
    fs.mkdirSync(demos, { recursive: true });
    const file = path.join(demos, 'live.replay');
    fs.writeFileSync(file, replays['other.replay']);
    const growing = setInterval(() => fs.appendFileSync(file, statsChunk(stats)), 300);
    const { status, line } = await interrupted(['watch'], {
      ...env,
      LOCALAPPDATA: path.join(folder, 'data'),
    });
    clearInterval(growing);
    assert.deepEqual([status, line.Creation.fileName], [0, file]);
  });
}
