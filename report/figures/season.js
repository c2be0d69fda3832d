// What many matches come to.

import { ascending, max, mean, median } from 'd3-array';
import { isEnd } from './match.js';

export const MEAN_OF = 9;

const damageDealt = (own) => own.weaponDamage + own.otherDamage;

// The figures of the recording player that are followed over time. of(match): null where the file does not say it.
const fromOwn = (figure) => (match) => (match.own === null ? null : figure(match.own));
export const TRENDS = [
  { key: 'place', of: (match) => match.team?.place ?? null, bestIsLow: true, mark: 'dot' },
  { key: 'eliminations', of: fromOwn((own) => own.eliminations), mark: 'bar' },
  { key: 'accuracy', of: fromOwn((own) => own.accuracy), mark: 'dot' },
  { key: 'damage', of: fromOwn(damageDealt), mark: 'bar' },
  { key: 'taken', of: fromOwn((own) => own.damageTaken), mark: 'bar' },
  { key: 'traveled', of: fromOwn((own) => own.traveledM), mark: 'bar' },
];

const valuesOf = (matches, key) => {
  const { of } = TRENDS.find((trend) => trend.key === key);
  return matches.map(of).filter((value) => value !== null);
};

// In order of time; matches without a time come last, as they were given.
export const inOrder = (matches) =>
  [...matches].sort(
    (a, b) => ascending(a.recordedAt ?? Infinity, b.recordedAt ?? Infinity) || a.index - b.index,
  );

export function totalsOf(matches) {
  const places = valuesOf(matches, 'place');
  const eliminations = valuesOf(matches, 'eliminations');
  const lengths = matches.map(({ durationMs }) => durationMs).filter((value) => value !== null);
  return {
    won: places.filter((place) => place === 1).length,
    placed: places.length,
    place: median(places) ?? null,
    eliminations: mean(eliminations) ?? null,
    most: max(eliminations) ?? null,
    damage: median(valuesOf(matches, 'damage')) ?? null,
    accuracy: median(valuesOf(matches, 'accuracy')) ?? null,
    length: median(lengths) ?? null,
  };
}

// One figure over the matches: { points: [{ match, position, value, mean }], mean, first, last }. position: the match's
// place in time. A point's mean is of nine matches up to it; first and last are the means of the first and last nine.
export function trendOf(matches, { of }) {
  const known = matches
    .map((match, position) => ({ match, position, value: of(match) }))
    .filter(({ value }) => value !== null);
  const values = known.map(({ value }) => value);
  const points = known.map((point, i) => ({
    ...point,
    mean: i + 1 < MEAN_OF ? null : mean(values.slice(i + 1 - MEAN_OF, i + 1)),
  }));
  const isLong = values.length >= 2 * MEAN_OF;
  return {
    points,
    mean: mean(values) ?? null,
    first: isLong ? mean(values.slice(0, MEAN_OF)) : null,
    last: isLong ? mean(values.slice(-MEAN_OF)) : null,
  };
}

// Accounts by the number of matches in which an event mentions them: { player, matches, events, ends, outs, beaten,
// lostTo }. events: eliminations by or of the account; beaten and lostTo: eliminations of this account by the recording player, and the other way round.
export function accountsOf(matches, recording) {
  const records = new Map();
  const record = (player) => {
    const fresh = { player, last: null, matches: 0, events: 0, ends: 0, outs: 0, beaten: 0, lostTo: 0 };
    if (!records.has(player)) records.set(player, fresh);
    return records.get(player);
  };
  for (const match of matches) {
    for (const event of match.events) {
      for (const player of new Set([event.attacker, event.victim])) {
        if (player.kind === 'account') countMention(record(player), event, recording);
      }
    }
  }
  return [...records.values()].sort((a, b) => b.matches - a.matches || b.events - a.events);
}

function countMention(record, event, recording) {
  const { player } = record;
  if (record.last !== event.match) record.matches += 1;
  record.last = event.match;
  if (!isEnd(event)) return;
  record.events += 1;
  if (event.victim === player) record.outs += 1;
  if (event.attacker !== event.victim && event.attacker === player) record.ends += 1;
  if (player === recording) return;
  if (event.attacker === recording) record.beaten += 1;
  if (event.victim === recording) record.lostTo += 1;
}
