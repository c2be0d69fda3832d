'use strict';
// Files in which users name what replays only number: accounts, damage types.

const fs = require('node:fs');
const { failureOf, usageFailure } = require('./failures.js');
const { textOf } = require('./text-file.js');

// A cell of CSV, with or without quotes.
const CELL = /\s*(?:"((?:[^"]|"")*)"|([^,]*))\s*(?:,|$)/y;

function cells(line) {
  const found = [];
  CELL.lastIndex = 0;
  while (CELL.lastIndex < line.length) {
    const [, quoted, plain] = CELL.exec(line) ?? [];
    if (quoted === undefined && plain === undefined) break;
    found.push(quoted === undefined ? plain.trim() : quoted.replaceAll('""', '"'));
  }
  return found;
}

// Without inherited members: a replay may call its map "constructor".
function lookup(entries) {
  const names = Object.create(null);
  for (const [key, name] of entries) names[key] = String(name);
  return names;
}

function parsed(text, file) {
  try {
    if (text.trimStart().startsWith('{')) return lookup(Object.entries(JSON.parse(text)));
  } catch (error) {
    throw usageFailure(`${file} is no JSON: ${error.message}`);
  }
  const rows = text.split(/\r?\n/).map(cells);
  const named = rows.filter(([key, name]) => key && name);
  if (named.length === 0) throw usageFailure(`${file} has no line like "3,rifle", and is no JSON object`);
  return lookup(named);
}

// The names in a file: lines of CSV with a number or account and its name, or a JSON object of them. {} without a file.
function namesOf(file) {
  if (file === undefined) return lookup([]);
  try {
    return parsed(textOf(fs.readFileSync(file)), file);
  } catch (error) {
    throw error.code?.startsWith('ERR_')
      ? error
      : failureOf('ERR_UNREADABLE', `the names cannot be read: ${error.message}`);
  }
}

module.exports = { namesOf };
