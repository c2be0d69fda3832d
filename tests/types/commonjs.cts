// The same package through require, and what it does not publish.
import corvane = require('corvane_napi');
import manifest = require('corvane_napi/package.json');

const read: (path: string) => string = corvane.ReadCorvaneDemo;
const version: string = manifest.version;
// @ts-expect-error not a function of the package
corvane.readReplayDocument;

export = { read, version };
