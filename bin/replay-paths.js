'use strict';
// The replays that a command's arguments name.

const fs = require('node:fs/promises');
const path = require('node:path');
const { failureOf } = require('./failures.js');

const isFolder = (file) =>
  fs.stat(file).then(
    (stats) => stats.isDirectory(),
    () => false,
  );

const unreadableFolder = ({ message }) =>
  failureOf('ERR_UNREADABLE', `the folder cannot be read: ${message}`);

// A folder stands for the replays in it. What is wrong with it goes to onFailure(error), and the others are read.
async function replaysOf(file, onFailure) {
  if (!(await isFolder(file))) return [file];
  try {
    const entries = await fs.readdir(file);
    const names = entries.filter((name) => name.endsWith('.replay')).sort();
    if (names.length === 0) onFailure(failureOf('ERR_UNREADABLE', `there are no replays in ${file}`));
    return names.map((name) => path.join(file, name));
  } catch (error) {
    onFailure(unreadableFolder(error));
    return [];
  }
}

// Resolves with the paths of the replays, in the order of the arguments.
async function replayPaths(files, onFailure) {
  const found = [];
  for (const file of files) found.push(...(await replaysOf(file, onFailure)));
  return found;
}

module.exports = { replayPaths };
