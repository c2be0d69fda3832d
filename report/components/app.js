import { useEffect, useMemo, useRef, useState } from 'preact/hooks';
import { modeOf, otherSettings, titleOf, words } from '../figures/facts.js';
import { isEnd } from '../figures/match.js';
import { accountsOf, inOrder } from '../figures/season.js';
import { date, dateAndTime } from '../format.js';
import { addressOf, useRoute } from '../hooks/use-route.js';
import * as text from '../text.js';
import { Failures } from './failures.js';
import { MatchView } from './match-view.js';
import { ReportContext } from './report-context.js';
import { SeasonView } from './season-view.js';

function ThemeButton() {
  const [chosen, setChosen] = useState(null);
  const theme = chosen ?? (matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light');
  const next = theme === 'dark' ? 'light' : 'dark';
  const change = () => {
    setChosen(next);
    document.documentElement.dataset.theme = next;
  };
  return (
    <button type="button" class="theme" aria-label={text.page.theme(text.page[next])} onClick={change}>
      {text.page[next]}
    </button>
  );
}

const matchFacts = (match) => [
  words(match.map),
  modeOf(match),
  ...otherSettings(match).map(([key, value]) => [words(key), value].filter(Boolean).join(' ')),
  dateAndTime(match.recordedAt),
  match.durationMs === null ? null : text.facts.long(match.durationMs),
];

function seasonFacts(matches, accounts) {
  if (matches.length === 0) return [];
  const dates = matches
    .filter(({ recordedAt }) => recordedAt !== null)
    .map(({ recordedAt }) => date(recordedAt));
  const maps = [...new Set(matches.map((match) => words(match.map)))];
  return [
    dates.length > 0 ? text.season.from(dates[0], dates.at(-1)) : null,
    maps.length === 1 ? maps[0] : text.season.maps(maps.length),
    text.season.played(matches.reduce((sum, { durationMs }) => sum + durationMs, 0)),
    text.season.ends(matches.reduce((sum, { events }) => sum + events.filter(isEnd).length, 0)),
    text.season.accounts(accounts.length),
  ];
}

// Title, facts, and the button for the colours. It takes the keyboard's focus when the page turns to another match.
function Header({ title, facts, hasTurned }) {
  const heading = useRef(null);
  useEffect(() => {
    if (hasTurned) heading.current.focus({ preventScroll: true });
  }, []);
  return (
    <header class="top">
      <div>
        <h1 ref={heading} tabindex={-1}>
          <bdi>{title}</bdi>
        </h1>
        <p class="top-facts">
          {facts.filter(Boolean).map((fact) => (
            <bdi>{fact}</bdi>
          ))}
        </p>
      </div>
      <ThemeButton />
    </header>
  );
}

// Ways from one match of many to the others.
function Ways({ match, matches }) {
  const at = matches.indexOf(match);
  const link = (other, words) => other && <a href={addressOf(other)}>{words}</a>;
  return (
    <nav class="ways" aria-label={text.matches.title}>
      <a href="#all">{text.matches.back}</a>
      <span class="quiet">{text.matches.place(at + 1, matches.length)}</span>
      {link(matches[at - 1], text.matches.before)}
      {link(matches[at + 1], text.matches.after)}
    </nav>
  );
}

// report: the page's data with its matches unpacked.
export function App({ report }) {
  const { matches: given, title, failures, recording } = report;
  const matches = useMemo(() => inOrder(given), [given]);
  const accounts = useMemo(() => accountsOf(matches, recording.player), [matches, recording]);
  const isMany = matches.length !== 1;
  const opened = useRoute(given);
  const match = isMany ? opened : matches[0];
  const turned = useRef(false);
  useEffect(() => {
    turned.current = true;
  }, []);
  const heading = match
    ? { title: (!isMany && title) || titleOf(match) || text.page.untitled, facts: matchFacts(match) }
    : { title: title ?? text.page.matches(matches.length), facts: seasonFacts(matches, accounts) };
  return (
    <ReportContext.Provider value={report}>
      <main>
        {isMany && match && <Ways {...{ match, matches }} />}
        <Header key={match?.index} {...heading} hasTurned={turned.current} />
        {!(isMany && match) && <Failures failures={failures} />}
        {match && <MatchView key={match.index} match={match} />}
        {isMany && matches.length > 0 && (
          <div class="season" hidden={match !== null}>
            <SeasonView {...{ matches, accounts }} />
          </div>
        )}
        {matches.length === 0 && <p>{text.page.noMatches}</p>}
        <footer>{text.page.footer}</footer>
      </main>
    </ReportContext.Provider>
  );
}
