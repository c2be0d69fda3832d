// The same three functions for `import`.
import addon from './index.js';

export const { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher } = addon;
