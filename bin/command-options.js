'use strict';
// Options that several commands share, and what their values may be.

const { constants } = require('node:buffer');
const fs = require('node:fs');
const { InvalidArgumentError, Option } = require('commander');
const { failureOf, usageFailure } = require('./failures.js');

const KEY_VARIABLE = 'CORVANE_REPLAY_KEY';

// Undefined if the text is no key.
function keyBytes(text) {
  const digits = text.replace(/\s/g, '');
  return /^([0-9a-f]{32}|[0-9a-f]{48}|[0-9a-f]{64})$/i.test(digits) ? Buffer.from(digits, 'hex') : undefined;
}

const MOST_MIB = Math.ceil(constants.MAX_STRING_LENGTH / 2 ** 20);
const KEY_FORM = '16, 24 or 32 bytes as hexadecimal digits';

function keyArgument(text) {
  const key = keyBytes(text);
  if (key) return key;
  throw new InvalidArgumentError(`It must be ${KEY_FORM}.`);
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

function mebibytes(text) {
  const value = Math.ceil(Number(text) * 2 ** 20);
  if (value > 0 && value <= constants.MAX_STRING_LENGTH) return value;
  throw new InvalidArgumentError(`It must be a number of MiB above 0, below ${MOST_MIB}.`);
}

// Each adds its options to a Command and returns it.
const withKey = (command) =>
  command
    .addOption(new Option('--key-file <file>', 'file with the AES key for replays that carry none'))
    .addOption(
      new Option(
        '--key <hex>',
        'the key itself; every user of the machine can see it in the list of processes',
      )
        .argParser(keyArgument)
        .conflicts('keyFile'),
    )
    .addHelpText('after', `\nThe key is ${KEY_FORM}. It may also be in the variable ${KEY_VARIABLE}.`);
const withSizeLimit = (command) =>
  command.option('--max-mib <number>', 'size limit for the JSON of each replay (default: 64)', mebibytes);
const withLimits = (command) =>
  withSizeLimit(command.option('--timeout <seconds>', 'time limit for each replay', milliseconds));
const withJobs = (command) =>
  command.option(
    '-j, --jobs <number>',
    'how many replays are read at once (default: one per processor)',
    jobCount,
  );

// The client's options from --timeout and --max-mib.
const limitsOf = ({ timeout, maxMib }) => ({ timeout, maxDocumentBytes: maxMib });

// The key from --key, --key-file or the variable, in this order; undefined without one. Throws errors that failures.js
// knows.
function keyOf({ key, keyFile }) {
  const variable = process.env[KEY_VARIABLE];
  if (key || (keyFile === undefined && !variable)) return key;
  const found = keyBytes(keyFile === undefined ? variable : readKeyFile(keyFile));
  if (found) return found;
  throw usageFailure(`${keyFile ?? KEY_VARIABLE} must hold ${KEY_FORM}`);
}

function readKeyFile(file) {
  try {
    return fs.readFileSync(file, 'latin1');
  } catch (error) {
    throw failureOf('ERR_UNREADABLE', `the key file cannot be read: ${error.message}`);
  }
}

const withSalvage = (command) =>
  command.option('--salvage', 'read what can be read of a replay that is broken or cut short');

const withDamageNames = (command) =>
  command.option('--damage-names <file>', 'names of damage types: CSV lines "3,rifle", or a JSON object');

const withNames = (command) =>
  command.option('--names <file>', 'names of accounts: CSV lines "ACCOUNT,name", or a JSON object');

module.exports = {
  ...{ keyOf, limitsOf, withDamageNames, withJobs, withKey, withLimits, withNames, withSalvage },
  withSizeLimit,
};
