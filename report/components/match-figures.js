import { longestOf, isEnd, playersOf } from '../figures/match.js';
import { metres, number, percent } from '../format.js';
import * as text from '../text.js';
import { Figures } from './figures.js';

const labels = text.figures;

function ownItems(own) {
  return [
    { value: number(own.eliminations), label: labels.eliminations },
    { value: number(own.assists), label: labels.assists },
    { value: number(own.revives), label: labels.revives },
    { value: percent(own.accuracy), label: labels.accuracy },
    { value: number(own.weaponDamage + own.otherDamage), label: labels.damage },
    { value: number(own.damageTaken), label: labels.taken },
    { value: metres(own.traveledM), label: labels.traveled },
  ];
}

function eventItems({ events }) {
  const longest = longestOf(events);
  return [
    { value: number(events.filter(isEnd).length), label: labels.seenEnds },
    { value: number(events.filter((event) => !isEnd(event)).length), label: labels.seenKnocks },
    { value: number(playersOf(events).length), label: labels.seenPlayers },
    { value: metres(longest?.distanceM ?? null), label: labels.longest },
  ];
}

// Of the recording player; without statistics in the file, what the events say.
export function MatchFigures({ match }) {
  const { own, team } = match;
  const place = team?.place
    ? [{ value: number(team.place), unit: team.of && labels.of(team.of), label: labels.placed }]
    : [];
  return (
    <Figures title={labels.title} items={[...place, ...(own === null ? eventItems(match) : ownItems(own))]} />
  );
}
