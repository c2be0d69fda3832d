'use strict';
// How much of a match there is: from the facts that the reading gives beside the document.

const STATES = { complete: 'complete', live: 'recording', cut: 'truncated', failed: 'truncated' };

const REASONS = {
  undecryptable: 'cannot be decrypted',
  tooShort: 'are too short',
  broken: 'cannot be read',
};

// Without facts only the file's own word is known: that it is being recorded.
function stateOf(meta, facts) {
  if (facts !== undefined) return STATES[facts.end];
  return meta?.bIsLive ? 'recording' : null;
}

function ending({ end, cutAt, fileBytes, failure }) {
  if (end === 'cut') return `the replay is cut: what follows byte ${cutAt} of ${fileBytes} is missing`;
  if (end === 'failed')
    return `the replay is broken, and what cannot be read is missing: ${failure.reason.trim()}`;
  return end === 'live' ? 'the game is still recording' : undefined;
}

// What a reader of the figures has to know, a sentence each. Events of other kinds are no warning: each replay has them.
function warningsOf(facts) {
  if (facts === undefined) return [];
  const skipped = facts.skipped
    .filter(({ reason }) => reason in REASONS)
    .map(({ name, count, reason }) => `events that ${REASONS[reason]}: ${count} of ${name}`);
  return [ending(facts), ...skipped, ...facts.warnings].filter(Boolean);
}

module.exports = { stateOf, warningsOf };
