'use strict';
// The program of the child processes. It is told what to do over the IPC channel and answers there. Its standard output
// takes the native add-on's own lines, which nobody reads; its standard error says why it ended.
//
//     first            { ready: true }
//     { path, key, maxDocumentBytes, facts, salvage }
//                      reads a replay; answers { text }, the document in UTF-8, and if they are wanted { facts }, JSON text
//                      as well; or { code, reason, hint }
//     { replays: [{ path, name }, …], key, maxDocumentBytes, salvage, reduce, damageNames }
//                      answers { results }, for each replay { reduced }, what reduce(match) of that module makes of the
//                      match, or { code, reason, hint }; when there is much, only for the first of them
//     { folder, key, maxDocumentBytes }
//                      watches the folder, or the demo folder; answers { watching: true } or { code, reason, hint }, then
//                      { path, text } or { path, code, reason, hint } for each result

const fs = require('node:fs');
const loadAddon = require('../load-addon.js');

// What is made of more text than this is sent before more is read.
const ANSWER_BYTES = 2 ** 22;

// The native side does not know why a file cannot be opened. Node.js fails in the same way, and knows.
function openFailure(path) {
  try {
    if (!fs.statSync(path).isFile()) return 'not a regular file';
    fs.closeSync(fs.openSync(path));
  } catch (error) {
    return error.message;
  }
}

// An error without a code means that another add-on was loaded.
function failure({ code, message, hint }) {
  if (code === undefined)
    return { code: 'ERR_CORVANE_ADDON', reason: `another add-on was loaded: ${message}` };
  return { code, reason: message.trim(), hint };
}

// A larger document never reaches the application, which would hold it twice and parse it. The facts count too: a file
// can name any number of unknown events.
function limited({ text, facts }, maxDocumentBytes) {
  const bytes = Buffer.byteLength(text) + (facts?.length ?? 0);
  if (bytes <= maxDocumentBytes) return facts === undefined ? { text } : { text, facts };
  return {
    code: 'ERR_DOCUMENT_TOO_LARGE',
    reason: `${bytes} bytes; maxDocumentBytes is ${maxDocumentBytes}`,
  };
}

function readFailure(error, path) {
  const { reason, ...rest } = failure(error);
  return { ...rest, reason: (rest.code === 'ERR_UNREADABLE' && openFailure(path)) || reason };
}

let addon;
const loaded = () => (addon ??= loadAddon());

function read({ path, key, maxDocumentBytes, facts = false, salvage = false, rows = false }) {
  try {
    const result = loaded().readReplayDocument(path, key, { facts, salvage, rows });
    return limited(facts ? result : { text: result }, maxDocumentBytes);
  } catch (error) {
    return readFailure(error, path);
  }
}

// Such as those of a text or an answer that is too long to be made.
const isOutOfMemory = ({ name, code, message }) =>
  name === 'RangeError' || code === 'ERR_STRING_TOO_LONG' || message.includes('out of memory');

// What goes wrong with one file must not end the child. The reading tells its own failures.
function attempt(action) {
  try {
    return action();
  } catch (error) {
    const code = isOutOfMemory(error) ? 'ERR_OUT_OF_MEMORY' : 'ERR_CORRUPT';
    return { code, reason: `nothing can be made of the document: ${error.message}` };
  }
}

// A row has 44 bytes at least, and the event that it stands for not much more than 500; long texts are whole in both. So only
// above a 16th of the limit must a text be made in full, to be measured.
function readRows(order) {
  const result = read({ ...order, facts: true, rows: true });
  const { code, text, facts } = result;
  const isTooLarge =
    code === 'ERR_DOCUMENT_TOO_LARGE' || 16 * text?.length + facts?.length > order.maxDocumentBytes;
  return isTooLarge ? read({ ...order, facts: true }) : result;
}

// What is made of many matches is made here, where all processors are at work.
function reduced(order, { path, name }, { reduce, damageNames }) {
  const result = readRows({ ...order, path });
  if (result.code !== undefined) return result;
  const { matchOfRows } = require('./event-rows.js');
  return { reduced: reduce(matchOfRows(result, { path: name, damageNames })), bytes: result.text.length };
}

function reducedBatch({ replays, reduce: file, damageNames, ...order }) {
  const { reduce } = require(file);
  const results = [];
  let bytes = 0;
  for (const replay of replays) {
    const result = attempt(() => reduced(order, replay, { reduce, damageNames }));
    results.push(result);
    bytes += result.bytes ?? 0;
    if (bytes > ANSWER_BYTES) break;
  }
  return { results };
}

// Answering fails if the answer cannot be cloned.
function work(order) {
  const failure = attempt(() => {
    answer(order.replays === undefined ? read(order) : reducedBatch(order));
  });
  if (failure !== undefined) answer(failure);
}

function watch({ folder, key, maxDocumentBytes }) {
  const onResult = (text, path, code) => {
    const result = code ? readFailure({ code, message: text }, path) : limited({ text }, maxDocumentBytes);
    answer({ path, ...result });
  };
  try {
    loaded().watchFolder(onResult, key, folder);
    answer({ watching: true });
  } catch (error) {
    answer(failure(error));
  }
}

// The parent may be gone. That is no error.
function answer(message) {
  process.send(message, () => {});
}

process.on('message', (order) => ('folder' in order ? watch(order) : work(order)));
process.on('disconnect', () => process.exit());
// A terminal's interrupt reaches parent and child. The parent decides.
for (const signal of ['SIGINT', 'SIGHUP']) process.on(signal, () => {});
answer({ ready: true });
