// What ESLint checks; layout is prettier's business.
import js from '@eslint/js';
import globals from 'globals';

export default [
  { ignores: ['build/', 'prebuilds/', '**/dist/'] },
  js.configs.recommended,
  {
    files: ['**/*.js', '**/*.cjs'],
    languageOptions: { sourceType: 'commonjs', globals: globals.node },
  },
  {
    files: ['report/**/*.js'],
    ignores: ['report/build.js'],
    languageOptions: {
      sourceType: 'module',
      globals: globals.browser,
      parserOptions: { ecmaFeatures: { jsx: true } },
    },
  },
  {
    files: ['tests/browser/*.js'],
    languageOptions: { globals: { ...globals.node, ...globals.browser } },
  },
  { files: ['**/*.mjs'], languageOptions: { globals: globals.node } },
  {
    rules: {
      'no-control-regex': 'off', // names from a replay hold control characters
      'no-unused-vars': ['error', { caughtErrors: 'none', ignoreRestSiblings: true }],
      'no-var': 'error',
      'object-shorthand': 'error',
      'prefer-const': 'error',
      eqeqeq: 'error',
    },
  },
  {
    // Without a plugin ESLint does not see that JSX uses the components, which have capital letters.
    files: ['report/**/*.js'],
    rules: {
      'no-unused-vars': [
        'error',
        { caughtErrors: 'none', ignoreRestSiblings: true, varsIgnorePattern: '^[A-Z]' },
      ],
    },
  },
];
