import { clock } from '../format.js';
import * as text from '../text.js';

const HANDLE = { width: 14, height: 24 };
const STEPS_MS = {
  ArrowLeft: -5000,
  ArrowDown: -5000,
  ArrowRight: 5000,
  ArrowUp: 5000,
  PageDown: -60_000,
  PageUp: 60_000,
};

// The handles never cover each other: this part of the length is always between them.
const GAP = 1 / 40;

// Two handles over a scale of time.
export function RangeSlider({ x, range, length, onRange, top }) {
  // target(ms): where the handle should go from where it is. Several keys may come before the page is drawn again.
  const move = (which, target) =>
    onRange((now) => {
      const gap = length * GAP;
      const [low, high] = which === 0 ? [0, now[1] - gap] : [now[0] + gap, length];
      const changed = [...now];
      changed[which] = Math.round(Math.max(low, Math.min(high, target(now[which]))));
      return changed;
    });
  const onKeyDown = (which) => (event) => {
    const { key } = event;
    if (key === 'Home' || key === 'End') move(which, () => (key === 'Home' ? 0 : length));
    else if (STEPS_MS[key]) move(which, (ms) => ms + STEPS_MS[key]);
    else return;
    event.preventDefault();
  };
  const onPointerMove = (which) => (event) => {
    if (!event.currentTarget.hasPointerCapture(event.pointerId)) return;
    const svg = event.currentTarget.ownerSVGElement;
    const part = (event.clientX - svg.getBoundingClientRect().left) / svg.clientWidth;
    const ms = x.invert(part * svg.viewBox.baseVal.width);
    move(which, () => ms);
  };
  const handle = (which) => ({
    role: 'slider',
    tabindex: 0,
    'aria-label': which === 0 ? text.timeline.from : text.timeline.to,
    'aria-valuemin': 0,
    'aria-valuemax': Math.round(length / 1000),
    'aria-valuenow': Math.round(range[which] / 1000),
    'aria-valuetext': clock(range[which]),
    onKeyDown: onKeyDown(which),
    onPointerDown: (event) => event.currentTarget.setPointerCapture(event.pointerId),
    onPointerMove: onPointerMove(which),
  });
  return (
    <g class="range">
      <line class="track" x1={x(0)} x2={x(length)} y1={top} y2={top} />
      <line class="part" x1={x(range[0])} x2={x(range[1])} y1={top} y2={top} />
      {[0, 1].map((which) => (
        <g class="handle" {...handle(which)}>
          <rect
            x={x(range[which]) - HANDLE.width / 2}
            y={top - HANDLE.height / 2}
            width={HANDLE.width}
            height={HANDLE.height}
            rx={4}
          />
        </g>
      ))}
    </g>
  );
}
