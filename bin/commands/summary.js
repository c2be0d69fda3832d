'use strict';
// corvane-replay summary: one match at a glance.

const { withNames } = require('../command-options.js');
const { readMatch } = require('../../client');
const { printable } = require('../failures.js');
const { readingOf, wantsData, withJson, withReading } = require('../matches.js');

const TIMELINE_WIDTH = 60;
const LABEL_WIDTH = 14;
const MOST_PLAYERS = 5;

const MARK = ' · ';

// The parts that are not empty, on as many lines as they need.
function wrapped(parts, lineWidth) {
  const lines = [];
  for (const part of parts.filter((each) => each !== null && each !== undefined)) {
    const longer = lines.length > 0 ? `${lines.at(-1)}${MARK}${part}` : undefined;
    if (longer !== undefined && longer.length <= lineWidth) lines[lines.length - 1] = longer;
    else lines.push(part);
  }
  return lines.join('\n');
}

function ownFigures({ own, team }, units) {
  const place = team === null ? null : `place ${units.count(team.place)} of ${units.count(team.of)}`;
  if (own === null) return [place, 'no figures of the recording player'];
  return [
    place,
    ['elimination', 'assist', 'revive'].map((noun) => units.counted(own[`${noun}s`], noun)).join(', '),
    `accuracy ${units.share(own.accuracy)}`,
    `damage ${own.weaponDamage + own.otherDamage} dealt, ${own.damageTaken} taken`,
    `travelled ${units.kilometres(own.traveledM)}`,
  ];
}

// How many of the events fall into each of `width` equal parts of the match.
function histogram(events, endMs, width) {
  const counts = Array(width).fill(0);
  for (const { timeMs } of events) counts[Math.min(width - 1, Math.floor((timeMs / endMs) * width))] += 1;
  return counts;
}

function timeline({ eliminations, durationMs }, lineWidth, units) {
  if (eliminations.length === 0) return [];
  const endMs = Math.max(durationMs ?? 0, eliminations.at(-1).timeMs) + 1;
  const width = Math.max(10, Math.min(TIMELINE_WIDTH, lineWidth - LABEL_WIDTH - 1));
  const lane = (label, kind) => {
    const counts = histogram(
      eliminations.filter((event) => event.kind === kind),
      endMs,
      width,
    );
    const bars = units.sparkline(counts.map((count) => count || null));
    return label.padEnd(LABEL_WIDTH) + bars.trimEnd();
  };
  const end = units.clock(endMs);
  const axis = ' '.repeat(LABEL_WIDTH) + '0:00' + end.padStart(width - 4);
  return ['', lane('eliminations', 'elimination'), lane('knock-downs', 'knock'), axis];
}

function bestPlayers({ players }, names, lineWidth, units) {
  const { textTable } = require('../text-table.js');
  const best = players
    .filter(({ eliminations }) => eliminations > 0)
    .sort((a, b) => b.eliminations - a.eliminations || b.knocks - a.knocks)
    .slice(0, MOST_PLAYERS);
  const columns = [
    { name: 'MOST ELIMINATIONS', shrinks: true },
    ...['ELIMS', 'KNOCKS'].map((name) => ({ name, right: true })),
  ];
  const rows = best.map((each) => [
    units.playerName(each.player, names),
    String(each.eliminations),
    String(each.knocks),
  ]);
  return rows.length === 0 ? [] : ['', textTable(columns, rows, lineWidth).trimEnd()];
}

function notable({ eliminations }, names, lineWidth, units) {
  const { wrapWords } = require('../text-table.js');
  const ends = eliminations.filter(({ kind }) => kind === 'elimination');
  if (ends.length === 0) return [];
  const whom = ({ attacker, victim, distanceM }) =>
    attacker === victim ? 'themselves' : `${units.playerName(victim, names)} over ${units.metres(distanceM)}`;
  const text = (event) =>
    `${units.playerName(event.attacker, names)} eliminated ${whom(event)} at ${units.clock(event.timeMs)}`;
  const farthest = ends.reduce((a, b) => ((b.distanceM ?? -1) > (a.distanceM ?? -1) ? b : a));
  return ['', `longest  ${text(farthest)}`, `last     ${text(ends.at(-1))}`].map((line) =>
    wrapWords(line, lineWidth),
  );
}

function report(match, names, lineWidth) {
  const units = require('../units.js');
  const { modeOf } = require('../export/tables.js');
  const { wrapWords } = require('../text-table.js');
  const mode = modeOf(match);
  const title = [match.map, mode].map((text) => text && printable(text));
  const date = match.recordedAt && units.dateTime(match.recordedAt);
  return [
    wrapped([...title, date, units.clock(match.durationMs), match.state], lineWidth),
    wrapped(ownFigures(match, units), lineWidth),
    ...timeline(match, lineWidth, units),
    ...bestPlayers(match, names, lineWidth, units),
    ...notable(match, names, lineWidth, units),
    ...(match.warnings.length > 0 ? [''] : []),
    ...match.warnings.map((text) => wrapWords(`warning: ${printable(text)}`, lineWidth)),
  ];
}

async function run(context) {
  const { namesOf } = require('../name-file.js');
  const { args, options, output } = context;
  const { concurrency, ...reading } = readingOf(context);
  const names = namesOf(options.names);
  const match = await readMatch(args[0], reading);
  if (wantsData(options, output)) await output.writeJson(JSON.stringify(match) + '\n');
  else await output.write(report(match, names, output.columns ?? 80).join('\n') + '\n');
  return 0;
}

module.exports = {
  order: 50,
  define: (command) =>
    withNames(withJson(withReading(command)))
      .description('print one match at a glance')
      .argument('<file>', 'replay'),
  run,
};
