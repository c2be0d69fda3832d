import { TRENDS, trendOf } from '../figures/season.js';
import { dateAndTime, NONE } from '../format.js';
import * as text from '../text.js';
import { AsTable } from './as-table.js';
import { Card } from './card.js';
import { TrendChart } from './trend-chart.js';

const words = text.trends;

function Trend({ trend, matches }) {
  const { points, mean, first, last } = trendOf(matches, trend);
  const format = (value) => words.values[trend.key](value);
  return (
    <div class="trend">
      <h3>{words.names[trend.key]}</h3>
      {points.length === 0 ? (
        <p class="quiet">{words.none}</p>
      ) : (
        <>
          <p class="note">
            {words.mean(format(mean))}
            {first !== null && <span class="change">{words.change(format(first), format(last))}</span>}
          </p>
          <TrendChart {...{ trend, points, matches }} />
        </>
      )}
    </div>
  );
}

// The recording player's figures over time. matches: in order of time.
export function Trends({ matches }) {
  const columns = [words.match, ...TRENDS.map(({ key }) => words.names[key])];
  const cell = (match) => (trend) => {
    const value = trend.of(match);
    return value === null ? NONE : words.values[trend.key](value);
  };
  const rows = () =>
    matches.map((match) => [
      dateAndTime(match.recordedAt) ?? text.matches.undated,
      ...TRENDS.map(cell(match)),
    ]);
  return (
    <Card title={words.title} note={words.note} name="trends">
      <div class="grid">
        {TRENDS.map((trend) => (
          <Trend {...{ trend, matches }} />
        ))}
      </div>
      <AsTable columns={columns} rows={rows} />
    </Card>
  );
}
