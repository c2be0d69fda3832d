import { metres, number } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { EventButton } from './event-button.js';
import { FollowButton } from './follow-button.js';
import { PlayerName } from './player-name.js';

const words = text.records;

function Exit({ event, onChoose, item }) {
  if (event === null) return <span class="quiet">{words.notSeen}</span>;
  const isAlone = event.attacker === event.victim || event.attacker.kind === 'unknown';
  return (
    <>
      <EventButton {...{ event, onChoose, item }} />{' '}
      {isAlone ? (
        <span class="quiet">{event.attacker === event.victim ? text.events.self : text.events.alone}</span>
      ) : (
        <>
          <span class="quiet">{words.by}</span> <PlayerName player={event.attacker} />
        </>
      )}
    </>
  );
}

// The players of a match: what they did, their longest elimination, and how they went out.
export function RecordsTable({ records, onChoose, followed, onFollow }) {
  const places = records.reduce((sum, { longest, exit }) => sum + 1 + Boolean(longest) + Boolean(exit), 0);
  const roving = useRoving(places);
  let place = 0;
  const next = () => roving.item(place++);
  return (
    <Card title={words.title} note={words.note(records.length)} name="records">
      <div class="scroll tall" {...roving.group}>
        <table>
          <thead>
            <tr>
              {Object.entries(words.columns).map(([key, name]) => (
                <th scope="col" class={key}>
                  {name}
                </th>
              ))}
            </tr>
          </thead>
          <tbody>
            {records.map(({ player, ends, knocks, longest, exit }) => (
              <tr aria-current={player === followed ? 'true' : undefined}>
                <th scope="row">
                  <FollowButton {...{ player, followed, onFollow }} item={next()} />
                </th>
                <td>{number(ends.length)}</td>
                <td>{number(knocks)}</td>
                <td>
                  {longest && (
                    <EventButton event={longest} onChoose={onChoose} item={next()}>
                      {metres(longest.distanceM)}
                    </EventButton>
                  )}
                </td>
                <td class="exit">
                  <Exit event={exit} onChoose={onChoose} item={exit ? next() : {}} />
                </td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </Card>
  );
}
