'use strict';
// The one class of the client's errors: what went wrong and what to do about it, in the caller's terms.

// code: [what went wrong, what to do].
const FAILURES = {
  ERR_UNREADABLE: ['the file cannot be opened', 'Check the path and the permissions of the file.'],
  ERR_NOT_A_REPLAY: ['the file is no replay', 'Name a .replay file that the game has written.'],
  ERR_KEY_REQUIRED: [
    'the replay is encrypted and carries no key',
    'Give its AES key: options.key, or --key-file on the command line.',
  ],
  ERR_CORRUPT: [
    'the replay is damaged or incomplete',
    'The game may still be writing it: read it again later. To keep what can be read, use readMatch with salvage, or --salvage.',
  ],
  ERR_OUT_OF_MEMORY: [
    'there is not enough memory for the document',
    'Read fewer files at once, or use a 64-bit Node.js.',
  ],
  ERR_DOCUMENT_TOO_LARGE: [
    'the document is larger than allowed',
    'If you trust the file, allow more: options.maxDocumentBytes, or --max-mib on the command line.',
  ],
  ERR_TIMEOUT: [
    'reading took longer than allowed',
    'Allow more time: options.timeout, or --timeout on the command line.',
  ],
  ERR_ABORTED: [
    'reading was cancelled',
    'The signal was aborted, or the client was closed. Read the file again if you still need it.',
  ],
  ERR_CHILD_START: [
    'the reading process could not be started',
    'Check options.execPath: it must be Node.js, or an Electron that may run as Node.js.',
  ],
  ERR_CHILD_LOST: [
    'the reading process ended',
    'Read it again: it was killed or ran out of memory. If the same file always does so, report it.',
  ],
  ERR_CORVANE_ADDON: ['the native add-on could not be loaded', 'See docs/troubleshooting.md.'],
  ERR_NO_DEMO_FOLDER: [
    'the folder to watch is not there',
    'The game makes its folder with its first replay. The watch waits for it.',
  ],
  ERR_INVALID_ARGUMENT: ['invalid argument', 'See docs/api.md.'],
};

// The reason of these codes is in the caller's own terms, so it is part of the message.
const TOLD_IN_MESSAGE = new Set([
  'ERR_UNREADABLE',
  'ERR_DOCUMENT_TOO_LARGE',
  'ERR_TIMEOUT',
  'ERR_ABORTED',
  'ERR_CHILD_START',
  'ERR_CHILD_LOST',
  'ERR_INVALID_ARGUMENT',
]);

class ReplayError extends Error {
  // code: a key of FAILURES. reason: what the failing side said of it. path: the file as the caller named it, or the
  // folder, if the error is about one. options: { cause, hint }, the hint only where there is a better one.
  constructor(code, reason, path, { cause, hint } = {}) {
    const [what, advice] = FAILURES[code];
    const subject = path === undefined ? '' : `${path}: `;
    const detail = TOLD_IN_MESSAGE.has(code) ? ` (${reason})` : '';
    // The loader's text already says all of this.
    const message = code === 'ERR_CORVANE_ADDON' ? reason : `${subject}${what}${detail}`;
    super(message, cause === undefined ? undefined : { cause });
    this.code = code;
    this.reason = reason;
    this.hint = hint ?? advice;
    if (path !== undefined) this.path = path;
    if (code === 'ERR_ABORTED') this.name = 'AbortError';
  }

  // The signal's own reason becomes the cause.
  static aborted({ reason }, path) {
    return new ReplayError('ERR_ABORTED', String(reason?.message ?? reason), path, { cause: reason });
  }

  // Throws what a child's answer tells of a file, if it tells a failure.
  static check({ code, reason, hint }, path) {
    if (code !== undefined) throw new ReplayError(code, reason, path, { hint });
  }

  // For JSON.stringify, and for posting to another thread: an Error loses its code in both.
  toJSON() {
    const { name, code, message, reason, hint, path } = this;
    return { name, code, message, reason, hint, path };
  }
}

ReplayError.prototype.name = 'ReplayError';

module.exports = { ReplayError };
