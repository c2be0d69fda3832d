import { isNamed, isEnd } from '../figures/match.js';
import { clock, number } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { EventButton } from './event-button.js';
import { FollowButton } from './follow-button.js';
import { PlayerName } from './player-name.js';

const words = text.whom;

// Each attacker with the victims. A grid of everyone by everyone would be nearly empty for one match.
export function Whom({ records, events, chosen, onChoose, followed, onFollow }) {
  const attackers = records.filter(({ ends }) => ends.length > 0);
  const places = attackers.reduce((sum, { ends }) => sum + 1 + ends.length, 0);
  const unnamed = events.filter((event) => isEnd(event) && !isNamed(event.attacker)).length;
  const roving = useRoving(places);
  let place = 0;
  const next = () => roving.item(place++);
  return (
    <Card title={words.title} note={words.note} name="whom">
      {attackers.length === 0 && <p>{words.none}</p>}
      {attackers.length > 0 && (
        <div class="scroll" {...roving.group}>
          <table>
            <thead>
              <tr>
                {words.columns.map((name) => (
                  <th scope="col">{name}</th>
                ))}
              </tr>
            </thead>
            <tbody>
              {attackers.map(({ player, ends }) => (
                <tr>
                  <th scope="row">
                    <FollowButton {...{ player, followed, onFollow }} item={next()} />
                  </th>
                  <td>{number(ends.length)}</td>
                  <td class="victims">
                    {ends.map((event) => (
                      <span class={event === chosen ? 'chosen' : undefined}>
                        <EventButton {...{ event, onChoose }} item={next()}>
                          {clock(event.timeMs)} <PlayerName player={event.victim} />
                        </EventButton>
                      </span>
                    ))}
                  </td>
                </tr>
              ))}
            </tbody>
          </table>
        </div>
      )}
      {unnamed > 0 && <p class="about">{words.unnamed(unnamed)}</p>}
    </Card>
  );
}
