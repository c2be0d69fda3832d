import { useContext } from 'preact/hooks';
import { shortened } from '../format.js';
import * as text from '../text.js';
import { ReportContext } from './report-context.js';

const ID_DIGITS = 8;

const isId = (player) => player.kind === 'account' && player.name === null;

// A player's name as plain text, as short as the page shows it.
export function nameOf(player) {
  if (player.kind === 'unnamed' || player.kind === 'unknown') return text.players[player.kind];
  return isId(player) ? player.id.slice(0, ID_DIGITS) : shortened(player.name);
}

const fullName = ({ id, name }) => [name, id].filter(Boolean).join(', ');

// A name never mixes its direction of writing with the text around it, hence <bdi>.
export function PlayerName({ player }) {
  const { recording } = useContext(ReportContext);
  const isPooled = player.kind === 'unnamed' || player.kind === 'unknown';
  return (
    <bdi
      class={isId(player) ? 'player id' : `player ${player.kind}`}
      title={isPooled ? undefined : fullName(player)}
    >
      {nameOf(player)}
      {player === recording.player && (
        <span
          class="recording"
          role="img"
          aria-label={`(${text.players.recording})`}
          title={text.players.recording}
        >
          ★
        </span>
      )}
    </bdi>
  );
}
