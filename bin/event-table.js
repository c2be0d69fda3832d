'use strict';
// The events of a replay as a table for people: time, who did what to whom, over which distance.

const { printable } = require('./failures.js');
const { textTable } = require('./text-table.js');

const digits = (value, count) => String(value).padStart(count, '0');

// 4510123 is 1:15:10.123.
function clock(milliseconds) {
  const seconds = Math.floor(milliseconds / 1000);
  const [hours, minutes] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60];
  return `${hours}:${digits(minutes, 2)}:${digits(seconds % 60, 2)}.${digits(milliseconds % 1000, 3)}`;
}

const nameOf = ({ kind, id, name }) => (kind !== 'unknown' && printable(id ?? name ?? 'Unnamed Bot')) || '?';

const COLUMNS = [
  { name: 'TIME', right: true },
  { name: 'WHO', shrinks: true },
  { name: 'DID' },
  { name: 'WHOM', shrinks: true },
  { name: 'DISTANCE', right: true },
  { name: 'DAMAGE', right: true },
];

const eliminationRow = ({ timeMs, kind, attacker, victim, distanceM, damageType }) => [
  clock(timeMs),
  nameOf(attacker),
  kind === 'knock' ? 'knocked down' : 'eliminated',
  nameOf(victim),
  distanceM === null ? '?' : `${distanceM.toFixed(1)} m`,
  String(damageType),
];

const words = (key) => key.replace(/[A-Z]/g, ' $&').replaceAll('_', ' ').toLowerCase();

const STATISTICS = { AthenaMatchStats: 'player', AthenaMatchTeamStats: 'team' };

// A statistics event as one line: whose figures, then the figures. A new kind of event shows under its own name.
function summary({ evtName, eventMeta, ...figures }) {
  const name = STATISTICS[evtName] ?? evtName;
  const list = Object.entries(figures).map(([key, value]) => `${words(key)} ${value ?? '?'}`);
  return `${name} at ${clock(eventMeta.time1)}: ${list.join(', ')}\n`;
}

// The table of a match's eliminations, then a line for each set of statistics. lineWidth: the terminal's columns.
function eventTable({ eliminations, document: { events = [] } }, lineWidth) {
  const summaries = events.filter(({ evtName }) => evtName !== 'playerElim').map(summary);
  return [textTable(COLUMNS, eliminations.map(eliminationRow), lineWidth), ...summaries].join('');
}

module.exports = { clock, eventTable };
