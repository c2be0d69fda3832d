'use strict';
// The program's commands, its arguments, its signals, and its exit status.
//
// Each file of commands/ is a command of its name and exports
//
//     order    its place in the help: smaller first
//     define   (command) => void: adds description, arguments and options to a commander Command
//     run      (context) => Promise of the exit status; a rejection becomes a message and the status of its code
//
// context: { args, options, key, output, terminal, signal }: the parsed arguments and options, the AES key (undefined
// without one), standard output (output.js), standard error, and what tells the command to stop.

const { readdirSync } = require('node:fs');
const path = require('node:path');
const { Command, CommanderError } = require('commander');
const { version } = require('../package.json');
const { keyOf } = require('./command-options.js');
const { STATUS_HELP, USAGE_STATUS, exitStatus, failureText } = require('./failures.js');
const { Output } = require('./output.js');

const FOLDER = path.join(__dirname, 'commands');

function commands() {
  const names = readdirSync(FOLDER).map((file) => path.basename(file, '.js'));
  return names
    .map((name) => ({ name, ...require(path.join(FOLDER, name)) }))
    .sort((a, b) => a.order - b.order);
}

// onRun(action): does the command's work once its arguments are known to be good.
function program(onRun) {
  const root = new Command('corvane-replay')
    .description('Reads replays of the game Corvane.')
    .version(version)
    .exitOverride()
    .showHelpAfterError('(see corvane-replay --help)')
    .addHelpText('after', STATUS_HELP);
  for (const { name, define, run } of commands()) {
    const command = root.command(name).showHelpAfterError(`(see corvane-replay ${name} --help)`);
    define(command);
    command.action(() =>
      onRun((context) => {
        const options = command.opts();
        const usesKey = command.options.some(({ long }) => long === '--key-file');
        const withHelp = (error) => {
          if (error.code === 'ERR_INVALID_ARGUMENT') error.hint = `See corvane-replay ${name} --help`;
          throw error;
        };
        const start = async () => {
          const key = usesKey ? keyOf(options) : undefined;
          return run({ args: command.processedArgs, options, key, ...context });
        };
        return start().catch(withHelp);
      }),
    );
  }
  return root;
}

// Gives the command where to write and what tells it to stop; resolves with the exit status.
async function execute(action, output, stop) {
  const onSignal = () => stop.abort();
  for (const name of ['SIGINT', 'SIGTERM', 'SIGHUP']) process.once(name, onSignal);
  try {
    return await action({ output, terminal: process.stderr, signal: stop.signal });
  } catch (error) {
    if (output.gone) return 0;
    const failure = output.failure ?? error;
    if (failure.code !== 'ERR_ABORTED') process.stderr.write(failureText(failure));
    return exitStatus(failure);
  }
}

// Resolves with the exit status; argv as process.argv.
async function main(argv) {
  const stop = new AbortController();
  const output = new Output(process.stdout, () => stop.abort());
  process.stderr.on('error', () => {});
  let status = 0;
  try {
    await program(async (action) => (status = await execute(action, output, stop))).parseAsync(argv);
  } catch (error) {
    if (!(error instanceof CommanderError)) throw error;
    if (error.exitCode !== 0) return USAGE_STATUS;
    if (output.failure === null) return 0;
    process.stderr.write(failureText(output.failure));
    return exitStatus(output.failure);
  }
  return status;
}

module.exports = { main };
