import { ascending } from 'd3-array';
import { useMemo, useState } from 'preact/hooks';
import { modeOf, titleOf } from '../figures/facts.js';
import { TRENDS } from '../figures/season.js';
import { clock, dateAndTime, NONE, number, percent, shortened } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import { addressOf } from '../hooks/use-route.js';
import * as text from '../text.js';
import { Card } from './card.js';

const PAGE = 100;
const words = text.matches;

const trend = (key) => TRENDS.find((each) => each.key === key).of;
const VALUES = {
  recordedAt: (match) => match.recordedAt,
  mode: modeOf,
  place: trend('place'),
  eliminations: trend('eliminations'),
  damage: trend('damage'),
  accuracy: trend('accuracy'),
  durationMs: (match) => match.durationMs,
};
// Columns that first sort downwards: the newest, the best.
const FALLS_FIRST = new Set(['recordedAt', 'eliminations', 'damage', 'accuracy', 'durationMs']);

// Matches without the value come last, whichever way the others are sorted.
function sorted(matches, { key, falls }) {
  const value = VALUES[key];
  const known = matches.filter((match) => value(match) !== null);
  known.sort((a, b) => (falls ? -1 : 1) * ascending(value(a), value(b)));
  return [...known, ...matches.filter((match) => value(match) === null)];
}

function Place({ team }) {
  if (!team?.place) return NONE;
  const place = team.place === 1 ? <b class="won">{words.first}</b> : number(team.place);
  return (
    <>
      {place}
      {team.of && <span class="quiet"> / {number(team.of)}</span>}
    </>
  );
}

function Row({ match, item }) {
  const { own, state } = match;
  return (
    <tr>
      <th scope="row">
        <a href={addressOf(match)} {...item}>
          {dateAndTime(match.recordedAt) ?? words.undated}
        </a>{' '}
        <bdi class="quiet">{shortened(titleOf(match) ?? '')}</bdi>
        {words.states[state] && <span class="state"> {words.states[state]}</span>}
      </th>
      <td>
        <bdi>{modeOf(match) ?? NONE}</bdi>
      </td>
      <td>
        <Place team={match.team} />
      </td>
      <td>{own ? number(own.eliminations) : NONE}</td>
      <td>{own ? number(own.weaponDamage + own.otherDamage) : NONE}</td>
      <td>{percent(own?.accuracy ?? null)}</td>
      <td>{clock(match.durationMs)}</td>
    </tr>
  );
}

function Heads({ order, onOrder }) {
  const keys = Object.keys(words.columns);
  const roving = useRoving(keys.length);
  const next = (key) => ({ key, falls: order.key === key ? !order.falls : FALLS_FIRST.has(key) });
  return (
    <tr {...roving.group}>
      {keys.map((key, i) => (
        <th
          scope="col"
          aria-sort={order.key === key ? (order.falls ? 'descending' : 'ascending') : undefined}
        >
          <button type="button" class="link" onClick={() => onOrder(next(key))} {...roving.item(i)}>
            {words.columns[key]}
            <span aria-hidden="true">{order.key === key && (order.falls ? ' ↓' : ' ↑')}</span>
          </button>
        </th>
      ))}
    </tr>
  );
}

// All matches, to be sorted and opened; a hundred at first.
export function MatchesTable({ matches }) {
  const [order, setOrder] = useState({ key: 'recordedAt', falls: true });
  const [shown, setShown] = useState(PAGE);
  const rows = useMemo(() => sorted(matches, order).slice(0, shown), [matches, order, shown]);
  const roving = useRoving(rows.length);
  const rest = matches.length - rows.length;
  return (
    <Card title={words.title} note={words.note} name="matches">
      <div class="scroll tall">
        <table>
          <thead>
            <Heads order={order} onOrder={setOrder} />
          </thead>
          <tbody {...roving.group}>
            {rows.map((match, i) => (
              <Row match={match} item={roving.item(i)} key={match.index} />
            ))}
          </tbody>
        </table>
      </div>
      {rest > 0 && (
        <button type="button" class="more" onClick={() => setShown(shown + PAGE)}>
          {words.more(Math.min(PAGE, rest))}
        </button>
      )}
    </Card>
  );
}
