'use strict';
// corvane-replay watch: replays while they are recorded.

const { Option } = require('commander');
const { watchMatches, watchReplays } = require('../../client');
const { withKey, withSizeLimit } = require('../command-options.js');
const { exitStatus, failureText, usageFailure } = require('../failures.js');
const { updateText } = require('../match-update-text.js');

const FORMATS = ['text', 'ndjson', 'documents'];

// The whole match only at its start and its end: in between it would be repeated again and again.
function updateJson({ path, type, match, added }) {
  return JSON.stringify(type === 'events' ? { path, type, added } : { path, type, match, added });
}

// The document's text as it is, since a parsed one has rounded numbers; its line ends belong to the layout.
const documentJson = ({ path, text }) =>
  `{"path":${JSON.stringify(path)},"document":${text.replace(/\n */g, '')}}`;

function formatOf({ format, json, endAfterMatch }, isTerminal) {
  if (format === 'documents' && endAfterMatch)
    throw usageFailure('--end-after-match goes with --format text or ndjson');
  return format ?? (isTerminal && !json ? 'text' : 'ndjson');
}

async function run({ options, key, output, terminal, signal }) {
  const format = formatOf(options, output.stream.isTTY);
  const watched = { key, signal, folder: options.folder, maxDocumentBytes: options.maxMib };
  const results = format === 'documents' ? watchReplays(watched) : watchMatches(watched);
  const jsonOf = format === 'documents' ? documentJson : updateJson;
  if (terminal.isTTY && format === 'text') {
    terminal.write(`corvane-replay: watching ${options.folder ?? "the game's folder"}; Ctrl+C ends it\n`);
  }
  let status = 0;
  for await (const result of results) {
    const { error, type } = result;
    status = error ? exitStatus(error) : 0;
    if (error) terminal.write(failureText(error));
    else if (format === 'text') await output.write(updateText(result));
    else await output.writeJson(jsonOf(result) + '\n');
    if (type === 'end' && options.endAfterMatch) break;
  }
  // An interrupt is the normal end of watching. Otherwise the last failure ended it.
  return signal.aborted ? 0 : status;
}

module.exports = {
  order: 90,
  define: (command) =>
    withSizeLimit(withKey(command))
      .description(
        'print what is added to the replays of a folder while they are recorded, until interrupted',
      )
      .option('--folder <folder>', "folder to watch, with all in it (default: the game's demo folder)")
      .addOption(
        new Option(
          '--format <format>',
          'text: for people (default on a terminal); ndjson: the start, the additions and the end of each match, a ' +
            'line of JSON each (default elsewhere); documents: what each change added, as the replay has it',
        ).choices(FORMATS),
      )
      .addOption(new Option('--json', 'the same as --format ndjson').conflicts('format'))
      .option('--end-after-match', 'end when a match has ended'),
  run,
};
