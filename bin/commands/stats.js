'use strict';
// corvane-replay stats: figures over many matches, grouped.

const { InvalidArgumentError, Option } = require('commander');
const { withNames } = require('../command-options.js');
const { printable, usageFailure } = require('../failures.js');
const { readForFigures, wantsData, withJson, withReading } = require('../matches.js');
const { PATHS } = require('../replay-paths.js');

const SHOWN_ON_TERMINAL = 25;

// What --player goes with.
const OF_PLAYERS = ['player', 'opponent'];

// By day and week these are also drawn.
const TRENDS = ['median_place', 'own_eliminations_per_match', 'mean_accuracy'];

function wholeNumber(text) {
  if (/^\d+$/.test(text)) return Number(text);
  throw new InvalidArgumentError('It must be a whole number.');
}

// Each: { figures, sort, isTime, read(context, tally) }, read() resolving with rows as figuresOf() gives them.
function groupingOf({ by, minMatches, player }, names) {
  const { FIGURES, Opponents } = require('../opponents.js');
  const { GROUPINGS, Groups, figuresOf } = require('../figures.js');
  if (player !== undefined && !OF_PLAYERS.includes(by)) {
    throw usageFailure(`--player goes with --by ${OF_PLAYERS.join(' or ')}`);
  }
  if (by === 'opponent') {
    if (minMatches !== undefined) throw usageFailure('--min-matches does not go with --by opponent');
    const read = (context, tally) => opponents(new Opponents(), context, names, tally);
    return { figures: FIGURES, sort: FIGURES[0].name, read };
  }
  const { add, figures, ...more } = GROUPINGS[by];
  const read = async (context, tally) => {
    const groups = new Groups();
    tally.status = await readForFigures(context.args[0], context, (match) => add(groups, match));
    const rows = figuresOf(groups, figures);
    if (player === undefined) return rows;
    const account = chosenAccount([...groups.keys()], player, names);
    return rows.filter(({ key }) => key === account);
  };
  return { figures, ...more, read };
}

async function opponents(found, context, names, tally) {
  const { args, options, terminal } = context;
  tally.status = await readForFigures(args[0], context, (match) => found.add(match));
  if (options.player !== undefined) return found.of(chosenAccount(found.accounts, options.player, names));
  const account = found.mostFrequent;
  if (account !== undefined) {
    terminal.write(
      `corvane-replay: of ${printable(names[account] ?? account)}, who is in most matches; choose another with --player\n`,
    );
  }
  return found.of(account);
}

// The account of this name, or the one that begins so.
function chosenAccount(accounts, player, names) {
  const wanted = player.toLowerCase();
  const named = accounts.filter((account) => names[account]?.toLowerCase() === wanted);
  const found = named.length > 0 ? named : accounts.filter((account) => account.startsWith(wanted));
  if (found.length === 1) return found[0];
  if (found.length === 0) throw usageFailure(`no account has the name ${player} or begins with it`);
  const few = found.slice(0, 5).join(', ');
  throw usageFailure(`${found.length} accounts fit ${player}: ${few}${found.length > 5 ? ', …' : ''}`);
}

// The figure to sort by; undefined: sorted by the keys.
function sortName({ figures, sort }, options) {
  const name = options.sort ?? sort;
  if (name === undefined || figures.some((figure) => figure.name === name)) return name;
  throw usageFailure(`there is no figure ${name}; there are ${figures.map((each) => each.name).join(', ')}`);
}

function sorted(rows, name, { minMatches }) {
  const { sortFigures } = require('../figures.js');
  const enough = rows.filter(({ values }) => minMatches === undefined || values.matches >= minMatches);
  return sortFigures(enough, name);
}

function trends(rows, figures) {
  const { sparkline } = require('../units.js');
  return figures
    .filter(({ name }) => TRENDS.includes(name))
    .map(({ name, label, text }) => {
      const values = rows.map((row) => row.values[name]);
      const ends = [values[0], values.at(-1)].map(text);
      return `${label.padEnd(10)} ${sparkline(values)}  ${ends.join(' → ')}\n`;
    })
    .join('');
}

// The table, with as many figures from the left as fit.
function tableOf(rows, { figures }, options, names, width) {
  const { plain } = require('../figures.js');
  const { fittingTable } = require('../text-table.js');
  const shown = figures.filter(({ label }) => label !== undefined);
  const columns = [
    { name: options.by.toUpperCase(), shrinks: ['player', 'opponent'].includes(options.by) },
    ...shown.map(({ label }) => ({ name: label, right: true })),
  ];
  const lines = rows.map(({ key, values }) => [
    printable(names[key] ?? plain(key)),
    ...shown.map(({ name, text }) => text(values[name])),
  ]);
  return fittingTable(columns, lines, width, columns.slice(2).reverse());
}

async function run(context) {
  const { namesOf } = require('../name-file.js');
  const { options, output, terminal } = context;
  const names = namesOf(options.names);
  const tally = { status: 0 };
  const grouping = groupingOf(options, names);
  const name = sortName(grouping, options);
  const isData = wantsData(options, output);
  const found = sorted(await grouping.read(context, tally), name, options);
  const isShort = !isData && !grouping.isTime;
  const rows = found.slice(0, options.top ?? (isShort ? SHOWN_ON_TERMINAL : Infinity));
  if (isData) {
    for (const { key, values } of rows) {
      const called = names[key] === undefined ? {} : { name: names[key] };
      await output.writeJson(JSON.stringify({ [options.by]: key, ...called, ...values }) + '\n');
    }
    return tally.status;
  }
  await output.write(tableOf(rows, grouping, options, names, output.columns));
  const more = found.length - rows.length;
  if (more > 0 && options.top === undefined) terminal.write(`corvane-replay: ${more} more; see --top\n`);
  const isTrend = grouping.isTime && name === undefined;
  if (isTrend && rows.length > 1) await output.write('\n' + trends(rows, grouping.figures));
  return tally.status;
}

module.exports = {
  order: 60,
  define: (command) =>
    withNames(withJson(withReading(command)))
      .description('print counts, rates and medians over many matches')
      .argument('<path...>', PATHS)
      .addOption(
        new Option('--by <what>', 'print a line for each of these')
          .choices(['player', 'opponent', 'damage', 'map', 'mode', 'day', 'week'])
          .default('player'),
      )
      .option('--sort <figure>', 'sort by this figure, highest first; names as in --json')
      .option(
        '--top <number>',
        `print at most this many lines (default: ${SHOWN_ON_TERMINAL} on a terminal)`,
        wholeNumber,
      )
      .option('--min-matches <number>', 'leave out groups of fewer matches', wholeNumber)
      .option(
        '--player <account>',
        'only this account; by opponent, the one whose opponents are counted (default: the one in most matches); ' +
          'the first digits are enough, or its name in --names',
      ),
  run,
};
