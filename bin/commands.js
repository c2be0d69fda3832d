'use strict';
// What the commands do. Each is given { output, terminal, signal } and resolves with its exit status.

const fs = require('node:fs/promises');
const path = require('node:path');
const { readReplay, readReplayTexts, watchReplays } = require('../client');
const { eventTable } = require('./event-table.js');
const { exitStatus, failureText, usageFailure } = require('./failures.js');
const { outputFailure, writeWhole } = require('./output.js');
const { progress } = require('./progress.js');

// In a document's text only the layout holds line ends: within a string they are escaped.
const oneLine = (text) => text.replace(/\n */g, '');

const isFolder = (file) =>
  fs.stat(file).then(
    (stats) => stats.isDirectory(),
    () => false,
  );

const unreadableFolder = ({ message }) =>
  Object.assign(new Error(`the folder cannot be read: ${message}`), { code: 'ERR_UNREADABLE' });

// A folder stands for the replays in it.
async function replaysOf(file) {
  if (!(await isFolder(file))) return [file];
  const entries = await fs.readdir(file).catch((error) => Promise.reject(unreadableFolder(error)));
  const names = entries.filter((name) => name.endsWith('.replay')).sort();
  if (names.length === 0) throw usageFailure(`there are no replays in ${file}`);
  return names.map((name) => path.join(file, name));
}

// Where each document goes with --out. Documents of one name would overwrite each other.
function documentFiles(replays, folder) {
  const owners = new Map();
  return replays.map((replay) => {
    const name = `${path.basename(replay, '.replay')}.json`;
    const owner = owners.get(name.toLowerCase());
    if (owner !== undefined) throw usageFailure(`${owner} and ${replay} would both become ${name}`);
    owners.set(name.toLowerCase(), replay);
    return path.join(folder, name);
  });
}

async function documentWriter(replays, { out, ndjson }, onePrinted, output) {
  if (out === undefined) {
    const layout = onePrinted && !ndjson ? (text) => text : oneLine;
    return (text) => output.write(layout(text) + '\n');
  }
  const files = documentFiles(replays, out);
  await fs.mkdir(out, { recursive: true }).catch((error) => Promise.reject(outputFailure(error)));
  return (text, i) => writeWhole(files[i], text + '\n');
}

async function read(files, options, { output, terminal, signal }) {
  const replays = (await Promise.all(files.map(replaysOf))).flat();
  const onePrinted = replays.length === 1 && replays[0] === files[0];
  const write = await documentWriter(replays, options, onePrinted, output);
  const limits = { key: options.key, timeout: options.timeout, concurrency: options.jobs, signal };
  const bar = progress(replays.length, terminal, options.out === undefined && output.stream.isTTY);
  let status = 0;
  let i = 0;
  try {
    for await (const { text, error } of readReplayTexts(replays, limits)) {
      if (error) bar.message(failureText(error));
      else await write(text, i);
      status ||= error ? exitStatus(error) : 0;
      bar.step();
      i += 1;
    }
  } finally {
    bar.stop();
  }
  return status;
}

async function events(file, { key, timeout }, { output, signal }) {
  const document = await readReplay(file, { key, timeout, signal });
  await output.write(eventTable(document.events ?? []));
  return 0;
}

async function watch({ key }, { output, terminal, signal }) {
  let status = 0;
  for await (const { document, error } of watchReplays({ key, signal })) {
    if (error) terminal.write(failureText(error));
    else await output.write(JSON.stringify(document) + '\n');
    status = error ? exitStatus(error) : 0;
  }
  // Interrupting is how watching ends; else it was the last failure that ended it.
  return signal.aborted ? 0 : status;
}

module.exports = { events, read, watch };
