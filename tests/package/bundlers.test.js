'use strict';
// The recipes of docs/bundling.md: each bundler makes an application of both formats, which finds the installed package by
// itself, and says what is missing where that is not.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { pathToFileURL } = require('node:url');
const { run, temporaryFolder } = require('../support/run.js');
const { hosts, installPackage, root, runIn } = require('./install.js');

const { folder, module: installed } = installPackage();
const recipes = fs.readFileSync(path.join(installed, 'docs', 'bundling.md'), 'utf8');

const APP = `import { ReadCorvaneDemo } from 'corvane_napi';
import { readReplay } from 'corvane_napi/client';

readReplay('match.replay').then(({ events }) => console.log(typeof ReadCorvaneDemo, events.length));
`;
fs.mkdirSync(path.join(folder, 'src'));
fs.writeFileSync(path.join(folder, 'src', 'app.js'), APP);
fs.copyFileSync(path.join(root, 'samples', 'match.replay'), path.join(folder, 'match.replay'));
// As if they had been installed there.
for (const name of ['.bin', '@rollup', 'esbuild', 'rollup', 'vite', 'webpack']) {
  const link = path.join(folder, 'node_modules', name);
  fs.rmSync(link, { recursive: true, force: true });
  fs.symlinkSync(path.join(root, 'node_modules', name), link);
}

function recipe(file) {
  const [, text] = new RegExp(`^\`\`\`js\\n// ${file}\\n(.*?)^\`\`\``, 'ms').exec(recipes);
  fs.writeFileSync(path.join(folder, file), text);
  return path.join(folder, file);
}

function shell(command) {
  const { status, stdout, stderr } = run('sh', ['-ec', command], { cwd: folder });
  assert.equal(status, 0, `${stdout}${stderr}`);
}

const esbuildCommands = /## esbuild\n\n```sh\n(.*?)```/s
  .exec(recipes)[1]
  .replaceAll('npx ', 'node_modules/.bin/');

// What webpack's command line does, which is a package of its own.
async function runWebpack(more) {
  const { default: configurations } = await import(pathToFileURL(recipe('webpack.config.mjs')));
  const webpack = require('webpack');
  const compiler = webpack(configurations.map((each) => ({ ...each, context: folder, ...more })));
  const stats = await new Promise((resolve, reject) =>
    compiler.run((error, result) => (error ? reject(error) : resolve(result))),
  );
  assert.ok(!stats.hasErrors() && !stats.hasWarnings(), stats.toString());
}

const BUNDLERS = {
  esbuild: () => shell(esbuildCommands),
  rollup: () => shell(`node_modules/.bin/rollup --config ${recipe('rollup.config.mjs')}`),
  vite: () => shell(`node_modules/.bin/vite build --config ${recipe('vite.config.mjs')}`),
  webpack: () => runWebpack(),
};

for (const [name, bundle] of Object.entries(BUNDLERS)) {
  test(`${name}: bundles find the installed package, and name the cure where there is none`, async () => {
    fs.rmSync(path.join(folder, 'out'), { recursive: true, force: true });
    await bundle();
    const elsewhere = temporaryFolder();
    for (const file of ['app.mjs', 'app.cjs']) {
      const bundled = path.join('out', file);
      assert.ok(fs.statSync(path.join(folder, bundled)).size < 10_000, 'the package itself was bundled');
      for (const host of hosts) {
        const { stdout, stderr } = runIn(host, folder, [bundled]);
        assert.equal(stdout, 'function 9\n', stderr);
      }
      fs.copyFileSync(path.join(folder, bundled), path.join(elsewhere, file));
      const { status, stderr } = runIn(hosts[0], elsewhere, [file]);
      assert.equal(status, 1);
      assert.match(stderr, /the installed package was not found[^]*what to do: .*npm install corvane_napi/);
    }
  });
}

test('bundles of CommonJS sources find it, too', async () => {
  const source = APP.replace(/import (.*) from (.*);/g, 'const $1 = require($2);');
  fs.writeFileSync(path.join(folder, 'src', 'app.cjs'), source);
  const [, toCommonJs] = esbuildCommands.split('\n');
  for (const bundle of [
    () => shell(toCommonJs.replace('src/app.js', 'src/app.cjs')),
    () => runWebpack({ entry: './src/app.cjs' }),
  ]) {
    fs.rmSync(path.join(folder, 'out'), { recursive: true, force: true });
    await bundle();
    const { stdout, stderr } = runIn(hosts[0], folder, [path.join('out', 'app.cjs')]);
    assert.equal(stdout, 'function 9\n', stderr);
  }
});

test("the child's program is found beside an Electron archive, in which only Electron can read", () => {
  const electron = temporaryFolder();
  const [packed, unpacked] = ['app.asar', 'app.asar.unpacked'].map((name) => path.join(electron, name));
  for (const copy of [packed, unpacked]) {
    fs.cpSync(installed, path.join(copy, 'node_modules', 'corvane_napi'), { recursive: true });
  }
  fs.rmSync(path.join(packed, 'node_modules', 'corvane_napi', 'client', 'child.js'));
  fs.writeFileSync(path.join(packed, 'main.mjs'), APP);
  const { stdout, stderr } = runIn(hosts[0], folder, [path.join(packed, 'main.mjs')]);
  assert.equal(stdout, 'function 9\n', stderr);
});
