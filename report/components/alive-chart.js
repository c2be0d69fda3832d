import { linearScale, stepPath } from '../figures/scale.js';
import { number } from '../format.js';
import * as text from '../text.js';

const TOP = 8;
const LABEL_WIDTH = 90;

// Where a truncated replay ends, as far as its events tell.
const cutAt = ({ state, events }) => (state === 'truncated' ? (events.at(-1)?.timeMs ?? 0) : null);

function Half({ x, y, alive, length }) {
  const [left, top] = [
    x(alive.halfAtMs),
    y(alive.steps.find(({ timeMs }) => timeMs === alive.halfAtMs).alive),
  ];
  const isRight = left > x(length) - LABEL_WIDTH;
  return (
    <g class="half">
      <circle cx={left} cy={top} r={4} />
      <text x={left + (isRight ? -8 : 8)} y={top - 6} text-anchor={isRight ? 'end' : 'start'}>
        {text.timeline.half(alive.halfAtMs)}
      </text>
    </g>
  );
}

function Cut({ x, ms, length, height }) {
  const isNarrow = x(length) - x(ms) < 2 * LABEL_WIDTH;
  return (
    <g class="cut">
      <rect x={x(ms)} y={TOP} width={x(length) - x(ms)} height={height - TOP} />
      <text x={x(ms) + (isNarrow ? -6 : 6)} y={TOP + 12} text-anchor={isNarrow ? 'end' : 'start'}>
        {text.timeline.cut(ms)}
      </text>
    </g>
  );
}

// How many players are left, as steps. x: the scale of time.
export function AliveChart({ match, alive, x, length, height }) {
  const y = linearScale([0, alive.total || 1], [height, TOP]);
  const cut = cutAt(match);
  const points = [{ timeMs: 0, alive: alive.total }, ...alive.steps];
  points.push({ ...points.at(-1), timeMs: cut ?? length });
  const path = stepPath(points.map(({ timeMs, alive: count }) => [x(timeMs), y(count)]));
  const levels = [...y.ticks(3).filter((level) => y(level) - y(alive.total) > 14), alive.total];
  return (
    <g>
      <g class="axis" aria-hidden="true">
        {levels.filter(Number.isInteger).map((level) => (
          <>
            <line x1={x(0)} x2={x(length)} y1={y(level)} y2={y(level)} />
            <text x={x(0) - 6} y={y(level)} dy="0.32em" text-anchor="end">
              {number(level)}
            </text>
          </>
        ))}
      </g>
      <path class="alive-area" d={`${path}V${y(0)}H${x(0)}Z`} />
      <path class="alive-line" d={path} />
      {alive.halfAtMs !== null && <Half {...{ x, y, alive, length }} />}
      {cut !== null && <Cut {...{ x, length, height }} ms={cut} />}
    </g>
  );
}
