'use strict';
// The file formats of an export. Each has
//
//     extension
//     write(file, columns, data)            data: for each column a Column
//     copy(source, target, columns, keep)   the rows of a file for which keep(number) holds, in another one

const fs = require('node:fs');
const { parquet } = require('./parquet.js');

// What a spreadsheet takes for the start of a formula, wide forms included.
const FORMULA = /^\s*[=+\-@\t\r\uff1d\uff0b\uff0d\uff20]/;
// If the list separator is not the comma, a spreadsheet splits a cell at these characters.
const DIVIDED = /([;\t|]\s*)(?=[=+\-@])/g;

const timestampText = (microseconds) => {
  const ms = Math.floor(microseconds / 1000);
  return new Date(ms).toISOString().slice(0, -1) + String(microseconds - ms * 1000).padStart(3, '0');
};

// JSON has no 64-bit numbers: what a double cannot hold becomes text.
function jsonCell(cell, { type }) {
  if (cell === null) return null;
  if (type === 'timestamp') return timestampText(cell);
  return typeof cell === 'bigint' ? String(cell) : cell;
}

const ndjsonLine = (columns, row) =>
  JSON.stringify(Object.fromEntries(columns.map((column, i) => [column.name, jsonCell(row[i], column)])));

// A leading apostrophe makes a spreadsheet take a text as text. A row is one line, whatever is in its cells.
function csvCell(cell, { type }) {
  if (cell === null) return null;
  if (type === 'timestamp') return timestampText(cell);
  if (type !== 'text') return String(cell);
  const text = cell.replace(/[\r\n]+/g, ' ').replace(DIVIDED, "$1'");
  return FORMULA.test(text) ? `'${text}` : text;
}

function rowsOf(data) {
  const cells = data.map((column) => column.cells());
  return cells[0].map((_, i) => cells.map((column) => column[i]));
}

// Formats with one line per row, behind a header.
function lineFormat({ extension, headerOf, linesOf }) {
  const writeLines = (file, columns, lines) =>
    fs.writeFileSync(file, [...headerOf(columns), ...lines].map((line) => line + '\n').join(''));
  return {
    extension,
    write: async (file, columns, data) => writeLines(file, columns, linesOf(columns, rowsOf(data))),
    async copy(source, target, columns, keep) {
      const lines = fs.readFileSync(source, 'utf8').split('\n').slice(headerOf(columns).length, -1);
      writeLines(
        target,
        columns,
        lines.filter((_, i) => keep(i)),
      );
    },
  };
}

function csvLines(columns, rows) {
  const { stringify } = require('csv-stringify/sync');
  const cells = rows.map((row) => row.map((cell, i) => csvCell(cell, columns[i])));
  return cells.length === 0 ? [] : stringify(cells).slice(0, -1).split('\n');
}

const FORMATS = {
  parquet,
  csv: lineFormat({
    extension: 'csv',
    headerOf: (columns) => [columns.map(({ name }) => name).join(',')],
    linesOf: csvLines,
  }),
  ndjson: lineFormat({
    extension: 'ndjson',
    headerOf: () => [],
    linesOf: (columns, rows) => rows.map((row) => ndjsonLine(columns, row)),
  }),
};

module.exports = { FORMATS, ndjsonLine };
