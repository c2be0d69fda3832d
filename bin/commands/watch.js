'use strict';
// corvane-replay watch: what the game adds to its replays, while it runs.

const { watchReplays } = require('../../client');
const { withKey } = require('../command-options.js');
const { exitStatus, failureText } = require('../failures.js');

async function run({ key, output, terminal, signal }) {
  let status = 0;
  for await (const { document, error } of watchReplays({ key, signal })) {
    if (error) terminal.write(failureText(error));
    else await output.writeJson(JSON.stringify(document) + '\n');
    status = error ? exitStatus(error) : 0;
  }
  // Interrupting is how watching ends; else it was the last failure that ended it.
  return signal.aborted ? 0 : status;
}

module.exports = {
  order: 90,
  define: (command) =>
    withKey(command).description(
      'print a line of JSON for each change of a replay in the demo folder, until interrupted',
    ),
  run,
};
