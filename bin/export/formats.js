'use strict';
// The file formats of an export. Each has
//
//     extension
//     write(file, columns, cells)           cells: for each column its cells
//     copy(source, target, columns, keep)   the rows of a file for which keep(number) holds, in another one

const fs = require('node:fs');

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

const rowsOf = (cells) => cells[0].map((_, i) => cells.map((column) => column[i]));

// Formats with one line per row, behind a header.
function lineFormat({ extension, headerOf, linesOf }) {
  const writeLines = (file, columns, lines) =>
    fs.writeFileSync(file, [...headerOf(columns), ...lines].map((line) => line + '\n').join(''));
  return {
    extension,
    write: async (file, columns, cells) => writeLines(file, columns, linesOf(columns, rowsOf(cells))),
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

const PARQUET_TYPES = {
  text: { type: 'BYTE_ARRAY', converted_type: 'UTF8', logical_type: { type: 'STRING' } },
  integer: { type: 'INT32' },
  long: { type: 'INT64' },
  double: { type: 'DOUBLE' },
  boolean: { type: 'BOOLEAN' },
  // The game writes the time of its own clock, without a zone.
  timestamp: {
    type: 'INT64',
    logical_type: { type: 'TIMESTAMP', isAdjustedToUTC: false, unit: 'MICROS' },
  },
};

const parquetSchema = (columns) => [
  { name: 'root', num_children: columns.length },
  ...columns.map(({ name, type, required }) => ({
    name,
    repetition_type: required ? 'REQUIRED' : 'OPTIONAL',
    ...PARQUET_TYPES[type],
  })),
];

// A fixed encoding for each type: trying which one is smallest takes longer than writing. Integers differ little from
// row to row. Positions and times do not repeat, so a dictionary would only make them larger.
const DIFFERENCES = { encoding: 'DELTA_BINARY_PACKED', codec: 'UNCOMPRESSED' };
const PLAIN = { encoding: 'PLAIN', codec: 'UNCOMPRESSED' };
const ENCODINGS = { integer: DIFFERENCES, long: DIFFERENCES, timestamp: PLAIN, double: PLAIN };

async function writeParquet(file, columns, cells) {
  const { parquetWriteBuffer } = await import('hyparquet-writer');
  const buffer = parquetWriteBuffer({
    schema: parquetSchema(columns),
    columnData: columns.map(({ name, type }, i) => ({ name, data: cells[i], ...ENCODINGS[type] })),
    rowGroupSize: Infinity,
    pageSize: 0, // a part is one row group of a page for each column, which engines read as a whole
    statistics: false,
    createdBy: 'corvane-replay',
  });
  fs.writeFileSync(file, new Uint8Array(buffer));
}

async function copyParquet(source, target, columns, keep) {
  const { parquetReadObjects } = await import('hyparquet');
  const { buffer, byteOffset, byteLength } = fs.readFileSync(source);
  const file = buffer.slice(byteOffset, byteOffset + byteLength);
  const parsers = { timestampFromMicroseconds: (value) => value };
  const objects = await parquetReadObjects({ file, parsers });
  const kept = objects.filter((_, i) => keep(i));
  const cells = columns.map(({ name }) => kept.map((object) => object[name] ?? null));
  await writeParquet(target, columns, cells);
}

const FORMATS = {
  parquet: { extension: 'parquet', write: writeParquet, copy: copyParquet },
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
