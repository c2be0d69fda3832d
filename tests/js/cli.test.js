'use strict';
// The command line: what it prints where, its exit status for each kind of failure, and that nothing is written half.

const assert = require('node:assert/strict');
const { spawn, spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const w = require('../support/replay-writer.js');
const { addonPath } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');
const { Output } = require('../../bin/output.js');
const { progress } = require('../../bin/progress.js');
const { textTable } = require('../../bin/text-table.js');

const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
const folder = temporaryFolder();
const inFolder = (...names) => path.join(folder, ...names);
const env = { ...process.env, CORVANE_ADDON: addonPath };
const fakeAddon = { CORVANE_ADDON: path.join(__dirname, '..', 'support', 'fake-addon.js') };

const key = Buffer.alloc(16, 7);
const stats = w.matchStats(0.5, [1, 2, 3, 4, 5, 6, 7, 8, 9, 10]);
const statsChunk = (data) => w.eventChunk({ Group: 'AthenaMatchStats', Time1: 61_001, data });
const replays = {
  'whole.replay': w.replay({ Timestamp: 637489102335170001n, FriendlyName: 'a\\n b' }, statsChunk(stats)),
  'other.replay': w.replay({ LengthInMS: 2 }),
  'cut.replay': w.replay({}).subarray(0, 10),
  'encrypted.replay': w.replay({ bEncrypted: 1 }, statsChunk(w.encrypt(stats, key))),
  'text.replay': Buffer.from('no replay at all'),
  content: Buffer.from('ERR_OF_NO_KIND why'),
};
for (const [name, bytes] of Object.entries(replays)) fs.writeFileSync(inFolder(name), bytes);

const cli = (args, variables) =>
  run(process.execPath, [program, ...args], { cwd: folder, env: { ...env, ...variables } });

test('one replay is printed as its text, with every digit of a 64-bit number', () => {
  const { status, stdout, stderr } = cli(['read', 'whole.replay', '--timeout', '30']);
  assert.deepEqual([status, stderr], [0, '']);
  assert.match(stdout, /^ {2}"Timestamp": 637489102335170001,$/m);
  assert.equal(JSON.parse(stdout).events.length, 1);
});

test('several replays are lines in order; of the broken ones the first is the exit status', () => {
  const files = ['whole', 'cut', 'none', 'other'].map((name) => `${name}.replay`);
  const { status, stdout, stderr } = cli(['read', ...files]);
  const [first, second, ...more] = stdout.split('\n');
  assert.equal(JSON.parse(first).ReplayFileMeta.FriendlyName, 'a\\nb');
  assert.equal(JSON.parse(second).ReplayFileMeta.LegthInMs, 2);
  assert.deepEqual([status, more], [5, ['']]);
  assert.match(stderr, /^corvane-replay: .*cut\.replay.*\ncorvane-replay: .*none\.replay.*\n$/);
});

const missing = ['read', 'whole.replay', 'other.replay'];
const noAddon = { CORVANE_ADDON: 'none.node' };
for (const [status, stderr, args, variables] of [
  [1, /^corvane-replay: /, ['read', 'content'], fakeAddon],
  [2, /Usage/, []],
  [2, /missing required argument[^]*corvane-replay read --help/, ['read']],
  [2, /--jobs/, ['read', 'whole.replay', '--jobs', '0']],
  [2, /--jobs/, ['read', 'whole.replay', '--jobs', '65']],
  [2, /--timeout/, ['read', 'whole.replay', '--timeout', '0']],
  [2, /--timeout/, ['read', 'whole.replay', '--timeout', 'soon']],
  [2, /--key/, ['events', 'whole.replay', '--key', 'abc']],
  [2, /text\.replay must hold 16, 24 or 32/, ['read', 'whole.replay', '--key-file', 'text.replay']],
  [2, /cannot be used/, ['read', 'whole.replay', '--key-file', 'text.replay', '--key', '07'.repeat(16)]],
  [3, /none\.replay/, ['read', 'none.replay']],
  [4, /text\.replay/, ['read', 'text.replay']],
  [5, /cut\.replay/, ['events', 'cut.replay']],
  [6, /encrypted\.replay/, ['read', 'encrypted.replay']],
  [7, /whole\.replay: .*more than 1 ms.*--timeout/, ['read', 'whole.replay', '--timeout', '0.001']],
  [13, /whole\.replay: .*--max-mib/, ['read', 'whole.replay', '--max-mib', '0.0003']],
  // Once, however many replays there are.
  [10, /^(?![^]*tried:[^]*tried:).*could not be loaded/, missing, noAddon],
]) {
  test(`exit status ${status}, and nothing on standard output: ${args.join(' ')}`, () => {
    const result = cli(args, variables);
    assert.match(result.stderr, stderr);
    assert.deepEqual([result.status, result.stdout], [status, '']);
  });
}

test('a key comes as hexadecimal digits, with or without blanks, from an argument, a file or the environment', () => {
  fs.writeFileSync(inFolder('key'), `${key.toString('hex')}\n`);
  for (const [args, CORVANE_REPLAY_KEY] of [
    [['--key', key.toString('hex')], 'no key'],
    [['--key', '07 '.repeat(16)]],
    [['--key-file', 'key'], '01'.repeat(16)],
    [[], key.toString('hex')],
  ]) {
    const { stdout } = cli(['read', 'encrypted.replay', ...args], { CORVANE_REPLAY_KEY });
    assert.equal(JSON.parse(stdout).events[0].accuracy, 0.5);
  }
  for (const bytes of [24, 32])
    assert.equal(cli(['read', 'other.replay', '--key', '07'.repeat(bytes)]).status, 0);
});

test('--out writes whole files or nothing, and nothing twice', () => {
  const out = inFolder('new', 'out');
  fs.mkdirSync(path.join(out, 'other.json', 'in the way'), { recursive: true });
  fs.writeFileSync(path.join(out, 'cut.json'), 'older');
  fs.writeFileSync(path.join(out, 'whole.json'), 'older');
  fs.linkSync(path.join(out, 'whole.json'), inFolder('older.json')); // as somebody who has it open
  const { status, stdout } = cli(['read', 'whole.replay', 'cut.replay', 'text.replay', '--out', out]);
  assert.deepEqual([status, stdout], [5, '']);
  assert.equal(fs.readFileSync(path.join(out, 'cut.json'), 'utf8'), 'older');
  assert.equal(fs.readFileSync(path.join(out, 'whole.json'), 'utf8'), cli(['read', 'whole.replay']).stdout);
  assert.equal(fs.readFileSync(inFolder('older.json'), 'utf8'), 'older');
  assert.equal(cli(['read', 'other.replay', '--out', out]).status, 12);
  assert.deepEqual(fs.readdirSync(out), ['cut.json', 'other.json', 'whole.json']);

  const twice = cli(['read', 'whole.replay', path.join('sub', 'Whole.replay'), '--out', inFolder('twice')]);
  assert.equal(twice.status, 2);
  assert.match(twice.stderr, /would both become Whole\.json/);
  assert.equal(fs.existsSync(inFolder('twice')), false);
});

test('a folder stands for its replays, one line each; one without any does not end the run', () => {
  for (const name of ['empty', 'sub']) fs.mkdirSync(inFolder(name));
  fs.writeFileSync(inFolder('empty', 'notes.txt'), '');
  for (const name of ['b', 'a', 'c'])
    fs.writeFileSync(inFolder('sub', `${name}.replay`), replays['whole.replay']);
  const { status, stdout, stderr } = cli(['read', 'empty', 'sub']);
  const names = stdout
    .trim()
    .split('\n')
    .map((line) => path.basename(JSON.parse(line).Creation.fileName, '.replay'));
  assert.deepEqual([status, names], [3, ['a', 'b', 'c']]);
  assert.equal(stderr, 'corvane-replay: there are no replays in empty\n');
  assert.equal(cli(['read', 'su[b]/**']).stdout.split('\n').length, 4);
  for (const name of ['b', 'c']) fs.rmSync(inFolder('sub', `${name}.replay`));
  for (const line of [['--ndjson', 'whole.replay'], ['sub']])
    assert.equal(cli(['read', ...line]).stdout.split('\n').length, 2);
});

test('on a terminal the JSON of a name cannot steer it, and says the same', async () => {
  const json = '{"name":"\x9b31m\x7f\u202eabc\u{e0001}ö玩"}';
  for (const [isTTY, expected] of [
    [false, json],
    [true, '{"name":"\\u009b31m\\u007f\\u202eabc\\udb40\\udc01ö玩"}'],
  ]) {
    let text = '';
    const write = (part, done) => done(void (text += part));
    await new Output({ isTTY, on() {}, write }).writeJson(json);
    assert.deepEqual([text, JSON.parse(text)], [expected, JSON.parse(json)]);
  }
});

test('sample writes a replay to try, and keeps a file that is there', () => {
  assert.equal(cli(['sample']).status, 0);
  const bytes = fs.readFileSync(inFolder('match.replay'));
  assert.match(cli(['events', 'match.replay']).stdout, /"knocked":true/);
  fs.writeFileSync(inFolder('match.replay'), 'mine');
  assert.equal(cli(['sample', 'match.replay']).status, 12);
  assert.equal(fs.readFileSync(inFolder('match.replay'), 'utf8'), 'mine');
  assert.ok(bytes.equals(fs.readFileSync(path.join(__dirname, '..', '..', 'samples', 'match.replay'))));
});

test('the table of events is aligned, and a name cannot steer the terminal', () => {
  const fields = {
    killed: { type: 17, id: Buffer.alloc(16, 0xab) },
    killer: { type: 16, id: '\x1b[31mSøren\u202e玩\x07' },
    ...{ killedAt: [300, 0, 0], killerAt: [0, 400, 0], knocked: 1 },
  };
  const unknown = { killed: { type: 9 }, killedAt: [NaN, 0, 0], damageType: 12 };
  const events = [
    w.eventChunk({ Time1: 1_234, data: w.playerElim(fields) }),
    w.eventChunk({ Time1: 4_510_123, data: w.playerElim(unknown) }),
    w.eventChunk({ Time1: 4_510_124, data: w.playerElim({ killedAt: [300, 0, 0], killer: { type: 9 } }) }),
    statsChunk(stats),
    w.eventChunk({ Group: 'AthenaMatchTeamStats', data: w.teamStats(3, 98) }),
  ];
  fs.writeFileSync(inFolder('table'), w.replay({}, ...events));
  fs.writeFileSync(inFolder('names'), `${'ab'.repeat(16)};no name\n${'ab'.repeat(16)},Ann\n12,rifle`);
  assert.equal(
    cli(['events', '--table', 'table', '--names', 'names', '--damage-names', 'names']).stdout,
    `       TIME  WHO          DID           WHOM         DISTANCE  DAMAGE
0:00:01.234  [31mSøren玩  knocked down  Ann             5.0 m       0
1:15:10.123  Unnamed Bot  eliminated    ?                   ?   rifle
1:15:10.124  ?            eliminated    Unnamed Bot         ?       0
player at 0:01:01.001: accuracy 0.5, assists 1, damage taken 6, damage to structures 7, kills 2, \
materials gathered 8, materials used 9, other damage 4, revives 5, total traveled 10, weapon damage 3
team at 0:00:00.000: final ranking 3, total players 98
`,
  );
  assert.equal(cli(['events', 'other.replay']).status, 0); // which has none
});

test('a table fits its terminal, and grows with its rows whatever one of them holds', () => {
  const columns = [{ name: 'WHO', shrinks: true }, { name: 'DID' }, { name: 'TIME', right: true }];
  const rows = [
    ['玩'.repeat(9), 'eliminated', '1'],
    ['e\u0301🔥fghijklmn', 'eliminated', '22'],
    ['\u0301'.repeat(1e6), '', ''],
  ];
  const cut = textTable(columns, rows, 28).split('\n');
  assert.deepEqual(cut.slice(0, 3), [
    'WHO         DID         TIME',
    '玩玩玩玩…   eliminated     1',
    'e\u0301🔥fghijk…  eliminated    22',
  ]);
  assert.ok(cut[3].length < 100);
  const long = textTable(columns, [['x'.repeat(1e6), '', ''], ...Array(1000).fill(rows[1])]);
  assert.ok(long.length < 1000 * 100);
  assert.ok(long.includes(`${'x'.repeat(39)}…\n`));
});

test("the progress bar is a terminal's only, and messages stand on lines of their own", () => {
  const terminal = { isTTY: true, columns: 30 };
  const shown = (total, stream, options) => {
    let text = '';
    const bar = progress(total, { ...stream, write: (part) => (text += part) }, options);
    bar.step();
    bar.message('a message\n');
    bar.stop();
    return text;
  };
  assert.equal(shown(3, {}), 'a message\n');
  assert.equal(shown(1, terminal), 'a message\n');
  assert.equal(shown(3, terminal, { shared: true }), 'a message\n');
  const text = shown(3, terminal);
  assert.match(text, /\x1b\[Ka message\n[^]*1\/3 replays/);
  assert.ok(
    text.split(/[\r\n]/).every((line) => line.replace('\x1b[K', '').length < 30),
    text,
  );
});

// Resolves with { status, line, stderr } of a run for which `stop` is called when its first line has come.
function stopped(args, stop, environment = env) {
  const child = spawn(process.execPath, [program, ...args], { cwd: folder, env: environment });
  const text = { stdout: '', stderr: '' };
  for (const name of ['stdout', 'stderr']) child[name].on('data', (part) => (text[name] += part));
  child.stdout.once('data', () => stop(child));
  return new Promise((resolve) => {
    child.on('close', (status) => resolve({ status, line: text.stdout.split('\n')[0], stderr: text.stderr }));
  });
}

test('a reader that goes away ends the run without a message', async () => {
  const files = [...Array(40).fill('text.50000'), 'meet.a.a']; // the last one leaves a file when it is read
  const leave = (child) => child.stdout.destroy();
  const { status, stderr } = await stopped(['read', ...files], leave, { ...env, ...fakeAddon });
  assert.deepEqual([status, stderr, fs.existsSync(inFolder('meet.a.a'))], [0, '', false]);
});

// Windows has no signals to send; there an interrupt comes from the console.
if (process.platform !== 'win32') {
  const interrupt = (child) => child.kill('SIGINT');

  test('an interrupt ends reading with status 130', async () => {
    const files = Array(20_000).fill('whole.replay');
    const { status, line, stderr } = await stopped(['read', ...files], interrupt);
    assert.deepEqual([status, stderr, JSON.parse(line).events.length], [130, '', 1]);
  });

  test('a full disk is a failure', () => {
    const stdio = ['ignore', fs.openSync('/dev/full', 'w'), 'pipe'];
    const onFull = (...args) =>
      spawnSync(process.execPath, [program, ...args], { ...{ cwd: folder, env, stdio }, encoding: 'utf8' });
    const { status, stderr } = onFull('read', 'whole.replay');
    assert.deepEqual([status, /cannot write: .*ENOSPC/.test(stderr)], [12, true], stderr);
    const help = onFull('--help');
    assert.deepEqual([help.status, /cannot write/.test(help.stderr)], [12, true]);
  });

  test('watching prints a line for each change; an interrupt is its ordinary end, even after a failure', async () => {
    const demos = inFolder('CorvaneGame', 'Saved', 'Demos');
    fs.mkdirSync(demos, { recursive: true });
    const file = path.join(demos, 'live.replay');
    fs.writeFileSync(file, replays['other.replay']);
    let changing = setInterval(() => fs.appendFileSync(file, statsChunk(stats)), 300);
    const breakFirst = (child) => {
      clearInterval(changing);
      changing = setInterval(() => fs.writeFileSync(file, replays['cut.replay']), 300);
      child.stderr.once('data', () => interrupt(child));
    };
    const args = ['watch', '--format', 'documents'];
    const { status, line } = await stopped(args, breakFirst, { ...env, LOCALAPPDATA: folder });
    clearInterval(changing);
    const { path: told, document } = JSON.parse(line);
    assert.deepEqual([status, told, document.Creation.fileName], [0, file, file]);
  });
}
