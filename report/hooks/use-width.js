import { useLayoutEffect, useRef, useState } from 'preact/hooks';

// [ref, width]: the width of an element in whole pixels, as it changes; 0 until it is known. While the element is hidden it
// keeps the width that it had.
export function useWidth() {
  const element = useRef(null);
  const [width, setWidth] = useState(0);
  useLayoutEffect(() => {
    const measure = () => setWidth((before) => Math.floor(element.current.clientWidth) || before);
    const observer = new ResizeObserver(measure);
    observer.observe(element.current);
    measure();
    return () => observer.disconnect();
  }, []);
  return [element, width];
}
