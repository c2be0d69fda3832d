'use strict';
// Event chunks: which handler an event goes to, and what the handlers make of whole, cut and hostile data.

const assert = require('node:assert/strict');
const { test } = require('node:test');
const { expectedElim, expectedMatchStats, expectedTeamStats } = require('../support/expected-events.js');
const { readFiles, testReads, utf8Text } = require('../support/reads.js');
const w = require('../support/replay-writer.js');

const account = Buffer.from('00112233445566778899aabbccddeeff', 'hex');
const elim = {
  extra: w.skipped(5),
  killedAt: [1.5, -2.25, 1e10],
  killerAt: [0.1, -0, 3.4028234663852886e38],
  killed: { type: 17, id: account },
  killer: { type: 16, id: 'Bot_7' },
  damageType: 255,
  knocked: 1,
};
const counters = [1, 2, 3, 4, 5, 6, 7, 8, 0x80000000, 0xffffffff];
const none = { time1: 0, time2: 0 };
const eventMeta = { time1: 0xfffffffe, time2: 2 };
const team = { Group: 'AthenaMatchTeamStats', data: w.teamStats(0xffffffff, 98) };
const teamEvent = { ...expectedTeamStats(0xffffffff, 98), eventMeta: none };

const utf16Name = w.string16('Bot Ä');
const playerRows = [
  ['an account', { type: 17, id: account }, ['killed', account.toString('hex')]],
  ['a named bot', { type: 16, id: w.string8('Bot 7') }, ['killedBot', 'Bot7']],
  ['a bot with a name in UTF-16', { type: 16, id: utf16Name }, ['killedBot', 'BotÄ\0']],
  ['a bot without a name', { type: 3 }, ['killedBot', 'Unnamed Bot']],
  ['nobody', { type: 0 }, ['killedBot', '']],
  ['somebody of an unknown type', { type: 255 }, ['killedBot', '']],
].map(([name, killed, [key, id]]) => ({
  name: `${name} is eliminated`,
  bytes: w.replay({}, w.eventChunk({ data: w.playerElim({ ...elim, killed }) })),
  check: ({ events: [event] }) => {
    const { killed: account, killedBot: bot, knocked } = event;
    assert.deepEqual(
      { killed: account, killedBot: bot, knocked },
      { killed: undefined, killedBot: undefined, knocked: true, [key]: id },
    );
  },
}));

const elimRow = (name, more, expected) => ({
  name,
  bytes: w.replay({}, w.eventChunk({ data: w.playerElim({ ...elim, ...more }) })),
  check: ({ events: [event] }) => {
    for (const [key, value] of Object.entries(expected)) assert.equal(event[key], value, key);
  },
});
const unread = {
  killedX: 0,
  killedY: 0,
  killerZ: 0,
  killedBot: '',
  killerBot: '',
  damageType: 0,
  knocked: false,
};
const elimRows = [
  ...[0, 2, 0x80000001].map((knocked) =>
    elimRow(`knock-down word ${knocked} is no knock-down`, { knocked }, { knocked: false }),
  ),
  elimRow(
    'numbers that JSON lacks',
    { killedAt: [NaN, Infinity, -Infinity] },
    { killedX: null, killedY: null, killedZ: null },
  ),
  ...[0, 1, 70000].map((size) =>
    elimRow(
      `${size} bytes skipped at the start`,
      { extra: w.skipped(size) },
      { killedX: 1.5, knocked: true },
    ),
  ),
  ...[-0x80000000, -1, 1000, 0x7fffffff].map((extraSize) =>
    elimRow(`${extraSize} bytes to skip that are not there`, { extraSize }, unread),
  ),
  elimRow(
    'an account name of two billion characters',
    { killer: { type: 16, id: w.i32(-0x7fffffff) } },
    {
      killed: account.toString('hex'),
      killerBot: '',
      damageType: 0,
    },
  ),
  {
    name: 'an impossible string length in an elimination',
    bytes: w.replay(
      {},
      w.eventChunk({ data: w.playerElim({ killer: { type: 16, id: w.i32(-0x80000000) } }) }),
    ),
    stdout:
      /^\n\[ orvel::corvane::ReplayParser::ParseReplay \] \[Replay Exception\] .*:23: Invalid SaveNum, corrupted FArchive\.\n$/,
    empty: true,
  },
];

const dispatchRows = [
  [
    'the metadata name the handler',
    { ...team, Metadata: 'AthenaMatchTeamStats', Group: 'playerElim' },
    [teamEvent],
  ],
  ['the group names the handler when the metadata name none', { ...team, Metadata: 'other' }, [teamEvent]],
  [
    'names are compared whole and by case',
    { ...team, Group: 'athenamatchteamstats', Metadata: 'AthenaMatchTeamStats2' },
    undefined,
  ],
  [
    'a name in UTF-16 is another name, for its final zero',
    { ...team, Group: w.string16('AthenaMatchTeamStats') },
    undefined,
  ],
  ['the id names nothing', { ...team, Group: 'x', Id: 'AthenaMatchTeamStats' }, undefined],
  ['an empty payload adds nothing', { ...team, data: Buffer.alloc(0) }, undefined],
].map(([name, event, events]) => ({ name, bytes: w.replay({}, w.eventChunk(event)), events }));

testReads([
  ...playerRows,
  ...elimRows,
  ...dispatchRows,
  {
    name: 'the events of a file, in its order, each with its times',
    bytes: w.replay({}, [
      w.eventChunk({ Time1: eventMeta.time1, Time2: eventMeta.time2, data: w.playerElim(elim) }),
      w.eventChunk({ Group: 'unknown', data: w.skipped(10) }),
      w.eventChunk({ Metadata: 'AthenaMatchStats', data: w.matchStats(0.3, counters) }),
      w.eventChunk(team),
      w.eventChunk({ data: w.playerElim({ ...elim, knocked: 0 }) }),
    ]),
    events: [
      { ...expectedElim(elim), eventMeta },
      { ...expectedMatchStats(0.3, counters), eventMeta: none },
      teamEvent,
      { ...expectedElim({ ...elim, knocked: 0 }), eventMeta: none },
    ],
  },
]);

// Every length from nothing to the whole layout, plain and encrypted, all events of a kind in one file.
const key = Buffer.from('8f1c0a6b3355de92417e0db6a3c8f950', 'hex');
const kinds = [
  ['playerElim', w.playerElim(elim), (length) => expectedElim(elim, length)],
  ['AthenaMatchStats', w.matchStats(0.5, counters), (length) => expectedMatchStats(0.5, counters, length)],
  ['AthenaMatchTeamStats', w.teamStats(1, 2), (length) => expectedTeamStats(1, 2, length)],
];

// What becomes of an event with this many bytes: an event of the document, a line in place of it, or nothing.
function resultOf(length, encrypted, [, data, expected]) {
  if (length === 0) return {};
  if (encrypted && length % 16 !== 0) return { line: '[ orvel::util::data::decrypt ] Decryption failed.' };
  const event = expected(length);
  return event ? { event } : { line: `Skipping event: payload of ${length} bytes, ${data.length} expected.` };
}

for (const kind of kinds) {
  const [Group, data] = kind;
  for (const encrypted of [false, true]) {
    test(`every length of ${Group}, ${encrypted ? 'encrypted' : 'plain'}`, () => {
      const whole = encrypted ? w.encrypt(data, key) : data;
      const lengths = Array.from({ length: whole.length + 1 }, (_, length) => length);
      const chunks = lengths.map((length) => w.eventChunk({ Group, data: whole.subarray(0, length) }));
      const [outcome] = readFiles([w.replay({ bEncrypted: Number(encrypted), EncryptionKey: key }, chunks)]);
      const results = lengths.map((length) => resultOf(length, encrypted, kind));
      const events = results.flatMap(({ event }) => (event ? [{ ...event, eventMeta: none }] : []));
      assert.deepEqual(JSON.parse(utf8Text(outcome.text)).events, events);
      const printed = outcome.stdout.replace(/^\[ orvel::corvane::\w+ \] /gm, '');
      assert.equal(printed, '\n' + results.map(({ line }) => (line ? line + '\n' : '')).join(''));
    });
  }
}

test('the time for a file grows with its events, not with their square', () => {
  const chunk = w.eventChunk({ data: w.playerElim(elim) });
  const file = (count) => w.replay({}, Array(count).fill(chunk));
  const [small, large] = [10000, 50000].map(file);
  const outcomes = readFiles([small, large, small, large, small, large]);
  const best = (from) => Math.min(...outcomes.filter((_, i) => i % 2 === from).map(({ ms }) => ms));
  assert.equal(JSON.parse(outcomes[1].text).events.length, 50000);
  assert.ok(best(1) < 5 * 2.5 * best(0), `${best(0)} ms for 10000 events, ${best(1)} ms for 50000`);
});
