// node print-replay.js ADDON FILE: prints the document that the add-on reads from a replay.
'use strict';

const [addon, file] = process.argv.slice(2);
const text = require(addon).ReadCorvaneDemo(file);
if (text === '') {
  console.error(`not a readable replay: ${file}`);
  process.exitCode = 1;
} else {
  // Each unit of the text carries one byte of UTF-8 in its low half.
  process.stdout.write(Buffer.from(text, 'latin1').toString('utf8') + '\n');
}
