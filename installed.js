'use strict';
// Loads a file of this package from the folder in which it is installed. A bundler packs this file into an application,
// but neither the native add-on nor the program of the child processes: a bundle finds both in the installed package.

// The whole module: webpack would follow a createRequire taken alone.
const nodeModule = require('node:module');
const path = require('node:path');

// The package is searched for from these files upwards. In a bundle the first one is the bundle, or no file at all.
const places = () => [__filename, process.argv[1], path.join(process.cwd(), 'bundle.js')];

function manifest() {
  for (const place of places()) {
    try {
      return nodeModule.createRequire(place).resolve('corvane_napi/package.json');
    } catch {
      // Perhaps from the next place.
    }
  }
  throw notInstalled();
}

function notInstalled() {
  const hint = 'In the folder of the bundle, or above it: npm install corvane_napi. See docs/bundling.md.';
  const lines = [
    'corvane_napi: the installed package was not found.',
    '  reason:       a bundle does not hold the native add-on and needs the package at run time',
    `  looked from:  ${places().filter(Boolean).join(', ')}`,
    `  what to do:   ${hint}`,
  ];
  return Object.assign(new Error(lines.join('\n')), { code: 'ERR_CORVANE_ADDON', hint });
}

// file: its name in the package. Throws an Error with code ERR_CORVANE_ADDON without the package.
module.exports = (file) => nodeModule.createRequire(manifest())(file);
