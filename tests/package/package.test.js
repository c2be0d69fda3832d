'use strict';
// The package as its users get it: packed, installed offline into an empty folder, and used from there in every host.

const assert = require('node:assert/strict');
const { execFileSync, spawnSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { testBundlers } = require('./bundlers.js');
const { hosts, installPackage, root, runIn } = require('./install.js');
const { testExamples } = require('./readme-examples.js');

const installed = installPackage();
const manifest = JSON.parse(fs.readFileSync(path.join(installed.module, 'package.json'), 'utf8'));
fs.copyFileSync(path.join(root, 'samples', 'match.replay'), path.join(installed.folder, 'match.replay'));
fs.copyFileSync(path.join(__dirname, 'probe.mjs'), path.join(installed.folder, 'probe.mjs'));

const readme = fs.readFileSync(path.join(installed.module, 'README.md'), 'utf8');
const prebuilt = (host) => path.join(installed.module, 'prebuilds', host, 'corvane_napi.node');

const tool = (name) => path.join(root, 'node_modules', '.bin', name);

function passes(program, args, cwd = installed.folder) {
  const { status, stdout, stderr } = spawnSync(program, args, { cwd, encoding: 'utf8' });
  assert.equal(status, 0, `${stdout}${stderr}`);
}

test('the tarball holds what its users need and nothing else, and runs nothing when it is installed', () => {
  const packed = execFileSync('tar', ['-tzf', installed.tarball], { encoding: 'utf8' }).trim().split('\n');
  const names = packed.map((name) => name.replace('package/', ''));
  const inFolder = (folder) => names.filter((name) => name.startsWith(`${folder}/`));
  const top = names.filter((name) => !name.includes('/'));
  const entries = ['index', 'installed'].flatMap((name) => [`${name}.js`, `${name}.mjs`]);
  const types = ['index.d.mts', 'index.d.ts'];
  const documents = ['CHANGELOG.md', 'README.md', 'package.json'];
  assert.deepEqual(top.sort(), [...entries, ...types, ...documents, 'load-addon.js', 'native.js'].sort());
  const hosts = ['linux-x64', 'win32-ia32', 'win32-x64'];
  assert.deepEqual(
    inFolder('prebuilds').sort(),
    hosts.map((host) => `prebuilds/${host}/corvane_napi.node`),
  );
  assert.deepEqual(inFolder('samples'), ['samples/match.replay']);
  for (const forDevelopers of ['architecture', 'lz', 'performance']) {
    assert.ok(!names.includes(`docs/${forDevelopers}.md`), forDevelopers);
  }
  assert.deepEqual([inFolder('tests'), inFolder('node_modules')], [[], []]);
  assert.doesNotMatch(Object.keys(manifest.scripts ?? {}).join(), /install|prepare/);
});

test('what the documents of the package link to is in the package', () => {
  const documents = [
    'README.md',
    ...fs.readdirSync(path.join(installed.module, 'docs')).map((name) => `docs/${name}`),
  ];
  for (const document of documents.filter((name) => name.endsWith('.md'))) {
    const text = fs.readFileSync(path.join(installed.module, document), 'utf8');
    for (const [, target] of text.matchAll(/\]\((?!\w+:)([^)#]+)/g)) {
      assert.ok(
        fs.existsSync(path.join(installed.module, path.dirname(document), target)),
        `${document}: ${target}`,
      );
    }
  }
});

const objdump = (flag, host) =>
  execFileSync('objdump', [flag, prebuilt(host)], { encoding: 'utf8', maxBuffer: 2 ** 26 });

test('the Linux file needs no newer system than the README says, and is hardened', () => {
  const symbols = objdump('-T', 'linux-x64');
  for (const library of ['GLIBC', 'GLIBCXX']) {
    const versions = [...symbols.matchAll(new RegExp(`\\b${library}_([\\d.]+)`, 'g'))].map(
      (match) => match[1],
    );
    const newest = versions.sort((a, b) => a.localeCompare(b, 'en', { numeric: true })).at(-1);
    assert.ok(readme.includes(`${library} ${newest}`), `README.md does not say ${library} ${newest}`);
  }
  // Functions with buffers guard their return address; relocated data become read-only, and no data are code.
  assert.match(symbols, / __stack_chk_fail$/m);
  assert.match(objdump('-p', 'linux-x64'), /STACK .*\n.* rw-\n[^]*RELRO [^]*\bFLAGS +0x0*8\n/);
});

for (const [host, format, flags] of [
  ['win32-ia32', 'pei-i386', ['DYNAMIC_BASE', 'NX_COMPAT']],
  ['win32-x64', 'pei-x86-64', ['DYNAMIC_BASE', 'NX_COMPAT', 'HIGH_ENTROPY_VA']],
]) {
  test(`the ${host} file needs nothing but what every Windows has and its host, and is hardened`, () => {
    const text = objdump('-p', host);
    assert.match(text, new RegExp(`file format ${format}$`, 'm'));
    for (const flag of flags) assert.match(text, new RegExp(`^\\s+${flag}$`, 'm'));
    const imports = [...text.matchAll(/DLL Name: (.*)/g)].map(([, name]) => name.toLowerCase());
    const everyWindowsHas = ['kernel32.dll', 'msvcrt.dll', 'shell32.dll', 'user32.dll', 'advapi32.dll'];
    assert.ok(imports.includes('kernel32.dll'));
    assert.deepEqual(
      imports.filter((name) => !everyWindowsHas.includes(name)),
      [],
    );
    // Delay-loaded, so that the host may have any name.
    assert.ok(fs.readFileSync(prebuilt(host)).includes('NODE.EXE\0'));
  });
}

// What the sample, which has every kind of event, is read as.
function sampleDocument() {
  const program = path.join(installed.folder, 'node_modules', '.bin', 'corvane-replay');
  return execFileSync(program, ['read', 'match.replay'], { cwd: installed.folder, encoding: 'utf8' });
}

test('the types hold in each way of resolving them, and know every field of a document', () => {
  const types = path.join(root, 'tests', 'types');
  fs.cpSync(types, installed.folder, { recursive: true });
  const literal = `export const sample: import('corvane_napi').ReplayDocument = ${sampleDocument()}`;
  fs.writeFileSync(path.join(installed.folder, 'sample.mts'), literal);
  const common = ['--noEmit', '--strict', '--target', 'es2022', '--resolveJsonModule', '--types', 'node'];
  common.push('--typeRoots', path.join(root, 'node_modules', '@types'));
  const all = [...fs.readdirSync(types), 'sample.mts'];
  const modules = all.filter((name) => name.endsWith('.mts'));
  for (const [resolution, module, sources] of [
    ['nodenext', 'nodenext', all],
    ['bundler', 'esnext', modules],
    ['node10', 'commonjs', ['commonjs.cts', 'document.mts', 'sample.mts']],
  ]) {
    passes(tool('tsc'), [...common, '--moduleResolution', resolution, '--module', module, ...sources]);
  }
});

test('publint and "are the types wrong" find nothing', () => {
  passes(tool('publint'), ['run', installed.tarball, '--strict']);
  passes(tool('attw'), [installed.tarball, '--exclude-entrypoints', './package.json']);
});

test('docs/document.md tells of every field of a document', () => {
  const text = fs.readFileSync(path.join(installed.module, 'docs', 'document.md'), 'utf8');
  const fields = new Set();
  JSON.parse(sampleDocument(), (key, value) => {
    if (Array.isArray(value) || typeof value !== 'object') fields.add(key);
    return value;
  });
  const named = [...fields].filter((field) => /\D/.test(field));
  assert.ok(named.length > 40, `${named.length} fields`);
  const missing = named.filter((field) => !new RegExp(`\`[\\w.]*\\b${field}\``).test(text));
  assert.deepEqual(missing, []);
});

for (const host of hosts) {
  test(`reads a replay as a CommonJS and as an ES module, and through the client: ${host.join(' ')}`, () => {
    const run = runIn(host, installed.folder, ['probe.mjs', 'match.replay']);
    assert.equal(run.status, 0, run.stderr);
    assert.match(run.stdout, /^7 eliminations$/m);
  });

  test(`the command line reads a replay: ${host.join(' ')}`, () => {
    const program = path.join('node_modules', 'corvane_napi', manifest.bin['corvane-replay']);
    const run = runIn(host, installed.folder, [program, 'read', 'match.replay']);
    assert.equal(run.status, 0, run.stderr);
    assert.equal(JSON.parse(run.stdout).events.length, 9);
  });
}

testExamples(readme, installed.folder);
testBundlers(installed);
