import { useContext, useMemo, useState } from 'preact/hooks';
import { concerns, isEnd } from '../figures/match.js';
import { totalsOf } from '../figures/season.js';
import * as text from '../text.js';
import { AccountsTable } from './accounts-table.js';
import { Distances } from './distances.js';
import { fill } from './fill.js';
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
  const words = text.season;
  const incomplete = matches.filter(({ state }) => state === 'truncated' || state === 'recording').length;
  const sentence = recording.isGuess ? words.guess : words.recording;
  return (
    <p class="aside">
      {recording.player ? fill(sentence, { who: <PlayerName player={recording.player} /> }) : words.nobody}
      {incomplete > 0 && ` ${words.incomplete(incomplete)}`}
    </p>
  );
}

function About({ events, followed }) {
  if (followed === null) return text.map.hintMany;
  const matches = new Set(events.map(({ match }) => match)).size;
  return fill(text.map.seenIn(events.length, matches), { who: <PlayerName player={followed} /> });
}

// Everything about many matches. matches: in order of time; accounts: from accountsOf.
export function SeasonView({ matches, accounts }) {
  const { recording } = useContext(ReportContext);
  const [followed, setFollowed] = useState(null);
  const [wanted, setWanted] = useState(null);
  const totals = useMemo(() => totalsOf(matches), [matches]);
  const all = useMemo(() => matches.flatMap(({ events }) => events.filter(isEnd)), [matches]);
  const events = useMemo(
    () => (followed ? all.filter((event) => concerns(event, followed)) : all),
    [all, followed],
  );
  const chosen = wanted !== null && (!followed || concerns(wanted, followed)) ? wanted : null;
  const following = { followed, onFollow: setFollowed };
  return (
    <>
      <SeasonFigures totals={totals} />
      <Recording matches={matches} />
      <Trends matches={matches} />
      <div class="pair">
        <MapCard
          note={text.timeline.ends(events.length)}
          {...{ events, all, chosen }}
          modes
          onChoose={setWanted}
          follow={{ players: accounts.slice(0, MOST_TO_FOLLOW), ...following }}
          about={<About {...{ events, followed }} />}
        />
        <div class="stack">
          <Distances {...{ events, followed }} />
          <AccountsTable {...{ accounts, ...following }} recording={recording.player} />
        </div>
      </div>
      <Matrix {...{ accounts, ...following }} events={all} />
      <MatchesTable matches={matches} />
    </>
  );
}
