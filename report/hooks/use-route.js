import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';

// The match that the address names, or null: "#match-12" is the twelfth. The browser's own Back goes back to all, and to where
// the reader was on that page.
const PATTERN = /^#match-(\d+)$/;

export const addressOf = (match) => `#match-${match.index + 1}`;

export function useRoute(matches) {
  const read = () => matches[Number(PATTERN.exec(location.hash)?.[1]) - 1] ?? null;
  const [match, setMatch] = useState(read);
  const latest = useRef(match);
  const scroll = useRef(0);
  useEffect(() => {
    const onChange = () => {
      if (latest.current === null) scroll.current = scrollY;
      setMatch(read());
    };
    addEventListener('hashchange', onChange);
    return () => removeEventListener('hashchange', onChange);
  }, [matches]);
  useLayoutEffect(() => {
    if (latest.current !== match) scrollTo(0, match === null ? scroll.current : 0);
    latest.current = match;
  }, [match]);
  return match;
}

export const openMatch = (match) => {
  location.hash = addressOf(match);
};
