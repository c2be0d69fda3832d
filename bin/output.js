'use strict';
// Where documents go: standard output, waiting when its reader is slow, or files that are there whole or not at all.

const { randomUUID } = require('node:crypto');
const fs = require('node:fs/promises');
const path = require('node:path');

const outputFailure = (cause) =>
  Object.assign(new Error(`cannot write: ${cause.message}`, { cause }), { code: 'ERR_OUTPUT' });

// The same JSON with invisible characters as \uXXXX. (Those below U+0020 are so in every JSON text.)
function escapedJson(text) {
  const escape = (unit) => `\\u${unit.charCodeAt(0).toString(16).padStart(4, '0')}`;
  return text.replace(/[\x7f-\x9f\p{Cf}\p{Cs}\u2028\u2029]/gu, (found) =>
    found.split('').map(escape).join(''),
  );
}

// Standard output. gone: nobody reads it any more, as in `corvane-replay … | head`, which is no failure.
class Output {
  gone = false;
  failure = null;

  // onEnd: called when nothing more can be written.
  constructor(stream, onEnd) {
    this.stream = stream;
    this.onEnd = onEnd;
    stream.on('error', (error) => this.#end(error));
  }

  // Of the terminal; undefined without one. Some say 0 when they do not know.
  get columns() {
    return this.stream.columns === 0 ? 80 : this.stream.columns;
  }

  // Resolves when the text is on its way. Rejects with ERR_OUTPUT.
  async write(text) {
    if (!this.gone && !this.failure) {
      const error = await new Promise((resolve) => this.stream.write(text, resolve)).catch(
        (thrown) => thrown,
      );
      if (error) this.#end(error);
    }
    if (this.failure) throw this.failure;
  }

  // The same for JSON. On a terminal, no text may control it or change the direction of the text behind it.
  writeJson(text) {
    return this.write(this.stream.isTTY ? escapedJson(text) : text);
  }

  #end(error) {
    this.gone ||= error.code === 'EPIPE' || error.code === 'EOF';
    if (!this.gone) this.failure ??= outputFailure(error);
    this.onEnd();
  }
}

// Makes the folder if it is not there. Rejects with ERR_OUTPUT.
async function makeFolder(folder) {
  await fs.mkdir(folder, { recursive: true }).catch((error) => Promise.reject(outputFailure(error)));
}

// Puts text at `file`, replacing what was there; on failure nothing of it stays. Rejects with ERR_OUTPUT.
async function writeWhole(file, text) {
  const temporary = path.join(path.dirname(file), `.${randomUUID()}.tmp`);
  try {
    await fs.writeFile(temporary, text, { flag: 'wx' });
    await fs.rename(temporary, file);
  } catch (error) {
    await fs.rm(temporary, { force: true }).catch(() => {});
    throw outputFailure(error);
  }
}

module.exports = { Output, makeFolder, outputFailure, writeWhole };
