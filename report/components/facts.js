import { modeOf, otherSettings, words as spaced } from '../figures/facts.js';
import { playersOf } from '../figures/match.js';
import { clock, dateAndTime, number } from '../format.js';
import * as text from '../text.js';
import { Card } from './card.js';

const words = text.facts;

const orNull = (value, format) => (value === null || value === undefined ? null : format(value));

function rowsOf(match) {
  const { own, state } = match;
  return [
    [words.rows.file, match.file],
    [words.rows.recorded, dateAndTime(match.recordedAt)],
    [words.rows.length, orNull(match.durationMs, clock)],
    [words.rows.state, state === null ? words.unknownState : words.states[state]],
    [words.rows.map, spaced(match.map)],
    [words.mode, modeOf(match)],
    ...otherSettings(match).map(([key, value]) => [spaced(key), value ?? '✓']),
    [words.rows.engine, match.engine],
    [words.rows.build, orNull(match.build, String)],
    [words.rows.players, number(playersOf(match.events).length)],
    [words.rows.gathered, orNull(own?.materialsGathered, number)],
    [words.rows.used, orNull(own?.materialsUsed, number)],
    [words.rows.structures, orNull(own?.damageToStructures, number)],
    [words.rows.id, match.id],
  ];
}

// What the file says of the match. What it does not say is named, too.
export function Facts({ match }) {
  return (
    <Card title={words.title} name="facts">
      <dl>
        {rowsOf(match).map(([name, value]) => (
          <div>
            <dt>
              <bdi>{name}</bdi>
            </dt>
            <dd class={value === null ? 'quiet' : undefined}>
              <bdi>{value ?? words.missing}</bdi>
            </dd>
          </div>
        ))}
      </dl>
    </Card>
  );
}
