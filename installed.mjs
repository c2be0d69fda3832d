// The same as installed.js for ES modules. It is no wrapper of that file: bundles of ES modules cannot hold a require().

// Not its createRequire alone: webpack would follow that.
import module from 'node:module';
import path from 'node:path';

// What bundlers make CommonJS of; they may answer "typeof" themselves, and wrongly.
function commonJsFile() {
  try {
    return __filename;
  } catch {
    return undefined;
  }
}

// From their folders upwards the package is looked for. esbuild leaves import.meta.url empty in CommonJS; webpack puts this
// file's place at build time in.
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
export default (file) => module.createRequire(manifest())(file);
