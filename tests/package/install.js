'use strict';
// Packs the package once, installs the tarball into an empty folder, and runs programs there in any host.

const { execFileSync } = require('node:child_process');
const fs = require('node:fs');
const path = require('node:path');
const { run, temporaryFolder } = require('../support/run.js');

const root = path.join(__dirname, '..', '..');

// Each host is a command: CORVANE_TEST_HOSTS has one a line, a program or "wine" and a program.
const hosts = (process.env.CORVANE_TEST_HOSTS ?? process.execPath)
  .split('\n')
  .filter(Boolean)
  .map((line) => (line.startsWith('wine ') ? ['wine', line.slice(5)] : [line]));

const isWindows = (host) => host[0] === 'wine';

function npm(args, cwd) {
  return execFileSync('npm', [...args, '--no-audit', '--no-fund', '--loglevel=error'], {
    cwd,
    encoding: 'utf8',
  });
}

// The installed package: { folder, module, tarball }.
function installPackage() {
  const folder = temporaryFolder();
  npm(['pack', '--pack-destination', folder], root);
  const tarball = path.join(
    folder,
    fs.readdirSync(folder).find((name) => name.endsWith('.tgz')),
  );
  fs.writeFileSync(path.join(folder, 'package.json'), '{ "private": true }');
  npm(['install', '--prefer-offline', tarball], folder);
  return { folder, module: path.join(folder, 'node_modules', 'corvane_napi'), tarball };
}

// Runs a program of the folder in the host.
function runIn(host, folder, args) {
  const { CORVANE_ADDON, ...env } = process.env;
  return run(host[0], [...host.slice(1), ...args], { cwd: folder, env, timeout: 60_000 });
}

module.exports = { hosts, installPackage, isWindows, root, runIn };
