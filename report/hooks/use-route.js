import { useEffect, useState } from 'preact/hooks';

// The match that the address names, or null: "#match-12" is the twelfth. The browser's own Back goes back to all.
const PATTERN = /^#match-(\d+)$/;

export const addressOf = (match) => `#match-${match.index + 1}`;

export function useRoute(matches) {
  const read = () => matches[Number(PATTERN.exec(location.hash)?.[1]) - 1] ?? null;
  const [match, setMatch] = useState(read);
  useEffect(() => {
    const onChange = () => setMatch(read());
    addEventListener('hashchange', onChange);
    return () => removeEventListener('hashchange', onChange);
  }, [matches]);
  return match;
}

export const openMatch = (match) => {
  location.hash = addressOf(match);
};
