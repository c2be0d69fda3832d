'use strict';
// The events of a replay as a table for people: time, who did what to whom, over which distance.

const stringWidth = require('string-width');
const { printable } = require('./failures.js');

// The engine's world unit is one centimetre.
const UNITS_PER_METRE = 100;
const ALIGN_RIGHT = new Set(['TIME', 'DISTANCE', 'DAMAGE']);

const digits = (value, count) => String(value).padStart(count, '0');

// 4510123 is 1:15:10.123.
function clock(milliseconds) {
  const seconds = Math.floor(milliseconds / 1000);
  const [hours, minutes] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60];
  return `${hours}:${digits(minutes, 2)}:${digits(seconds % 60, 2)}.${digits(milliseconds % 1000, 3)}`;
}

function distance(event) {
  const differences = ['X', 'Y', 'Z'].map((axis) => [event[`killed${axis}`], event[`killer${axis}`]]);
  if (differences.flat().includes(null)) return '?';
  return `${(Math.hypot(...differences.map(([a, b]) => a - b)) / UNITS_PER_METRE).toFixed(1)} m`;
}

function eliminationRow(event) {
  return {
    TIME: clock(event.eventMeta.time1),
    WHO: printable(event.killer ?? event.killerBot) || '?',
    DID: event.knocked ? 'knocked down' : 'eliminated',
    WHOM: printable(event.killed ?? event.killedBot) || '?',
    DISTANCE: distance(event),
    DAMAGE: String(event.damageType),
  };
}

function pad(text, width, right) {
  const blanks = ' '.repeat(width - stringWidth(text));
  return right ? blanks + text : text + blanks;
}

function table(rows) {
  const names = Object.keys(rows[0]);
  const widths = names.map((name) => rows.reduce((most, row) => Math.max(most, stringWidth(row[name])), 0));
  const line = (row) => names.map((name, i) => pad(row[name], widths[i], ALIGN_RIGHT.has(name)));
  return rows.map((row) => line(row).join('  ').trimEnd() + '\n').join('');
}

const words = (key) => key.replace(/[A-Z]/g, ' $&').replaceAll('_', ' ').toLowerCase();

// A statistics event as one line: its name, then its figures.
function summary({ evtName, eventMeta, ...figures }) {
  const name = evtName === 'AthenaMatchStats' ? 'player' : 'team';
  const list = Object.entries(figures).map(([key, value]) => `${words(key)} ${value ?? '?'}`);
  return `${name} at ${clock(eventMeta.time1)}: ${list.join(', ')}\n`;
}

// The table of the eliminations, then a line for each set of statistics.
function eventTable(events) {
  const eliminations = events.filter(({ evtName }) => evtName === 'playerElim').map(eliminationRow);
  const names = {
    TIME: 'TIME',
    WHO: 'WHO',
    DID: 'DID',
    WHOM: 'WHOM',
    DISTANCE: 'DISTANCE',
    DAMAGE: 'DAMAGE',
  };
  const summaries = events.filter(({ evtName }) => evtName !== 'playerElim').map(summary);
  return [table([names, ...eliminations]), ...summaries].join('');
}

module.exports = { eventTable };
