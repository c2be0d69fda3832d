'use strict';
// Tests of the recipes of docs/bundling.md: each bundler makes an application of both formats, which finds the installed
// package by itself, and says what is missing where that is not.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { pathToFileURL } = require('node:url');
const { run, temporaryFolder } = require('../support/run.js');
const { hosts, root, runIn } = require('./install.js');

const tools = path.join(root, 'node_modules');
const recipes = fs.readFileSync(path.join(root, 'docs', 'bundling.md'), 'utf8');
const [, esbuildCommands] = /## esbuild\n\n```sh\n(.*?)```/s.exec(recipes);

const APP = `import { ReadCorvaneDemo } from 'corvane_napi';
import { readReplay } from 'corvane_napi/client';

readReplay('match.replay').then(({ events }) => console.log(typeof ReadCorvaneDemo, events.length));
`;
const COMMON_JS_APP = APP.replace(/import (.*) from (.*);/g, 'const $1 = require($2);');
const PRINTED = 'function 9\n';

// The file of a recipe, written into the folder.
function recipe(folder, name) {
  const [, text] = new RegExp(`^\`\`\`js\\n// ${name}\\n(.*?)^\`\`\``, 'ms').exec(recipes);
  fs.writeFileSync(path.join(folder, name), text);
  return path.join(folder, name);
}

function shell(folder, commands) {
  const line = commands.replaceAll('npx ', `${tools}/.bin/`);
  const { status, stdout, stderr } = run('sh', ['-ec', line], { cwd: folder });
  assert.equal(status, 0, `${stdout}${stderr}`);
}

// What webpack's command line does, which is a package of its own.
async function webpack(folder, more) {
  const { default: configurations } = await import(pathToFileURL(recipe(folder, 'webpack.config.mjs')));
  const compiler = require('webpack')(configurations.map((each) => ({ ...each, context: folder, ...more })));
  const stats = await new Promise((resolve, reject) =>
    compiler.run((error, result) => (error ? reject(error) : resolve(result))),
  );
  assert.ok(!stats.hasErrors() && !stats.hasWarnings(), stats.toString());
}

const BUNDLERS = {
  esbuild: (folder) => shell(folder, esbuildCommands),
  rollup: (folder) => shell(folder, `npx rollup --config ${recipe(folder, 'rollup.config.mjs')}`),
  vite: (folder) => shell(folder, `npx vite build --config ${recipe(folder, 'vite.config.mjs')}`),
  webpack,
};

const FROM_COMMON_JS = {
  esbuild: (folder) => shell(folder, esbuildCommands.split('\n')[1].replace('app.js', 'app.cjs')),
  webpack: (folder) => webpack(folder, { entry: './src/app.cjs' }),
};

function testBundle(folder, name) {
  assert.ok(fs.statSync(path.join(folder, 'out', name)).size < 10_000, 'the package itself was bundled');
  for (const host of hosts) {
    const { stdout, stderr } = runIn(host, folder, [path.join('out', name)]);
    assert.equal(stdout, PRINTED, stderr);
  }
  const elsewhere = temporaryFolder();
  fs.copyFileSync(path.join(folder, 'out', name), path.join(elsewhere, name));
  const { status, stderr } = runIn(hosts[0], elsewhere, [name]);
  assert.equal(status, 1);
  assert.match(stderr, /the installed package was not found[^]*what to do: .*npm install corvane_napi/);
}

// folder: where the package is installed and match.replay lies.
function testBundlers({ folder, module: installed }) {
  fs.mkdirSync(path.join(folder, 'src'));
  fs.writeFileSync(path.join(folder, 'src', 'app.js'), APP);
  fs.writeFileSync(path.join(folder, 'src', 'app.cjs'), COMMON_JS_APP);
  // As if it had been installed there.
  fs.symlinkSync(path.join(tools, '@rollup'), path.join(folder, 'node_modules', '@rollup'));
  for (const [sources, bundlers, files] of [
    ['ES modules', BUNDLERS, ['app.mjs', 'app.cjs']],
    ['CommonJS', FROM_COMMON_JS, ['app.cjs']],
  ]) {
    for (const [name, bundle] of Object.entries(bundlers)) {
      test(`${name}, ${sources}: bundles find the package, and name the cure where there is none`, async () => {
        fs.rmSync(path.join(folder, 'out'), { recursive: true, force: true });
        await bundle(folder);
        for (const file of files) testBundle(folder, file);
      });
    }
  }

  test("the child's program is found beside an Electron archive, in which only Electron can read", () => {
    const electron = temporaryFolder();
    const copies = ['app.asar', 'app.asar.unpacked'].map((name) => path.join(electron, name));
    const copied = copies.map((copy) => path.join(copy, 'node_modules', 'corvane_napi'));
    for (const copy of copied) fs.cpSync(installed, copy, { recursive: true });
    fs.rmSync(path.join(copied[0], 'client', 'child.js'));
    fs.writeFileSync(path.join(copies[0], 'main.mjs'), APP);
    const { stdout, stderr } = runIn(hosts[0], folder, [path.join(copies[0], 'main.mjs')]);
    assert.equal(stdout, PRINTED, stderr);
  });
}

module.exports = { testBundlers };
