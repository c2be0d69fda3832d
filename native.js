'use strict';
// The three functions, as the native add-on has them.

const { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher } = require('./load-addon.js')();

module.exports = { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher };
