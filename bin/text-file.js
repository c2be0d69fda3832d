'use strict';
// Texts that people make with the tools that they have: Windows writes some as UTF-16, and begins others with a byte order
// mark.

const evenPart = (bytes) => Buffer.from(bytes.subarray(0, bytes.length & ~1));

// bytes: a Buffer.
function textOf(bytes) {
  const [first, second] = bytes;
  if (first === 0xff && second === 0xfe) return bytes.toString('utf16le', 2);
  if (first === 0xfe && second === 0xff) return evenPart(bytes).swap16().toString('utf16le', 2);
  return bytes.toString('utf8').replace(/^\ufeff/, '');
}

module.exports = { textOf };
