import { aliveOf, isEnd, lengthOf } from '../figures/match.js';
import { linearScale } from '../figures/scale.js';
import { clock } from '../format.js';
import { useWidth } from '../hooks/use-width.js';
import * as text from '../text.js';
import { AliveChart } from './alive-chart.js';
import { AsTable } from './as-table.js';
import { Card } from './card.js';
import { EventLanes } from './event-lanes.js';
import { Key } from './key.js';
import { RangeSlider } from './range-slider.js';

const LEFT = 34;
const RIGHT = 12;
export const CHART_HEIGHT = 132;
const LANES_TOP = CHART_HEIGHT + 10;
const AXIS_TOP = LANES_TOP + 30;
const SLIDER_TOP = AXIS_TOP + 32;
const HEIGHT = SLIDER_TOP + 16;
const PIXELS_PER_TICK = 70;

const TICK_STEPS_MS = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1200, 3600].map((seconds) => seconds * 1000);

function ticks(length, width) {
  const step = TICK_STEPS_MS.find((each) => (length / each) * PIXELS_PER_TICK <= width) ?? length;
  return Array.from({ length: Math.floor(length / step) + 1 }, (_, i) => i * step);
}

function Legend({ events }) {
  const ends = events.filter(isEnd).length;
  return (
    <p class="legend">
      <Key kind="alive">{text.timeline.alive}</Key>
      <Key kind="elimination">
        {text.timeline.ends(ends)} ({text.timeline.upper})
      </Key>
      <Key kind="knock">
        {text.timeline.knocks(events.length - ends)} ({text.timeline.lower})
      </Key>
    </p>
  );
}

// Players alive, lanes of the events, and two handles that choose the part that the whole page shows.
export function Timeline({ match, range, onRange, chosen, onChoose }) {
  const [box, width] = useWidth();
  const alive = aliveOf(match);
  const length = lengthOf(match);
  const x = linearScale([0, length], [LEFT, Math.max(LEFT + 1, width - RIGHT)]);
  const isPart = range[0] > 0 || range[1] < length;
  const rows = () => [
    [clock(0), alive.total],
    ...alive.steps.map((step) => [clock(step.timeMs), step.alive]),
  ];
  return (
    <Card title={text.timeline.title} note={text.timeline.note} name="timeline">
      <div ref={box}>
        {width > 0 && (
          <svg
            viewBox={`0 0 ${width} ${HEIGHT}`}
            role="group"
            aria-label={text.timeline.chart(alive, length)}
          >
            <AliveChart {...{ match, alive, x, length }} height={CHART_HEIGHT} />
            <EventLanes events={match.events} {...{ x, chosen, onChoose }} top={LANES_TOP} />
            <g class="axis" aria-hidden="true">
              {ticks(length, width - LEFT - RIGHT).map((ms) => (
                <text x={x(ms)} y={AXIS_TOP + 12} text-anchor="middle">
                  {clock(ms)}
                </text>
              ))}
            </g>
            {chosen && <line class="now" x1={x(chosen.timeMs)} x2={x(chosen.timeMs)} y1={0} y2={AXIS_TOP} />}
            <rect class="outside" x={LEFT} y={0} width={x(range[0]) - LEFT} height={AXIS_TOP} />
            <rect class="outside" x={x(range[1])} y={0} width={x(length) - x(range[1])} height={AXIS_TOP} />
            <RangeSlider {...{ x, range, length, onRange }} top={SLIDER_TOP} />
          </svg>
        )}
      </div>
      <p class="part" aria-live="polite">
        {isPart && (
          <>
            {text.timeline.part(...range)}{' '}
            <button type="button" onClick={() => onRange([0, length])}>
              {text.timeline.all}
            </button>
          </>
        )}
      </p>
      <Legend events={match.events} />
      <AsTable columns={text.timeline.columns} rows={rows} />
    </Card>
  );
}
