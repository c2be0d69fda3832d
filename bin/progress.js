'use strict';
// A line on a terminal's standard error that tells how far a command is, and messages that do not break it.

const { clock } = require('./units.js');

const PAUSE_MS = 100; // between two drawings
const BAR_WIDTH = 24;
const ERASE_LINE = '\r\x1b[K';

const quiet = (stream) => ({ step() {}, message: (text) => stream.write(text), stop() {} });

// As much of the line as fits: first the count, then the rate and the time left, then the bar.
function line(done, total, seconds, columns) {
  const count = `${done}/${total} replays`;
  const rate = seconds > 0 ? done / seconds : 0;
  const rest =
    rate > 0 ? `${count}, ${rate.toFixed(0)}/s, ${clock((1000 * (total - done)) / rate)} left` : count;
  const filled = Math.round((done / total) * BAR_WIDTH);
  const bar = '█'.repeat(filled) + '░'.repeat(BAR_WIDTH - filled);
  return [`${bar} ${rest}`, rest, count].find((text) => text.length < columns) ?? '';
}

// Returns { step(), message(text), stop() }. There is no line without a terminal, for a single file, where documents go to
// the same terminal (shared), and where it is not wanted.
function progress(total, stream, { shared = false, wanted = true } = {}) {
  if (!wanted || !stream.isTTY || shared || total < 2 || process.env.TERM === 'dumb') return quiet(stream);
  const start = performance.now();
  let done = 0;
  let drawn = -Infinity;
  const draw = () => {
    const now = performance.now();
    if (now - drawn < PAUSE_MS) return;
    drawn = now;
    stream.write(ERASE_LINE + line(done, total, (now - start) / 1000, stream.columns || 80));
  };
  return {
    step() {
      done += 1;
      draw();
    },
    message(text) {
      stream.write(ERASE_LINE + text);
      drawn = -Infinity;
      draw();
    },
    stop: () => stream.write(ERASE_LINE),
  };
}

module.exports = { progress };
