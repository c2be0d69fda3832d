'use strict';
// corvane-replay report: a match, or a season, as one HTML file.

const path = require('node:path');
const { withDamageNames, withJobs, withKey, withLimits, withNames } = require('../command-options.js');
const { PATHS } = require('../replay-paths.js');

// Matches and failures on their way into the report. A failure is also a line on standard error, and sets the status.
async function* reported(results, { bar, tally }) {
  const { endsRun, exitStatus, failureText } = require('../failures.js');
  for await (const result of results) {
    if (result.error) {
      if (endsRun(result.error)) throw result.error;
      tally.status ||= exitStatus(result.error);
      bar.message(failureText(result.error));
    }
    bar.step();
    yield result;
  }
}

async function run(context) {
  const { readMatches, renderReport } = require('../../client');
  const { failureOf } = require('../failures.js');
  const { listReplays, readingOf } = require('../matches.js');
  const { namesOf } = require('../name-file.js');
  const { makeFolder, writeWhole } = require('../output.js');
  const { progress } = require('../progress.js');
  const { args, options, terminal } = context;
  const { title, player } = options;
  const names = namesOf(options.names);
  const tally = { status: 0 };
  const replays = await listReplays(args[0], context, tally);
  if (replays.length === 0) throw failureOf('ERR_UNREADABLE', 'there is no replay to report on');
  await makeFolder(path.dirname(path.resolve(options.out)));
  const bar = progress(replays.length, terminal, { wanted: options.progress !== false });
  try {
    // The page says what is missing of a replay that was cut.
    const results = readMatches(replays, { ...readingOf(context), salvage: true });
    const html = await renderReport(reported(results, { bar, tally }), { title, player, names });
    await writeWhole(path.resolve(options.out), html);
  } finally {
    bar.stop();
  }
  return tally.status;
}

module.exports = {
  order: 85,
  define: (command) =>
    withDamageNames(withNames(withLimits(withKey(withJobs(command)))))
      .description('write a match, or a season, as one HTML file for a browser')
      .argument('<path...>', PATHS)
      .requiredOption('--out <file>', 'the HTML file to write')
      .option('--title <text>', "title of the page (default: the match's name, or the number of matches)")
      .option('--player <id>', 'account that recorded the replays: its id, or the first 8 digits or more')
      .option('--no-progress', 'no progress line'),
  run,
};
