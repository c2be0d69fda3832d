'use strict';
// Parquet files: a file is one row group, with one page for each column, which engines read as a whole.

const fs = require('node:fs');
const { columnOf } = require('./column.js');
const { writeRowGroup } = require('./parquet-row-group.js');

const TYPES = {
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

const elementOf = ({ name, type, required }) => ({
  name,
  repetition_type: required ? 'REQUIRED' : 'OPTIONAL',
  ...TYPES[type],
});

async function write(file, columns, data) {
  const { ByteWriter, ParquetWriter } = await import('hyparquet-writer');
  const bytes = new ByteWriter(2 ** 20);
  const elements = columns.map(elementOf);
  const schema = [{ name: 'root', num_children: columns.length }, ...elements];
  const writer = new ParquetWriter({
    ...{ writer: bytes, schema, codec: 'UNCOMPRESSED', statistics: false, createdBy: 'corvane-replay' },
  });
  await writeRowGroup(writer, elements, data);
  writer.finish();
  fs.writeFileSync(file, bytes.getBytes());
}

async function copy(source, target, columns, keep) {
  const { parquetReadObjects } = await import('hyparquet');
  const { buffer, byteOffset, byteLength } = fs.readFileSync(source);
  const file = buffer.slice(byteOffset, byteOffset + byteLength);
  const parsers = { timestampFromMicroseconds: (value) => value };
  const objects = await parquetReadObjects({ file, parsers });
  const kept = objects.filter((_, i) => keep(i));
  const data = columns.map(({ name }) => columnOf(kept.map((object) => object[name] ?? null)));
  await write(target, columns, data);
}

module.exports = { parquet: { extension: 'parquet', write, copy } };
