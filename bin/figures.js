'use strict';
// Figures over many matches, grouped: what stats and compare show.

const { compare } = require('./match-columns.js');
const { modeOf } = require('./export/tables.js');
const { clock, count, metres, plain, rate, share, tenths } = require('./units.js');

// A series of numbers; unknown ones do not count.
class Series {
  #values = [];

  add(value) {
    if (value !== null && value !== undefined) this.#values.push(value);
  }

  get sum() {
    return this.#values.reduce((a, b) => a + b, 0);
  }

  get mean() {
    return this.#values.length === 0 ? null : this.sum / this.#values.length;
  }

  get max() {
    return this.#values.length === 0 ? null : this.#values.reduce((a, b) => Math.max(a, b));
  }

  get median() {
    const { length } = this.#values;
    if (length === 0) return null;
    const sorted = Float64Array.from(this.#values).sort();
    const middle = length >> 1;
    return length % 2 === 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
  }
}

// The counts of one group.
class Group {
  matches = 0;
  wins = 0;
  eliminations = 0;
  knocks = 0;
  deaths = 0;
  distances = new Series();
  times = new Series();
  endings = new Series();
  places = new Series();
  durations = new Series();
  accuracies = new Series();
  ownEliminations = new Series();
  ownDamage = new Series();

  addMatch({ team, durationMs, own, eliminations }) {
    this.matches += 1;
    this.wins += Number(team?.place === 1);
    this.places.add(team?.place);
    this.durations.add(durationMs);
    this.accuracies.add(own?.accuracy);
    this.ownEliminations.add(own?.eliminations);
    this.ownDamage.add(own?.weaponDamage);
    for (const event of eliminations) this.addEvent(event);
  }

  addEvent({ kind, distanceM, timeMs, attacker, victim }) {
    if (kind === 'knock') this.knocks += 1;
    else this.eliminations += 1;
    if (kind === 'knock' || attacker === victim) return;
    this.distances.add(distanceM);
    this.times.add(timeMs);
  }
}

// The group of a key, made when it is first asked for.
class Groups extends Map {
  of(key) {
    if (!this.has(key)) this.set(key, new Group());
    return this.get(key);
  }
}

const UNNAMED = { bot: '(bots)', unknown: '(unknown)' };

// Accounts are the same in all matches; a bot's name is not.
const playerKey = (player) => (player.kind === 'account' ? player.id : UNNAMED[player.kind]);

function addPlayers(groups, { players, eliminations }) {
  const present = new Set();
  for (const { player, deaths, endedAtMs } of players) {
    const group = groups.of(playerKey(player));
    present.add(group);
    group.deaths += deaths;
    group.endings.add(endedAtMs);
  }
  for (const group of present) group.matches += 1;
  for (const event of eliminations) {
    if (event.attacker !== event.victim) groups.of(playerKey(event.attacker)).addEvent(event);
  }
}

function addDamage(groups, { eliminations }) {
  const present = new Set();
  for (const event of eliminations) {
    const group = groups.of(event.damageName ?? `type ${event.damageType}`);
    present.add(group);
    group.addEvent(event);
  }
  for (const group of present) group.matches += 1;
}

const day = (date) => date?.toISOString().slice(0, 10) ?? null;

// "2021-W06", as ISO 8601 counts weeks: that of the week's Thursday.
function week(date) {
  if (date === null) return null;
  const thursday = new Date(date);
  thursday.setUTCDate(date.getUTCDate() + 4 - (date.getUTCDay() || 7));
  const year = thursday.getUTCFullYear();
  const days = (thursday - Date.UTC(year, 0, 1)) / 86_400_000;
  return `${year}-W${String(Math.floor(days / 7) + 1).padStart(2, '0')}`;
}

const byMatch = (keyOf) => (groups, match) => groups.of(keyOf(match)).addMatch(match);

const perMatch = (total, { matches }) => (matches === 0 ? null : total / matches);

// name: in data; label: on a terminal, absent if it does not show there. of(group, all): the figure.
const figure = (name, label, of, text = count) => ({ name, label, of, text });

const MATCHES = figure('matches', 'MATCHES', (group) => group.matches);
const ELIMINATIONS = figure('eliminations', 'ELIMS', (group) => group.eliminations);
const PER_MATCH = figure(
  'eliminations_per_match',
  'PER MATCH',
  (group) => perMatch(group.eliminations, group),
  rate,
);
const KNOCKS = figure('knocks', 'KNOCKS', (group) => group.knocks);
const DISTANCE = figure('median_distance_m', 'DISTANCE', (group) => group.distances.median, metres);
const LONGEST = figure('longest_distance_m', 'LONGEST', (group) => group.distances.max, metres);
const TIME = figure('median_time_ms', 'TIME', (group) => group.times.median, clock);

const OF_MATCHES = [
  MATCHES,
  figure('wins', 'WINS', (group) => group.wins),
  figure('median_place', 'PLACE', (group) => group.places.median, tenths),
  figure('own_eliminations_per_match', 'OWN ELIMS', (group) => group.ownEliminations.mean, rate),
  figure('mean_accuracy', 'ACCURACY', (group) => group.accuracies.mean, share),
  figure('own_damage_per_match', undefined, (group) => group.ownDamage.mean, tenths),
  figure('median_duration_ms', 'LENGTH', (group) => group.durations.median, clock),
  PER_MATCH,
  ...[TIME, DISTANCE, LONGEST],
];

const OF_PLAYERS = [
  ...[MATCHES, ELIMINATIONS, PER_MATCH, KNOCKS],
  figure('deaths', 'DEATHS', (group) => group.deaths),
  figure('median_ended_at_ms', 'OUT AT', (group) => group.endings.median, clock),
  ...[TIME, DISTANCE, LONGEST],
];

const OF_DAMAGE = [
  ...[MATCHES, ELIMINATIONS],
  figure('share', 'SHARE', (group, all) => group.eliminations / Math.max(1, all.eliminations), share),
  ...[KNOCKS, PER_MATCH, TIME, DISTANCE, LONGEST],
];

// sort: the figure by which the groups come; undefined for the order of the keys.
const GROUPINGS = {
  player: { add: addPlayers, figures: OF_PLAYERS, sort: 'eliminations' },
  damage: { add: addDamage, figures: OF_DAMAGE, sort: 'eliminations' },
  map: { add: byMatch(({ map }) => map), figures: OF_MATCHES, sort: 'matches' },
  mode: { add: byMatch(modeOf), figures: OF_MATCHES, sort: 'matches' },
  day: { add: byMatch(({ recordedAt }) => day(recordedAt)), figures: OF_MATCHES, isTime: true },
  week: { add: byMatch(({ recordedAt }) => week(recordedAt)), figures: OF_MATCHES, isTime: true },
};

// The values of the figures: a list of { key, values }, values by the figures' names.
function figuresOf(groups, figures) {
  const all = { eliminations: 0 };
  for (const group of groups.values()) all.eliminations += group.eliminations;
  return [...groups].map(([key, group]) => ({
    key,
    values: Object.fromEntries(figures.map(({ name, of }) => [name, of(group, all)])),
  }));
}

const isPool = ({ key }) => Object.values(UNNAMED).includes(key);

// Sorts by a figure, downwards, or by the keys. Groups that are no single player come last, and so do unknown values.
function sortFigures(rows, name) {
  const by = name === undefined ? ({ key }) => key : ({ values }) => values[name];
  rows.sort((a, b) => compare(by(a), by(b)));
  const isLast = (row) => Number(isPool(row) || by(row) === null);
  if (name !== undefined) rows.reverse();
  return rows.sort((a, b) => isLast(a) - isLast(b));
}

module.exports = { GROUPINGS, Group, Groups, OF_MATCHES, figure, figuresOf, plain, playerKey, sortFigures };
