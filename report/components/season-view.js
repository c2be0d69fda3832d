import { useContext, useMemo, useState } from 'preact/hooks';
import { words } from '../figures/facts.js';
import { concerns, isEnd } from '../figures/match.js';
import { totalsOf } from '../figures/season.js';
import * as text from '../text.js';
import { AccountsTable } from './accounts-table.js';
import { Choice } from './choice.js';
import { Distances } from './distances.js';
import { fill } from './fill.js';
import { FollowSelect } from './follow-select.js';
import { MapCard } from './map-card.js';
import { MatchesTable } from './matches-table.js';
import { Matrix } from './matrix.js';
import { PlayerName } from './player-name.js';
import { ReportContext } from './report-context.js';
import { SeasonFigures } from './season-figures.js';
import { Trends } from './trends.js';

const MOST_TO_FOLLOW = 200;

function Recording({ matches }) {
  const { recording } = useContext(ReportContext);
  const { guess, recording: known, nobody, incomplete: missing } = text.season;
  const incomplete = matches.filter(({ state }) => state === 'truncated' || state === 'recording').length;
  const sentence = recording.isGuess ? guess : known;
  return (
    <p class="aside">
      {recording.player ? fill(sentence, { who: <PlayerName player={recording.player} /> }) : nobody}
      {incomplete > 0 && ` ${missing(incomplete)}`}
    </p>
  );
}

function About({ events, followed }) {
  if (followed === null) return text.map.hintMany;
  const matches = new Set(events.map(({ match }) => match)).size;
  return fill(text.map.seenIn(events.length, matches), { who: <PlayerName player={followed} /> });
}

// The maps, the most played first.
function mapsOf(matches) {
  const counts = new Map();
  for (const { map } of matches) counts.set(map, (counts.get(map) ?? 0) + 1);
  return [...counts.keys()].sort((a, b) => counts.get(b) - counts.get(a));
}

// One map at a time: the same position on another map is another place.
function SeasonMap({ matches, all, events, follow }) {
  const maps = useMemo(() => mapsOf(matches), [matches]);
  const [map, setMap] = useState(maps[0]);
  const [wanted, setWanted] = useState(null);
  const onMap = useMemo(() => (list) => list.filter(({ match }) => match.map === map), [map]);
  const [allHere, here] = [
    useMemo(() => onMap(all), [all, onMap]),
    useMemo(() => onMap(events), [events, onMap]),
  ];
  const options = maps.map((name) => [name, words(name) ?? text.map.noMap]);
  const choices = [
    maps.length > 1 && <Choice label={text.map.map} options={options} value={map} onChange={setMap} />,
    <FollowSelect {...follow} />,
  ];
  return (
    <MapCard
      note={text.timeline.ends(here.length)}
      {...{ choices, all: allHere, events: here }}
      chosen={here.includes(wanted) ? wanted : null}
      modes
      onChoose={setWanted}
      about={<About events={here} followed={follow.followed} />}
    />
  );
}

// Everything about many matches. matches: in order of time; accounts: from accountsOf.
export function SeasonView({ matches, accounts }) {
  const { recording } = useContext(ReportContext);
  const [followed, setFollowed] = useState(null);
  const totals = useMemo(() => totalsOf(matches), [matches]);
  const all = useMemo(() => matches.flatMap(({ events }) => events.filter(isEnd)), [matches]);
  const events = useMemo(
    () => (followed ? all.filter((event) => concerns(event, followed)) : all),
    [all, followed],
  );
  const following = { followed, onFollow: setFollowed };
  return (
    <>
      <SeasonFigures totals={totals} />
      <Recording matches={matches} />
      <Trends matches={matches} />
      {all.length > 0 ? (
        <>
          <div class="pair">
            <SeasonMap
              {...{ matches, all, events }}
              follow={{ players: accounts.slice(0, MOST_TO_FOLLOW), ...following }}
            />
            <div class="stack">
              <Distances {...{ events, followed }} />
              <AccountsTable {...{ accounts, ...following }} recording={recording.player} />
            </div>
          </div>
          <Matrix {...{ accounts, ...following }} events={all} />
        </>
      ) : (
        <p class="aside">{text.season.noEnds}</p>
      )}
      <MatchesTable matches={matches} />
    </>
  );
}
