import { useContext } from 'preact/hooks';
import { clock, date, position } from '../format.js';
import { addressOf } from '../hooks/use-route.js';
import * as text from '../text.js';
import { EventSentence } from './event-sentence.js';
import { ReportContext } from './report-context.js';

const words = text.events;

// All that is known of the chosen event. hasLink: whether its match is another page.
export function ChosenText({ event, hasLink }) {
  const { damageNames } = useContext(ReportContext);
  const { match, distanceM, victimAt, damageType } = event;
  const damage = damageNames.has(damageType)
    ? words.damage(damageNames.get(damageType))
    : damageType !== null && words.damageType(damageType);
  const details = [
    distanceM !== null && words.apart(distanceM),
    victimAt !== null && words.victimAt(position(victimAt)),
    damage,
  ].filter(Boolean);
  return (
    <>
      <b>{clock(event.timeMs)}</b> <EventSentence event={event} />
      {details.map((detail) => `, ${detail}`)}.
      {hasLink && (
        <>
          {' '}
          {words.inMatch(date(match.recordedAt) ?? text.matches.undated)}{' '}
          <a href={addressOf(match)}>{words.open}</a>
        </>
      )}
    </>
  );
}
