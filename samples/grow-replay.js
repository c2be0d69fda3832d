'use strict';
// node samples/grow-replay.js [MILLISECONDS]: plays the game's part. Writes the sample replay into the demo folder, after
// two seconds one chunk of it each second (or as often as said), and takes it away in the end.

const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { setTimeout: sleep } = require('node:timers/promises');

// As the add-on finds it: on Windows in the registry, which LOCALAPPDATA follows.
const { LOCALAPPDATA, XDG_DATA_HOME } = process.env;
const local = LOCALAPPDATA || XDG_DATA_HOME || path.join(os.homedir(), '.local', 'share');
const demos = path.join(local, 'CorvaneGame', 'Saved', 'Demos');

// Where each chunk ends: its type and the size of its payload, 4 bytes each, then the payload.
function chunkEnds(replay, firstChunk) {
  const ends = [];
  for (let end = firstChunk; end < replay.length; ) {
    end += 8 + replay.readInt32LE(end + 4);
    ends.push(end);
  }
  return ends;
}

// The information block: five numbers, the name with its length (negative if in UTF-16), then bIsLive, Timestamp,
// bCompressed, bEncrypted, and the key with its length.
function informationBlock(replay) {
  const nameLength = replay.readInt32LE(20);
  const liveAt = 24 + (nameLength < 0 ? -2 * nameLength : nameLength);
  const keyLengthAt = liveAt + 4 + 8 + 4 + 4;
  return { liveAt, end: keyLengthAt + 4 + replay.readInt32LE(keyLengthAt) };
}

// While the game records, the file says so.
function setLive(file, liveAt, isLive) {
  const descriptor = fs.openSync(file, 'r+');
  fs.writeSync(descriptor, Buffer.from([isLive ? 1 : 0]), 0, 1, liveAt);
  fs.closeSync(descriptor);
}

async function play(milliseconds) {
  const replay = fs.readFileSync(path.join(__dirname, 'match.replay'));
  const file = path.join(demos, 'growing.replay');
  const { liveAt, end: firstChunk } = informationBlock(replay);
  let written = firstChunk;
  fs.mkdirSync(demos, { recursive: true });
  fs.writeFileSync(file, replay.subarray(0, written));
  setLive(file, liveAt, true);
  await sleep(milliseconds);
  for (const end of chunkEnds(replay, written)) {
    await sleep(milliseconds);
    fs.appendFileSync(file, replay.subarray(written, end));
    written = end;
  }
  setLive(file, liveAt, false);
  await sleep(milliseconds);
  fs.rmSync(file);
}

play(Number(process.argv[2] ?? 1000));
