import { tickStep, ticks } from 'd3-array';
import { metres, number } from '../format.js';
import * as text from '../text.js';

const PIXELS_PER_LINE = 90;
const EDGE = 40;
const SCALE_BAR_ROOM = 150;
const BAR_PIXELS = 110;

// Grid lines in steps of 1, 2 or 5, the same on both axes, with their metres.
export function MapGrid({ view }) {
  const { x, y } = view.domains;
  const step = tickStep(...x, Math.max(2, view.width / PIXELS_PER_LINE));
  const lines = ([low, high]) => ticks(low, high, Math.max(1, Math.round((high - low) / step)));
  const kind = (value) => (value === 0 ? 'zero' : undefined);
  const format = (value) => number(value, step < 1 ? 1 : 0);
  const isInside = (pixel, end) => pixel > EDGE && pixel < end - EDGE;
  return (
    <g class="axis" aria-hidden="true">
      {lines(x).map((value) => (
        <g data-x={value}>
          <line class={kind(value)} x1={view.px(value)} x2={view.px(value)} y1={0} y2={view.height} />
          {isInside(view.px(value), view.width - SCALE_BAR_ROOM) && (
            <text x={view.px(value)} y={view.height - 8} text-anchor="middle">
              {format(value)}
            </text>
          )}
        </g>
      ))}
      {lines(y).map((value) => (
        <g data-y={value}>
          <line class={kind(value)} x1={0} x2={view.width} y1={view.py(value)} y2={view.py(value)} />
          {isInside(view.py(value), view.height) && (
            <text x={6} y={view.py(value)} dy="0.32em">
              {format(value)}
            </text>
          )}
        </g>
      ))}
      <text x={6} y={16}>
        {text.map.unit}
      </text>
    </g>
  );
}

// How long a round number of metres is on the map.
export function ScaleBar({ view }) {
  const length = tickStep(0, BAR_PIXELS * view.metresPerPixel, 1);
  const pixels = length / view.metresPerPixel;
  const [right, y] = [view.width - 12, view.height - 14];
  return (
    <g class="scale-bar">
      <path d={`M${right - pixels},${y - 5}v5H${right}v-5`} />
      <text x={right - pixels / 2} y={y - 8} text-anchor="middle">
        {metres(length)}
      </text>
    </g>
  );
}
