// The same as installed.js for ES modules. It does not wrap that file: bundles of ES modules cannot hold a require().

// The whole module: webpack would follow a createRequire taken alone.
import module from 'node:module';
import path from 'node:path';

// The file's name if a bundler has made CommonJS of this one. Not with "typeof": bundlers may answer that, and wrongly.
function commonJsFile() {
  try {
    return __filename;
  } catch {
    return undefined;
  }
}

// The package is searched for from these files upwards. In CommonJS, esbuild leaves import.meta.url empty, and webpack
// replaces it by this file's place at build time.
const places = () => [
  import.meta.webpack === undefined ? import.meta.url : undefined,
  commonJsFile(),
  process.argv[1],
  path.join(process.cwd(), 'bundle.js'),
];

function manifest() {
  for (const place of places()) {
    try {
      return module.createRequire(place).resolve('corvane_napi/package.json');
    } catch {
      // Perhaps from the next place.
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
export default (file) => module.createRequire(manifest())(file);
