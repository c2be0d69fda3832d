'use strict';
// Eliminations that the native side has written as rows: arrays of their values in the order of the document's keys, null for
// a key that the event does not have. Of a float a row has the bits, XOR those of the float at the same place in the row
// before. A text that an earlier row has had is a number: that of the texts in rows, counted from 0.

const { matchOf } = require('./match.js');

// Where a row has the floats.
const FLOATS = [6, 7, 8, 11, 12, 13];

class Rows {
  #bits = new Uint32Array(FLOATS.length);
  #floats = new Float32Array(this.#bits.buffer);
  #texts = [];

  // By numbers: taking the array apart by names takes several times as long.
  next(row) {
    for (let i = 0; i < FLOATS.length; ++i) this.#bits[i] ^= row[FLOATS[i]];
    return {
      damageType: row[0],
      eventMeta: { time1: row[1], time2: row[2] },
      evtName: this.#text(row[3]),
      killed: this.#text(row[4]),
      killedBot: this.#text(row[5]),
      killedX: this.#float(0),
      killedY: this.#float(1),
      killedZ: this.#float(2),
      killer: this.#text(row[9]),
      killerBot: this.#text(row[10]),
      killerX: this.#float(3),
      killerY: this.#float(4),
      killerZ: this.#float(5),
      knocked: row[14],
    };
  }

  #float(i) {
    const value = this.#floats[i];
    return Number.isFinite(value) ? value : null;
  }

  #text(cell) {
    if (cell === null) return undefined;
    if (typeof cell === 'number') return this.#texts[cell];
    this.#texts.push(cell);
    return cell;
  }
}

// The document that a text with rows stands for.
function documentOfRows(text) {
  const document = JSON.parse(text);
  if (document.events === undefined) return document;
  const rows = new Rows();
  const events = document.events.map((event) => (Array.isArray(event) ? rows.next(event) : event));
  return { ...document, events };
}

// The match of a reading whose text has rows. text and facts: Buffers.
function matchOfRows({ text: bytes, facts }, options) {
  const text = bytes.toString('utf8');
  return matchOf(documentOfRows(text), { ...options, text, facts: JSON.parse(facts.toString('utf8')) });
}

module.exports = { documentOfRows, matchOfRows };
