// Types of reports. docs/report.md describes the page.

import type { Match } from './match.js';
import type { ReplayError } from './index.js';

export interface ReportOptions {
  /** The page's title. Default: the match's name, or the number of matches. */
  title?: string;
  /**
   * The account that recorded the replays: its id, or the first 8 digits of it or more. Default: a guess, which the page
   * names as one.
   */
  player?: string;
  /** Names of accounts by their ids, which are 32 hexadecimal digits. */
  names?: ReadonlyMap<string, string> | Readonly<Record<string, string>>;
}

/** A match, or what `readMatches` yields. */
export type Reportable =
  | Match
  | { path: string | URL; match: Match; error?: never }
  | { path: string | URL; match?: never; error: ReplayError };

/**
 * Makes one HTML file of a match, or of many: resolves with its text, which needs nothing but a browser. Matches are taken
 * one by one, and their documents are not kept. Rejects with `ERR_INVALID_ARGUMENT`, and with what the iteration throws.
 */
export function renderReport(
  matches: Match | Iterable<Reportable> | AsyncIterable<Reportable>,
  options?: ReportOptions,
): Promise<string>;
