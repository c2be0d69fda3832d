import { useRef, useState } from 'preact/hooks';

const STEPS = { ArrowUp: -1, ArrowLeft: -1, ArrowDown: 1, ArrowRight: 1, PageUp: -10, PageDown: 10 };

// One tab stop for a group of elements: arrow keys go from one to the next, Home and End to the ends. The group takes
// `group`, each of its elements item(i), counted from 0. onMove(i): the keys have gone to this element.
export function useRoving(count, onMove) {
  const [at, setAt] = useState(0);
  const element = useRef(null);
  const last = Math.max(0, count - 1);
  const current = Math.min(at, last);

  const onKeyDown = (event) => {
    if (event.altKey || event.ctrlKey || event.metaKey || !event.target.matches('[data-place]')) return;
    const from = Number(event.target.dataset.place);
    const to = { Home: 0, End: last }[event.key] ?? from + (STEPS[event.key] ?? 0);
    if (to === from) return;
    event.preventDefault();
    const place = Math.max(0, Math.min(last, to));
    element.current.querySelector(`[data-place="${place}"]`)?.focus();
    onMove?.(place);
  };
  const item = (i) => ({
    'data-place': i,
    tabindex: i === current ? 0 : -1,
    onFocus: () => setAt(i),
  });
  return { group: { ref: element, onKeyDown }, item, setAt };
}
