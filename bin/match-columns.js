'use strict';
// The columns of a match on the command line: to show, to sort by, and to compare with.

const path = require('node:path');
const { modeOf } = require('./export/tables.js');
const { printable, usageFailure } = require('./failures.js');
const { clock, count, dateTime, plain, share, UNKNOWN } = require('./units.js');

const SECONDS_PER_MINUTE = 60;

// value: a number, a text, or null; text: for people.
const COLUMNS = {
  date: {
    value: ({ recordedAt }) => (recordedAt === null ? null : dateTime(recordedAt)),
    text: plain,
  },
  map: { value: ({ map }) => map, text: plain, shrinks: true },
  mode: { value: modeOf, text: plain, shrinks: true },
  length: {
    // In whole seconds, as it is shown: "length=20:43" holds for what shows so.
    value: ({ durationMs }) =>
      durationMs === null ? null : Math.floor(durationMs / 1000) / SECONDS_PER_MINUTE,
    text: (_, { durationMs }) => clock(durationMs),
    right: true,
  },
  place: {
    value: ({ team }) => team?.place ?? null,
    text: (place, { team }) => (team === null ? UNKNOWN : `${count(place)}/${count(team.of)}`),
    right: true,
  },
  eliminations: { value: ({ own }) => own?.eliminations ?? null, text: count, right: true, label: 'ELIMS' },
  accuracy: { value: ({ own }) => own?.accuracy ?? null, text: share, right: true },
  players: { value: ({ players }) => players.length, text: count, right: true },
  state: { value: ({ state }) => state, text: plain },
  name: { value: ({ name }) => name, text: plain, shrinks: true },
  path: {
    value: ({ path }) => path,
    text: (file) => path.basename(file),
    shrinks: true,
    least: 24, // the beginnings of the names of files are often the same
    label: 'FILE',
  },
};

const NAMES = Object.keys(COLUMNS).join(', ');

function columnOf(name) {
  if (Object.hasOwn(COLUMNS, name.toLowerCase())) return COLUMNS[name.toLowerCase()];
  throw usageFailure(`there is no column ${name}; there are ${NAMES}`);
}

const cellText = (name, match) => {
  const { value, text } = COLUMNS[name];
  return printable(text(value(match), match));
};

// Nulls come last, whichever way.
function compare(a, b) {
  if (a === null || b === null) return Number(a === null) - Number(b === null);
  return a < b ? -1 : Number(a > b);
}

// "place" sorts upwards, "-place" downwards. Returns { value, compare }: the value of a match, and how to compare it.
function sorter(text) {
  const isDown = text.startsWith('-');
  const { value } = columnOf(isDown ? text.slice(1) : text);
  const downwards = (a, b) => (a === null || b === null ? compare(a, b) : compare(b, a));
  return { value, compare: isDown ? downwards : compare };
}

// "12:30" is 12.5, "1:12:30" 72.5; NaN for what is no number.
function numberOf(text) {
  const [, hours = 0, minutes, seconds] = /^(?:(\d+):)?(\d+):(\d\d)$/.exec(text) ?? [];
  const total = Number(hours) * 3600 + Number(minutes) * 60 + Number(seconds);
  if (minutes !== undefined) return total / SECONDS_PER_MINUTE;
  const value = Number(text.replace(/%$/, '') || NaN);
  return text.endsWith('%') ? value / 100 : value;
}

const OPERATORS = {
  '=': (order) => order === 0,
  '!=': (order) => order !== 0,
  '<': (order) => order < 0,
  '<=': (order) => order <= 0,
  '>': (order) => order > 0,
  '>=': (order) => order >= 0,
};

// "date=2021-02" is true of each day of that month.
const orderOfTexts = (value, wanted, name) => {
  const [a, b] = [value.toLowerCase(), wanted.toLowerCase()];
  return compare(name === 'date' ? a.slice(0, b.length) : a, b);
};

// A condition like "place<=3", "map=Saltmarsh" or "path~final" ("~": holds this text). Returns (match) => boolean. An
// unknown value meets only "!=".
function condition(text) {
  const [, name, operator, wanted] = /^\s*(\w+)\s*(<=|>=|!=|=|<|>|~)\s*(.*?)\s*$/.exec(text) ?? [];
  if (name === undefined) throw usageFailure(`"${text}" is no condition like "place<=3"`);
  const { value, right: isNumber } = columnOf(name);
  if (isNumber && operator !== '~' && Number.isNaN(numberOf(wanted))) {
    throw usageFailure(`"${wanted}" in "${text}" is no number`);
  }
  return (match) => {
    const found = value(match);
    if (found === null) return operator === '!=';
    if (operator === '~') return String(found).toLowerCase().includes(wanted.toLowerCase());
    const order = isNumber
      ? compare(found, numberOf(wanted))
      : orderOfTexts(found, wanted, name.toLowerCase());
    return OPERATORS[operator](order);
  };
}

module.exports = { COLUMNS, NAMES, cellText, compare, condition, sorter };
