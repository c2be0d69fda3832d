import { extent, max } from 'd3-array';
import { useState } from 'preact/hooks';
import { linearScale, linePath } from '../figures/scale.js';
import { dateAndTime, month, number } from '../format.js';
import { openMatch } from '../hooks/use-route.js';
import { useWidth } from '../hooks/use-width.js';
import * as text from '../text.js';

const HEIGHT = 118;
const EDGE = { left: 46, right: 8, top: 8, bottom: 20 };
const LABEL_PIXELS = 44;
const NAME_PIXELS = 24;
const STEPS = { ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1, PageUp: 10, PageDown: -10 };

// Where a month begins: [{ position, name }], as far apart as their names need.
function months(matches, x) {
  const starts = [];
  matches.forEach(({ recordedAt }, position) => {
    if (recordedAt === null) return;
    const name = month(recordedAt);
    const last = starts.at(-1);
    if (last?.name === name) return;
    if (!last || x(position) - x(last.position) > LABEL_PIXELS) starts.push({ position, name });
  });
  // A name that the edge would cut is left out.
  return starts.filter(({ position }) => x(position) < x.range[1] - NAME_PIXELS);
}

function Axes({ x, y, trend, matches, width }) {
  return (
    <g class="axis" aria-hidden="true">
      {(trend.bestIsLow ? [1, ...y.ticks(3)] : y.ticks(3)).map((value) => (
        <>
          <line x1={EDGE.left} x2={width - EDGE.right} y1={y(value)} y2={y(value)} />
          <text x={EDGE.left - 6} y={y(value)} dy="0.32em" text-anchor="end">
            {(text.trends.axes[trend.key] ?? number)(value)}
          </text>
        </>
      ))}
      {months(matches, x).map(({ position, name }) => (
        <text x={x(position)} y={HEIGHT - 5}>
          {name}
        </text>
      ))}
    </g>
  );
}

function scales(trend, points, count, width) {
  const values = points.map(({ value }) => value);
  const x = linearScale([-0.5, count - 0.5], [EDGE.left, width - EDGE.right]);
  const domain = trend.bestIsLow ? [max(values), Math.min(1, extent(values)[0])] : [0, max(values) || 1];
  return { x, y: linearScale(domain, [HEIGHT - EDGE.bottom, EDGE.top]) };
}

const dot = ({ x, y }, { position, value }) => `M${x(position).toFixed(1)},${y(value).toFixed(1)}h0`;
const bar = ({ x, y }, { position, value }) => `M${x(position).toFixed(1)},${y(0)}V${y(value).toFixed(1)}`;

// A figure over the matches. It is one tab stop: arrow keys go from match to match, Enter opens one.
export function TrendChart({ trend, points, matches }) {
  const [box, width] = useWidth();
  const [at, setAt] = useState(null);
  const format = text.trends.values[trend.key];
  const last = points.length - 1;
  const point = at === null ? null : points[Math.min(at, last)];
  const scale = scales(trend, points, matches.length, Math.max(width, 100));
  const gap = Math.abs(scale.x(1) - scale.x(0));
  const describe = ({ match, value }) =>
    text.trends.point(dateAndTime(match.recordedAt) ?? text.matches.undated, format(value));

  const nearest = ({ currentTarget, clientX }) => {
    const pixel = clientX - currentTarget.getBoundingClientRect().left;
    const away = ({ position }) => Math.abs(scale.x(position) - pixel);
    return points.reduce((best, each, i) => (away(each) < away(points[best]) ? i : best), 0);
  };
  const onKeyDown = (event) => {
    const { key } = event;
    if (key === 'Enter') openMatch((point ?? points[last]).match);
    else if (key === 'Home' || key === 'End') setAt(key === 'Home' ? 0 : last);
    else if (STEPS[key]) setAt((now) => Math.max(0, Math.min(last, (now ?? last) + STEPS[key])));
    else return;
    event.preventDefault();
  };
  return (
    <div ref={box} class="trend-chart">
      {width > 0 && (
        <svg
          viewBox={`0 0 ${width} ${HEIGHT}`}
          role="slider"
          tabindex={0}
          aria-label={text.trends.names[trend.key]}
          aria-valuemin={1}
          aria-valuemax={points.length}
          aria-valuenow={(at ?? last) + 1}
          aria-valuetext={describe(point ?? points[last])}
          onKeyDown={onKeyDown}
          onFocus={() => setAt((now) => now ?? last)}
          onBlur={() => setAt(null)}
          onPointerMove={(event) => setAt(nearest(event))}
          onPointerLeave={() => setAt(null)}
          onClick={(event) => openMatch(points[nearest(event)].match)}
        >
          <Axes {...scale} {...{ trend, matches, width }} />
          <path
            class={trend.mark}
            stroke-width={
              trend.mark === 'bar' ? Math.max(1, Math.min(10, gap * 0.75)) : Math.max(3, Math.min(6, gap))
            }
            d={points.map((each) => (trend.mark === 'bar' ? bar : dot)(scale, each)).join('')}
          />
          {trend.bestIsLow && (
            <path
              class="won"
              stroke-width={6}
              d={points
                .filter(({ value }) => value === 1)
                .map((each) => dot(scale, each))
                .join('')}
            />
          )}
          <path
            class="mean"
            d={linePath(
              points
                .filter(({ mean }) => mean !== null)
                .map((each) => [scale.x(each.position), scale.y(each.mean)]),
            )}
          />
          {point && <circle class="at" cx={scale.x(point.position)} cy={scale.y(point.value)} r={5} />}
        </svg>
      )}
      <p class="readout" aria-hidden="true">
        {point ? describe(point) : '\u00a0'}
      </p>
    </div>
  );
}
