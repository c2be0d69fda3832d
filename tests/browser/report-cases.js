'use strict';
// The replays of the browser's tests, and the reports made of them.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const { OWN, makeSeason, matchReplay } = require('../../samples/make-season.js');
const w = require('../support/replay-writer.js');
const { inFolder, report } = require('./browser.js');

const HOSTILE_NAMES = [
  ...['"><svg/onload=alert(1)>', '<script>alert(2)</script>', '</script><script>alert(3)</script>'],
  ...['<img src=x onerror=alert(4)>', "';alert(5)//", '<!--', '&lt;b&gt;', '__proto__', 'constructor'],
  ...['\u202Ereversed\u202C', '\x1b[31mred', '\u2028line', 'A'.repeat(300), 'שלום', '😀🎯👩‍👩‍👧', '\u200Bunseen'],
];

const own = { type: 17, id: createHash('md5').update('own').digest() };

function hostileReplay() {
  const events = HOSTILE_NAMES.map((name, i) => {
    const other = { type: 16, id: name };
    const at = [2500 * i - 20_000, ((i * 7919) % 30_000) - 15_000, 0];
    const [killed, killer] = i % 3 === 2 ? [own, other] : [other, own];
    const data = w.playerElim({
      killed,
      killer,
      killedAt: at,
      killerAt: [at[0] + 4000, at[1], 0],
      knocked: i % 4 === 0,
    });
    return w.eventChunk({ Metadata: 'elimination', Time1: 30_000 * (i + 1), Time2: 0, data });
  });
  const header = {
    Branch: '<b>',
    levels: [['/Game/Maps/<img_src=x_onerror=alert(6)>', 0]],
    GameSpecificData: ['SubGame=<b>Duos</b>', '</title>=\u202Ex'],
  };
  const info = {
    LengthInMS: 600_000,
    FriendlyName: '</title><script>alert(7)</script>',
    Timestamp: 637489102335170000n,
  };
  return w.replay(info, w.headerChunk(header), events);
}

const season = makeSeason(inFolder('season'), 48);
const [middle] = season.slice(20, 21);

const files = {
  hostile: hostileReplay(),
  'empty-too': w.replay({}, w.headerChunk({})),
  empty: w.replay({ LengthInMS: 90_000 }, w.headerChunk({})),
  cut: matchReplay(7, 48).subarray(0, 7_000),
  text: Buffer.from('no replay'),
};
for (const [name, bytes] of Object.entries(files)) fs.writeFileSync(inFolder(`${name}.replay`), bytes);

const reports = {
  one: report('one', [middle.file, '--player', OWN.slice(0, 8)]),
  many: report('many', ['season', 'hostile.replay', 'text.replay', '--title', 'Spring <b>&'], 4),
  cut: report('cut', ['cut.replay']),
  empty: report('empty', ['empty.replay']),
  allEmpty: report('all-empty', ['empty.replay', 'empty-too.replay']),
  none: report('none', ['text.replay'], 4),
  hostile: report('hostile', ['hostile.replay']),
};

module.exports = {
  HOSTILE_NAMES,
  hostileFile: inFolder('hostile.replay'),
  middle: middle.file,
  reports,
  season,
};
