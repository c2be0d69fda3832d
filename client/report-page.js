'use strict';
// The HTML around a report's data. Two things keep a hostile replay from running anything: its texts are inert data that
// the script puts into text nodes, and a policy in the page allows this script and this style sheet, nothing else.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');

const ASSETS = path.join(__dirname, '..', 'report', 'dist');

let assets;

// The built script and style sheet; `npm run build-report` makes them, and the packed package has them.
function readAssets() {
  const [script, style] = ['report.js', 'report.css'].map((name) =>
    fs.readFileSync(path.join(ASSETS, name), 'utf8'),
  );
  return { script, style };
}

const hash = (text) => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

const policy = ({ script, style }) =>
  `default-src 'none'; script-src ${hash(script)}; style-src ${hash(style)}; base-uri 'none'; form-action 'none'`;

const ENTITIES = { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;' };
const escapeHtml = (text) => text.replace(/[&<>"]/g, (character) => ENTITIES[character]);

// Inside a script element only these could end it, or begin a comment.
const inertJson = (json) =>
  json.replace(
    /[<>&\u2028\u2029]/g,
    (character) => `\\u${character.charCodeAt(0).toString(16).padStart(4, '0')}`,
  );

const countOf = ({ length }) => (length === 1 ? '1 match' : `${length} matches`);

function titleOf({ title, matches }) {
  const [only] = matches.length === 1 ? matches : [];
  return title || only?.name || only?.file || countOf(matches);
}

// data: what ReportData gives; json: the same as the page's script takes it.
function reportPage(data, json) {
  assets ??= readAssets();
  const title = escapeHtml(titleOf(data));
  return `<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="${policy(assets)}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="referrer" content="no-referrer">
<title>${title}</title>
<style>${assets.style}</style>
</head>
<body>
<div id="page"><noscript><main><h1>${title}</h1><p>This page holds ${countOf(data.matches)}. Its figures, charts, map and
tables are drawn by a script inside the page, and this browser runs none. Allow scripts for this file to see them.</p></main></noscript></div>
<script type="application/json" id="data">${inertJson(json)}</script>
<script>${assets.script}</script>
</body>
</html>
`;
}

module.exports = { reportPage };
