// From figures to pixels, and the paths of lines through them.

import { ticks } from 'd3-array';

// A linear scale as a function, with its way back and round values between its ends. d3-scale does it too, and would be a
// quarter of the page's script.
export function linearScale([low, high], [start, end]) {
  const scale = (value) => start + ((value - low) * (end - start)) / (high - low);
  scale.invert = (pixel) => low + ((pixel - start) * (high - low)) / (end - start);
  scale.ticks = (count) => ticks(low, high, count);
  scale.range = [start, end];
  return scale;
}

// points: [x, y] in pixels.
export const linePath = (points) =>
  points.map(([x, y], i) => `${i ? 'L' : 'M'}${x.toFixed(1)},${y.toFixed(1)}`).join('');

// As linePath, but a value holds until the next one.
export const stepPath = (points) =>
  points
    .map(([x, y], i) => (i ? `H${x.toFixed(1)}V${y.toFixed(1)}` : `M${x.toFixed(1)},${y.toFixed(1)}`))
    .join('');
