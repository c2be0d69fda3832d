import { useId } from 'preact/hooks';
import * as text from '../text.js';
import { nameOf } from './player-name.js';

// Chooses one player whose events the page shows. players: [{ player, events }], followed: a player or null.
export function FollowSelect({ players, followed, onFollow }) {
  const id = useId();
  const isListed = followed === null || players.some(({ player }) => player === followed);
  const listed = isListed ? players : [{ player: followed, events: 0 }, ...players];
  const onChange = ({ currentTarget }) => onFollow(listed[currentTarget.value]?.player ?? null);
  return (
    <span class="follow">
      <label for={id}>{text.map.follow}</label>{' '}
      <select
        id={id}
        value={String(listed.findIndex(({ player }) => player === followed))}
        onChange={onChange}
      >
        <option value="-1">{text.map.everyone}</option>
        {listed.map(({ player, events }, i) => (
          <option value={String(i)}>{text.map.option(nameOf(player), events)}</option>
        ))}
      </select>
    </span>
  );
}
