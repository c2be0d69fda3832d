'use strict';
// Eliminations that the native side has written as rows: arrays of their values in the order of the document's keys, null for
// a key that the event does not have. Their keys are half of a document's text.

// By numbers: taking the array apart by names takes several times as long.
const eliminationOf = (row) => ({
  damageType: row[0],
  eventMeta: { time1: row[1], time2: row[2] },
  evtName: row[3],
  killed: row[4] ?? undefined,
  killedBot: row[5] ?? undefined,
  killedX: row[6],
  killedY: row[7],
  killedZ: row[8],
  killer: row[9] ?? undefined,
  killerBot: row[10] ?? undefined,
  killerX: row[11],
  killerY: row[12],
  killerZ: row[13],
  knocked: row[14],
});

// The document that the text with rows stands for.
function documentOfRows(text) {
  const document = JSON.parse(text);
  document.events = document.events?.map((event) => (Array.isArray(event) ? eliminationOf(event) : event));
  return document;
}

module.exports = { documentOfRows };
