'use strict';
// corvane_napi/client.

module.exports = require('../installed.js')('./client/main.js');
