// The same as installed.js for ES modules. It is no wrapper of that file: bundles of ES modules cannot hold a require().

import { createRequire } from 'node:module';
import path from 'node:path';

// Bundlers leave import.meta.url empty, or with the place at build time; where they make CommonJS, there is __filename.
const places = () => [
  import.meta.url,
  typeof __filename === 'string' ? __filename : undefined,
  process.argv[1],
  path.join(process.cwd(), 'bundle.js'),
];

function manifest() {
  for (const place of places()) {
    try {
      return createRequire(place).resolve('corvane_napi/package.json');
    } catch {
      // The next one may be nearer.
    }
  }
  throw notInstalled();
}

function notInstalled() {
  const hint = 'In the folder of the bundle, or above it: npm install corvane_napi. See docs/bundling.md.';
  const lines = [
    'corvane_napi: the installed package was not found.',
    '  reason:       a bundle does not hold the native add-on and needs the package at run time',
    `  looked from:  ${places().filter(Boolean).join(', ')}`,
    `  what to do:   ${hint}`,
  ];
  return Object.assign(new Error(lines.join('\n')), { code: 'ERR_CORVANE_ADDON', hint });
}

// file: its name in the package. Throws an Error with code ERR_CORVANE_ADDON without the package.
export default (file) => createRequire(manifest())(file);
