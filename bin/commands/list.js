'use strict';
// corvane-replay list: a line for each match.

const { PATHS } = require('../replay-paths.js');
const { readAll, wantsData, withJson, withReading } = require('../matches.js');

const SHOWN = ['date', 'map', 'mode', 'length', 'place', 'eliminations', 'state', 'path'];

const collected = (text, list = []) => [...list, text];

async function run(context) {
  const { COLUMNS, cellText, condition, sorter } = require('../match-columns.js');
  const { textTable } = require('../text-table.js');
  const { TABLES, matchRow } = require('../export/tables.js');
  const { ndjsonLine } = require('../export/formats.js');
  const { args, options, output } = context;
  const [names] = args;
  const conditions = (options.where ?? []).map(condition);
  const order = options.sort && sorter(options.sort);
  const isData = wantsData(options, output);
  const line = (match) => output.writeJson(ndjsonLine(TABLES.matches, matchRow(match)) + '\n');
  const kept = [];
  const status = await readAll(names, context, async (match) => {
    if (!conditions.every((holds) => holds(match))) return;
    if (isData && !order) await line(match);
    else kept.push({ ...match, document: null });
  });
  if (order) kept.sort(order);
  if (isData) for (const match of kept) await line(match);
  else {
    const columns = SHOWN.map((name) => ({
      ...COLUMNS[name],
      name: COLUMNS[name].label ?? name.toUpperCase(),
    }));
    const rows = kept.map((match) => SHOWN.map((name) => cellText(name, match)));
    await output.write(textTable(columns, rows, output.stream.columns));
  }
  return status;
}

module.exports = {
  order: 40,
  define: (command) =>
    withJson(withReading(command))
      .description('a line for each match: date, map, mode, length, place, eliminations, state')
      .argument('<path...>', PATHS)
      .option('--sort <column>', 'by this column, "-place" downwards')
      .option(
        '--where <condition>',
        'only these, like "place<=3" or "map=Saltmarsh"; may be repeated',
        collected,
      )
      .addHelpText(
        'after',
        '\nColumns: date, map, mode, length (minutes), place, eliminations, accuracy, players, state, name, path.\n' +
          'Conditions: = != < <= > >= and ~ ("holds this text").',
      ),
  run,
};
