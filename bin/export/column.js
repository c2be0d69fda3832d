'use strict';
// A column of a table, as numbers: NaN stands for null. With `meanings`, the numbers are places in that list; without, they
// are the cells. Texts, booleans and BigInts have meanings.

class Column {
  // length: how many rows. write(to): writes the numbers to a Float64Array of that length. meanings: a list, or
  // undefined.
  constructor(length, write, meanings) {
    this.length = length;
    this.write = write;
    this.meanings = meanings;
  }

  cells() {
    const { meanings } = this;
    const numbers = new Float64Array(this.length);
    this.write(numbers);
    return Array.from(numbers, (number) => {
      if (Number.isNaN(number)) return null;
      return meanings === undefined ? number : meanings[number];
    });
  }
}

// Texts, or other cells that are no numbers, numbered in the order in which they come.
class Numbering {
  list = [];
  #numbers = new Map();

  // NaN for null.
  numberOf(cell) {
    if (cell === null) return NaN;
    let number = this.#numbers.get(cell);
    if (number === undefined) this.#numbers.set(cell, (number = this.list.push(cell) - 1));
    return number;
  }
}

// cells: of one type, or null.
function columnOf(cells) {
  const numbering = new Numbering();
  const numbers = cells.map((cell) => (typeof cell === 'number' ? cell : numbering.numberOf(cell)));
  return new Column(
    cells.length,
    (to) => to.set(numbers),
    numbering.list.length > 0 ? numbering.list : undefined,
  );
}

module.exports = { Column, Numbering, columnOf };
