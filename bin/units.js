'use strict';
// Figures as people read them: one place for each unit. What is not known is "–".

const { printable } = require('./failures.js');

const UNKNOWN = '–';

const known = (format) => (value) => (value === null || value === undefined ? UNKNOWN : format(value));

const digits = (value, count = 2) => String(value).padStart(count, '0');

// Whole hours, and the rest in minutes and seconds.
function hoursMinutesSeconds(ms) {
  const seconds = Math.floor(ms / 1000);
  return [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60, seconds % 60];
}

// 4510123 ms is 1:15:10, 75000 ms is 1:15.
const clock = known((ms) => {
  const [hours, minutes, seconds] = hoursMinutesSeconds(ms);
  return hours > 0 ? `${hours}:${digits(minutes)}:${digits(seconds)}` : `${minutes}:${digits(seconds)}`;
});

// 4510123 ms is 1:15:10.123: all of the same form, as events have them.
function exactClock(ms) {
  const [hours, minutes, seconds] = hoursMinutesSeconds(ms);
  return `${hours}:${digits(minutes)}:${digits(seconds)}.${digits(ms % 1000, 3)}`;
}

const count = known((value) => String(value));
const rate = known((value) => value.toFixed(2));
const tenths = known((value) => value.toFixed(1));
const share = known((value) => `${(100 * value).toFixed(1)} %`);
const metres = known((value) => `${value.toFixed(1)} m`);
const kilometres = known((value) => `${(value / 1000).toFixed(1)} km`);
const dateTime = known((date) => date.toISOString().slice(0, 16).replace('T', ' '));
const plain = known((text) => text);
const counted = (value, noun) => `${value} ${noun}${value === 1 ? '' : 's'}`;

// names: of accounts.
const playerName = ({ kind, id, name }, names = {}) =>
  (kind !== 'unknown' && printable(names[id] ?? id ?? name ?? 'Unnamed Bot')) || '?';

const BARS = '▁▂▃▄▅▆▇█';

// One character for each value, the least at the bottom; a blank where there is none.
function sparkline(values) {
  const there = values.filter((value) => value !== null);
  const low = there.reduce((a, b) => Math.min(a, b), Infinity);
  const range = there.reduce((a, b) => Math.max(a, b), -Infinity) - low || 1;
  const bar = (value) => BARS[Math.min(BARS.length - 1, Math.floor(((value - low) / range) * BARS.length))];
  return values.map((value) => (value === null ? ' ' : bar(value))).join('');
}

module.exports = {
  ...{ UNKNOWN, clock, count, counted, dateTime, exactClock, kilometres, metres, plain, playerName, rate },
  ...{ share, sparkline, tenths },
};
