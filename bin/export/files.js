'use strict';
// Files that must survive a power cut, or be recognised if they have not.

const fs = require('node:fs');
const { failureOf } = require('../failures.js');

// Returns when the file's content is on the disk.
function flush(file) {
  const descriptor = fs.openSync(file, 'r+');
  try {
    fs.fsyncSync(descriptor);
  } finally {
    fs.closeSync(descriptor);
  }
}

// advice: what helps if the file holds no JSON.
function readJson(file, advice) {
  const text = fs.readFileSync(file, 'utf8');
  try {
    return JSON.parse(text);
  } catch {
    throw failureOf('ERR_OUTPUT', `${file} is damaged: ${advice}`);
  }
}

module.exports = { flush, readJson };
