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
  renderReport,
  watchMatches,
  watchReplays,
} = installed('./client/main.js');
