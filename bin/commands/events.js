'use strict';
// corvane-replay events: who eliminated whom, as a table.

const { readReplay } = require('../../client');
const { withKey, withTimeout } = require('../command-options.js');
const { eventTable } = require('../event-table.js');

async function run({ args: [file], options: { timeout }, key, output, signal }) {
  const document = await readReplay(file, { key, timeout, signal });
  await output.write(eventTable(document.events ?? [], output.stream.columns));
  return 0;
}

module.exports = {
  order: 30,
  define: (command) =>
    withTimeout(withKey(command))
      .description('print who eliminated whom as a table')
      .argument('<file>', 'replay'),
  run,
};
