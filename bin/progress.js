'use strict';
// A progress bar on a terminal's standard error, and messages that do not break it.

const { MultiBar, Presets } = require('cli-progress');

const FORMAT = 'reading {bar} {value}/{total} replays, {eta_formatted} left';

// Returns { step(), message(text), stop() }. There is no bar without a terminal, for a single file, and where documents
// go to the same terminal (shared).
function progress(total, stream, shared = false) {
  if (!stream.isTTY || shared || total < 2) {
    return { step() {}, message: (text) => stream.write(text), stop() {} };
  }
  const options = { format: FORMAT, stream, clearOnComplete: true, hideCursor: true, linewrap: true };
  const bars = new MultiBar(options, Presets.shades_classic);
  const bar = bars.create(total, 0);
  const stop = () => {
    bars.update(); // messages wait for one
    bars.stop();
  };
  return { step: () => bar.increment(), message: (text) => bars.log(text), stop };
}

module.exports = { progress };
