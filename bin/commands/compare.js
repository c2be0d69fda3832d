'use strict';
// corvane-replay compare: the same figures of two sets of matches, side by side.

const { usageFailure } = require('../failures.js');
const { readForFigures, wantsData, withJson, withReading } = require('../matches.js');

const words = (name) => name.replace(/_(m|ms)$/, '').replaceAll('_', ' ');

// The arguments before and after "--". The parser does not say where it stood.
function sides(paths) {
  const mark = process.argv.indexOf('--');
  const second = mark < 0 ? 0 : process.argv.length - mark - 1;
  if (second === 0 || second >= paths.length) throw usageFailure('two sets of paths are needed: A… -- B…');
  // Behind "--" the parser takes everything for a path.
  const option = paths.find((each) => each.startsWith('-') && each !== '-');
  if (option !== undefined) throw usageFailure(`options come before A… -- B…: ${option}`);
  return [paths.slice(0, paths.length - second), paths.slice(paths.length - second)];
}

function change(a, b) {
  if (a === null || b === null || a === 0) return '';
  const percent = Math.round((100 * (b - a)) / a) || 0;
  return `${percent > 0 ? '+' : ''}${percent} %`;
}

async function run(context) {
  const { Groups, OF_MATCHES, figuresOf } = require('../figures.js');
  const { textTable } = require('../text-table.js');
  const { args, options, output } = context;
  const values = [];
  let status = 0;
  for (const paths of sides(args[0])) {
    const groups = new Groups();
    const all = groups.of('all');
    const failed = await readForFigures(paths, context, (match) => all.addMatch(match));
    status ||= failed;
    values.push(figuresOf(groups, OF_MATCHES)[0].values);
  }
  const [a, b] = values;
  if (wantsData(options, output)) {
    const lines = OF_MATCHES.map(({ name }) => ({ figure: name, a: a[name], b: b[name] }));
    await output.writeJson(lines.map((line) => JSON.stringify(line) + '\n').join(''));
    return status;
  }
  const columns = [{ name: 'FIGURE' }, ...['A', 'B', 'CHANGE'].map((name) => ({ name, right: true }))];
  const rows = OF_MATCHES.map(({ name, text }) => {
    return [words(name), text(a[name]), text(b[name]), change(a[name], b[name])];
  });
  await output.write(textTable(columns, rows, output.columns));
  return status;
}

module.exports = {
  order: 70,
  define: (command) =>
    withJson(withReading(command))
      .description('print the same figures of two sets of matches side by side: compare [options] A… -- B…')
      .argument('<path...>', 'the replays of both sets, -- between them'),
  run,
};
