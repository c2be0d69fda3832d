// The same for `import`.
import client from './index.js';

export const {
  ReplayClient,
  ReplayError,
  matchOf,
  readMatch,
  readMatches,
  readReplay,
  readReplayText,
  readReplays,
  readReplayTexts,
  watchReplays,
} = client;
