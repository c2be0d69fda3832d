'use strict';
// The sample replays are what their script writes, and read as the match that it tells.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { samples } = require('../../samples/make-samples.js');
const { readPaths, utf8Text } = require('../support/reads.js');

const names = Object.keys(samples);
const file = (name) => path.join(__dirname, '..', '..', 'samples', name);
const outcomes = readPaths(names.map(file));
const documents = outcomes.map(({ text }) => JSON.parse(utf8Text(text)));

test('the samples are those that their script writes', () => {
  for (const name of names) assert.ok(fs.readFileSync(file(name)).equals(samples[name]), name);
});

test('the plain sample', () => {
  const [document] = documents;
  assert.equal(outcomes[0].stdout, '\n');
  assert.equal(document.ReplayFileMeta.FriendlyName, 'FinaleaufÎlotCorvane\0');
  assert.deepEqual(document.header.levels, ['/Game/Maps/Lobby', '/Game/Maps/Corvane_Isle']);
  const told = document.events.map(({ evtName, knocked, eventMeta, ...event }) => {
    const who = event.killedBot ?? (event.killed && 'player');
    return [eventMeta.time1, evtName, who, knocked].filter((value) => value !== undefined).join(' ');
  });
  assert.deepEqual(told, [
    '74250 playerElim player true',
    '80900 playerElim player false',
    '312600 playerElim Unnamed Bot false',
    '547000 playerElim Bot_Søren\0 false',
    '988333 playerElim player true',
    '1001050 playerElim player false',
    '1248500 playerElim player false',
    '1260400 AthenaMatchStats',
    '1260400 AthenaMatchTeamStats',
  ]);
});

test('the encrypted sample holds the same match', () => {
  const [plain, encrypted] = documents;
  assert.ok(encrypted.ReplayFileMeta.bEncrypted);
  assert.match(encrypted.ReplayFileMeta.EncryptionKey, /^([0-9a-f]{2} ){32}$/);
  assert.deepEqual(encrypted.events, plain.events);
  assert.deepEqual(encrypted.header, plain.header);
});
