'use strict';
// node samples/watch.js: prints a line for each result of the demo folder, until a match has ended. Run it, then
// samples/grow-replay.js (or the game) beside it.

const path = require('node:path');
const { StartCorvaneWatcher, StopCorvaneWatcher } = require('..');

function line({ Creation, GameAlive, header, events = [] }) {
  if (GameAlive) return 'the game goes on';
  const told = [];
  if (Creation) told.push(path.basename(Creation.fileName));
  if (header) told.push(`on ${header.levels.at(-1)}`);
  told.push(...events.map(({ evtName, eventMeta }) => `${evtName} at ${eventMeta.time1 / 1000} s`));
  return told.join(', ') || 'nothing new';
}

function onResult(text) {
  const document = JSON.parse(text);
  // There is no demo folder before the first match.
  if (document.err) return setTimeout(watch, 1000);
  console.log(line(document));
  // With the watcher stopped nothing keeps this process alive.
  const ended = document.events?.some(({ evtName }) => evtName === 'AthenaMatchTeamStats');
  if (ended) StopCorvaneWatcher();
}

function watch() {
  StartCorvaneWatcher(onResult, new ArrayBuffer(0));
}

watch();
console.log('waiting for a match');
