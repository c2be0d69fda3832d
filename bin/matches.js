'use strict';
// Shared by the commands about matches: their options, and the reading of all replays that PATHS name.

const fs = require('node:fs');
const path = require('node:path');
const { readMatches } = require('../client');
const {
  limitsOf,
  withDamageNames,
  withJobs,
  withKey,
  withLimits,
  withSalvage,
} = require('./command-options.js');
const { endsRun, exitStatus, failureText } = require('./failures.js');
const { namesOf } = require('./name-file.js');
const { progress } = require('./progress.js');
const { replayPaths } = require('./replay-paths.js');

// The options for reading matches.
const withReading = (command) =>
  withDamageNames(withSalvage(withLimits(withKey(withJobs(command))))).option(
    '--no-progress',
    'no progress line',
  );

const withJson = (command) =>
  command.option('--json', 'print lines of JSON, as in a pipe, instead of a table');

// People at a terminal get tables, programs data.
const wantsData = ({ json }, { stream }) => json === true || !stream.isTTY;

// The options for readMatches(), from the arguments.
const readingOf = ({ options, key, signal, damageNames = namesOf(options.damageNames) }) => ({
  ...limitsOf(options),
  key,
  signal,
  concurrency: options.jobs,
  salvage: options.salvage === true,
  damageNames,
});

function realFolder(folder) {
  try {
    return fs.realpathSync.native(folder);
  } catch {
    return folder; // reading fails too, and says why
  }
}

// The files, each once, by its first name: links can lead to one folder in many ways.
function eachOnce(files) {
  const folders = new Map();
  const found = new Map();
  for (const file of files) {
    const { dir, base } = path.parse(path.resolve(file));
    if (!folders.has(dir)) folders.set(dir, realFolder(dir));
    const place = path.join(folders.get(dir), base);
    if (!found.has(place)) found.set(place, file);
  }
  return [...found.values()];
}

// The replays that PATHS name, each once. Errors in PATHS are reported and set the status.
async function listReplays(names, { terminal, signal }, tally) {
  const onFailure = (error) => {
    tally.status ||= exitStatus(error);
    terminal.write(failureText(error));
  };
  return eachOnce(await replayPaths(names, onFailure, signal));
}

// Reads the replays: onMatch(match, i) for each that can be read, onFailure(path, error, i) for the others, each awaited
// before the next. A failure is a line on standard error, and sets the status. read: the function of a client that reads.
async function eachMatch(replays, context, { tally, onMatch, onFailure = () => {}, read = readMatches }) {
  const { options, terminal, output } = context;
  const bar = progress(replays.length, terminal, {
    wanted: options.progress !== false,
    shared: wantsData(options, output) && output.stream.isTTY,
  });
  let i = 0;
  try {
    for await (const { path, match, error } of read(replays, readingOf(context))) {
      if (error && endsRun(error)) throw error;
      if (error) {
        bar.message(failureText(error));
        tally.status ||= exitStatus(error);
        await onFailure(path, error, i);
      } else await onMatch(match, i);
      bar.step();
      i += 1;
    }
  } finally {
    bar.stop();
  }
}

// All matches that PATHS name, one after the other; resolves with the exit status.
async function readAll(names, context, onMatch) {
  const tally = { status: 0 };
  const replays = await listReplays(names, context, tally);
  await eachMatch(replays, context, { tally, onMatch });
  return tally.status;
}

// The same for figures over the matches. What is cut or still being recorded lacks events: standard error tells how many.
async function readForFigures(names, context, onMatch) {
  const counts = { all: 0, complete: 0 };
  const status = await readAll(names, context, (match) => {
    counts.all += 1;
    counts.complete += Number(match.state === 'complete');
    return onMatch(match);
  });
  const { all, complete } = counts;
  if (complete < all) {
    context.terminal.write(`corvane-replay: ${all - complete} of ${all} matches not complete; see list\n`);
  }
  return status;
}

module.exports = {
  ...{ eachMatch, listReplays, readAll, readForFigures, readingOf, wantsData, withJson, withReading },
};
