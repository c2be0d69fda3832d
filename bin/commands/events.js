'use strict';
// corvane-replay events: who eliminated whom, as a table, or in a pipe as one line of JSON per event.

const { readMatch } = require('../../client');
const { eventTable } = require('../event-table.js');
const { printable } = require('../failures.js');
const { withDamageNames, withKey, withLimits, withNames, withSalvage } = require('../command-options.js');
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
  if (isTable) await output.write(eventTable(match, names, output.columns));
  else for (const event of match.document.events ?? []) await output.writeJson(JSON.stringify(event) + '\n');
  return 0;
}

module.exports = {
  order: 30,
  define: (command) =>
    withNames(withDamageNames(withSalvage(withJson(withLimits(withKey(command))))))
      .description('print who eliminated whom: a table, or in a pipe a line of JSON for each event')
      .option('--table', 'print the table in a pipe too')
      .argument('<file>', 'replay'),
  run,
};
