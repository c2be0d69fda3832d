import { useEffect, useState } from 'preact/hooks';
import { fitted, View } from '../figures/geometry.js';
import { useGlide } from './use-glide.js';

const SPAN_OF_LINE = 3;
const LEAST_SPAN_M = 30;
const METRES_PER_PIXEL = { least: 0.005, most: 50 };

// An event from close by: its line takes a third of the picture.
function closeUp({ attackerAt, victimAt, distanceM }, { width, height }) {
  const at = attackerAt ?? victimAt;
  const span = Math.max(LEAST_SPAN_M, SPAN_OF_LINE * (distanceM ?? 0));
  const middle = { x: (at.x + victimAt.x) / 2, y: (at.y + victimAt.y) / 2 };
  return { ...middle, metresPerPixel: span / Math.min(width, height) };
}

const allowed = (scale) => Math.max(METRES_PER_PIXEL.least, Math.min(METRES_PER_PIXEL.most, scale));

// What of the world the map shows. It shows the extent, until an event is chosen or the map is moved. whole: the view of
// the whole extent.
export function useMapView(extent, size, chosen) {
  const [moved, setMoved] = useState(null);
  useEffect(() => setMoved(null), [extent]);
  useEffect(() => {
    if (chosen?.victimAt) setMoved(closeUp(chosen, size));
  }, [chosen]);
  const whole = fitted(extent, size);
  const target = moved ?? whole;
  const current = useGlide(target);
  const change = (step) => setMoved((now) => step(now ?? whole));
  return {
    view: new View({ ...current, ...size }),
    whole: new View({ ...whole, ...size }),
    fit: () => setMoved(null),
    zoom: (factor) => change((now) => ({ ...now, metresPerPixel: allowed(now.metresPerPixel / factor) })),
    // By pixels of the picture.
    move: (dx, dy) =>
      change((now) => ({
        ...now,
        ...new View({ ...now, ...size }).at(size.width / 2 + dx, size.height / 2 + dy),
      })),
  };
}
