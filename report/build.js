'use strict';
// node report/build.js: bundles the report's page into report/dist, from where client/report-page.js takes it.

const path = require('node:path');
const esbuild = require('esbuild');

esbuild.buildSync({
  entryPoints: { report: path.join(__dirname, 'main.js') },
  outdir: path.join(__dirname, 'dist'),
  bundle: true,
  minify: true,
  charset: 'utf8',
  legalComments: 'none',
  format: 'iife',
  target: ['chrome100', 'firefox113', 'safari16.4'],
  loader: { '.js': 'jsx' },
  jsx: 'automatic',
  jsxImportSource: 'preact',
  logLevel: 'warning',
});
