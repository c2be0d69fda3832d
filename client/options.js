'use strict';
// Checks what callers pass, and brings it into the form that the rest of the client uses. Throws a ReplayError
// ERR_INVALID_ARGUMENT for a wrong argument.

const { constants } = require('node:buffer');
const os = require('node:os');
const path = require('node:path');
const { fileURLToPath } = require('node:url');
const { isAnyArrayBuffer } = require('node:util/types');
const v8 = require('node:v8');
const { ReplayError } = require('./replay-error.js');

const MAX_CONCURRENCY = 64;
const MAX_TIMER_MS = 2 ** 31 - 1;
const AES_KEY_BYTES = [16, 24, 32];

// Far more than any match needs. Parsed, a document takes several times its text, and a small heap must survive that.
const DEFAULT_DOCUMENT_BYTES = Math.min(2 ** 26, Math.floor(v8.getHeapStatistics().heap_size_limit / 16));

const invalid = (reason) => new ReplayError('ERR_INVALID_ARGUMENT', reason);

// The absolute path: a child keeps the working folder in which it was started.
function filePath(value, name = 'path') {
  if (typeof value === 'string' && value !== '') return path.resolve(value);
  try {
    if (value instanceof URL) return fileURLToPath(value);
  } catch (error) {
    throw invalid(error.message);
  }
  throw invalid(`${name} must be a string or a file: URL`);
}

// A copy, since reading starts later; empty when there is no key.
function keyBuffer(key) {
  if (key === undefined) return new ArrayBuffer(0);
  const bytes = ArrayBuffer.isView(key)
    ? new Uint8Array(key.buffer, key.byteOffset, key.byteLength)
    : isAnyArrayBuffer(key) && new Uint8Array(key);
  if (bytes && AES_KEY_BYTES.includes(bytes.length)) return Uint8Array.from(bytes).buffer;
  throw invalid('key must be an ArrayBuffer or a view of one, of 16, 24 or 32 bytes');
}

function abortSignal(signal) {
  if (signal === undefined) return signal;
  if (typeof signal?.aborted === 'boolean' && typeof signal.addEventListener === 'function') return signal;
  throw invalid('signal must be an AbortSignal');
}

function milliseconds(value, name) {
  if (value === undefined) return undefined;
  if (typeof value === 'number' && value > 0 && value <= MAX_TIMER_MS) return value;
  throw invalid(`${name} must be a number of milliseconds, above 0 and at most ${MAX_TIMER_MS}`);
}

function documentBytes(limit = DEFAULT_DOCUMENT_BYTES) {
  if (Number.isInteger(limit) && limit >= 1 && limit <= constants.MAX_STRING_LENGTH) return limit;
  throw invalid(`maxDocumentBytes must be a whole number from 1 to ${constants.MAX_STRING_LENGTH}`);
}

const processors = () => Math.min(os.availableParallelism?.() ?? os.cpus().length, MAX_CONCURRENCY);

function concurrency(count = processors()) {
  if (Number.isInteger(count) && count >= 1 && count <= MAX_CONCURRENCY) return count;
  throw invalid(`concurrency must be a whole number from 1 to ${MAX_CONCURRENCY}`);
}

function execPath(program = process.execPath) {
  if (typeof program === 'string' && program !== '') return program;
  throw invalid('execPath must be the path of a program');
}

// A list of paths, not one: a string would be read as the list of its characters.
function pathList(paths) {
  const isIterable = [Symbol.iterator, Symbol.asyncIterator].some(
    (kind) => typeof paths?.[kind] === 'function',
  );
  if (typeof paths === 'object' && isIterable) return paths;
  throw invalid('paths must be an iterable or an async iterable of paths');
}

// given: an object with these members only, so that a misspelt one is noticed.
function members(given = {}, names) {
  if (typeof given !== 'object' || given === null) throw invalid('options must be an object');
  const unknown = Object.keys(given).find((name) => !names.includes(name));
  if (unknown === undefined) return given;
  throw invalid(`there is no option ${unknown}; there are ${names.join(', ')}`);
}

const WATCH = ['key', 'signal', 'maxDocumentBytes'];
const READ = [...WATCH, 'timeout'];

// Checks the options that reading and watching share.
const checked = ({ key, signal, timeout, maxDocumentBytes, ...more }) => ({
  ...more,
  key: keyBuffer(key),
  signal: abortSignal(signal),
  timeout: milliseconds(timeout, 'timeout'),
  maxDocumentBytes: documentBytes(maxDocumentBytes),
});

// more: names of options that the caller checks.
const limits = (given, more = []) => checked(members(given, [...READ, ...more]));

// folder: undefined for the demo folder. more: names of options that the caller checks.
function watchLimits(given, more = []) {
  const { folder, ...rest } = checked(members(given, [...WATCH, 'folder', ...more]));
  return { ...rest, folder: folder === undefined ? undefined : filePath(folder, 'folder') };
}

// The options of watchMatches. endAfterMs: undefined for the default.
function matchWatchLimits(given) {
  const { endAfterMs, damageNames, ...rest } = watchLimits(given, ['endAfterMs', 'damageNames']);
  const end = milliseconds(endAfterMs, 'endAfterMs');
  return { ...rest, endAfterMs: end, damageNames: namesOf(damageNames) };
}

function namesOf(damageNames) {
  if (damageNames === undefined || Object(damageNames) === damageNames) return damageNames;
  throw invalid('damageNames must be an object');
}

// The options of readMatch.
function matchLimits(given, more = []) {
  const { salvage = false, damageNames, ...rest } = limits(given, ['salvage', 'damageNames', ...more]);
  if (typeof salvage !== 'boolean') throw invalid('salvage must be true or false');
  return { ...rest, salvage, damageNames: namesOf(damageNames) };
}

const clientOptions = (given) => members(given, ['concurrency', 'execPath']);

module.exports = {
  clientOptions,
  concurrency,
  execPath,
  filePath,
  limits,
  matchLimits,
  matchWatchLimits,
  members,
  pathList,
  watchLimits,
};
