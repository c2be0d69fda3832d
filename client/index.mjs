// The same for `import`.
import installed from '../installed.mjs';

export const {
  ReplayClient,
  ReplayError,
  closeClient,
  matchOf,
  readMatch,
  readMatches,
  readReplay,
  readReplayText,
  readReplays,
  readReplayTexts,
  watchReplays,
} = installed('./client/main.js');
