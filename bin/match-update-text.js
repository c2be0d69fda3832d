'use strict';
// What happens in a match that is being recorded, as lines for people.

const path = require('node:path');
const { printable } = require('./failures.js');
const { counted, exactClock, playerName } = require('./units.js');

function eliminationText({ timeMs, kind, attacker, victim, distanceM }) {
  const did = `${playerName(attacker)} ${kind === 'knock' ? 'knocked down' : 'eliminated'}`;
  if (attacker === victim) return `${exactClock(timeMs)} ${did} themselves`;
  const distance = distanceM === null ? '' : ` over ${distanceM.toFixed(1)} m`;
  return `${exactClock(timeMs)} ${did} ${playerName(victim)}${distance}`;
}

function endText({ eliminations, team }) {
  const knocks = eliminations.filter(({ kind }) => kind === 'knock').length;
  const ends = counted(eliminations.length - knocks, 'elimination');
  const place = team?.place ? `, place ${team.place} of ${team.of ?? '?'}` : '';
  return `the match has ended: ${ends}, ${counted(knocks, 'knock-down')}${place}`;
}

// update: what watchMatches yields. A line for each thing, each with the name of the file.
function updateText({ path: file, type, match, added }) {
  const lines = added.map(eliminationText);
  if (type === 'start')
    lines.unshift(`a match begins${match.map === null ? '' : ` on ${printable(match.map)}`}`);
  if (type === 'end') lines.push(endText(match));
  return lines.map((line) => `${printable(path.basename(file))}: ${line}\n`).join('');
}

module.exports = { updateText };
