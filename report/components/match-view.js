import { useEffect, useMemo, useState } from 'preact/hooks';
import { concerns, isEnd, lengthOf, playersOf } from '../figures/match.js';
import * as text from '../text.js';
import { Brief } from './brief.js';
import { Distances } from './distances.js';
import { EventList } from './event-list.js';
import { Facts } from './facts.js';
import { fill } from './fill.js';
import { FollowSelect } from './follow-select.js';
import { MapCard } from './map-card.js';
import { MatchFigures } from './match-figures.js';
import { PlayerName } from './player-name.js';
import { RecordsTable } from './records-table.js';
import { Timeline } from './timeline.js';
import { Warnings } from './warnings.js';
import { Whom } from './whom.js';

// The reader's focus: a part of the time, a player, an event. Escape forgets the event.
function useFocus(match) {
  const whole = [0, lengthOf(match)];
  const [range, setRange] = useState(whole);
  const [followed, setFollowed] = useState(null);
  const [wanted, setWanted] = useState(null);
  const events = useMemo(
    () =>
      match.events.filter(
        (event) =>
          event.timeMs >= range[0] && event.timeMs <= range[1] && (!followed || concerns(event, followed)),
      ),
    [match, range, followed],
  );
  useEffect(() => {
    const onKeyDown = ({ key }) => key === 'Escape' && setWanted(null);
    addEventListener('keydown', onKeyDown);
    return () => removeEventListener('keydown', onKeyDown);
  }, []);
  // Choosing an event outside of the shown part shows everything.
  const choose = (event) => {
    if (event.timeMs < range[0] || event.timeMs > range[1]) setRange(whole);
    if (followed && !concerns(event, followed)) setFollowed(null);
    setWanted(event);
  };
  const chosen = events.includes(wanted) ? wanted : null;
  return { events, range, setRange, followed, setFollowed, chosen, choose };
}

function mentions(events) {
  return playersOf(events)
    .map(({ player }) => ({ player, events: events.filter((event) => concerns(event, player)).length }))
    .sort((a, b) => b.events - a.events);
}

function About({ events, followed }) {
  if (followed === null) return text.map.hint;
  return fill(text.map.seenIn(events.filter(isEnd).length, 1), { who: <PlayerName player={followed} /> });
}

// Everything about one match.
export function MatchView({ match }) {
  const focus = useFocus(match);
  const { events, followed, chosen } = focus;
  const players = useMemo(() => mentions(match.events), [match]);
  const records = useMemo(() => playersOf(events), [events]);
  const choosing = { chosen, onChoose: focus.choose };
  const following = { followed, onFollow: focus.setFollowed };
  return (
    <>
      <MatchFigures match={match} />
      <Warnings match={match} />
      <Brief match={match} onChoose={focus.choose} />
      {match.events.length > 0 && (
        <>
          <Timeline {...{ match, range: focus.range, onRange: focus.setRange, ...choosing }} />
          <div class="pair">
            <MapCard
              note={text.events.countOf(events.length, match.events.length)}
              all={match.events}
              choices={<FollowSelect {...{ players, ...following }} />}
              about={<About {...{ events, followed }} />}
              {...{ events, ...choosing }}
            />
            <EventList {...{ events, ...choosing }} all={match.events} />
          </div>
          <div class="pair">
            <div class="stack">
              <Whom {...{ records, events, ...choosing, ...following }} />
              <Distances {...{ events, followed }} />
            </div>
            <RecordsTable {...{ records, ...choosing, ...following }} />
          </div>
        </>
      )}
      <Facts match={match} />
    </>
  );
}
