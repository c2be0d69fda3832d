import { useMemo } from 'preact/hooks';
import { matrixOf } from '../figures/matrix.js';
import { number } from '../format.js';
import { useRoving } from '../hooks/use-roving.js';
import { useWidth } from '../hooks/use-width.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { FollowButton } from './follow-button.js';
import { PlayerName } from './player-name.js';

const MOST_ACCOUNTS = 12;
const WIDE = { headPixels: 130, columnPixels: 48, otherColumns: 5 };
// Without the columns of the pools.
const NARROW = { headPixels: 100, columnPixels: 36, otherColumns: 1 };
const NARROW_BELOW = 560;
// A single meeting is no pattern: below this many the shade stays light.
const FULL_SHADE_FROM = 5;

const words = text.matrix;

const shade = (count, most) => (0.12 + 0.6 * Math.sqrt(count / Math.max(FULL_SHADE_FROM, most))).toFixed(3);

function Cell({ head, other, count, most }) {
  const isSelf = head.player !== undefined && head.player === other.player;
  const isShaded = !isSelf && head.player && other.player && count > 0;
  const kind = isSelf ? 'self' : head.player && other.player ? undefined : 'pooled';
  return (
    <td
      class={kind}
      style={isShaded ? { '--shade': shade(count, most) } : undefined}
      data-shaded={isShaded || undefined}
    >
      {count > 0 && number(count)}
    </td>
  );
}

function Head({ head, ...button }) {
  return head.player ? <FollowButton player={head.player} {...button} /> : words.pools[head.pool];
}

function MatrixTable({ matrix, isNarrow, followed, onFollow }) {
  const { heads, rows, rowSums, columnSums, sum, most } = matrix;
  const columns = heads.map((_, j) => j).filter((j) => !isNarrow || heads[j].player);
  const roving = useRoving(heads.filter(({ player }) => player).length);
  return (
    <table {...roving.group}>
      <thead>
        <tr>
          <td class="corner">
            {words.corner[0]}
            <br />
            {words.corner[1]}
          </td>
          {columns.map((j) => (
            <th scope="col">
              <span>
                {heads[j].player ? <PlayerName player={heads[j].player} /> : words.pools[heads[j].pool]}
              </span>
            </th>
          ))}
          <th scope="col">
            <span>{words.sum}</span>
          </th>
        </tr>
      </thead>
      <tbody>
        {heads.map((head, i) => (
          <tr class={head.player ? undefined : 'pool'}>
            <th scope="row">
              <Head {...{ head, followed, onFollow }} item={roving.item(i)} />
            </th>
            {columns.map((j) => (
              <Cell {...{ head, most }} other={heads[j]} count={rows[i][j]} />
            ))}
            <td class="sum">{number(rowSums[i])}</td>
          </tr>
        ))}
        <tr class="sum">
          <th scope="row">{words.sum}</th>
          {columns.map((j) => (
            <td>{number(columnSums[j])}</td>
          ))}
          <td>{number(sum)}</td>
        </tr>
      </tbody>
    </table>
  );
}

// Who eliminated whom over all matches, for as many accounts as fit into the width.
export function Matrix({ events, accounts, followed, onFollow }) {
  const [box, width] = useWidth();
  const isNarrow = width < NARROW_BELOW;
  const { headPixels, columnPixels, otherColumns } = isNarrow ? NARROW : WIDE;
  const columns = Math.floor((width - headPixels) / columnPixels) - otherColumns;
  const shown = Math.max(2, Math.min(MOST_ACCOUNTS, columns));
  const matrix = useMemo(
    () =>
      matrixOf(
        events,
        [...accounts]
          .sort((a, b) => b.events - a.events)
          .slice(0, shown)
          .map(({ player }) => player),
      ),
    [events, accounts, shown],
  );
  return (
    <Card title={words.title} note={words.note} name="matrix">
      <div ref={box}>{width > 0 && <MatrixTable {...{ matrix, isNarrow, followed, onFollow }} />}</div>
    </Card>
  );
}
