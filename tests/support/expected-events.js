'use strict';
// What the document holds of an event's data when only their first `length` bytes are there.

const COUNTERS = [
  ...['assists', 'kills', 'weapon_damage', 'other_damage', 'revives', 'damage_taken'],
  ...['damage_to_structures', 'materials_gathered', 'materials_used', 'total_traveled'],
];

// The statistics come whole or not at all.
function expectedMatchStats(accuracy, counters, length = 48) {
  if (length < 48) return null;
  const named = COUNTERS.map((name, i) => [name, counters[i]]);
  return { evtName: 'AthenaMatchStats', accuracy: Math.fround(accuracy), ...Object.fromEntries(named) };
}

function expectedTeamStats(finalRanking, totalPlayers, length = 12) {
  return length < 12 ? null : { evtName: 'AthenaMatchTeamStats', finalRanking, totalPlayers };
}

// An elimination comes with what could be read of it; from the first field that is cut on, all is 0 or "". fields: all
// of those that the writer's playerElim takes.
function expectedElim(fields, length = Infinity) {
  let end = 0;
  const read = (size, value, missing) => ((end += size), end <= length ? value : missing);
  const position = (name, values) =>
    'XYZ'.split('').map((axis, i) => [name + axis, read(4, Math.fround(values[i]), 0)]);
  const player = (name, { type, id }) => {
    const readType = read(1, type, 0);
    let text = readType === 3 ? 'Unnamed Bot' : '';
    if (readType === 16) text = read(4 + Buffer.byteLength(id) + 1, id, '');
    if (readType === 17) text = read(1 + 16, id.toString('hex'), '');
    return [readType === 17 ? name : `${name}Bot`, text];
  };
  read(4 + fields.extra.length + 8);
  const members = [...position('killed', fields.killedAt)];
  read(24 + 4);
  members.push(...position('killer', fields.killerAt));
  read(12);
  members.push(player('killed', fields.killed), player('killer', fields.killer));
  members.push(
    ['damageType', read(1, fields.damageType, 0)],
    ['knocked', read(4, fields.knocked === 1, false)],
  );
  return { evtName: 'playerElim', ...Object.fromEntries(members) };
}

module.exports = { expectedMatchStats, expectedTeamStats, expectedElim };
