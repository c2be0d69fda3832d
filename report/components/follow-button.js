import { PlayerName } from './player-name.js';

// A player's name; choosing it follows the player, choosing it again ends that.
export function FollowButton({ player, followed, onFollow, item }) {
  const isFollowed = player === followed;
  return (
    <button
      type="button"
      class="link"
      aria-pressed={isFollowed}
      onClick={() => onFollow(isFollowed ? null : player)}
      {...item}
    >
      <PlayerName player={player} />
    </button>
  );
}
