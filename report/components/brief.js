import { useContext } from 'preact/hooks';
import { aliveOf, concerns, isEnd, longestOf } from '../figures/match.js';
import { position } from '../format.js';
import * as text from '../text.js';
import { Card } from './card.js';
import { EventButton } from './event-button.js';
import { fill } from './fill.js';
import { PlayerName } from './player-name.js';
import { ReportContext } from './report-context.js';

const words = text.brief;

// How the recording player went out.
function ownEnd({ events }, { player, isGuess }, onChoose) {
  if (player === null) return words.nobody;
  const parts = { who: <PlayerName player={player} />, recording: isGuess ? words.guess : words.recording };
  if (!events.some((event) => concerns(event, player))) return fill(words.recordingAbsent, parts);
  const end = events.filter((event) => isEnd(event) && event.victim === player).at(-1);
  if (end === undefined) return fill(words.recordingIn, parts);
  parts.time = <EventButton event={end} onChoose={onChoose} />;
  if (end.attacker === player) return fill(words.recordingSelf, parts);
  if (end.attacker.kind === 'unknown') return fill(words.recordingAlone, parts);
  parts.by = <PlayerName player={end.attacker} />;
  parts.distance = end.distanceM === null ? '' : words.fromDistance(end.distanceM);
  return fill(words.recordingOut, parts);
}

function winner({ events, team, state }, onChoose) {
  if (team?.place === 1) return words.won;
  if (!team?.place && (state === 'truncated' || state === 'recording')) return words.noEnd;
  const last = events.filter(isEnd).at(-1);
  const place = team?.place ? `${words.place(team)} ` : '';
  if (last === undefined) return place || words.noPlace;
  const time = <EventButton event={last} onChoose={onChoose} />;
  return [place, ...fill(words.lastEnd, { time, by: <PlayerName player={last.attacker} /> })];
}

function longest(event, onChoose) {
  return fill(words.longest(event), {
    by: <PlayerName player={event.attacker} />,
    of: <PlayerName player={event.victim} />,
    time: <EventButton event={event} onChoose={onChoose} />,
    where: event.victimAt === null ? '' : words.where(position(event.victimAt)),
  });
}

// The questions that people ask first, answered in sentences.
export function Brief({ match, onChoose }) {
  const { recording } = useContext(ReportContext);
  const alive = aliveOf(match);
  const far = longestOf(match.events);
  return (
    <Card title={words.title} name="brief">
      <ul>
        <li>{winner(match, onChoose)}</li>
        {match.events.length > 0 && <li>{ownEnd(match, recording, onChoose)}</li>}
        {match.events.length > 0 && <li>{alive.halfAtMs === null ? words.noHalf : words.half(alive)}</li>}
        {far && <li>{longest(far, onChoose)}</li>}
      </ul>
    </Card>
  );
}
