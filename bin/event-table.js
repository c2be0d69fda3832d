'use strict';
// The events of a replay as a table for people: time, who did what to whom, over which distance.

const { printable } = require('./failures.js');
const { textTable, wrapWords } = require('./text-table.js');
const { exactClock, playerName } = require('./units.js');

const COLUMNS = [
  { name: 'TIME', right: true },
  { name: 'WHO', shrinks: true },
  { name: 'DID' },
  { name: 'WHOM', shrinks: true },
  { name: 'DISTANCE', right: true },
  { name: 'DAMAGE', right: true },
];

const eliminationRow = (names) => (event) => [
  exactClock(event.timeMs),
  playerName(event.attacker, names),
  event.kind === 'knock' ? 'knocked down' : 'eliminated',
  playerName(event.victim, names),
  event.distanceM === null ? '?' : `${event.distanceM.toFixed(1)} m`,
  printable(event.damageName ?? String(event.damageType)),
];

const words = (key) => key.replace(/[A-Z]/g, ' $&').replaceAll('_', ' ').toLowerCase();

const STATISTICS = { AthenaMatchStats: 'player', AthenaMatchTeamStats: 'team' };

// A statistics event as one line: whose figures, then the figures. A new kind of event shows under its own name.
function summary({ evtName, eventMeta, ...figures }) {
  const name = STATISTICS[evtName] ?? evtName;
  const list = Object.entries(figures).map(([key, value]) => `${words(key)} ${value ?? '?'}`);
  return `${name} at ${exactClock(eventMeta.time1)}: ${list.join(', ')}`;
}

// The table of a match's eliminations, then each set of statistics. lineWidth: the terminal's columns.
function eventTable({ eliminations, document: { events = [] } }, names, lineWidth) {
  const summaries = events
    .filter(({ evtName }) => evtName !== 'playerElim')
    .map((event) => `${wrapWords(summary(event), lineWidth)}\n`);
  return [textTable(COLUMNS, eliminations.map(eliminationRow(names)), lineWidth), ...summaries].join('');
}

module.exports = { eventTable };
