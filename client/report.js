'use strict';
// A match, or a season, as one HTML file that needs nothing but a browser.

const path = require('node:path');
const { promisify } = require('node:util');
const deflate = promisify(require('node:zlib').deflate);
const { members } = require('./options.js');
const { RecordingPlayerGuess } = require('./recording-player.js');
const { ColumnPacker } = require('./report-columns.js');
const { reportPage } = require('./report-page.js');
const { visible } = require('./report-text.js');
const { ReplayError } = require('./replay-error.js');

const FULL_ID_DIGITS = 32;
// An account that is in one match of many is shown by this many digits: a match can have 90 strangers.
const SHORT_ID_DIGITS = 8;
const ACCOUNT = /^[0-9a-f]{8,32}$/;

const invalid = (reason) => new ReplayError('ERR_INVALID_ARGUMENT', reason);

function settingsOf(settings) {
  return Object.entries(settings).map(([key, value]) => [visible(key), visible(value)]);
}

// What the page says of a match beside its events.
function factsOf(match) {
  return {
    file: match.path === null ? null : visible(path.basename(match.path)),
    id: match.id,
    name: visible(match.name),
    recordedAt: match.recordedAt === null ? null : match.recordedAt.getTime(),
    ...{ durationMs: match.durationMs, map: visible(match.map), settings: settingsOf(match.settings) },
    engine: visible(match.engine?.version),
    build: match.engine?.changelist ?? null,
    ...{ state: match.state, own: match.own, team: match.team },
    warnings: match.warnings.map(visible),
  };
}

function namesOf(names = {}) {
  if (typeof names !== 'object' || names === null) throw invalid('names must be an object or a Map');
  const entries = names instanceof Map ? [...names] : Object.entries(names);
  return new Map(entries.map(([id, name]) => [String(id).toLowerCase(), visible(name)]));
}

function accountOf(player) {
  if (player === undefined) return undefined;
  const id = typeof player === 'string' ? player.toLowerCase() : '';
  if (ACCOUNT.test(id)) return id;
  throw invalid("player must be an account's id, or the first 8 digits of it or more");
}

// given: the id that the caller named, or its first digits.
function recordingPlayer(given, guess) {
  if (given === undefined) return { id: guess.best(), isGuess: true };
  const ids = guess.ids().filter((id) => id.startsWith(given));
  if (ids.length > 1) throw invalid(`player: ${ids.length} accounts begin with ${given}`);
  return { id: ids[0] ?? given, isGuess: false };
}

function optionsOf(given) {
  const options = members(given, ['title', 'player', 'names']);
  if (options.title !== undefined && typeof options.title !== 'string')
    throw invalid('title must be a string');
  return { title: options.title, player: accountOf(options.player), names: namesOf(options.names) };
}

// One match, or any iterable: of matches, or of the results of readMatches.
async function* resultsOf(matches) {
  if (typeof matches !== 'object' || matches === null)
    throw invalid('matches must be a match or an iterable');
  const isMany = Symbol.iterator in matches || Symbol.asyncIterator in matches;
  for await (const each of isMany ? matches : [matches]) {
    const result = each?.error || each?.match ? each : { path: each?.path, match: each };
    if (!result.error && !Array.isArray(result.match?.players))
      throw invalid('matches must hold matches, or results of readMatches');
    yield result;
  }
}

class ReportData {
  #packer = new ColumnPacker(visible);
  #guess = new RecordingPlayerGuess();
  #damageNames = new Map();
  #count = 0;
  #failures = [];

  add({ path: file, match, error }) {
    if (error) {
      this.#failures.push({ file: visible(file), reason: visible(error.reason ?? error.message) });
      return;
    }
    this.#count += 1;
    this.#guess.add(match);
    this.#packer.add(factsOf(match), match.eliminations);
    for (const { damageType, damageName } of match.eliminations) {
      if (damageName !== null) this.#damageNames.set(damageType, visible(damageName));
    }
  }

  // What the page reads.
  finish({ title, player, names }) {
    const recording = recordingPlayer(player, this.#guess);
    const idDigits = this.#count === 1 ? FULL_ID_DIGITS : SHORT_ID_DIGITS;
    if (recording.id !== null && !names.has(recording.id)) names.set(recording.id, null);
    const damageNames = [...this.#damageNames];
    return {
      ...{ title: visible(title), recording, failures: this.#failures, damageNames },
      ...this.#packer.finish({ names, idDigits }),
    };
  }
}

// Resolves with the text of the page. options: title; player, the account that recorded the replays; names, of accounts by
// their ids. Rejects with ERR_INVALID_ARGUMENT, and with what the iteration of the matches throws.
async function renderReport(matches, options) {
  const given = optionsOf(options);
  const data = new ReportData();
  for await (const result of resultsOf(matches)) data.add(result);
  const finished = data.finish(given);
  const json = JSON.stringify(finished);
  if (finished.matches.length === 1) return reportPage(finished, json);
  const packed = await deflate(json, { level: 9 });
  return reportPage(finished, JSON.stringify({ deflated: packed.toString('base64') }));
}

module.exports = { renderReport };
