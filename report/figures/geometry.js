// From metres to the page's pixels and back. Both axes have the same scale.

// The engine's axes: X grows to the right. Which way its Y grows on a map of the game is not known; here it grows
// downwards. This constant decides it for the whole page.
const Y_GROWS_DOWN = true;

const SMALLEST_EXTENT_M = 40;
const MARGIN = 1.08;

// The part of the world that is seen; { x, y } in metres is its middle.
export class View {
  constructor({ x, y, metresPerPixel, width, height }) {
    Object.assign(this, { x, y, metresPerPixel, width, height });
  }

  px(x) {
    return this.width / 2 + (x - this.x) / this.metresPerPixel;
  }

  py(y) {
    const up = (y - this.y) / this.metresPerPixel;
    return this.height / 2 + (Y_GROWS_DOWN ? up : -up);
  }

  // The metres at a pixel.
  at(px, py) {
    const up = (py - this.height / 2) * this.metresPerPixel;
    return { x: this.x + (px - this.width / 2) * this.metresPerPixel, y: this.y + (Y_GROWS_DOWN ? up : -up) };
  }

  // The lowest and the highest metres that are seen.
  get domains() {
    const [a, b] = [this.at(0, 0), this.at(this.width, this.height)];
    return { x: [a.x, b.x], y: [Math.min(a.y, b.y), Math.max(a.y, b.y)] };
  }
}

// What surrounds all positions of the events: { x, y, width, height } in metres, x and y being its middle.
export function extentOf(events) {
  let [left, right, low, high] = [Infinity, -Infinity, Infinity, -Infinity];
  for (const { attackerAt, victimAt } of events) {
    for (const at of [attackerAt, victimAt]) {
      if (at === null) continue;
      [left, right] = [Math.min(left, at.x), Math.max(right, at.x)];
      [low, high] = [Math.min(low, at.y), Math.max(high, at.y)];
    }
  }
  if (left > right) [left, right, low, high] = [0, 0, 0, 0];
  return {
    ...{ x: (left + right) / 2, y: (low + high) / 2 },
    width: Math.max(right - left, SMALLEST_EXTENT_M),
    height: Math.max(high - low, SMALLEST_EXTENT_M),
  };
}

// The centre and scale at which an extent fits into a picture.
export function fitted(extent, { width, height }) {
  const metresPerPixel = MARGIN * Math.max(extent.width / width, extent.height / height);
  return { x: extent.x, y: extent.y, metresPerPixel };
}

// Pixels from a point to a line between two others.
export function distanceToLine(x, y, [x1, y1], [x2, y2]) {
  const [dx, dy] = [x2 - x1, y2 - y1];
  const length = dx * dx + dy * dy;
  const along = length === 0 ? 0 : Math.max(0, Math.min(1, ((x - x1) * dx + (y - y1) * dy) / length));
  return Math.hypot(x - x1 - along * dx, y - y1 - along * dy);
}
