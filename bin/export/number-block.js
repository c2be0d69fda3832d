'use strict';
// Blocks of numbers in few bytes, without loss, for their way between processes. A match takes less than half of what it would
// as doubles, and each process and thread on that way copies it. A block has fields, and each field as many numbers as the
// others.
//
//     forms      a byte for each field: the index of its form; filled up to 8 bytes
//     fields     one after the other in its form, each filled up to 8 bytes

// Integers: the number above the most stands for NaN. Positions, in metres: the engine has them in centimetres, as floats.
const INTEGERS = [
  { Type: Uint8Array, most: 2 ** 8 - 2 },
  { Type: Uint16Array, most: 2 ** 16 - 2 },
  { Type: Uint32Array, most: 2 ** 32 - 2 },
];
const TYPES = [...INTEGERS.map(({ Type }) => Type), Float32Array, Float64Array];
const POSITIONS = 3;
const DOUBLES = 4;

const filledUp = (bytes) => 8 * Math.ceil(bytes / 8);

function arePositions(numbers) {
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i];
    if (!Number.isNaN(number) && !Object.is(Math.fround(number * 100) / 100, number)) return false;
  }
  return true;
}

// The form with the fewest bytes.
function formOf(numbers) {
  let most = 0;
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i];
    if (Number.isNaN(number)) continue;
    if (!Object.is(number >>> 0, number)) return arePositions(numbers) ? POSITIONS : DOUBLES;
    if (number > most) most = number;
  }
  const form = INTEGERS.findIndex((integers) => most <= integers.most);
  return form < 0 ? DOUBLES : form;
}

function writeField(to, form, numbers) {
  if (form === DOUBLES) to.set(numbers);
  else if (form === POSITIONS) for (let i = 0; i < to.length; ++i) to[i] = numbers[i] * 100;
  else {
    const none = INTEGERS[form].most + 1;
    for (let i = 0; i < to.length; ++i) to[i] = Number.isNaN(numbers[i]) ? none : numbers[i];
  }
}

function readField(to, form, numbers) {
  if (form === DOUBLES) to.set(numbers);
  else if (form === POSITIONS) for (let i = 0; i < to.length; ++i) to[i] = numbers[i] / 100;
  else {
    const { most } = INTEGERS[form];
    for (let i = 0; i < to.length; ++i) to[i] = numbers[i] > most ? NaN : numbers[i];
  }
}

let scratch = new ArrayBuffer(0);

// block: a Float64Array of the fields, one after the other. Returns bytes that are valid until the next call.
function packNumbers(block, fields) {
  const most = filledUp(fields) + block.byteLength;
  if (scratch.byteLength < most) scratch = new ArrayBuffer(most);
  const forms = new Uint8Array(scratch, 0, fields);
  const count = block.length / fields;
  let at = filledUp(fields);
  for (let i = 0; i < fields; ++i) {
    const numbers = block.subarray(i * count, (i + 1) * count);
    forms[i] = formOf(numbers);
    const to = new TYPES[forms[i]](scratch, at, count);
    writeField(to, forms[i], numbers);
    at += filledUp(to.byteLength);
  }
  return new Uint8Array(scratch, 0, at);
}

// bytes: what packNumbers() has made, at a multiple of 8 in their buffer, and anything behind it. count: how many numbers each
// field has. Returns the block, and what is behind it.
function unpackNumbers(bytes, fields, count) {
  const { buffer, byteOffset } = bytes;
  const forms = new Uint8Array(buffer, byteOffset, fields);
  const block = new Float64Array(fields * count);
  let at = byteOffset + filledUp(fields);
  for (let i = 0; i < fields; ++i) {
    const numbers = new TYPES[forms[i]](buffer, at, count);
    readField(block.subarray(i * count, (i + 1) * count), forms[i], numbers);
    at += filledUp(numbers.byteLength);
  }
  return { block, rest: bytes.subarray(at - byteOffset) };
}

module.exports = { packNumbers, unpackNumbers };
