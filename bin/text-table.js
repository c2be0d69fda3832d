'use strict';
// Rows of text as columns that fit the terminal.

const stringWidth = require('string-width');

const GAP = '  ';
// Wide enough for an account's 32 digits and most names; no cell takes more, however wide the terminal is.
const WIDEST_CELL = 40;
const NARROWEST_CELL = 6;
// A limit for combining marks, which have no width of their own.
const POINTS_PER_CELL = 4;

const isPlain = (text) => /^[\x20-\x7e]*$/.test(text);

// The text, cut between code points to at most `width` columns; "…" stands for the rest.
function fitted(text, width) {
  if (text.length <= width && isPlain(text)) return text;
  let used = 0;
  let points = 0;
  let end = 0; // of what fits beside the "…"
  let at = 0;
  for (const point of text) {
    used += stringWidth(point);
    points += 1;
    at += point.length;
    if (used > width || points > width * POINTS_PER_CELL) return `${text.slice(0, end)}…`;
    if (used < width) end = at;
  }
  return text;
}

const cellWidth = (text) => (isPlain(text) ? text.length : stringWidth(text));

function padded(text, width, right) {
  const blanks = ' '.repeat(Math.max(0, width - cellWidth(text)));
  return right ? blanks + text : text + blanks;
}

// A text on as many lines as it needs, broken between words.
function wrapWords(text, lineWidth = Infinity) {
  return text.split(' ').reduce((lines, word) => {
    const column = lines.length - lines.lastIndexOf('\n') - 1;
    return column + 1 + word.length > lineWidth ? `${lines}\n  ${word}` : `${lines} ${word}`;
  });
}

// Takes from the widest columns that may shrink until the line fits, or none can shrink further.
function shrunk(widths, columns, lineWidth) {
  const result = [...widths];
  let excess = result.reduce((sum, width) => sum + width, GAP.length * (result.length - 1)) - lineWidth;
  for (; excess > 0; excess -= 1) {
    const candidates = result.map((width, i) =>
      columns[i].shrinks && width > (columns[i].least ?? NARROWEST_CELL) ? width : 0,
    );
    const widest = candidates.indexOf(Math.max(...candidates));
    if (candidates[widest] === 0) break;
    result[widest] -= 1;
  }
  return result;
}

// columns: [{ name, right, shrinks, least }], aligned to the right or not, cut on a narrow terminal or not, but not
// below `least`. rows: for each the texts of its cells, printable. lineWidth: the terminal's columns, Infinity without a
// terminal. Returns the lines, the names first.
function textTable(columns, rows, lineWidth = Infinity) {
  const table = [columns.map(({ name }) => name), ...rows].map((row) =>
    row.map((cell) => fitted(cell, WIDEST_CELL)),
  );
  const natural = columns.map((_, i) => table.reduce((most, row) => Math.max(most, cellWidth(row[i])), 0));
  const widths = shrunk(natural, columns, lineWidth);
  const cell = (text, i) => padded(fitted(text, widths[i]), widths[i], columns[i].right);
  return table.map((row) => row.map(cell).join(GAP).trimEnd() + '\n').join('');
}

// The same without as many of the `spare` columns, the first of them first, as it takes to fit the line. Only when they
// are all gone does a column get narrower than its `least`.
function fittingTable(columns, rows, lineWidth = Infinity, [spare, ...others] = []) {
  const isLast = spare === undefined;
  const widths = isLast ? columns.map((column) => ({ ...column, least: undefined })) : columns;
  const text = textTable(widths, rows, lineWidth);
  if (isLast || text.split('\n').every((line) => cellWidth(line) <= lineWidth)) return text;
  const dropped = columns.indexOf(spare);
  const kept = (list) => list.filter((_, i) => i !== dropped);
  return fittingTable(kept(columns), rows.map(kept), lineWidth, others);
}

module.exports = { fitted, fittingTable, textTable, wrapWords };
