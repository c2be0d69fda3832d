'use strict';
// The tables of an export: their columns, and the row of a match. docs/tables.md describes them for users.
//
// Types: text, integer (32 bits, signed), long (64 bits, signed), double, boolean, and timestamp (a number of microseconds
// since 1970, in the game's own clock). Every column may be null, except those that REQUIRED names.

const { UNIX_EPOCH_TICKS } = require('../../client/match.js');

// A timestamp's unit, in the game's ticks.
const TICKS_PER_MICROSECOND = 10n;
const MAX_LONG = 2n ** 63n - 1n;

const columns = (type, names) => names.split(' ').map((name) => ({ name, type }));

const person = (role) => [
  ...columns('integer', `${role}_no`),
  ...columns('text', `${role}_kind ${role}_account ${role}_name`),
];

const TABLES = {
  matches: [
    ...columns('text', 'match_id path name'),
    ...columns('timestamp', 'recorded_at'),
    ...columns('long', 'recorded_ticks duration_ms'),
    ...columns('text', 'map mode settings engine_version engine_branch'),
    ...columns('long', 'engine_changelist'),
    ...columns('text', 'state warnings'),
    ...columns('long', 'file_bytes'),
    ...columns('integer', 'player_count elimination_count knock_count'),
    ...columns('long', 'place placed_of'),
    ...columns('double', 'own_accuracy'),
    ...columns('long', 'own_eliminations own_assists own_revives own_weapon_damage own_other_damage'),
    ...columns('long', 'own_damage_taken own_damage_to_structures own_materials_gathered own_materials_used'),
    ...columns('double', 'own_traveled_m'),
  ],
  players: [
    ...columns('text', 'match_id'),
    ...person('player'),
    ...columns('integer', 'eliminations knocks times_knocked deaths'),
    ...person('ended_by'),
    ...columns('long', 'ended_at_ms'),
    ...columns('boolean', 'self_inflicted'),
  ],
  eliminations: [
    ...columns('text', 'match_id'),
    ...columns('integer', 'event_no'),
    ...columns('long', 'time_ms'),
    ...columns('timestamp', 'event_time'),
    ...columns('text', 'kind'),
    ...person('attacker'),
    ...person('victim'),
    ...columns('double', 'attacker_x attacker_y attacker_z victim_x victim_y victim_z distance_m'),
    ...columns('integer', 'damage_type'),
    ...columns('text', 'damage_name'),
  ],
  failures: [...columns('text', 'path code reason'), ...columns('long', 'file_bytes')],
};

const REQUIRED = [
  ...['match_id', 'path', 'player_count', 'elimination_count', 'knock_count'],
  ...['player_no', 'player_kind', 'eliminations', 'knocks', 'times_knocked', 'deaths'],
  ...[
    'event_no',
    'time_ms',
    'kind',
    'attacker_no',
    'attacker_kind',
    'victim_no',
    'victim_kind',
    'damage_type',
  ],
];
for (const table of Object.values(TABLES)) {
  for (const column of table) column.required = REQUIRED.includes(column.name);
}

// null for a time beyond every calendar here.
function microseconds(ticks) {
  if (ticks === null) return null;
  const found = Number((ticks - UNIX_EPOCH_TICKS) / TICKS_PER_MICROSECOND);
  return Number.isSafeInteger(found) ? found : null;
}

// The mode is what the game calls it in the header.
const modeOf = ({ settings }) => settings.SubGame ?? null;

const textOrNull = (list) => (list.length === 0 ? null : list.join('\n'));

function matchRow(match) {
  const { own, team, engine, eliminations, settings } = match;
  const knocks = eliminations.filter(({ kind }) => kind === 'knock').length;
  const ticks = match.recordedTicks;
  return [
    ...[match.id, match.path, match.name, microseconds(ticks), ticks > MAX_LONG ? null : ticks],
    ...[match.durationMs, match.map, modeOf(match)],
    Object.keys(settings).length === 0 ? null : JSON.stringify(settings),
    ...[engine?.version, engine?.branch, engine?.changelist, match.state, textOrNull(match.warnings)],
    ...[match.fileBytes, match.players.length, eliminations.length - knocks, knocks, team?.place, team?.of],
    ...[own?.accuracy, own?.eliminations, own?.assists, own?.revives, own?.weaponDamage, own?.otherDamage],
    ...[
      own?.damageTaken,
      own?.damageToStructures,
      own?.materialsGathered,
      own?.materialsUsed,
      own?.traveledM,
    ],
  ].map((cell) => cell ?? null);
}

module.exports = { TABLES, matchRow, microseconds, modeOf };
