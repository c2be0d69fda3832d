import { distancesOf, longestOf } from '../figures/match.js';
import { number } from '../format.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { fill } from './fill.js';
import { PlayerName } from './player-name.js';

const words = text.distances;

// Over which distances players were eliminated: a table whose counts are drawn as bars.
export function Distances({ events, followed }) {
  const { classes, unknown } = distancesOf(events);
  const most = Math.max(1, ...classes.map(({ count }) => count));
  const longest = longestOf(events);
  const note = [
    followed && fill(words.followed, { who: <PlayerName player={followed} /> }),
    longest && `${followed ? ', ' : ''}${words.longest(longest.distanceM)}`,
  ];
  return (
    <Card title={words.title} note={note} name="distances">
      <table class="bars">
        <thead class="unseen">
          <tr>
            {words.columns.map((name) => (
              <th scope="col">{name}</th>
            ))}
          </tr>
        </thead>
        <tbody>
          {classes.map(({ from, to, count }) => (
            <tr>
              <th scope="row">{words.range(from, to)}</th>
              <td>
                <i style={{ width: `${(75 * count) / most}%` }} /> {number(count)}
              </td>
            </tr>
          ))}
        </tbody>
      </table>
      {unknown > 0 && <p class="about">{words.unknown(unknown)}</p>}
    </Card>
  );
}
