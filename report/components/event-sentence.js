import * as text from '../text.js';
import { PlayerName } from './player-name.js';

// What happened, as a sentence without its time.
export function EventSentence({ event }) {
  const { kind, attacker, victim } = event;
  const isSelf = attacker === victim;
  if (!isSelf && attacker.kind !== 'unknown') {
    return (
      <>
        <PlayerName player={attacker} /> <b class={kind}>{text.events[kind]}</b>{' '}
        <PlayerName player={victim} />
      </>
    );
  }
  return (
    <>
      <PlayerName player={victim} />{' '}
      <b class={kind}>{kind === 'knock' ? text.events.wasKnock : text.events.wasElimination}</b>{' '}
      {isSelf ? text.events.self : text.events.alone}
    </>
  );
}
