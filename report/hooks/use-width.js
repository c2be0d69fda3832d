import { useLayoutEffect, useRef, useState } from 'preact/hooks';

// [ref, width]: the width of an element in whole pixels, as it changes; 0 until it is known.
export function useWidth() {
  const element = useRef(null);
  const [width, setWidth] = useState(0);
  useLayoutEffect(() => {
    const measure = () => setWidth(Math.floor(element.current.clientWidth));
    const observer = new ResizeObserver(measure);
    observer.observe(element.current);
    measure();
    return () => observer.disconnect();
  }, []);
  return [element, width];
}
