'use strict';
// The files of a part: a file for each table.

const { columnsOf } = require('./columns.js');
const { flush } = require('./files.js');
const { FORMATS } = require('./formats.js');
const { TABLES } = require('./tables.js');

const TABLE_NAMES = Object.keys(TABLES);

// files: one for each table, in their order. packs: as packed-match.js has them.
async function writeTables(format, files, packs) {
  const columns = columnsOf(packs);
  for (const [i, table] of TABLE_NAMES.entries()) {
    await FORMATS[format].write(files[i], TABLES[table], columns[table]);
    flush(files[i]);
  }
}

// Copies the rows that are kept. kept: for each table, and for each of its rows, whether it is kept.
async function copyTables(format, sources, targets, kept) {
  for (const [i, table] of TABLE_NAMES.entries()) {
    await FORMATS[format].copy(sources[i], targets[i], TABLES[table], (row) => kept[i][row]);
    flush(targets[i]);
  }
}

module.exports = { TABLE_NAMES, copyTables, writeTables };
