'use strict';
// corvane-replay events: who eliminated whom, as a table, or in a pipe as one line of JSON per event.

const { readMatch } = require('../../client');
const { eventTable } = require('../event-table.js');
const { printable } = require('../failures.js');
const { withKey, withLimits } = require('../command-options.js');
const { readingOf, wantsData, withJson } = require('../matches.js');
const { namesOf } = require('../name-file.js');

async function run(context) {
  const { args, options, output, terminal } = context;
  const names = namesOf(options.names);
  const reading = readingOf(context);
  delete reading.concurrency; // one file is read
  const match = await readMatch(args[0], reading);
  for (const text of match.warnings) terminal.write(`corvane-replay: warning: ${printable(text)}\n`);
  const isTable = options.table || !wantsData(options, output);
  if (isTable) await output.write(eventTable(match, names, output.stream.columns));
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
      .option('--damage-names <file>', 'names of damage types: CSV lines "3,rifle", or a JSON object')
      .option('--names <file>', 'names of accounts: CSV lines "ACCOUNT,name", or a JSON object')
      .argument('<file>', 'replay'),
  run,
};
