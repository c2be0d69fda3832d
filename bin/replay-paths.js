'use strict';
// The replays that a command's arguments name: files, folders with all below them, patterns (Windows' shells expand none),
// and "-" for a list on standard input.

const fs = require('node:fs/promises');
const path = require('node:path');
const { createInterface } = require('node:readline');
const { failureOf } = require('./failures.js');

const PATHS = 'replays, folders with all below them, patterns in quotes, or - for a list on standard input';

const byText = (a, b) => (a < b ? -1 : Number(a > b));

const unreadable = (message) => failureOf('ERR_UNREADABLE', message);

const statsOf = (file) => fs.stat(file).catch(() => undefined);

// The replays in a folder and below it. Links to folders are not followed: they may lead back.
async function* replaysIn(folder, onFailure) {
  const entries = await fs.readdir(folder, { withFileTypes: true }).catch((error) => {
    onFailure(unreadable(`the folder cannot be read: ${error.message}`));
    return [];
  });
  for (const entry of entries.sort((a, b) => byText(a.name, b.name))) {
    const file = path.join(folder, entry.name);
    if (entry.isDirectory()) yield* replaysIn(file, onFailure);
    else if (entry.name.toLowerCase().endsWith('.replay')) yield file;
  }
}

async function folderReplays(folder, onFailure) {
  let hasFailed = false;
  const fail = (error) => {
    hasFailed = true;
    onFailure(error);
  };
  const found = [];
  for await (const file of replaysIn(folder, fail)) found.push(file);
  if (found.length === 0 && !hasFailed) onFailure(unreadable(`there are no replays in ${folder}`));
  return found;
}

async function matching(pattern, onFailure) {
  const { glob } = require('tinyglobby');
  // In a pattern a backslash takes a character's meaning away; on Windows people write it between folders.
  const slashes = process.platform === 'win32' ? pattern.replaceAll('\\', '/') : pattern;
  const found = await glob(slashes, { dot: true, onlyFiles: false, expandDirectories: false });
  if (found.length === 0) onFailure(unreadable(`nothing matches ${pattern}`));
  return found.map((file) => path.normalize(file).replace(/[\\/]$/, '')).sort(byText);
}

async function namedReplays(name, onFailure) {
  const stats = await statsOf(name);
  if (stats?.isDirectory()) return folderReplays(name, onFailure);
  if (stats !== undefined || !require('tinyglobby').isDynamicPattern(name)) return [name];
  const found = [];
  for (const match of await matching(name, onFailure)) {
    const isFolder = (await statsOf(match))?.isDirectory();
    for (const file of isFolder ? await folderReplays(match, onFailure) : [match]) found.push(file);
  }
  return [...new Set(found)]; // "**" matches a folder, and also what is in it
}

async function standardInput(signal) {
  const lines = [];
  const reader = createInterface({ input: process.stdin, signal, crlfDelay: Infinity });
  for await (const line of reader) if (line.trim() !== '') lines.push(line);
  if (signal?.aborted) throw failureOf('ERR_ABORTED', 'interrupted');
  return lines;
}

// Resolves with the paths of the replays in the order of the arguments. Errors in an argument go to onFailure(error);
// the other arguments still count.
async function replayPaths(names, onFailure, signal) {
  const found = [];
  for (const name of names) {
    for (const each of name === '-' ? await standardInput(signal) : [name]) {
      for (const file of await namedReplays(each, onFailure)) found.push(file);
    }
  }
  return found;
}

module.exports = { PATHS, replayPaths };
