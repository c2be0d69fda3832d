'use strict';
// The one class of the client's errors.

const MEANINGS = {
  ERR_UNREADABLE: 'the file cannot be opened',
  ERR_NOT_A_REPLAY: 'the file is no replay',
  ERR_KEY_REQUIRED: 'the replay is encrypted and there is no key for it',
  ERR_CORRUPT: 'the replay is broken',
  ERR_OUT_OF_MEMORY: 'the document does not fit into memory',
  ERR_TIMEOUT: 'reading took too long',
  ERR_ABORTED: 'aborted',
  ERR_CHILD_LOST: 'the reading process ended',
  ERR_CORVANE_ADDON: 'the native add-on could not be loaded',
  ERR_NO_DEMO_FOLDER: 'there is no demo folder',
  ERR_INVALID_ARGUMENT: 'invalid argument',
};

class ReplayError extends Error {
  // code: a key of MEANINGS. reason: what the failing side said of it. path: the file as the caller named it, if the
  // error is about one. options: those of Error.
  constructor(code, reason, path, options) {
    const subject = path === undefined ? '' : `: ${path}`;
    super(`${MEANINGS[code]}${subject} (${reason})`, options);
    this.code = code;
    this.reason = reason;
    if (path !== undefined) this.path = path;
  }

  // The signal's own reason becomes the cause.
  static aborted({ reason }, path) {
    return new ReplayError('ERR_ABORTED', String(reason?.message ?? reason), path, { cause: reason });
  }
}

ReplayError.prototype.name = 'ReplayError';

module.exports = { ReplayError };
