'use strict';
// corvane-replay events: who eliminated whom, as a table, or in a pipe as one line of JSON per event.

const { readMatch } = require('../../client');
const { eventTable } = require('../event-table.js');
const { printable } = require('../failures.js');
const { withKey, withLimits } = require('../command-options.js');
const { readingOf, wantsData, withJson } = require('../matches.js');

async function run(context) {
  const { args, options, output, terminal } = context;
  const reading = readingOf(context);
  delete reading.concurrency; // one file is read
  const match = await readMatch(args[0], reading);
  for (const text of match.warnings) terminal.write(`corvane-replay: warning: ${printable(text)}\n`);
  if (options.table || !wantsData(options, output))
    await output.write(eventTable(match, output.stream.columns));
  else for (const event of match.document.events ?? []) await output.writeJson(JSON.stringify(event) + '\n');
  return 0;
}

module.exports = {
  order: 30,
  define: (command) =>
    withJson(withLimits(withKey(command)))
      .description('print who eliminated whom: a table, or in a pipe a line of JSON for each event')
      .option('--salvage', 'read what can be read of a replay that is broken or cut short')
      .option('--table', 'print the table in a pipe too')
      .argument('<file>', 'replay'),
  run,
};
