'use strict';
// Finds and loads the native add-on: prebuilds/<platform>-<architecture>/corvane_napi.node, one Node-API file each, so
// that the version of Node.js or Electron does not matter. Exactly one place is tried, and the error says which.

const fs = require('node:fs');
const path = require('node:path');

const prebuilds = path.join(__dirname, 'prebuilds');
const host = `${process.platform}-${process.arch}`;

function runtime() {
  const { electron, node, napi } = process.versions;
  const name = electron ? `Electron ${electron} with Node.js ${node}` : `Node.js ${node}`;
  return `${name}, Node-API ${napi}`;
}

function prebuiltHosts() {
  try {
    return fs.readdirSync(prebuilds).sort();
  } catch {
    return [];
  }
}

function isMusl() {
  return process.platform === 'linux' && !process.report.getReport().header.glibcVersionRuntime;
}

const INCOMPLETE = 'The package is incomplete: install it anew.';

function advice(file) {
  const hosts = prebuiltHosts();
  if (process.env.CORVANE_ADDON)
    return 'CORVANE_ADDON must be the absolute path of an add-on for this host, or unset.';
  if (hosts.length === 0 && fs.existsSync(path.join(__dirname, 'scripts', 'prebuild')))
    return 'In a checkout: run scripts/prebuild.';
  if (hosts.length === 0) return INCOMPLETE;
  if (!hosts.includes(host)) return `Run it in a Node.js or Electron for one of: ${hosts.join(', ')}.`;
  if (!fs.existsSync(file)) return INCOMPLETE;
  if (isMusl()) return 'The Linux add-on needs the GNU C library; this system has another C library.';
  return 'The file is there, but the system refused it: see the reason above.';
}

function loadFailure(file, reason) {
  const hint = `${advice(file)} See docs/troubleshooting.md.`;
  const lines = [
    'corvane_napi: the native add-on could not be loaded.',
    `  platform:     ${process.platform}`,
    `  architecture: ${process.arch}`,
    `  runtime:      ${runtime()}`,
    `  tried:        ${file}`,
    `  reason:       ${reason.message.trim()}`,
    `  what to do:   ${hint}`,
  ];
  const error = new Error(lines.join('\n'), { cause: reason });
  return Object.assign(error, { code: 'ERR_CORVANE_ADDON', hint });
}

// The native module. CORVANE_ADDON, the absolute path of your own build, replaces the packaged file. Throws an Error
// with code ERR_CORVANE_ADDON.
function loadAddon() {
  const file = process.env.CORVANE_ADDON || path.join(prebuilds, host, 'corvane_napi.node');
  try {
    if (!path.isAbsolute(file)) throw new Error('the path is not absolute');
    if (!fs.existsSync(file)) throw new Error('there is no such file');
    return require(file);
  } catch (reason) {
    throw loadFailure(file, reason);
  }
}

module.exports = loadAddon;
