'use strict';
// What a reading tells beside the document, and what it salvages of a broken file.

const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const { test } = require('node:test');
const { addonPath, sharedPart } = require('../support/reads.js');
const { run, temporaryFolder } = require('../support/run.js');
const w = require('../support/replay-writer.js');

const addon = require(addonPath);
const file = path.join(temporaryFolder(), 'facts.replay');

// { document, facts }, or { error } with its code and message.
function salvage() {
  try {
    const { text, facts } = addon.readReplayDocument(file, new ArrayBuffer(0), {
      facts: true,
      salvage: true,
    });
    return { document: JSON.parse(text), facts: JSON.parse(facts) };
  } catch ({ code, message }) {
    return { error: { code, message } };
  }
}

const NAMED = /^the file ends too early$|^ReadReplayInfo: Invalid event disk size$/;

test('a match that is cut anywhere fails by name or says what is missing, and what is whole can be had', () => {
  const whole = fs.readFileSync(path.join(__dirname, '..', '..', 'samples', 'match.replay'));
  const growing = fs.openSync(file, 'w'); // faster than writing each cut again
  const eventsUpTo = new Map(); // by the end of a chunk
  for (let size = 1; size < whole.length; ++size) {
    fs.writeSync(growing, whole, size - 1, 1);
    const { document, facts, error } = salvage();
    const failure = error ?? facts.failure;
    if (failure) assert.match(failure.reason ?? failure.message, NAMED);
    else assert.ok(facts.end === 'cut' || facts.warnings.length > 0, `cut at ${size}`);
    assert.doesNotMatch(`${facts?.warnings}`, /cannot belong/);
    if (error) continue; // the information block is not whole
    if (facts.end === 'complete') eventsUpTo.set(size, document.events ?? []);
    else assert.deepEqual([facts.end, document.events ?? []], ['cut', eventsUpTo.get(facts.cutAt)]);
  }
  fs.closeSync(growing);
  assert.deepEqual(
    [...eventsUpTo.values()].map(({ length }) => length),
    [0, 0, 0, 1, 2, 3, 4, 4, 4, 5, 6, 7, 8],
  );
});

const key = Buffer.alloc(16, 7);
const bot = (id) => w.playerElim({ killer: { type: 16, id } });
const event = (data, more) => w.eventChunk({ data, ...more });
const kinds = ['AthenaMatchStats', 'AthenaMatchTeamStats'];
const statistics = kinds.map((Group) => event(w.matchStats(1, [1, 2, 3, 4, 5, 6, 7, 8, 9, 10]), { Group }));
const missing = kinds.map((kind) => `there is no ${kind}, which a match has at its end`);
const misfit = ({ length }) => `the chunk at byte ${length} cannot belong to the file`;
const rest = [w.headerChunk(), statistics];
const complete = { end: 'complete', cutAt: null, failure: null, skipped: [], warnings: [] };

for (const { name, info, chunks, facts, document = {} } of [
  {
    name: 'texts as the file has them',
    info: { FriendlyName: ' A  b' },
    chunks: [
      w.headerChunk({ Branch: 'x y', levels: [['/L 1', 0]], GameSpecificData: ['a = é'] }),
      [...[w.playerElim(), bot('Big Bot'), bot('Bot'), bot('')].map((data) => event(data)), statistics],
    ],
    facts: {
      ...complete,
      texts: {
        ...{ FriendlyName: ' A  b', branch: 'x y', levels: ['/L 1'], GameSpecificData: ['a = é\0'] },
        names: [
          [1, 'killerBot', 'Big Bot'],
          [3, 'killerBot', ''],
        ],
      },
    },
    document: {
      ReplayFileMeta: { FriendlyName: 'Ab' },
      events: [{}, { killerBot: 'BigBot' }, { killerBot: 'Bot' }, { killerBot: '' }, {}, {}],
    },
  },
  {
    name: 'skipped events, by name and reason',
    chunks: [
      ...[rest, Array(2).fill(event(bot('x'), { Group: 'a', Metadata: 'b' }))],
      ...[event(w.skipped(3), { Group: 'AthenaMatchStats' }), event(Buffer.alloc(0))],
    ],
    facts: {
      skipped: [
        { name: 'AthenaMatchStats', count: 1, reason: 'tooShort' },
        { name: 'a/b', count: 2, reason: 'unknown' },
        { name: 'playerElim', count: 1, reason: 'tooShort' },
      ],
    },
  },
  {
    name: 'a payload that cannot be decrypted',
    info: { bEncrypted: 1, EncryptionKey: key },
    chunks: [w.headerChunk(), event(w.skipped(20)), event(w.encrypt(bot('b'), key))],
    facts: {
      end: 'failed',
      failure: { code: 'ERR_CORRUPT', reason: 'Decryption failed: 20 bytes of event 0, a key of 16' },
      skipped: [{ name: 'playerElim', count: 1, reason: 'undecryptable' }],
    },
    document: { events: [{ killerBot: 'b' }] },
  },
  {
    name: 'a key that is missing',
    info: { bEncrypted: 1 },
    chunks: [event(w.skipped(16)), w.headerChunk({ Changelist: 5 })],
    facts: { end: 'failed', failure: { code: 'ERR_KEY_REQUIRED' } },
    document: { header: { EngineVersion: { changelist: 5 } }, events: undefined },
  },
  {
    name: 'a header that is broken',
    chunks: [w.headerChunk({ Branch: w.i32(-0x80000000) }), event(bot('b'))],
    facts: { end: 'failed', failure: { code: 'ERR_CORRUPT' } },
    document: { header: undefined, events: [{ killerBot: 'b' }] },
  },
  {
    name: 'events that are broken',
    chunks: [
      rest,
      [bot('a'), ...Array(2).fill(bot(w.i32(-0x80000000))), bot('c')].map((data) => event(data)),
    ],
    facts: { end: 'failed', skipped: [{ name: 'playerElim', count: 2, reason: 'broken' }] },
    document: { events: [{}, {}, { killerBot: 'a' }, { killerBot: 'c' }] },
  },
  {
    name: 'a table that is broken',
    chunks: [rest, event(bot('b')), w.headerChunk(), event(bot('c'))],
    facts: { end: 'failed', failure: { reason: 'ReadReplayInfo: Found multiple header chunks' } },
    document: { events: [{}, {}, { killerBot: 'b' }] },
  },
  {
    name: 'a last event that is larger than its chunk, and no header',
    chunks: [w.eventChunk({ SizeInBytes: 1e6 })],
    facts: {
      ...{ end: 'failed', failure: { reason: 'ReadReplayInfo: Invalid event disk size' } },
      warnings: ['there is no header chunk', misfit(w.replay()), ...missing],
    },
  },
  {
    name: 'texts that are not UTF-8',
    info: { FriendlyName: w.bytes(w.i32(3), Buffer.from('a\xff\0', 'latin1')) },
    chunks: [rest, event(bot(w.bytes(w.i32(3), Buffer.from('b\xff\0', 'latin1'))))],
    facts: { end: 'failed', failure: { code: 'ERR_CORRUPT' }, texts: { FriendlyName: 'a\ufffd' } },
    document: { ReplayFileMeta: { FriendlyName: 'a\ufffd' }, events: [{}, {}, { killerBot: 'b\ufffd' }] },
  },
  {
    name: 'a replay that is being recorded',
    info: { bIsLive: 1 },
    chunks: [rest, event(bot('b')).subarray(0, 9)],
    facts: { ...complete, end: 'live', cutAt: w.replay({}, rest).length },
  },
  {
    name: 'what is unusual',
    chunks: [
      w.headerChunk({ Magic: 1 }),
      w.chunk(w.CHUNK.unknown, w.skipped(1)),
      w.chunk(1, w.skipped(1), -1),
    ],
    facts: {
      end: 'cut',
      warnings: [
        '1 unknown (cleared) chunks were skipped',
        'Header.Magic != NETWORK_DEMO_MAGIC',
        misfit(w.replay({}, w.headerChunk(), w.skipped(9))),
        ...missing,
      ],
    },
  },
]) {
  test(`${name}`, () => {
    fs.writeFileSync(file, w.replay(info, chunks));
    const reading = salvage();
    assert.equal(reading.error, undefined);
    if (reading.facts.failure) reading.facts.failure.reason = reading.facts.failure.reason.trim();
    assert.deepEqual(sharedPart(reading.facts, facts), facts);
    assert.deepEqual(sharedPart(reading.document, document), document);
  });
}

if (process.platform === 'linux') {
  test('a document for which there is no memory is refused as such', () => {
    const bytes = 2_000_000_000; // of a key
    const head = w.infoBlock({ EncryptionKey: Buffer.of(1), keySize: bytes });
    fs.writeFileSync(file, head);
    fs.truncateSync(file, head.length + bytes - 1);
    const script = `
      const addon = require(${JSON.stringify(addonPath)});
      try { addon.readReplayDocument(process.argv[1], new ArrayBuffer(0)); } catch ({ code }) { console.error(code); }`;
    const limited = ['-c', 'ulimit -v 2000000; exec "$@"', 'bash', process.execPath, '-e', script, file];
    assert.equal(run('bash', limited).stderr, 'ERR_OUT_OF_MEMORY\n');
  });
}
