import { useEffect, useRef, useState } from 'preact/hooks';

const DURATION_MS = 260;

const isStill = () => matchMedia('(prefers-reduced-motion: reduce)').matches;
const between = (a, b, part) => a + (b - a) * part;

// The map's centre and scale on the way to the target, so that the eye can follow; at once where motion is reduced.
export function useGlide(target) {
  const [current, setCurrent] = useState(target);
  const latest = useRef(target);
  latest.current = current;
  useEffect(() => {
    const from = latest.current;
    if (isStill() || from.metresPerPixel === 0) {
      setCurrent(target);
      return undefined;
    }
    const began = performance.now();
    let frame = requestAnimationFrame(function step(now) {
      const part = Math.min(1, Math.max(0, now - began) / DURATION_MS);
      const eased = 1 - (1 - part) ** 3;
      const scale = Math.exp(between(Math.log(from.metresPerPixel), Math.log(target.metresPerPixel), eased));
      const x = between(from.x, target.x, eased);
      setCurrent(part === 1 ? target : { x, y: between(from.y, target.y, eased), metresPerPixel: scale });
      if (part < 1) frame = requestAnimationFrame(step);
    });
    return () => cancelAnimationFrame(frame);
  }, [target.x, target.y, target.metresPerPixel]);
  return current;
}
