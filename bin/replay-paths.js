'use strict';
// The replays that a command's arguments name: files, folders with all below them, patterns (Windows' shells expand none),
// and "-" for a list on standard input.

const callbacks = require('node:fs');
const fs = require('node:fs/promises');
const path = require('node:path');
const { addAbortSignal } = require('node:stream');
const { failureOf } = require('./failures.js');
const { textOf } = require('./text-file.js');

const PATHS = 'replays, folders with all below them, patterns in quotes, or - for a list on standard input';

const isWindows = process.platform === 'win32';

const isReplay = (file) => file.toLowerCase().endsWith('.replay');

const byText = (a, b) => (a < b ? -1 : Number(a > b));

const unreadable = (message) => failureOf('ERR_UNREADABLE', message);
const unreadableFolder = ({ message }) => unreadable(`the folder cannot be read: ${message}`);

const statsOf = (file) => fs.stat(file).catch(() => undefined);

// The replays in a folder and below it. Links to folders are not followed: they may lead back.
async function* replaysIn(folder, onFailure) {
  const entries = await fs.readdir(folder, { withFileTypes: true }).catch((error) => {
    onFailure(unreadableFolder(error));
    return [];
  });
  for (const entry of entries.sort((a, b) => byText(a.name, b.name))) {
    const file = path.join(folder, entry.name);
    if (entry.isDirectory()) yield* replaysIn(file, onFailure);
    else if (isReplay(entry.name)) yield file;
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

// What makes an argument a pattern. A backslash takes a character's meaning away; on Windows it stands between folders.
const MAGIC = /(?<!\\)[*?[{]/;

const withSlashes = (name) => (isWindows ? name.replaceAll('\\', '/') : name);

// The folder before the first "*" or the like, and the pattern behind it, in which parentheses and a "!" at the start
// mean themselves: they are common in names.
function splitPattern(text) {
  const end = text.lastIndexOf('/', text.search(MAGIC)) + 1;
  const folder = text.slice(0, end).replace(/\\(.)/g, '$1');
  return [folder, text.slice(end).replace(/^!|(?<!\\)[()]/g, '\\$&')];
}

// For the library of patterns, which itself says nothing of folders that cannot be read.
function readdirWith(onFailure) {
  return (folder, options, done) =>
    callbacks.readdir(folder, options, (error, entries) => {
      if (error && !['ENOENT', 'ENOTDIR'].includes(error.code)) onFailure(unreadableFolder(error));
      done(error, entries);
    });
}

// What a pattern matches: files, and the replays in folders. One that ends in "*" does not say which files, so it means
// replays. "**" matches a folder and also what is in it, and follows links: each file counts once.
async function matchedReplays(name, onFailure) {
  const failures = new Set();
  const fail = (error) => {
    if (!failures.has(error.message)) onFailure(error);
    failures.add(error.message);
  };
  const [folder, pattern] = splitPattern(withSlashes(name));
  const matches = await require('tinyglobby').glob(pattern, {
    ...{ cwd: folder || '.', dot: true, onlyFiles: false, expandDirectories: false },
    caseSensitiveMatch: !isWindows,
    fs: { readdir: readdirWith(fail) },
  });
  const meansReplays = /\*\/*$/.test(pattern);
  const found = new Map();
  const add = async (file) => {
    const real = await fs.realpath(file).catch(() => file);
    if (!found.has(real) || path.resolve(file) === real) found.set(real, file);
  };
  for (const match of matches.filter((each) => each !== '.')) {
    const place = path.join(folder, match);
    if (match.endsWith('/')) for await (const file of replaysIn(place, fail)) await add(file);
    else if (isReplay(match) || !meansReplays) await add(place);
  }
  if (found.size === 0 && failures.size === 0) onFailure(unreadable(`no replay matches ${name}`));
  return [...found.values()].sort(byText);
}

async function namedReplays(name, onFailure) {
  if (name === '' || name.includes('\0')) {
    onFailure(unreadable('an empty path, or one with a zero character, names no replay'));
    return [];
  }
  const stats = await statsOf(name);
  if (stats?.isDirectory()) return folderReplays(name, onFailure);
  return stats === undefined && MAGIC.test(withSlashes(name)) ? matchedReplays(name, onFailure) : [name];
}

async function standardInput(signal) {
  const chunks = [];
  try {
    const input = signal ? addAbortSignal(signal, process.stdin) : process.stdin;
    for await (const chunk of input) chunks.push(chunk);
  } catch (error) {
    throw signal?.aborted ? failureOf('ERR_ABORTED', 'interrupted') : unreadable(error.message);
  }
  const lines = textOf(Buffer.concat(chunks)).split(/\r?\n/);
  return lines.filter((line) => line.trim() !== '');
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
