'use strict';
// node read-child.js PLAN: reads the plan's files through the add-on, one after the other from plan.first on, and
// leaves what each call returned, its time and the end of its standard output in plan.folder. A file may end this
// process; the parent then goes on with the next one.

const fs = require('node:fs');
const path = require('node:path');

const plan = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));
const addon = require(plan.addon);
for (let i = plan.first; i < plan.paths.length; ++i) {
  const began = process.hrtime.bigint();
  const outcome = {};
  try {
    outcome.text = addon.ReadCorvaneDemo(plan.paths[i]);
  } catch (error) {
    outcome.error = { name: error.name, message: error.message };
  }
  outcome.ms = Number(process.hrtime.bigint() - began) / 1e6;
  outcome.stdoutEnd = fs.fstatSync(1).size;
  fs.writeFileSync(path.join(plan.folder, `${i}.json`), JSON.stringify(outcome));
}
