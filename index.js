'use strict';
// The package's three functions.

module.exports = require('./installed.js')('./native.js');
