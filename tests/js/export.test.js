'use strict';
// The tables of an export: read back with DuckDB, brought up to date, written by shards, interrupted at every moment.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { test } = require('node:test');
const { columnOf } = require('../../bin/export/column.js');
const { columnsOf } = require('../../bin/export/columns.js');
const { DataSet } = require('../../bin/export/data-set.js');
const { FORMATS } = require('../../bin/export/formats.js');
const { packNumbers, unpackNumbers } = require('../../bin/export/number-block.js');
const { packFailure, reduce } = require('../../bin/export/packed-match.js');
const { TABLES } = require('../../bin/export/tables.js');
const { makeSeason, matchReplay } = require('../../samples/make-season.js');
const { addonPath } = require('../support/reads.js');
const { run, start, temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');

process.env.CORVANE_ADDON = addonPath;
const { readMatch, readMatches } = require('../../client');

const program = path.join(__dirname, '..', '..', 'bin', 'corvane-replay.js');
const folder = temporaryFolder();
const inFolder = (...names) => path.join(folder, ...names);
const season = inFolder('season');
const truth = makeSeason(season, 24);
const hostile = '=cmd|"/c calc"\n,é;+1';
const inHostile = path.join(season, 'more', 'hostile.replay');
fs.mkdirSync(path.join(season, 'more'));
fs.writeFileSync(
  inHostile,
  matchReplay(99, 100, { info: { FriendlyName: hostile, Timestamp: 2n ** 64n - 1n } }),
);
const broken = path.join(season, 'more', 'broken.replay');
fs.writeFileSync(broken, 'no replay');

const names = Object.keys(TABLES);
const extensions = ['parquet', 'csv', 'ndjson'];
const command = (from, out, ...more) => [process.execPath, [program, 'export', from, '--out', out, ...more]];
const exported = (...args) => run(...command(season, ...args));

// The rows of a table as texts, in no order.
async function rowsOf(out, table, extension) {
  const files = fs.readdirSync(path.join(out, table)).filter((name) => name.endsWith(`.${extension}`));
  const rows = await Promise.all(files.map((name) => rowsIn(path.join(out, table, name), extension)));
  return rows.flat().sort();
}

async function rowsIn(file, extension) {
  const bytes = fs.readFileSync(file);
  if (extension !== 'parquet')
    return bytes
      .toString()
      .split('\n')
      .slice(Number(extension === 'csv'), -1);
  const { parquetReadObjects } = await import('hyparquet');
  const objects = await parquetReadObjects({ file: Uint8Array.from(bytes).buffer });
  return objects.map((row) =>
    JSON.stringify(row, (_, cell) => (typeof cell === 'bigint' ? `${cell}` : cell)),
  );
}

async function assertSameRows(a, b, extension) {
  for (const table of names) {
    const [rows, expected] = await Promise.all([a, b].map((out) => rowsOf(out, table, extension)));
    assert.ok(rows.length > 0 || table === 'failures', table);
    assert.deepEqual(rows, expected, table);
  }
}

const DUCKDB_TYPES = {
  text: 'VARCHAR',
  integer: 'INTEGER',
  long: 'BIGINT',
  double: 'DOUBLE',
  boolean: 'BOOLEAN',
  timestamp: 'TIMESTAMP',
};

test('rows say what the match says', async () => {
  const sample = path.join(__dirname, '..', '..', 'samples', 'match.replay');
  const match = await readMatch(sample, { damageNames: { 3: 'rifle' } });
  const columns = columnsOf([reduce(match)]);
  const rows = (table, places) => places.map((i) => columns[table].map((column) => column.cells()[i]));
  const { id } = match;
  const [a, b, , , , f] = match.players.map(({ player }) => player.id);
  const nobody = [null, null, null, null];
  assert.deepEqual(rows('matches', [0]), [
    [
      ...[id, sample, 'Finale auf Îlot Corvane', 1613313433517000, 637489102335170000n, 1263100],
      ...['Corvane_Isle', 'Duos', '{"SubGame":"Duos","Region":"EU"}'],
      ...['4.26.0', '++Corvane+Main', 17882303, 'complete', null, 3131, 7, 5, 2, 1, 98],
      ...[0.3125, 3, 2, 1, 847, 35, 290, 4120, 655, 410, 5238.17],
    ],
  ]);
  assert.deepEqual(rows('players', [0, 4, 5]), [
    [id, 0, 'account', a, null, 3, 1, 1, 0, ...nobody, null, null],
    [id, 4, 'bot', null, 'Bot_Søren', 0, 0, 0, 1, 0, 'account', a, null, 547000, false],
    [id, 5, 'account', f, null, 0, 1, 0, 1, 6, 'bot', null, null, 1001050, false],
  ]);
  assert.deepEqual(rows('eliminations', [0, 3]), [
    [
      ...[id, 0, 74250, 1613313507767000, 'knock', 0, 'account', a, null, 1, 'account', b, null],
      ...[-101.01, 87.9075, 5.305, -102.405, 88.3125, 5.12, 1.4643343197507832, 3, 'rifle'],
    ],
    [
      ...[id, 3, 547000, 1613313980517000, 'elimination', 0, 'account', a, null, 4, 'bot', null, 'Bot_Søren'],
      ...[13.995, 11.0525, -0.6, 12, 11.875, -0.6425, 2.1583182110152332, 4, null],
    ],
  ]);
});

// There is no DuckDB for the 32-bit node.exe.
if (process.platform !== 'win32')
  test('DuckDB reads what was written', async () => {
    const { DuckDBInstance } = require('@duckdb/node-api');
    const out = inFolder('duckdb');
    const { status, stderr } = exported(out);
    assert.deepEqual([status, stderr.includes('25 read, 1 failed, 0 unchanged')], [4, true], stderr);
    const connection = await (await DuckDBInstance.create()).connect();
    const query = async (sql) => (await connection.runAndReadAll(sql)).getRowsJson();
    for (const [table, columns] of Object.entries(TABLES)) {
      await query(`create view ${table} as select * from read_parquet('${out}/${table}/*.parquet')`);
      const types = (await query(`describe ${table}`)).map(([name, type]) => [name, type]);
      assert.deepEqual(
        types,
        columns.map(({ name, type }) => [name, DUCKDB_TYPES[type]]),
      );
    }
    const expected = { matches: 0, players: 0, eliminations: 0, metres: 0 };
    for await (const { match } of readMatches([...truth.map(({ file }) => file), inHostile])) {
      expected.matches += 1;
      expected.players += match.players.length;
      expected.eliminations += match.eliminations.length;
      for (const { distanceM } of match.eliminations) expected.metres += distanceM;
    }
    const [[matches, players, eliminations, metres]] = await query(
      'select (select count(*) from matches), (select count(*) from players), count(*), sum(distance_m) from eliminations',
    );
    assert.deepEqual([matches, players, eliminations].map(Number), Object.values(expected).slice(0, 3));
    assert.ok(Math.abs(metres - expected.metres) < 1e-3);
    const [first] = truth;
    const [row] = await query(
      `select map, mode, place, placed_of, own_eliminations, recorded_at, recorded_ticks from matches where path = '${first.file}'`,
    );
    const { mode, map, place, total, own } = first;
    assert.deepEqual(row.slice(0, 5), [map, mode, String(place), String(total), String(own.kills)]);
    assert.deepEqual(row.slice(5), ['2020-12-31 08:26:40.123456', '637450000001234567']);
    const joined =
      'select count(*) from eliminations e join players p on p.match_id = e.match_id and p.player_no = victim_no';
    assert.deepEqual(await query(joined), [[String(expected.eliminations)]]);
    const elsewhere =
      'select count(*) from eliminations join matches using (match_id) where epoch_us(event_time) is distinct from epoch_us(recorded_at) + 1000 * time_ms';
    assert.deepEqual(await query(elsewhere), [['0']]);
    const [failure] = await query('select path, code, file_bytes from failures');
    assert.deepEqual(failure, [broken, 'ERR_NOT_A_REPLAY', '9']);
  });

// All ways in which a column can be encoded: by runs and packed groups of every width, by a dictionary, by differences, as
// it is; with some, all and no cells null.
test('every column of Parquet reads back as it was written, also when it is copied', async () => {
  const { parquetMetadata, parquetReadObjects } = await import('hyparquet');
  const pick = (i, from) => (i * 7919) % from;
  const makers = {
    ...Object.fromEntries([1, 2, 3, 100, 257, 5000].map((n) => [`text_${n}`, (i) => `t${pick(i, n)}`])),
    text_runs: (i) => (i % 100 < 60 ? 'same' : `t${i}`),
    integer_small: (i) => pick(i, 300),
    integer_large: (i) => pick(i, 2 ** 31) - 2 ** 30,
    long_short: (i) => i * 500,
    long_wide: (i) => (i - 50) * 2 ** 38 - 1,
    long_exact: (i) => 2n ** 62n + BigInt(i),
    timestamp_any: (i) => 1_600_000_000_000_000 + i * 1001,
    double_any: (i) => i / 3 - 100,
    boolean_any: (i) => pick(i, 3) !== 0,
  };
  const columns = Object.keys(makers).flatMap((name) =>
    ['all', 'some', 'none'].map((nulls) => ({
      ...{ name: `${name}_${nulls}`, type: name.split('_')[0], required: nulls === 'none' },
      cell: (i) => (nulls === 'all' || (nulls === 'some' && i % 11 < 4) ? null : makers[name](i)),
    })),
  );
  const number = (cell) => (typeof cell === 'bigint' ? String(cell) : cell);
  for (const rows of [0, 1, 7, 8, 9, 20_000]) {
    const files = ['written', 'copied'].map((name) => inFolder(`${name}-${rows}.parquet`));
    const cells = columns.map(({ cell }) => Array.from({ length: rows }, (_, i) => cell(i)));
    await FORMATS.parquet.write(files[0], columns, cells.map(columnOf));
    await FORMATS.parquet.copy(...files, columns, (i) => i % 2 === 0);
    for (const [f, step] of [1, 2].entries()) {
      const parsers = { timestampFromMicroseconds: String };
      const file = Uint8Array.from(fs.readFileSync(files[f])).buffer;
      const found = await parquetReadObjects({ file, parsers });
      assert.deepEqual(
        [found.length, Number(parquetMetadata(file).num_rows)],
        Array(2).fill(Math.ceil(rows / step)),
      );
      columns.forEach(({ name, type }, c) => {
        const wanted = cells[c].filter((_, i) => i % step === 0);
        const isText = type === 'long' || type === 'timestamp';
        const same = (cell) => (isText && cell !== null ? String(cell) : number(cell));
        assert.deepEqual(
          found.map((row) => same(row[name])),
          wanted.map(same),
          `${name}, ${rows} rows`,
        );
      });
    }
  }
  await assert.rejects(
    FORMATS.parquet.write(
      inFolder('null'),
      [{ name: 'a', type: 'text', required: true }],
      [columnOf([null])],
    ),
  );
});

test('a cell of CSV is no formula, and a row is a line', () => {
  const out = inFolder('csv');
  exported(out, '--format', 'csv');
  const [file] = fs.readdirSync(path.join(out, 'matches'));
  const lines = fs.readFileSync(path.join(out, 'matches', file), 'utf8').split('\n');
  assert.deepEqual([lines.length, lines[0].split(',').length], [27, TABLES.matches.length]);
  const line = lines.find((each) => each.includes('hostile.replay'));
  assert.match(line, /,"'=cmd\|""\/c ?calc"" ?,é;'\+1",/);
  // Numbers below zero stay numbers.
  const [events] = fs.readdirSync(path.join(out, 'eliminations'));
  assert.match(fs.readFileSync(path.join(out, 'eliminations', events), 'utf8'), /,-\d+\.\d+,/);
});

test('what a spreadsheet would take for a formula begins with an apostrophe', async () => {
  const guarded = {
    '=1+1': "'=1+1",
    '  =1+1': "'  =1+1",
    '\t=1': "'\t'=1",
    '\n@a': "' @a",
    '\uff1d1': "'\uff1d1",
    'a;=1': "a;'=1",
    'a|\t-1': "a|\t'-1",
    'a-b = 1': 'a-b = 1',
  };
  const file = inFolder('formulas.csv');
  await FORMATS.csv.write(file, [{ name: 'cell', type: 'text' }], [columnOf(Object.keys(guarded))]);
  const written = fs.readFileSync(file, 'utf8').split('\n').slice(1, -1);
  assert.deepEqual(written, Object.values(guarded));
});

test('lines keep the digits of times and of 64-bit numbers', async () => {
  const columns = Object.entries({ at: 'timestamp', ticks: 'long' }).map(([name, type]) => ({ name, type }));
  for (const [format, line] of [
    ['csv', '2020-12-31T08:26:40.123006,637450000001234567'],
    ['ndjson', '{"at":"2020-12-31T08:26:40.123006","ticks":"637450000001234567"}'],
  ]) {
    await FORMATS[format].write(inFolder('lines'), columns, [
      columnOf([1609403200123006]),
      columnOf([637450000001234567n]),
    ]);
    assert.equal(fs.readFileSync(inFolder('lines'), 'utf8').split('\n').at(-2), line);
  }
});

// The status of a run, and what it says of its replays.
function updated(...args) {
  const { status, stderr } = run(...command(...args));
  return [status, stderr.match(/\d+ read, \d+ failed, \d+ unchanged/)?.[0]];
}

test('an update reads again what failed and may fare better now', async () => {
  const own = inFolder('failing');
  const update = (...more) => updated(own, inFolder('failed'), '--format', 'csv', '--update', ...more);
  fs.mkdirSync(own);
  fs.writeFileSync(path.join(own, 'cut.replay'), matchReplay(1, 100).subarray(0, -3));
  assert.deepEqual(update(), [5, '0 read, 1 failed, 0 unchanged']);
  assert.deepEqual(update(), [0, '0 read, 0 failed, 1 unchanged']);
  assert.deepEqual(update('--salvage'), [0, '1 read, 0 failed, 0 unchanged']);
  const noKey = w.replay({ bEncrypted: 1 }, w.eventChunk({ data: w.skipped(16) }));
  fs.writeFileSync(path.join(own, 'encrypted.replay'), noKey);
  for (let i = 0; i < 2; ++i) assert.deepEqual(update(), [6, '0 read, 1 failed, 1 unchanged']);
  const noPath = path.join(own, 'x'.repeat(300));
  assert.deepEqual(update(noPath), [6, '0 read, 2 failed, 1 unchanged']);
  // Rows that were read stay when a failure may pass.
  fs.writeFileSync(path.join(own, 'cut.replay'), noKey);
  for (let i = 0; i < 2; ++i) assert.deepEqual(update(), [6, '0 read, 2 failed, 0 unchanged']);
  assert.equal((await rowsOf(inFolder('failed'), 'matches', 'csv')).length, 1);
});

for (const extension of extensions) {
  test(`${extension}: an update reads what is new or changed, and comes to the same rows`, async () => {
    const own = inFolder(`season-${extension}`);
    const replay = (number) => path.join(own, `match-${number}.replay`);
    const put = (number, play = number) => fs.writeFileSync(replay(number), matchReplay(play, 100));
    const update = (out, ...more) => updated(own, out, '--format', extension, ...more);
    fs.mkdirSync(own);
    for (let number = 1; number <= 6; ++number) put(number);
    const keepTime = () => fs.utimesSync(replay(2), 1, 1);
    keepTime();
    const [out, fresh] = [inFolder(`updated-${extension}`), inFolder(`fresh-${extension}`)];
    assert.deepEqual(update(out), [0, '6 read, 0 failed, 0 unchanged']);
    put(2, 50);
    keepTime(); // only its size differs, and only the time of the third
    put(3);
    put(7);
    assert.deepEqual(update(out, '--update'), [0, '3 read, 0 failed, 4 unchanged']);
    assert.deepEqual(update(out, '--update'), [0, '0 read, 0 failed, 7 unchanged']);
    // Other rows may come of another key or other names.
    fs.writeFileSync(inFolder('names.csv'), '9999,nothing');
    const other = ['--update', '--damage-names', inFolder('names.csv')];
    assert.deepEqual(update(out, ...other), [0, '7 read, 0 failed, 0 unchanged']);
    assert.deepEqual(update(out, ...other, '--key', '0'.repeat(64)), [0, '7 read, 0 failed, 0 unchanged']);
    update(fresh);
    await assertSameRows(out, fresh, extension);
    // Without --update all are read again, and none is there twice. Rows of a replay that is gone stay.
    fs.rmSync(replay(1));
    assert.deepEqual(update(out), [0, '6 read, 0 failed, 0 unchanged']);
    await assertSameRows(out, fresh, extension);
  });
}

test('four shards at once write the rows of one run', async () => {
  const [one, four] = [inFolder('one'), inFolder('four')];
  exported(one, '--format', 'ndjson');
  const shards = ['1/4', '2/4', '3/4', '4/4'].map((shard) =>
    start(...command(season, four, '--format', 'ndjson', '--shard', shard)),
  );
  const results = await Promise.all(shards.map(({ ended }) => ended));
  const failed = results.filter(({ status }) => status !== 0);
  assert.deepEqual(
    failed.map(({ status }) => status),
    [4],
  );
  await assertSameRows(four, one, 'ndjson');
  for (const [out, more, text] of [
    [four, ['csv'], /holds an export as ndjson/],
    [four, ['ndjson', '--shard', '1/3'], /was written with another --shard/],
    [one, ['ndjson', '--shard', '1/4'], /export into a new folder/],
  ]) {
    const { status, stderr } = exported(out, '--format', ...more);
    assert.deepEqual([status, text.test(stderr)], [2, true], stderr);
  }
  const two = inFolder('two');
  exported(two, '--format', 'ndjson', '--shard', '1/2');
  const { status, stderr } = exported(two, '--format', 'csv', '--shard', '2/2');
  assert.deepEqual([status, /holds an export as ndjson/.test(stderr)], [2, true]);
});

test('a share has one writer at a time, and damaged files are named', async () => {
  const other = start(process.execPath, ['-e', 'setTimeout(() => {}, 1e6)']);
  const host = os.hostname();
  const living = { pid: other.child.pid, host };
  const assertOpened = async (name, content, shard, message) => {
    const out = fs.mkdtempSync(inFolder('locked-'));
    fs.mkdirSync(path.join(out, '_state'));
    fs.writeFileSync(path.join(out, '_state', name), content);
    const dataSet = new DataSet(out, 'ndjson', shard);
    const opened = dataSet.open().finally(() => dataSet.close());
    if (message) await assert.rejects(opened, { code: 'ERR_OUTPUT', message });
    else await opened;
    return fs.readdirSync(path.join(out, '_state'));
  };
  for (const [held, shard, holder, message] of [
    ['1of1', '1of1', living, new RegExp(`process ${living.pid} on ${host} `)],
    ['2of4', '1of1', living, /lock-2of4/],
    ['1of1', '2of4', living, /lock-1of1/],
    ['1of4', '2of4', living],
    ['1of1', '1of1', { ...living, host: `${host}-2` }, /-2 is writing/],
  ]) {
    const lock = `lock-${held}.json`;
    assert.deepEqual(await assertOpened(lock, JSON.stringify(holder), shard, message), [lock]);
  }
  other.child.kill();
  await other.ended;
  assert.deepEqual(await assertOpened('lock-1of1.json', JSON.stringify(living), '1of1'), []);
  for (const name of ['lock-1of1.json', 'commit-1of1.json', 'part-1of1-000001.json'])
    await assertOpened(name, '', '1of1', new RegExp(`${name} is damaged: `));
  await assertOpened('commit-1of1.json', '', '2of4', /without --shard was interrupted/);
  // Rows whose state is gone would be there twice.
  const out = inFolder('no-state');
  exported(out, '--format', 'csv');
  fs.rmSync(path.join(out, '_state'), { recursive: true });
  const { status, stderr } = run(...command(season, out, '--format', 'csv'));
  assert.deepEqual([status, /part-1of1-000001\.json is not there: delete/.test(stderr)], [12, true], stderr);
});

test('a run that is interrupted at any moment loses nothing, and the next one completes it', async () => {
  // The replays of a name and a text each, as rows of failures.
  const put = (dataSet, texts) => {
    const packs = Object.entries(texts).map(([name, message]) => packFailure(name, { message }, 1));
    const replays = packs.map(({ failure: [name], counts }) => ({
      ...{ path: name, size: 1, mtimeMs: 1, code: null },
      rows: counts,
    }));
    return dataSet.commit(replays, packs);
  };
  const opened = async (out) => {
    const dataSet = new DataSet(out, 'ndjson', '1of1');
    await dataSet.open();
    return dataSet;
  };
  const reasons = async (out) =>
    (await rowsOf(out, 'failures', 'ndjson')).map((line) => JSON.parse(line).reason).sort();
  const calls = ['writeFileSync', 'renameSync', 'rmSync'];
  const originals = calls.map((call) => fs[call]);
  // Fails at the n-th change of the folder, and at all later ones if it stops there; returns whether it came to that.
  const interrupted = async (n, stops, action) => {
    let left = n;
    calls.forEach((call, i) => {
      fs[call] = (...args) => {
        if (--left === 0 || (stops && left < 0)) throw new Error('interrupted');
        return originals[i](...args);
      };
    });
    await action().catch((error) => assert.equal(error.message, 'interrupted'));
    calls.forEach((call, i) => (fs[call] = originals[i]));
    return left <= 0;
  };
  let moments = 0;
  for (const mode of ['stopped', 'lost', 'full']) {
    for (let n = 1, came = true; came; ++n) {
      const out = inFolder(`${mode}-${n}`);
      fs.mkdirSync(path.join(out, 'matches'), { recursive: true });
      fs.writeFileSync(path.join(out, 'matches', '.2of3~part-2of3-000001.ndjson.tmp'), '');
      const first = await opened(out);
      await put(first, { a: 'a1', b: 'b1', c: 'c1' });
      const next = { b: 'b2', d: 'd2' };
      came = await interrupted(n, mode !== 'full', () => put(first, next));
      moments += Number(came);
      const files = fs.readdirSync(out, { recursive: true }).map((name) => path.join(out, name));
      // What is not complete matches none of the tables' patterns.
      const halves = files.filter((file) => path.basename(file).startsWith('.'));
      assert.ok(halves.every((file) => file.endsWith('.tmp')));
      if (mode === 'full' && halves.length > 0)
        assert.ok(files.some((file) => /commit-1of1.json$/.test(file)));
      if (mode === 'lost' && halves.length > 0) fs.rmSync(halves[0]);
      const again = await opened(out);
      const isThere = again.known('d') !== undefined;
      assert.deepEqual(
        await reasons(out),
        isThere ? ['a1', 'b2', 'c1', 'd2'] : ['a1', 'b1', 'c1'],
        `${mode}, moment ${n}`,
      );
      await put(again, next);
      assert.deepEqual(await reasons(out), ['a1', 'b2', 'c1', 'd2'], `${mode}, moment ${n}`);
      const left = fs.readdirSync(out, { recursive: true }).filter((name) => /[~]|commit/.test(name));
      assert.deepEqual(left, [], `${mode}, moment ${n}`);
    }
  }
  assert.ok(moments > 45, `${moments} moments`);
});

test('a block of numbers comes back as it was, and small', () => {
  const fields = [
    [254, 0, NaN],
    [255, 1, NaN],
    [65_534, 0, NaN],
    [65_535, 1, 2],
    [2 ** 32 - 2, NaN, NaN],
    [2 ** 32 - 1, NaN, 0],
    [7, -0, NaN],
    [-1, Infinity, 1.25],
    [0.01, -0, NaN],
    [0.1 + 0.2, 2 ** 53, -0],
    [NaN, NaN, NaN],
  ];
  const packed = packNumbers(Float64Array.from(fields.flat()), fields.length);
  const { block, rest } = unpackNumbers(new Uint8Array([...packed, 7]), fields.length, 3);
  assert.deepEqual(Array.from(block), fields.flat());
  assert.deepEqual(Array.from(packed.subarray(0, fields.length)), [0, 1, 1, 2, 2, 4, 3, 3, 3, 4, 0]);
  assert.deepEqual(Array.from(rest), [7]);
  assert.equal(unpackNumbers(packNumbers(new Float64Array(0), 2), 2, 0).block.length, 0);
});
