'use strict';
// Texts of replays, made fit for a page. A replay is not trusted: nothing in it may hide, change the direction of what
// stands beside it, or fill the page.

const MAX_CODE_POINTS = 200;
const REPLACEMENT = '\uFFFD';

// Control and format characters, line separators and halves of surrogate pairs. The two joiners (200C, 200D) stay: scripts
// and emoji need them, and they change nothing else.
const UNSEEN = /(?![\u200C\u200D])[\p{Cc}\p{Cf}\p{Cs}\u2028\u2029]/gu;

// The text with what cannot be seen as U+FFFD, cut at 200 code points. null stays null.
function visible(text) {
  if (text === null || text === undefined) return null;
  const seen = String(text).replace(UNSEEN, REPLACEMENT);
  if (seen.length <= MAX_CODE_POINTS) return seen;
  const points = Array.from(seen);
  return points.length <= MAX_CODE_POINTS ? seen : `${points.slice(0, MAX_CODE_POINTS).join('')}…`;
}

module.exports = { visible };
