'use strict';
// A row group of Columns. hyparquet-writer takes lists of cells and looks at each cell many times; here the numbers go into
// the pages as they are. The library's own functions write what is around them.

const { writeRuns } = require('./parquet-runs.js');

const PARTS = ['bytewriter', 'datapage', 'delta', 'dictionary'];

async function library() {
  const parts = await Promise.all(PARTS.map((part) => import(`hyparquet-writer/src/${part}.js`)));
  return Object.assign({}, ...parts);
}

// Below this, a list of all numbers is a small dictionary.
const MOST_SMALL = 4096;

// Little-endian, which is Parquet's order, as every processor is that the add-on is built for.
const bytesOf = ({ buffer, byteOffset, byteLength }) => new Uint8Array(buffer, byteOffset, byteLength);

function areEqual(a, b) {
  for (let i = 0; i < a.length; ++i) if (a[i] !== b[i]) return false;
  return true;
}

// Integers of 64 bits, the lower half first, without a BigInt for each.
function halvesOf(numbers) {
  const halves = new Uint32Array(2 * numbers.length);
  for (let i = 0; i < numbers.length; ++i) {
    halves[2 * i] = numbers[i];
    halves[2 * i + 1] = Math.floor(numbers[i] / 2 ** 32);
  }
  return halves;
}

function firstNull(numbers) {
  let i = 0;
  while (i < numbers.length && !Number.isNaN(numbers[i])) ++i;
  return i;
}

// Moves the numbers that are not null together, at the beginning, and writes for each row whether it has one (1) or not (0).
// Returns how many there are.
function removeNulls(numbers, levels) {
  let count = firstNull(numbers); // most columns have none
  levels.fill(1, 0, count);
  for (let i = count; i < numbers.length; ++i) {
    const number = numbers[i];
    levels[i] = Number.isNaN(number) ? 0 : 1;
    numbers[count] = number;
    count += levels[i];
  }
  return count;
}

// The largest of the numbers; undefined if it is not small, or one is below zero.
function lastSmall(numbers) {
  let last = 0;
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i];
    if (!(number >= 0 && number < MOST_SMALL)) return undefined;
    if (number > last) last = number;
  }
  return last;
}

// The meanings that occur, in the order in which they first do; writes for each number the place of its meaning.
function dictionaryOf(numbers, meanings, indexes) {
  const places = new Int32Array(meanings.length).fill(-1);
  const dictionary = [];
  for (let i = 0; i < numbers.length; ++i) {
    const number = numbers[i];
    if (places[number] < 0) places[number] = dictionary.push(meanings[number]) - 1;
    indexes[i] = places[number];
  }
  return dictionary;
}

const numbersUpTo = (last) => Array.from({ length: last + 1 }, (_, i) => i);

// For each physical type: writes the values of a column to a page, and returns the encoding. numbers: without nulls.
// integers: a block of the same length. meanings: see column.js.
const ENCODERS = {
  INT32(page, { numbers, integers }) {
    integers.set(numbers);
    if (!areEqual(integers, numbers)) throw new RangeError('an integer has more than 32 bits');
    page.appendBytes(bytesOf(integers));
    return 'PLAIN';
  },
  // Times differ little from row to row.
  INT64(page, { numbers, integers }, { deltaBinaryPack }) {
    integers.set(numbers);
    if (areEqual(integers, numbers)) {
      deltaBinaryPack(page, integers, 'INT64');
      return 'DELTA_BINARY_PACKED';
    }
    page.appendBytes(bytesOf(halvesOf(numbers)));
    return 'PLAIN';
  },
  // Positions do not repeat, so a dictionary would only make them larger.
  DOUBLE(page, { numbers }) {
    page.appendBytes(bytesOf(numbers));
    return 'PLAIN';
  },
  BOOLEAN(page, { numbers, integers, meanings }, { ByteWriter }) {
    const runs = new ByteWriter();
    for (let i = 0; i < numbers.length; ++i) integers[i] = Number(meanings[numbers[i]]);
    writeRuns(runs, integers, 1);
    page.appendUint32(runs.offset);
    page.appendBytes(runs.getBytes());
    return 'RLE';
  },
};

// integers: places in the dictionary.
function writeIndexes(page, { integers, dictionary }) {
  const bits = Math.ceil(Math.log2(dictionary.length));
  page.appendUint8(bits);
  writeRuns(page, integers, bits);
  return 'RLE_DICTIONARY';
}

// Writes columns one after the other in the same few blocks of memory: new ones for each column
// would leave the processor's caches each time.
class RowGroup {
  #to;
  #library;
  #numbers;
  #integers;
  #levels;
  #page;

  // to: the file's ByteWriter.
  constructor(to, library, rows) {
    this.#to = to;
    this.#library = library;
    this.#numbers = new Float64Array(rows);
    this.#integers = new Int32Array(rows);
    this.#levels = new Int32Array(rows);
    this.#page = new library.ByteWriter(8 * rows + 1024);
  }

  // element: the column, as the schema has it. Returns its chunk, as the file's metadata tell it.
  writeChunk(element, column) {
    const start = this.#to.offset;
    const values = this.#valuesOf(column, element);
    if (element.repetition_type === 'REQUIRED' && values.numbers.length < column.length)
      throw new Error(`${element.name} may not be null`);
    const { dictionary } = values;
    if (dictionary) this.#library.writeDictionaryPage(this.#to, { element, compressors: {} }, dictionary);
    const dataStart = this.#to.offset;
    const encoding = this.#writePage(element, values);
    const size = BigInt(this.#to.offset - start);
    const meta_data = {
      type: element.type,
      encodings: dictionary ? ['PLAIN', encoding] : [encoding],
      path_in_schema: [element.name],
      codec: 'UNCOMPRESSED',
      num_values: BigInt(column.length),
      total_compressed_size: size,
      total_uncompressed_size: size,
      data_page_offset: BigInt(dataStart),
      dictionary_page_offset: dictionary ? BigInt(start) : undefined,
    };
    return { meta_data, file_offset: BigInt(start) };
  }

  #valuesOf({ write, meanings }, { type }) {
    write(this.#numbers);
    const count = removeNulls(this.#numbers, this.#levels);
    const numbers = this.#numbers.subarray(0, count);
    const integers = this.#integers.subarray(0, count);
    const dictionary = this.#dictionaryOf(numbers, integers, meanings, type);
    return { numbers, integers, meanings, dictionary };
  }

  // undefined for a column that is better without.
  #dictionaryOf(numbers, integers, meanings, type) {
    if (numbers.length === 0 || type === 'BOOLEAN') return undefined;
    if (meanings !== undefined) return dictionaryOf(numbers, meanings, integers);
    const last = type === 'INT32' ? lastSmall(numbers) : undefined;
    if (last === undefined) return undefined;
    integers.set(numbers);
    return numbersUpTo(last);
  }

  // A data page of version 2: levels, then values, neither compressed. Returns the values' encoding.
  #writePage(element, values) {
    const rows = this.#levels.length;
    const count = values.numbers.length;
    const page = this.#page;
    page.offset = page.index = 0; // begins anew
    const isOptional = element.repetition_type === 'OPTIONAL';
    if (isOptional) writeRuns(page, this.#levels, 1);
    const levelBytes = page.offset;
    const encode = values.dictionary ? writeIndexes : ENCODERS[element.type];
    const encoding = count === 0 ? 'PLAIN' : encode(page, values, this.#library);
    this.#library.writePageHeader(this.#to, {
      type: 'DATA_PAGE_V2',
      uncompressed_page_size: page.offset,
      compressed_page_size: page.offset,
      data_page_header_v2: {
        num_values: rows,
        num_nulls: rows - count,
        num_rows: rows,
        encoding,
        definition_levels_byte_length: levelBytes,
        repetition_levels_byte_length: 0,
        is_compressed: false,
      },
    });
    this.#to.appendBytes(page.getBytes());
    return encoding;
  }
}

// writer: the file's ParquetWriter, which knows nothing of the rows yet. elements: the columns, as its schema has them.
async function writeRowGroup(writer, elements, columns) {
  const [{ length }] = columns;
  if (length === 0) return; // a file without rows has no row group
  const to = writer.writer;
  const start = to.offset;
  const group = new RowGroup(to, await library(), length);
  const chunks = columns.map((column, i) => group.writeChunk(elements[i], column));
  const size = BigInt(to.offset - start);
  const num_rows = BigInt(length);
  writer.num_rows += num_rows;
  writer.row_groups.push({
    columns: chunks,
    num_rows,
    total_byte_size: size,
    total_compressed_size: size,
  });
}

module.exports = { writeRowGroup };
