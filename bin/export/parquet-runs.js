'use strict';
// Parquet's encoding of small integers: runs of one value, and groups of 8 values packed bit by bit, lowest bit first.

// A run is worth it from here on.
const GROUP = 8;

function runLength(values, at) {
  const value = values[at];
  let end = at + 1;
  while (end < values.length && values[end] === value) ++end;
  return end - at;
}

// A run's header is its length, shifted by one bit; its value follows in whole bytes.
function writeRun(to, value, length, bits) {
  to.appendVarInt(length << 1);
  for (let shift = 0; shift < bits; shift += 8) to.appendUint8((value >>> shift) & 0xff);
}

// A header with the number of groups, and a one as its lowest bit; then the values. The last group is filled up with zeros.
function writePacked(to, values, start, end, bits) {
  const groups = Math.ceil((end - start) / GROUP);
  to.appendVarInt((groups << 1) | 1);
  const bytes = new Uint8Array(groups * bits);
  let at = 0;
  let pending = 0;
  let pendingBits = 0;
  for (let i = start; i < end; ++i) {
    pending |= values[i] << pendingBits;
    pendingBits += bits;
    while (pendingBits >= 8) {
      bytes[at++] = pending;
      pending >>= 8; // it has 31 bits at most; an unsigned shift would make it a float
      pendingBits -= 8;
    }
  }
  bytes[at] = pending; // nothing if there is no such byte
  to.appendBytes(bytes);
}

// values: an Int32Array of numbers from 0 to 2^bits - 1. bits: at most 24. to: hyparquet-writer's ByteWriter.
function writeRuns(to, values, bits) {
  let packed = 0; // what is before it is written
  let at = 0;
  while (at < values.length) {
    const length = runLength(values, at);
    if (length < GROUP) {
      at += GROUP; // a whole group, whatever follows
      continue;
    }
    if (packed < at) writePacked(to, values, packed, at, bits);
    writeRun(to, values[at], length, bits);
    at += length;
    packed = at;
  }
  if (packed < values.length) writePacked(to, values, packed, values.length, bits);
}

module.exports = { writeRuns };
