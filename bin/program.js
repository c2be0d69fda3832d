'use strict';
// The program's arguments, its signals, and its exit status.

const { Command, CommanderError, InvalidArgumentError } = require('commander');
const { version } = require('../package.json');
const commands = require('./commands.js');
const { STATUS_HELP, USAGE_STATUS, exitStatus, failureText } = require('./failures.js');
const { Output } = require('./output.js');

function keyBytes(text) {
  const digits = text.replace(/\s/g, '');
  if (/^([0-9a-f]{32}|[0-9a-f]{48}|[0-9a-f]{64})$/i.test(digits)) return Buffer.from(digits, 'hex');
  throw new InvalidArgumentError('It must be 16, 24 or 32 bytes as hexadecimal digits.');
}

function jobCount(text) {
  if (/^[1-9]\d*$/.test(text) && Number(text) <= 64) return Number(text);
  throw new InvalidArgumentError('It must be a whole number from 1 to 64.');
}

function milliseconds(text) {
  const value = Number(text) * 1000;
  if (value > 0 && value < 2 ** 31) return value;
  throw new InvalidArgumentError('It must be a number of seconds above 0.');
}

// run(action): does the command's work once its arguments are known to be good.
function program(run) {
  const root = new Command('corvane-replay')
    .description('Reads replays of the game Corvane.')
    .version(version)
    .exitOverride()
    .showHelpAfterError('(see corvane-replay --help)')
    .addHelpText('after', STATUS_HELP);
  const key = ['--key <hex>', 'AES key for replays that carry none', keyBytes];
  const timeout = ['--timeout <seconds>', 'give a replay up that takes longer', milliseconds];
  root
    .command('read')
    .description('print the document of each replay: JSON for one file, one line of JSON each for several')
    .argument('<file...>', 'replays, or folders of them')
    .option('--out <folder>', 'write each document into a file of this folder instead')
    .option('--ndjson', 'one line for a single file, too')
    .option('--jobs <number>', 'how many replays are read at once (default: one per processor)', jobCount)
    .option(...key)
    .option(...timeout)
    .action((files, options) => run((context) => commands.read(files, options, context)));
  root
    .command('events')
    .description('print who eliminated whom as a table')
    .argument('<file>', 'replay')
    .option(...key)
    .option(...timeout)
    .action((file, options) => run((context) => commands.events(file, options, context)));
  root
    .command('watch')
    .description('print a line of JSON for each change of a replay in the demo folder, until interrupted')
    .option(...key)
    .action((options) => run((context) => commands.watch(options, context)));
  return root;
}

// Gives the command where to write and what tells it to stop; resolves with the exit status.
async function execute(action) {
  const stop = new AbortController();
  const onSignal = () => stop.abort();
  for (const name of ['SIGINT', 'SIGTERM', 'SIGHUP']) process.once(name, onSignal);
  const output = new Output(process.stdout, onSignal);
  process.stderr.on('error', () => {});
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
  let status = 0;
  try {
    await program(async (action) => (status = await execute(action))).parseAsync(argv);
  } catch (error) {
    if (!(error instanceof CommanderError)) throw error;
    return error.exitCode === 0 ? 0 : USAGE_STATUS;
  }
  return status;
}

module.exports = { main };
