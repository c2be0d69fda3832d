'use strict';
// corvane-replay sample: a replay to try the other commands with.

const fs = require('node:fs/promises');
const path = require('node:path');
const { outputFailure } = require('../output.js');

const SAMPLE = path.join(__dirname, '..', '..', 'samples', 'match.replay');

async function run({ args: [file], terminal }) {
  try {
    await fs.mkdir(path.dirname(file), { recursive: true });
    await fs.copyFile(SAMPLE, file, fs.constants.COPYFILE_EXCL);
  } catch (error) {
    throw outputFailure(error.code === 'EEXIST' ? new Error(`${file} is there already`) : error);
  }
  terminal.write(`wrote ${file}; now try: corvane-replay events ${file}\n`);
  return 0;
}

module.exports = {
  order: 10,
  define: (command) =>
    command
      .description('write a small sample replay, to try the other commands with')
      .argument('[file]', 'where to write it; an existing file is kept', 'match.replay'),
  run,
};
