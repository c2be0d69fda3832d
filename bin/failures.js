'use strict';
// The failures of the command line: an exit status for each kind, and its text.

const KINDS = [
  [2, 'ERR_INVALID_ARGUMENT', 'invalid arguments'],
  [3, 'ERR_UNREADABLE', 'a file or folder cannot be opened'],
  [4, 'ERR_NOT_A_REPLAY', 'a file is no replay'],
  [5, 'ERR_CORRUPT', 'a replay is broken'],
  [6, 'ERR_KEY_REQUIRED', 'a replay is encrypted, and there is no key for it'],
  [7, 'ERR_TIMEOUT', 'a replay took longer than --timeout'],
  [8, 'ERR_CHILD_LOST', 'the process that reads replays ended'],
  [9, 'ERR_OUT_OF_MEMORY', 'a document does not fit into memory'],
  [10, 'ERR_CORVANE_ADDON', 'the native add-on cannot be loaded'],
  [11, 'ERR_NO_DEMO_FOLDER', 'there is no folder to watch'],
  [12, 'ERR_OUTPUT', 'the output cannot be written'],
  [13, 'ERR_DOCUMENT_TOO_LARGE', 'a document is larger than --max-mib allows'],
  [14, 'ERR_CHILD_START', 'the process that reads replays cannot be started'],
  [130, 'ERR_ABORTED', 'interrupted'],
];

const STATUS = Object.fromEntries(KINDS.map(([status, code]) => [code, status]));
const USAGE_STATUS = STATUS.ERR_INVALID_ARGUMENT;
const OTHER_STATUS = 1;

const STATUS_HELP = [
  '\nExit status:',
  '  0    everything was read and written, or the reader of the output went away',
  `  ${OTHER_STATUS}    any other failure`,
  ...KINDS.map(([status, , meaning]) => `  ${String(status).padEnd(3)}  ${meaning}`),
  'With several files: that of the first file that failed, in the order given.',
].join('\n');

const exitStatus = (error) => STATUS[error.code] ?? OTHER_STATUS;

// A replay is not trusted: its text must not control the terminal or change the direction of the text behind it.
function printable(text) {
  return text.replace(/[\p{Cc}\p{Cf}\p{Cs}\u2028\u2029]/gu, '');
}

const failureOf = (code, message) => Object.assign(new Error(message), { code });
const usageFailure = (message) => failureOf('ERR_INVALID_ARGUMENT', message);

// No other replay could be read either.
const endsRun = ({ code }) => code === 'ERR_CORVANE_ADDON';

// The error as lines for standard error.
function failureText({ code, message, hint }) {
  const advice = hint && !message.includes(hint) ? `. ${hint}` : '';
  const lines = `corvane-replay: ${message}${advice}`.split('\n').map(printable);
  // In other messages a line end comes from a file's name. The rest of the name must not look like another message.
  return lines.join(code === 'ERR_CORVANE_ADDON' ? '\n' : ' ') + '\n';
}

module.exports = {
  STATUS_HELP,
  USAGE_STATUS,
  endsRun,
  exitStatus,
  failureOf,
  failureText,
  printable,
  usageFailure,
};
