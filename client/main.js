'use strict';
// What corvane_napi/client exports: replays read and watched in child processes, so that none of them can end the application.

const { matchOf } = require('./match.js');
const { ReplayClient } = require('./replay-client.js');
const { ReplayError } = require('./replay-error.js');

let shared = new ReplayClient();

// Ends the children and watches of the functions below; when they are called again, they start new ones.
function closeClient() {
  const closed = shared;
  shared = new ReplayClient();
  return closed.close();
}

module.exports = {
  ReplayClient,
  ReplayError,
  closeClient,
  matchOf,
  readReplay: (path, options) => shared.readReplay(path, options),
  readReplayText: (path, options) => shared.readReplayText(path, options),
  readMatch: (path, options) => shared.readMatch(path, options),
  readMatches: (paths, options) => shared.readMatches(paths, options),
  readReplays: (paths, options) => shared.readReplays(paths, options),
  readReplayTexts: (paths, options) => shared.readReplayTexts(paths, options),
  // Loaded when it is first called: most applications make no report.
  renderReport: (matches, options) => require('./report.js').renderReport(matches, options),
  watchMatches: (options) => shared.watchMatches(options),
  watchReplays: (options) => shared.watchReplays(options),
};
