// The same three functions for `import`.
import installed from './installed.mjs';

export const { ReadCorvaneDemo, StartCorvaneWatcher, StopCorvaneWatcher } = installed('./native.js');
