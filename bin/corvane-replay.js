#!/usr/bin/env node
'use strict';
// corvane-replay: replays on the command line. Data goes to standard output, everything else to standard error.

const { main } = require('./program.js');

main(process.argv).then((status) => (process.exitCode = status));
