'use strict';
// corvane-replay events: who eliminated whom, as a table.

const { readReplay } = require('../../client');
const { limitsOf, withKey, withLimits } = require('../command-options.js');
const { eventTable } = require('../event-table.js');

async function run({ args: [file], options, key, output, signal }) {
  const document = await readReplay(file, { key, signal, ...limitsOf(options) });
  await output.write(eventTable(document.events ?? [], output.stream.columns));
  return 0;
}

module.exports = {
  order: 30,
  define: (command) =>
    withLimits(withKey(command))
      .description('print who eliminated whom as a table')
      .argument('<file>', 'replay'),
  run,
};
