import * as text from '../text.js';
import { Choice } from './choice.js';
import { nameOf } from './player-name.js';

// Chooses one player whose events the page shows. players: [{ player, events }], followed: a player or null.
export function FollowSelect({ players, followed, onFollow }) {
  const options = [[null, text.map.everyone]];
  if (followed && !players.some(({ player }) => player === followed))
    options.push([followed, nameOf(followed)]);
  for (const { player, events } of players) options.push([player, text.map.option(nameOf(player), events)]);
  return <Choice label={text.map.follow} options={options} value={followed} onChange={onFollow} />;
}
