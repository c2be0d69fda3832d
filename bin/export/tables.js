'use strict';
// The tables of an export: their columns, and the rows of a match. docs/tables.md describes them for users.
//
// Types: text, integer (32 bits, signed), long (64 bits, signed), double, boolean, and timestamp (a number of microseconds
// since 1970, in the game's own clock). Every column may be null, except those that REQUIRED names.

// A timestamp's unit, in the game's ticks; and the first moment of 1970.
const TICKS_PER_MICROSECOND = 10n;
const UNIX_EPOCH_TICKS = 621_355_968_000_000_000n;
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

// An account's digits, a bot's name, and the number that tells the players of a match apart.
function personCells(player, numbers) {
  if (player === null) return [null, null, null, null];
  return [numbers.get(player), player.kind, player.id ?? null, player.name ?? null];
}

const pointCells = (point) => (point === null ? [null, null, null] : [point.x, point.y, point.z]);

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

const playerRow = (record, id, numbers) => [
  ...[id, ...personCells(record.player, numbers)],
  ...[record.eliminations, record.knocks, record.timesKnocked, record.deaths],
  ...[...personCells(record.endedBy, numbers), record.endedAtMs, record.selfInflicted],
];

const eliminationRow = (event, number, id, start, numbers) => [
  ...[id, number, event.timeMs, start === null ? null : start + event.timeMs * 1000, event.kind],
  ...[...personCells(event.attacker, numbers), ...personCells(event.victim, numbers)],
  ...[...pointCells(event.attackerAt), ...pointCells(event.victimAt), event.distanceM],
  ...[event.damageType, event.damageName],
];

// The cells of a table by column. One object per row would live long enough to be costly for the garbage collector.
const newCells = () =>
  Object.fromEntries(Object.entries(TABLES).map(([table, list]) => [table, list.map(() => [])]));

function addRow(cells, row) {
  for (let i = 0; i < row.length; ++i) cells[i].push(row[i]);
}

// Adds the rows of a match, and returns how many they are, in the order of the tables.
function addMatch(cells, match) {
  const { id, players, eliminations } = match;
  const numbers = new Map(players.map(({ player }, i) => [player, i]));
  const start = microseconds(match.recordedTicks);
  addRow(cells.matches, matchRow(match));
  for (const record of players) addRow(cells.players, playerRow(record, id, numbers));
  eliminations.forEach((event, i) =>
    addRow(cells.eliminations, eliminationRow(event, i, id, start, numbers)),
  );
  return [1, players.length, eliminations.length, 0];
}

// The same for a replay that cannot be read; bytes: its size, null if that is not known.
function addFailure(cells, path, { code, message }, bytes) {
  addRow(cells.failures, [path, code ?? null, message, bytes]);
  return [0, 0, 0, 1];
}

module.exports = { TABLES, addFailure, addMatch, matchRow, modeOf, newCells };
