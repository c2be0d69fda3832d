// Reads a replay in every way the package offers and compares what comes.
import assert from 'node:assert/strict';
import { createRequire } from 'node:module';
import { resolve } from 'node:path';
import { ReadCorvaneDemo } from 'corvane_napi';
import { readReplay } from 'corvane_napi/client';

const require = createRequire(import.meta.url);
assert.equal(require('corvane_napi').ReadCorvaneDemo, ReadCorvaneDemo);

const file = resolve(process.argv[2]); // "Creation" has the path as it is given

const document = JSON.parse(Buffer.from(ReadCorvaneDemo(file), 'latin1').toString('utf8'));
assert.deepEqual(await readReplay(file), document);
assert.deepEqual(await require('corvane_napi/client').readReplay(file), document);
// What the command line needs is not loaded with the rest.
const others = Object.keys(require.cache).filter((name) => !/node_modules.corvane_napi\b/.test(name));
assert.deepEqual(others, []);
console.log(`${document.events.filter(({ evtName }) => evtName === 'playerElim').length} eliminations`);
