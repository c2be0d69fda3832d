'use strict';
// node samples/make-season.js FOLDER [MATCHES [BYTES]]: writes replays of invented matches that look like a season
// of one player: the same in every run. BYTES: the size of the largest file, the smallest has a tenth of it; the files
// have holes, so that they take little room on a disk.

const { createHash } = require('node:crypto');
const fs = require('node:fs');
const path = require('node:path');
const w = require('../tests/support/replay-writer.js');

const MINUTE = 60_000;
const DAY_TICKS = 24n * 3_600n * 10_000_000n;
const FIRST_DAY = 637_450_000_000_000_000n; // 2020-12-31
const METRE = 100; // in the game's units
const CHUNK_BYTES = 65_536;

const MODES = [
  ['Solo', 1],
  ['Duos', 2],
  ['Squads', 4],
];
const MAPS = ['Corvane_Isle', 'Corvane_Isle', 'Saltmarsh', 'Ember_Quarry'];
// damage type, the longest distance at which it is used, in metres
const WEAPONS = [
  [3, 12],
  [4, 30],
  [7, 90],
  [12, 320],
];
const FALL = 1;

// Mulberry32: numbers from 0 to 1 that are the same on every machine.
function randomNumbers(seed) {
  let state = seed;
  return () => {
    state = (state + 0x6d2b79f5) | 0;
    let t = Math.imul(state ^ (state >>> 15), 1 | state);
    t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
    return ((t ^ (t >>> 14)) >>> 0) / 2 ** 32;
  };
}

const digest = (text) => createHash('md5').update(text).digest();
const OWN = digest('own');

// One match, as a list of events that the writer understands, and what is true of it.
class Play {
  events = [];
  own = { kills: 0, knocks: 0 };

  constructor(number, count) {
    this.random = randomNumbers(number + 1);
    this.progress = number / Math.max(1, count - 1);
    [this.mode, this.teamSize] = this.pick(MODES);
    this.map = this.pick(MAPS);
    this.stranger = Math.floor(150 * this.random());
    this.durationMs = Math.round((16 + 8 * this.random()) * MINUTE);
    this.alive = Array.from({ length: 60 + Math.floor(40 * this.random()) }, (_, i) => this.participant(i));
    this.total = this.alive.length;
    this.centre = [this.within(60_000), this.within(60_000)];
  }

  pick(list) {
    return list[Math.floor(this.random() * list.length)];
  }

  within(range) {
    return (2 * this.random() - 1) * range;
  }

  // The first one is the recording player; every fifth is a bot, every tenth a nameless one.
  participant(i) {
    const team = Math.floor(i / this.teamSize);
    if (i === 0) return { id: { type: 17, id: OWN }, team, skill: 1 + 3 * this.progress };
    if (i % 10 === 9) return { id: { type: 3 }, team, skill: 0.2 };
    if (i % 5 === 4)
      return {
        id: { type: 16, id: `Bot ${this.pick(['Anna', 'Béla', 'Søren', 'Yuki'])} ${i}` },
        team,
        skill: 0.3,
      };
    const name = `player ${(this.stranger + 37 * i) % 150}`; // all different in a match: 37 and 150 have no common divisor
    return { id: { type: 17, id: digest(name) }, team, skill: 0.5 + this.random() };
  }

  drawn(list) {
    let rest = this.random() * list.reduce((sum, { skill }) => sum + skill, 0);
    return list.find(({ skill }) => (rest -= skill) < 0) ?? list.at(-1);
  }

  play() {
    const end = this.durationMs - 15_000;
    for (let time = 40_000; this.teams().size > 1 && time < end; ) {
      this.fight(Math.round(time));
      time += ((end - time) / this.alive.length) * 2 * this.random();
    }
    this.finish();
    return this;
  }

  teams() {
    return new Set(this.alive.map(({ team }) => team));
  }

  fight(time) {
    const attacker = this.drawn(this.alive);
    const others = this.alive.filter(({ team }) => team !== attacker.team);
    const spared = this.random() < 0.7 * this.progress; // who plays better dies later
    const targets = spared ? others.filter(({ id }) => id.id !== OWN) : others;
    const victim = this.random() < 0.02 ? attacker : this.pick(targets.length > 0 ? targets : others);
    const radius = 80_000 * (1 - time / this.durationMs) + 3_000;
    const at = [...this.centre.map((c) => c + this.within(radius)), 500 + this.within(400)];
    const [damageType, reach] = victim === attacker ? [FALL, 0] : this.pick(WEAPONS);
    const distance = reach * METRE * this.random() ** 2;
    const angle = 2 * Math.PI * this.random();
    const from = [at[0] + distance * Math.cos(angle), at[1] + distance * Math.sin(angle), at[2]];
    if (this.teamSize > 1 && victim !== attacker && this.random() < 0.7) {
      this.elimination(time, { attacker, victim, from, at, damageType, knocked: 1 });
      time += 2_000 + Math.round(9_000 * this.random());
    }
    this.elimination(time, { attacker, victim, from, at, damageType, knocked: 0 });
    this.alive.splice(this.alive.indexOf(victim), 1);
    if (this.place === undefined && !this.alive.some(({ team }) => team === 0))
      this.place = this.teams().size + 1;
  }

  elimination(time, { attacker, victim, from, at, damageType, knocked }) {
    if (attacker.team === 0 && attacker.id.id === OWN)
      this.own[knocked ? 'knocks' : 'kills'] += Number(attacker !== victim);
    const data = {
      killed: victim.id,
      killedAt: at,
      killer: attacker.id,
      killerAt: from,
      damageType,
      knocked,
    };
    this.add(time, { Group: 'playerElim', Metadata: 'elimination', data: w.playerElim(data) });
  }

  finish() {
    const accuracy = 0.12 + 0.16 * this.progress + 0.05 * this.random();
    const { kills } = this.own;
    const damage = kills * 160 + Math.floor(200 * this.random());
    const counters = [Math.floor(3 * this.random()), kills, damage, 35, 1, 290, 4120, 655, 410, 523_817];
    const summary = (Metadata, data) =>
      this.add(this.durationMs - 2_000, { Group: 'MatchSummary', Metadata, data });
    summary('AthenaMatchStats', w.matchStats(accuracy, counters));
    summary('AthenaMatchTeamStats', w.teamStats(this.place ?? 1, this.total));
  }

  add(time, event) {
    this.events.push({ Id: `match_${this.events.length}`, Time1: time, Time2: time, ...event });
  }
}

// The replay's parts; overrides: fields of the information block and of the header.
function partsOf(play, number, { info = {}, header = {}, key } = {}) {
  const beginning = w.infoBlock({
    LengthInMS: play.durationMs,
    FriendlyName: `Match ${number + 1}`,
    Timestamp: FIRST_DAY + (BigInt(number) * DAY_TICKS) / 5n + 1_234_567n,
    EncryptionKey: key ?? Buffer.alloc(32),
    bEncrypted: key ? 1 : 0,
    ...info,
  });
  const head = w.headerChunk({
    Version: 14,
    EngineNetworkProtocolVersion: 19,
    Guid: digest(`match ${number}`),
    Major: 4,
    Minor: 26,
    Changelist: 17882303,
    Branch: '++Corvane+Main',
    levels: [[`/Game/Maps/${play.map}`, 0]],
    GameSpecificData: [`SubGame=${play.mode}`, 'Region=EU'],
    ...header,
  });
  const events = play.events.map((event) =>
    w.eventChunk({ ...event, data: key ? w.encrypt(event.data, key) : event.data }),
  );
  return [Buffer.concat([beginning, head]), Buffer.concat(events)];
}

const matchReplay = (number, count, overrides) =>
  Buffer.concat(partsOf(new Play(number, count).play(), number, overrides));

// Data chunks between the beginning and the events; their bytes are holes.
function writeWithHoles(file, [beginning, events], bytes) {
  const descriptor = fs.openSync(file, 'w');
  let at = fs.writeSync(descriptor, beginning, 0, beginning.length, 0);
  const start = w.chunk(w.CHUNK.replayData, Buffer.alloc(0), CHUNK_BYTES);
  for (; at + CHUNK_BYTES + events.length < bytes; at += start.length + CHUNK_BYTES) {
    fs.writeSync(descriptor, start, 0, start.length, at);
  }
  fs.writeSync(descriptor, events, 0, events.length, at);
  fs.closeSync(descriptor);
}

// Writes `count` replays and returns what is true of each: { file, mode, map, place, total, own: { kills, knocks } }.
function makeSeason(folder, count, bytes = 0) {
  fs.mkdirSync(folder, { recursive: true });
  return Array.from({ length: count }, (_, number) => {
    const play = new Play(number, count).play();
    const file = path.join(folder, `match-${String(number + 1).padStart(5, '0')}.replay`);
    writeWithHoles(file, partsOf(play, number), bytes * (0.1 + 0.9 * ((number * 0.618) % 1)));
    const { mode, map, total, own, place = 1 } = play;
    return { file, mode, map, place, total, own };
  });
}

if (require.main === module) {
  const [folder, count = '300', bytes = '0'] = process.argv.slice(2);
  makeSeason(folder, Number(count), Number(bytes));
}

module.exports = { OWN: OWN.toString('hex'), makeSeason, matchReplay };
