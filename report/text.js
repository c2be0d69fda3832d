// The English of the page, all in this file. {names} in braces are filled in by components/fill.js.

import { clock, count, dateAndTime, hours, metres, number, ordinal, percent } from './format.js';

export const players = {
  unnamed: 'unnamed bot',
  unknown: 'unknown player',
  recording: 'the recording player',
};

export const page = {
  dark: 'Dark',
  light: 'Light',
  theme: (next) => `Switch to ${next.toLowerCase()} colours`,
  asTable: 'The figures as a table',
  footer:
    'Made from replay files alone; this page fetches nothing. Times of day are those of the recording computer’s clock. ' +
    'Positions and distances are in metres, with the engine’s unit taken as 1 cm.',
  broken: 'The data of this page cannot be read: the file was changed, or the browser is too old for it.',
  reading: 'Reading the data…',
  matches: (value) => count(value, 'match', 'matches'),
  untitled: 'A match',
  noMatches: 'No match to show.',
};

export const states = {
  recording: 'The game was still recording when this replay was read: what came later is missing.',
  truncated: (lastMs) =>
    lastMs === null
      ? 'The replay was cut: its end is missing, and no event is left.'
      : `The replay was cut: its end is missing. The last event that is left is at ${clock(lastMs)}.`,
};

export const facts = {
  title: 'About this replay',
  missing: 'not in the file',
  rows: {
    file: 'File',
    map: 'Map',
    recorded: 'Recorded',
    length: 'Length',
    engine: 'Engine',
    build: 'Build',
    structures: 'Damage to structures',
    gathered: 'Materials gathered',
    used: 'Materials used',
    players: 'Players in events',
    state: 'State',
    id: 'Match id',
  },
  states: { complete: 'complete', recording: 'still recorded', truncated: 'cut' },
  unknownState: 'not known',
  mode: 'Mode',
  long: (ms) => `${clock(ms)} long`,
  recorded: dateAndTime,
  warnings: 'What to know about this replay',
  details: 'What the reading of the file said',
};

export const figures = {
  title: 'Figures of the recording player',
  none: 'The file has no statistics of the recording player: there are no figures for accuracy, damage and distance.',
  noPlace: 'The file does not say the place.',
  of: (value) => `of ${number(value)}`,
  placed: 'place',
  eliminations: 'eliminations by the recording player',
  assists: 'assists',
  revives: 'revives',
  accuracy: 'accuracy',
  damage: 'damage dealt',
  taken: 'damage taken',
  traveled: 'travelled',
  seenEnds: 'eliminations by all',
  seenKnocks: 'knock-downs by all',
  seenPlayers: 'players in the events',
  longest: 'longest elimination',
};

export const brief = {
  title: 'In short',
  won: 'The recording player’s team won.',
  place: (team) =>
    `The recording player’s team came ${ordinal(team.place)}${team.of ? ` of ${number(team.of)} players` : ''}.`,
  noPlace: 'The file does not say who won.',
  noEnd: 'The file does not say who won: its end is missing.',
  lastEnd: 'The file does not name the winner; the last elimination, at {time}, was by {by}.',
  half: (alive) =>
    `Half of the ${number(alive.total)} players${alive.isSaid ? '' : ' that are seen'} were out by ${clock(alive.halfAtMs)}.`,
  noHalf: 'Fewer than half of the players are seen to go out.',
  longest: (event) => `Longest elimination: ${metres(event.distanceM)}, {by} → {of} at {time}{where}.`,
  where: (at) => `, victim at ${at}`,
  recordingOut: '{who} ({recording}) was eliminated by {by} at {time}{distance}.',
  recordingAlone: '{who} ({recording}) went out at {time} without an attacker.',
  recordingSelf: '{who} ({recording}) went out at {time} by their own doing.',
  recordingIn: '{who} ({recording}) is not seen to go out.',
  recordingAbsent: '{who} ({recording}) is in no event of this match.',
  fromDistance: (distance) => `, from ${metres(distance)}`,
  recording: 'recording player',
  guess: 'probably the recording player',
  nobody:
    'The file does not say which player recorded it, and its figures fit more than one. ' +
    'Name the account when making the report (--player) to see how that player went out.',
};

export const timeline = {
  title: 'Timeline',
  note: 'Players alive, eliminations and knock-downs. Drag the handles to look at a part.',
  alive: 'players alive',
  half: (ms) => `half out by ${clock(ms)}`,
  ends: (value) => count(value, 'elimination'),
  knocks: (value) => count(value, 'knock-down'),
  upper: 'upper row',
  lower: 'lower row',
  from: 'Start of the part that is shown',
  to: 'End of the part that is shown',
  part: (from, to) => `The whole page shows ${clock(from)} to ${clock(to)}.`,
  all: 'Show all',
  cut: (ms) => `cut: nothing known after ${clock(ms)}`,
  columns: ['Time', 'Players alive'],
  chart: (alive, length) =>
    `Players alive over time: ${number(alive.total)} at the start, ` +
    `${number(alive.steps.at(-1)?.alive ?? alive.total)} at the last elimination, over ${clock(length)}.`,
};

export const map = {
  title: 'Where',
  follow: 'Follow',
  everyone: 'all players',
  map: 'Map',
  noMap: 'not in the file',
  option: (name, value) => `${name} (${number(value)})`,
  density: 'Density',
  lines: 'Lines',
  zoomIn: 'Zoom in',
  zoomOut: 'Zoom out',
  fit: 'Fit',
  unit: 'm',
  label: 'Map. Arrow keys move it, plus and minus zoom, 0 shows all.',
  hint: 'Choose an event, here or in the list, to look at it closely.',
  hintMany: 'Choose an event to look at it closely. Drag to move the map.',
  noPositions: 'No event has a position.',
  without: (value) => `${count(value, 'event')} without a position.`,
  onlyLast: (value) => `Lines: the last ${number(value)} eliminations.`,
  endLegend: 'eliminated: the dot is the victim, the line comes from the attacker',
  knockLegend: 'knocked down',
  densityLegend: 'where victims fell: few to many',
  squares: (size) => `Squares of ${metres(size)}, most victims first`,
  columns: ['x from', 'y from', 'Victims'],
  seenIn: (ends, matches) =>
    `${count(ends, 'elimination')} by or of {who}, in ${count(matches, 'match', 'matches')}.`,
};

export const events = {
  title: 'Events',
  columns: ['Time', 'What happened', 'Distance'],
  elimination: 'eliminated',
  knock: 'knocked down',
  wasElimination: 'was eliminated',
  wasKnock: 'was knocked down',
  self: 'by their own doing',
  alone: 'without an attacker',
  count: (value) => count(value, 'event'),
  countOf: (value, all) =>
    value === all ? count(value, 'event') : `${number(value)} of ${count(all, 'event')}`,
  none: 'The file has no eliminations or knock-downs.',
  noneHere: 'No event in this part.',
  damage: (name) => `damage: ${name}`,
  damageType: (type) => `damage type ${type}`,
  apart: (distance) => `${metres(distance)} apart`,
  victimAt: (at) => `victim at ${at}`,
  inMatch: (match) => `In the match of ${match}.`,
  open: 'Open this match',
};

export const whom = {
  title: 'Who eliminated whom',
  note: 'Most eliminations first, victims in order of time. Choose a victim to see it on the map.',
  columns: ['Player', 'Elims', 'Eliminated'],
  none: 'Nobody was eliminated by a player with a name.',
  unnamed: (value) => `${count(value, 'elimination')} by unnamed bots or unknown players.`,
};

export const records = {
  title: 'Players',
  note: (value) => `${count(value, 'name')} in the events`,
  columns: { player: 'Player', ends: 'Elims', knocks: 'Knocks', longest: 'Longest', exit: 'Out' },
  notSeen: 'not seen',
  by: 'by',
};

export const distances = {
  title: 'Distance of eliminations',
  longest: (distance) => `longest ${metres(distance)}`,
  range: (from, to) => (to === Infinity ? `over ${number(from)} m` : `${number(from)}–${number(to)} m`),
  unknown: (value) => `${count(value, 'elimination')} without a distance.`,
  columns: ['Distance', 'Eliminations'],
  followed: 'by or of {who}',
};

export const season = {
  from: (first, last) => (first === last ? first : `${first} to ${last}`),
  maps: (value) => count(value, 'map'),
  played: (ms) => `${hours(ms)} of play`,
  ends: (value) => count(value, 'elimination'),
  accounts: (value) => count(value, 'account'),
  won: 'won',
  place: 'median place',
  eliminations: 'eliminations a match',
  most: 'most eliminations in a match',
  damage: 'median damage dealt',
  accuracy: 'median accuracy',
  length: 'median length',
  recording: 'Recording player: {who}.',
  guess:
    'Recording player: {who}, as the most frequent account. The files do not say it; name another with --player.',
  nobody: 'The files do not say which account recorded them. Name it with --player to see whom it met.',
  noEnds: 'The files have no eliminations.',
  incomplete: (value) =>
    `${count(value, 'match is', 'matches are')} not complete: cut, or still recorded when read. The table of matches says which.`,
};

export const failures = {
  title: (value) => `${count(value, 'file')} could not be read`,
  show: 'Show',
};

export const trends = {
  title: 'Trends of the recording player',
  note: 'A mark for each match in order of time; the line is the average of the last nine. Choose a mark to open its match.',
  names: {
    place: 'Place (best at the top)',
    eliminations: 'Eliminations',
    accuracy: 'Accuracy',
    damage: 'Damage dealt',
    taken: 'Damage taken',
    traveled: 'Travelled',
  },
  values: {
    place: (value) => number(value, value % 1 ? 1 : 0),
    eliminations: (value) => number(value, value % 1 ? 1 : 0),
    accuracy: percent,
    damage: (value) => number(value),
    taken: (value) => number(value),
    traveled: metres,
  },
  // On the axes, where every pixel counts.
  axes: {
    accuracy: percent,
    traveled: (value) => (value === 0 ? '0' : `${number(value / 1000, value % 1000 ? 1 : 0)} km`),
  },
  mean: (value) => `average ${value}`,
  change: (first, last) => `first nine ${first}, last nine ${last}`,
  none: 'not in the files',
  point: (match, value) => `${match}: ${value}`,
  match: 'Match',
};

export const accounts = {
  title: 'Met most often',
  note: 'Beaten and lost to: by and against the recording player.',
  columns: {
    player: 'Account',
    matches: 'Matches',
    ends: 'Elims',
    outs: 'Out',
    beaten: 'Beaten',
    lostTo: 'Lost to',
  },
  none: 'No event mentions an account.',
};

export const matrix = {
  title: 'Who eliminated whom',
  note: 'Over all matches; hatched: oneself. A bot’s name is no identity, so bots are pooled.',
  corner: ['attacker ↓', 'victim →'],
  pools: {
    otherAccounts: 'other accounts',
    namedBots: 'named bots',
    unnamedBots: 'unnamed bots',
    unknown: 'unknown',
  },
  sum: 'in all',
};

export const matches = {
  title: 'Matches',
  note: 'Choose one to see its map and timeline.',
  columns: {
    recordedAt: 'Match',
    mode: 'Mode',
    place: 'Place',
    eliminations: 'Elims',
    damage: 'Damage',
    accuracy: 'Accuracy',
    durationMs: 'Length',
  },
  first: '1st',
  undated: 'no date',
  states: { recording: 'still recorded', truncated: 'cut' },
  more: (value) => `Show ${number(value)} more`,
  back: '← All matches',
  before: 'Earlier match',
  after: 'Later match',
  place: (at, all) => `Match ${number(at)} of ${number(all)}`,
};
