'use strict';
// corvane-replay list: a line for each match.

const { PATHS } = require('../replay-paths.js');
const { readAll, wantsData, withJson, withReading } = require('../matches.js');

const SHOWN = ['date', 'map', 'mode', 'length', 'place', 'eliminations', 'state', 'path'];

// On a narrow terminal these are left out, the first of them first; the state last, if a match is not complete.
const SPARE = ['state', 'mode', 'eliminations', 'map'];
const SPARE_WITH_STATE = ['mode', 'eliminations', 'map', 'state'];

const collected = (text, list = []) => [...list, text];

async function run(context) {
  const { cellText, condition, sorter } = require('../match-columns.js');
  const { TABLES, matchRow } = require('../export/tables.js');
  const { ndjsonLine } = require('../export/formats.js');
  const { args, options, output } = context;
  const conditions = (options.where ?? []).map(condition);
  const order = options.sort && sorter(options.sort);
  const isData = wantsData(options, output);
  const shown = isData
    ? (match) => ndjsonLine(TABLES.matches, matchRow(match)) + '\n'
    : (match) => SHOWN.map((name) => cellText(name, match));
  const kept = []; // only the shown part of each match: there may be many
  const status = await readAll(args[0], context, async (match) => {
    if (!conditions.every((holds) => holds(match))) return;
    if (isData && !order) await output.writeJson(shown(match));
    else kept.push({ shown: shown(match), value: order?.value(match) });
  });
  if (order) kept.sort((a, b) => order.compare(a.value, b.value));
  const rows = kept.map((each) => each.shown);
  if (!isData) await output.write(table(rows, output.columns));
  else for (const line of rows) await output.writeJson(line);
  return status;
}

function table(rows, lineWidth) {
  const { COLUMNS } = require('../match-columns.js');
  const { fittingTable } = require('../text-table.js');
  const columns = SHOWN.map((name) => ({
    ...COLUMNS[name],
    name: COLUMNS[name].label ?? name.toUpperCase(),
  }));
  const isComplete = rows.every((row) => row[SHOWN.indexOf('state')] === 'complete');
  const names = isComplete ? SPARE : SPARE_WITH_STATE;
  const spare = names.map((name) => columns[SHOWN.indexOf(name)]);
  return fittingTable(columns, rows, lineWidth, spare);
}

module.exports = {
  order: 40,
  define: (command) =>
    withJson(withReading(command))
      .description('print a line for each match: date, map, mode, length, place, eliminations, state')
      .argument('<path...>', PATHS)
      .option('--sort <column>', 'sort by this column; "-place" sorts downwards')
      .option(
        '--where <condition>',
        'only matches for which this holds, like "place<=3" or "map=Saltmarsh"; may be repeated',
        collected,
      )
      .addHelpText(
        'after',
        '\nColumns: date, map, mode, length (minutes), place, eliminations, accuracy, players, state, name, path.\n' +
          'Conditions: = != < <= > >= and ~ ("holds this text").',
      ),
  run,
};
