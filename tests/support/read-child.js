'use strict';
// node read-child.js ADDON PATH...: reads the replays one after the other. What each call came to follows what the
// add-on printed on standard output: JSON between two zero characters. A file may end this process.

const fs = require('node:fs');

const [addonPath, ...paths] = process.argv.slice(2);
const addon = require(addonPath);
for (const path of paths) {
  const outcome = {};
  try {
    outcome.text = addon.ReadCorvaneDemo(path);
  } catch ({ message }) {
    outcome.error = message;
  }
  fs.writeSync(1, `\0${JSON.stringify(outcome)}\0`);
}
