'use strict';
// corvane-replay read: documents as JSON.

const path = require('node:path');
const { readReplayTexts } = require('../../client');
const { limitsOf, withJobs, withKey, withLimits } = require('../command-options.js');
const { endsRun, exitStatus, failureText, usageFailure } = require('../failures.js');
const { makeFolder, writeWhole } = require('../output.js');
const { progress } = require('../progress.js');
const { PATHS, replayPaths } = require('../replay-paths.js');

// In a document's text line ends belong to the layout: inside strings they are escaped.
const oneLine = (text) => text.replace(/\n */g, '');

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
    return (text) => output.writeJson(layout(text) + '\n');
  }
  const files = documentFiles(replays, out);
  await makeFolder(out);
  return (text, i) => writeWhole(files[i], text + '\n');
}

async function run({ args: [files], options, key, output, terminal, signal }) {
  let status = 0;
  const fail = (error) => (status ||= exitStatus(error));
  const onFailure = (error) => {
    fail(error);
    terminal.write(failureText(error));
  };
  const replays = await replayPaths(files, onFailure, signal);
  const onePrinted = replays.length === 1 && replays[0] === files[0];
  const write = await documentWriter(replays, options, onePrinted, output);
  const limits = { key, concurrency: options.jobs, signal, ...limitsOf(options) };
  const shared = options.out === undefined && output.stream.isTTY;
  const bar = progress(replays.length, terminal, { shared, wanted: options.progress });
  let i = 0;
  try {
    for await (const { text, error } of readReplayTexts(replays, limits)) {
      if (error && endsRun(error)) throw error;
      if (error) bar.message(failureText(error));
      else await write(text, i);
      if (error) fail(error);
      bar.step();
      i += 1;
    }
  } finally {
    bar.stop();
  }
  return status;
}

module.exports = {
  order: 20,
  define: (command) =>
    withLimits(withKey(withJobs(command)))
      .description('print the document of each replay: JSON for one file, one line of JSON each for several')
      .argument('<file...>', PATHS)
      .option('--out <folder>', 'write each document into a file of this folder instead')
      .option('--ndjson', 'print a single file as one line too')
      .option('--no-progress', 'no progress line'),
  run,
};
