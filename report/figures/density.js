// Where victims fell: counts in squares of a grid.

import { tickStep } from 'd3-array';

const SQUARES_ACROSS = 32;

// [{ x, y, size, count }] in metres, x and y being the square's lowest corner; squares without a victim are left out.
export function densityOf(events, extent) {
  const size = tickStep(0, Math.max(extent.width, extent.height), SQUARES_ACROSS);
  const squares = new Map();
  for (const { victimAt } of events) {
    if (victimAt === null) continue;
    const [x, y] = [Math.floor(victimAt.x / size), Math.floor(victimAt.y / size)];
    const key = `${x} ${y}`;
    const square = squares.get(key) ?? { x: x * size, y: y * size, size, count: 0 };
    square.count += 1;
    squares.set(key, square);
  }
  return [...squares.values()].sort((a, b) => b.count - a.count);
}
