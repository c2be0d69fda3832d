'use strict';
// Every recipe of docs/recipes.md is run as it stands; the tables' page tells the columns that there are, and what DuckDB
// answers is what the commands answer. Linux only: there is neither a shell nor DuckDB beside the 32-bit node.exe.

const assert = require('node:assert/strict');
const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { TABLES } = require('../../bin/export/tables.js');
const { makeSeason } = require('../../samples/make-season.js');
const { addonPath } = require('../support/reads.js');
const { temporaryFolder } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');
const page = (name) => fs.readFileSync(path.join(root, 'docs', name), 'utf8');

test('the page of the tables has every column with its type', () => {
  for (const [table, columns] of Object.entries(TABLES)) {
    const [, section] = page('tables.md').split(`\n## ${table}\n`);
    const rows = section.split('\n## ')[0].matchAll(/^\| `(\w+)` \| (\w+)(, never null)? \|/gm);
    assert.deepEqual(
      [...rows].map(([, name, type, required]) => ({ name, type, required: required !== undefined })),
      columns,
    );
  }
});

// The blocks of a language, in their order: { title, code }, title being the line of text above it.
function blocks(language) {
  const found = page('recipes.md').matchAll(
    new RegExp(`(?:^|\\n)([^\\n]+)\\n\\n\`\`\`${language}\\n([^]*?)\`\`\``, 'g'),
  );
  return [...found].map(([, title, code]) => ({ title, code }));
}

// Question of the page, the command that answers it too, and how a row of each becomes the same.
const SAME = [
  ['Which matches were won', ['list', '--where', 'place=1', '--sort', '-eliminations'], ['own_eliminations']],
  [
    'Who was best by rate',
    ['stats', '--by', 'player', '--sort', 'eliminations_per_match', '--min-matches', '5'],
    ['rate', 'eliminations_per_match'],
  ],
  ['The longest distances', ['stats', '--sort', 'longest_distance_m'], ['distance_m', 'longest_distance_m']],
  ['The damage mix', ['stats', '--by', 'damage'], ['share']],
  ['The nemesis', ['stats', '--by', 'opponent'], ['times', 'eliminated_player']],
  ['How place changed over time', ['stats', '--by', 'week'], ['median_place']],
];

if (process.platform !== 'win32') {
  const folder = temporaryFolder();
  const programs = path.join(folder, 'bin');
  makeSeason(path.join(folder, 'replays'), 40);
  fs.mkdirSync(programs);
  fs.writeFileSync(
    path.join(programs, 'corvane-replay'),
    `#!/bin/sh\nexec '${process.execPath}' '${root}/bin/corvane-replay.js' "$@"\n`,
    { mode: 0o755 },
  );
  const env = { ...process.env, PATH: `${programs}:${process.env.PATH}`, CORVANE_ADDON: addonPath };
  const execute = (program, ...args) =>
    execFileSync(program, args, { cwd: folder, env, encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'] });

  test('recipes for the shell', () => {
    const printing = blocks('sh')
      .map(({ code }) => [code, execute('bash', '-euo', 'pipefail', '-c', code)])
      .filter(([code]) => code.includes('jq'));
    assert.equal(printing.length, 3);
    for (const [code, output] of printing) assert.ok(output.trim().split('\n').length > 1, code);
    const rows = (name) => {
      const files = fs.readdirSync(path.join(folder, name, '_state'));
      return files.flatMap(
        (file) => JSON.parse(fs.readFileSync(path.join(folder, name, '_state', file))).replays,
      );
    };
    assert.deepEqual([rows('tables').length, rows('tables-shared').length], [40, 40]);
  });

  test('recipes for DuckDB answer as the commands do', async () => {
    const { DuckDBInstance } = require('@duckdb/node-api');
    const connection = await (await DuckDBInstance.create()).connect();
    const answers = new Map();
    for (const { title, code } of blocks('sql')) {
      const sql = code.replaceAll("'tables/", `'${folder}/tables/`);
      for (const statement of sql.split(';').filter((text) => text.trim())) {
        answers.set(title, (await connection.runAndReadAll(statement)).getRowObjectsJson());
      }
    }
    for (const [start, [command, ...args], [inTable, inCommand = inTable]] of SAME) {
      const [title] = [...answers.keys()].filter((each) => each.startsWith(start));
      const output = execute('corvane-replay', command, 'replays', ...args);
      const [first] = output.split('\n').slice(0, -1).map(JSON.parse);
      const [answer] = answers.get(title);
      assert.ok(Math.abs(Number(answer[inTable]) - first[inCommand]) < 1e-9, `${title} ${answer[inTable]}`);
    }
    assert.ok(answers.size >= SAME.length + 2);
  });

  test('recipes for pandas', () => {
    for (const { code } of blocks('python')) {
      const output = execute('/usr/bin/python3', '-c', code);
      assert.match(output, /2021-01-03 +[\d.]+\n[^]*Saltmarsh +\d+\.0 +[\d.]+ +[\d.]+\n/);
    }
  });
}
