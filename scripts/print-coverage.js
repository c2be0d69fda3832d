// node print-coverage.js LCOV FOLDER: sums up a coverage record by subfolder, and lists the lines that never ran.
'use strict';

const fs = require('node:fs');
const path = require('node:path');

const [record, root] = process.argv.slice(2);

// One file's lines and branches, each with how often it ran.
function parseFile(section) {
  const field = (line, name) => line.startsWith(`${name}:`) && line.slice(name.length + 1).split(',');
  const file = { lines: new Map(), branches: [] };
  for (const line of section.split('\n')) {
    const data = field(line, 'DA') || [];
    const branch = field(line, 'BRDA');
    if (line.startsWith('SF:')) file.name = line.slice(3);
    if (data.length > 0) file.lines.set(Number(data[0]), Number(data[1]));
    if (branch) file.branches.push(branch[3] === '-' ? 0 : Number(branch[3]));
  }
  return file;
}

const share = (hit, all) => (all === 0 ? '-' : `${((100 * hit) / all).toFixed(1)} %`);
const ran = (counts) => counts.filter((count) => count > 0).length;

function printRow(name, files) {
  const lines = files.flatMap((file) => [...file.lines.values()]);
  const branches = files.flatMap((file) => file.branches);
  const cells = [String(lines.length), share(ran(lines), lines.length), String(branches.length)];
  cells.push(share(ran(branches), branches.length));
  console.log(name.padEnd(52) + cells.map((cell) => cell.padStart(10)).join(''));
}

// 3, 4, 5, 9 -> "3-5, 9"
function ranges(numbers) {
  const result = [];
  for (const number of numbers) {
    const last = result.at(-1);
    if (last && number === last[1] + 1) last[1] = number;
    else result.push([number, number]);
  }
  return result.map(([from, to]) => (from === to ? `${from}` : `${from}-${to}`)).join(', ');
}

const files = fs.readFileSync(record, 'utf8').split('end_of_record\n').map(parseFile);
const ours = files
  .filter((file) => file.name && !path.relative(root, file.name).startsWith('..'))
  .map((file) => ({ ...file, name: path.relative(root, file.name) }))
  .sort((a, b) => (a.name < b.name ? -1 : 1));

console.log(
  'lib/'.padEnd(52) + ['lines', 'ran', 'branches', 'taken'].map((title) => title.padStart(10)).join(''),
);
for (const folder of new Set(ours.map((file) => path.dirname(file.name)))) {
  printRow(
    folder,
    ours.filter((file) => path.dirname(file.name) === folder),
  );
}
printRow('together', ours);

console.log('\nnever ran:');
for (const file of ours) {
  const missed = [...file.lines].filter(([, count]) => count === 0).map(([line]) => line);
  if (missed.length > 0) console.log(`  ${file.name}: ${ranges(missed.sort((a, b) => a - b))}`);
}
