import { useRef } from 'preact/hooks';
import { distanceToLine } from '../figures/geometry.js';
import * as text from '../text.js';
import { MapGrid, ScaleBar } from './map-grid.js';
import { ChosenEvent, Density, EventLines, Overview } from './map-layers.js';

const REACH_PX = 14;
const DRAG_PX = 4;
const STEP_PX = 60;
const MOVES = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };

function nearest(events, view, x, y) {
  let best = { event: null, pixels: REACH_PX };
  for (const event of events) {
    if (event.victimAt === null) continue;
    const end = [view.px(event.victimAt.x), view.py(event.victimAt.y)];
    const start = event.attackerAt ? [view.px(event.attackerAt.x), view.py(event.attackerAt.y)] : end;
    // The dot counts for more than a line that passes by.
    const toLine = distanceToLine(x, y, start, end) + 3;
    const pixels = Math.min(toLine, Math.hypot(x - end[0], y - end[1]));
    if (pixels < best.pixels) best = { event, pixels };
  }
  return best.event;
}

// Dragging, clicking, the wheel with Ctrl, and keys.
function useMapInput({ events, view, zoom, move, fit }, onChoose) {
  const drag = useRef(null);
  const place = ({ currentTarget, clientX, clientY }) => {
    const box = currentTarget.getBoundingClientRect();
    return [
      ((clientX - box.left) * view.width) / box.width,
      ((clientY - box.top) * view.height) / box.height,
    ];
  };
  return {
    onPointerDown: (event) => {
      drag.current = { at: place(event), isMoving: false };
      if (event.pointerType === 'mouse') event.currentTarget.setPointerCapture(event.pointerId);
    },
    onPointerMove: (event) => {
      if (!drag.current || event.pointerType !== 'mouse' || !(event.buttons & 1)) return;
      const [x, y] = place(event);
      const [dx, dy] = [drag.current.at[0] - x, drag.current.at[1] - y];
      if (!drag.current.isMoving && Math.hypot(dx, dy) < DRAG_PX) return;
      drag.current = { at: [x, y], isMoving: true };
      move(dx, dy);
    },
    onClick: (event) => {
      const wasMoved = drag.current?.isMoving;
      drag.current = null;
      const found = wasMoved ? null : nearest(events, view, ...place(event));
      if (found) onChoose(found);
    },
    onWheel: (event) => {
      if (!event.ctrlKey && !event.metaKey) return;
      event.preventDefault();
      zoom(event.deltaY < 0 ? 1.25 : 0.8);
    },
    onKeyDown: (event) => {
      if (event.altKey || event.ctrlKey || event.metaKey) return;
      const step = MOVES[event.key];
      if (step) move(step[0] * STEP_PX, step[1] * STEP_PX);
      else if (event.key === '+' || event.key === '=') zoom(1.5);
      else if (event.key === '-') zoom(1 / 1.5);
      else if (event.key === '0') fit();
      else return;
      event.preventDefault();
    },
  };
}

// The map itself. events: what is drawn; squares: drawn instead of lines, if given; map: from useMapView.
export function MapPicture({ events, squares, map, chosen, onChoose }) {
  const { view, whole } = map;
  const input = useMapInput({ ...map, events: squares ? [] : events }, onChoose);
  return (
    <svg
      class="map-picture"
      viewBox={`0 0 ${view.width} ${view.height}`}
      role="application"
      aria-label={text.map.label}
      tabindex={0}
      {...input}
    >
      <MapGrid view={view} />
      {squares ? <Density {...{ squares, view }} /> : <EventLines {...{ events, view }} />}
      {chosen?.victimAt && <ChosenEvent event={chosen} view={view} />}
      <ScaleBar view={view} />
      <Overview {...{ events, view, whole }} />
    </svg>
  );
}
