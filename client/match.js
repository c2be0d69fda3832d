'use strict';
// A document as people think of a match: who eliminated whom, when and over which distance. What the replay does not say
// is null. docs/model.md tells every field.

const { createHash } = require('node:crypto');
const { Roster } = require('./match-players.js');
const { stateOf, warningsOf } = require('./match-state.js');

// The engine's world unit is one centimetre.
const UNITS_PER_METRE = 100;

// The game counts time in ticks of 100 ns since the first day of the year 1.
const TICKS_PER_MS = 10_000n;
const UNIX_EPOCH_TICKS = 621_355_968_000_000_000n;

// Only keys are followed by a colon, and quotes within texts are escaped: this is the number itself, with all its digits.
const TIMESTAMP = /"Timestamp": ?(\d+)/;

const orNull = (value) => value || null;

// Texts beyond ASCII keep the zero character that ends them in the file.
const textOf = (text) => orNull(text?.replace(/\0$/, ''));

// The document's own number has lost its last digits if it is above 2^53.
function exactTicks(meta, text) {
  const digits = text === undefined ? undefined : TIMESTAMP.exec(text)?.[1];
  if (digits !== undefined) return BigInt(digits);
  return Number.isSafeInteger(meta?.Timestamp) ? BigInt(meta.Timestamp) : null;
}

function recordedOf(meta, text) {
  if (!meta?.Timestamp) return { recordedAt: null, recordedTicks: null };
  const recordedTicks = exactTicks(meta, text);
  const sinceEpoch = (recordedTicks ?? BigInt(meta.Timestamp)) - UNIX_EPOCH_TICKS;
  return { recordedAt: new Date(Number(sinceEpoch / TICKS_PER_MS)), recordedTicks };
}

// The header's GUID; older headers have none, and what the file holds stands in for it.
function idOf({ ReplayFileMeta, header, events }, recordedTicks) {
  if (header !== undefined && /[^0]/.test(header.guid)) return header.guid;
  const content = JSON.stringify([ReplayFileMeta, String(recordedTicks), header, events]);
  return createHash('sha256').update(content).digest('hex').slice(0, 32);
}

// "/Game/Maps/Corvane_Isle" is Corvane_Isle. The last level is the one that was played.
function mapOf(levels) {
  const [, name] = /([^/.]+)[^/]*$/.exec(textOf(levels?.at(-1)) ?? '') ?? [];
  return orNull(name);
}

// "Region=EU" is a key with a value; a text without the sign has none.
function settingsOf(list = []) {
  const entries = list.map((text) => {
    const setting = textOf(text) ?? '';
    const end = setting.includes('=') ? setting.indexOf('=') : setting.length;
    return [setting.slice(0, end).trim(), orNull(setting.slice(end + 1).trim())];
  });
  return Object.fromEntries(entries.filter(([key]) => key !== ''));
}

function engineOf(header, texts) {
  if (header === undefined) return null;
  const { major, minor, patch, changelist, branch } = header.EngineVersion;
  return {
    version: major + minor + patch > 0 ? `${major}.${minor}.${patch}` : null,
    branch: textOf(texts?.branch ?? branch),
    changelist: orNull(changelist),
  };
}

function pointOf(x, y, z) {
  if (x === null || y === null || z === null) return null;
  return { x: x / UNITS_PER_METRE, y: y / UNITS_PER_METRE, z: z / UNITS_PER_METRE };
}

// An event that is too short for its positions reads zeros for them.
const isOrigin = (x, y, z) => x === 0 && y === 0 && z === 0;

function distanceOf(a, b) {
  if (a === null || b === null) return null;
  const [x, y, z] = [a.x - b.x, a.y - b.y, a.z - b.z];
  return Math.sqrt(x * x + y * y + z * z);
}

function eliminationOf(event, attacker, victim, damageNames) {
  const { killedX, killedY, killedZ, killerX, killerY, killerZ, damageType } = event;
  const isVictimUnset = isOrigin(killedX, killedY, killedZ) && isOrigin(killerX, killerY, killerZ);
  const isAttackerUnset =
    isOrigin(killerX, killerY, killerZ) && (isVictimUnset || attacker.kind === 'unknown');
  const attackerAt = isAttackerUnset ? null : pointOf(killerX, killerY, killerZ);
  const victimAt = isVictimUnset ? null : pointOf(killedX, killedY, killedZ);
  return {
    timeMs: event.eventMeta.time1,
    kind: event.knocked ? 'knock' : 'elimination',
    attacker,
    victim,
    attackerAt,
    victimAt,
    distanceM: distanceOf(attackerAt, victimAt),
    damageType,
    damageName: damageNames?.[damageType] ?? null,
  };
}

// The exact names of bots: event's position -> field -> name.
function exactNames({ texts } = {}) {
  const names = { killerBot: new Map(), killedBot: new Map() };
  for (const [position, field, text] of texts?.names ?? []) names[field].set(position, text);
  return names;
}

// The eliminations in the order of time, and the players in the order in which they are first mentioned.
function playOf(events, facts, damageNames) {
  const roster = new Roster();
  const { killerBot, killedBot } = exactNames(facts);
  const eliminations = [];
  let isSorted = true;
  let last = 0;
  for (let i = 0; i < events.length; ++i) {
    const event = events[i];
    if (event.evtName !== 'playerElim') continue;
    const attacker = roster.record(event.killer, event.killerBot, killerBot.get(i));
    const victim = roster.record(event.killed, event.killedBot, killedBot.get(i));
    const elimination = eliminationOf(event, attacker.player, victim.player, damageNames);
    roster.count(event.knocked, elimination.timeMs, attacker, victim);
    isSorted &&= last <= elimination.timeMs;
    last = elimination.timeMs;
    eliminations.push(elimination);
  }
  if (!isSorted) eliminations.sort((a, b) => a.timeMs - b.timeMs);
  return { eliminations, players: roster.records };
}

function ownOf(event) {
  if (event === undefined) return null;
  return {
    timeMs: event.eventMeta.time1,
    accuracy: event.accuracy,
    eliminations: event.kills,
    assists: event.assists,
    revives: event.revives,
    weaponDamage: event.weapon_damage,
    otherDamage: event.other_damage,
    damageTaken: event.damage_taken,
    damageToStructures: event.damage_to_structures,
    materialsGathered: event.materials_gathered,
    materialsUsed: event.materials_used,
    traveledM: event.total_traveled / UNITS_PER_METRE,
  };
}

function teamOf(event) {
  const place = orNull(event?.finalRanking);
  const of = orNull(event?.totalPlayers);
  return place === null && of === null ? null : { place, of };
}

// JSON has no 64-bit numbers, and callers who want the document already have it.
function toJSON() {
  const { document, recordedTicks, ...rest } = this;
  return { ...rest, recordedTicks: recordedTicks === null ? null : String(recordedTicks) };
}

const lastOf = (events, name) => events.findLast(({ evtName }) => evtName === name);

// The match that a document of readReplay() or of ReadCorvaneDemo tells. path: the file, if not as the document has it.
// text: the JSON text of the document, for all digits of the time. facts: what the reading knows beside the document.
// damageNames: names of damage types by their numbers.
function matchOf(document, { path, text, facts, damageNames } = {}) {
  const { ReplayFileMeta: meta, header, events = [] } = document;
  const recorded = recordedOf(meta, text);
  const { eliminations, players } = playOf(events, facts, damageNames);
  const match = {
    path: path ?? orNull(document.Creation?.fileName),
    id: idOf(document, recorded.recordedTicks),
    name: textOf(facts?.texts?.FriendlyName ?? meta?.FriendlyName),
    ...recorded,
    durationMs: orNull(meta?.LegthInMs),
    map: mapOf(facts?.texts?.levels ?? header?.levels),
    settings: settingsOf(facts?.texts?.GameSpecificData ?? header?.GameSpecificData),
    engine: engineOf(header, facts?.texts),
    state: stateOf(meta, facts),
    warnings: warningsOf(facts),
    skipped: facts?.skipped ?? null,
    cutAtByte: facts?.cutAt ?? null,
    fileBytes: orNull(meta?.TotalDataSizeInBytes),
    eliminations,
    players,
    own: ownOf(lastOf(events, 'AthenaMatchStats')),
    team: teamOf(lastOf(events, 'AthenaMatchTeamStats')),
    document,
  };
  return Object.defineProperty(match, 'toJSON', { value: toJSON });
}

module.exports = { UNIX_EPOCH_TICKS, matchOf };
