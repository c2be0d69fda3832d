'use strict';
// Packs the package once, installs the tarball offline into an empty folder, and runs programs there in any host.

const { execFileSync, spawnSync } = require('node:child_process');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');

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

// The installed package: { folder, module, tarball }. Goes when this process ends.
function installPackage() {
  const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'corvane-package-'));
  process.on('exit', () => fs.rmSync(folder, { recursive: true, force: true }));
  npm(['pack', '--pack-destination', folder], root);
  const tarball = path.join(
    folder,
    fs.readdirSync(folder).find((name) => name.endsWith('.tgz')),
  );
  fs.writeFileSync(path.join(folder, 'package.json'), '{ "private": true }');
  npm(['install', '--offline', '--cache', path.join(folder, 'no-cache'), tarball], folder);
  return { folder, module: path.join(folder, 'node_modules', 'corvane_napi'), tarball };
}

// Runs a program of the folder in the host; its output goes through files, since node.exe under Wine takes no pipes.
function runIn(host, folder, args, env = {}) {
  const files = ['out', 'err'].map((name) => path.join(folder, `.std${name}`));
  const descriptors = files.map((file) => fs.openSync(file, 'w'));
  const { CORVANE_ADDON, ...inherited } = process.env;
  const { status, signal } = spawnSync(host[0], [...host.slice(1), ...args], {
    cwd: folder,
    stdio: ['ignore', ...descriptors],
    env: { ...inherited, ...env },
    timeout: 60_000,
  });
  descriptors.forEach((descriptor) => fs.closeSync(descriptor));
  const [stdout, stderr] = files.map((file) => fs.readFileSync(file, 'utf8').replaceAll('\r\n', '\n'));
  return { status, signal, stdout, stderr };
}

module.exports = { hosts, installPackage, isWindows, root, runIn };
