'use strict';
// The data of a report as they stand in its page: one column for each figure of the events, over all matches, since
// numbers of one kind compress best beside each other. This file runs in Node.js, which packs, and in the page, which
// unpacks. Both directions are here, so that they stay each other's reverse.
//
// Times are tenths of a second since the event before, positions tenths of a metre, the attacker's relative to the
// victim's. A player is a number within its match: a place in the match's list of players, or one of the two below.

const UNKNOWN = -1;
const UNNAMED_BOT = -2;

const TENTHS = 10;
const MS_PER_TENTH = 100;

const tenths = (value) => (value === null ? null : Math.round(value * TENTHS));
const difference = (a, b) => (a === null || b === null ? null : a - b);

// Places of texts in a list that grows.
class Places {
  list = [];
  #known = new Map();

  of(text) {
    if (!this.#known.has(text)) this.#known.set(text, this.list.push(text) - 1);
    return this.#known.get(text);
  }
}

const COLUMNS = ['time', 'kind', 'attacker', 'victim', 'x', 'y', 'dx', 'dy', 'distance', 'damage'];

// Takes matches one by one, so that no more than one document is in memory.
class ColumnPacker {
  #visible;
  #accounts = new Places();
  #bots = new Places();
  #matches = [];
  #columns = Object.fromEntries(COLUMNS.map((name) => [name, []]));

  // visible(text): makes a name fit for the page. Names stay apart even where that makes them alike.
  constructor(visible) {
    this.#visible = visible;
  }

  // facts: what the page says of the match as a whole. eliminations: as in the match model.
  add(facts, eliminations) {
    const players = new Places();
    const events = [...eliminations].sort((a, b) => a.timeMs - b.timeMs);
    let before = 0;
    for (const event of events) {
      const now = Math.round(event.timeMs / MS_PER_TENTH);
      this.#addEvent(event, now - before, players);
      before = now;
    }
    this.#matches.push({ ...facts, count: events.length, players: players.list });
  }

  // idDigits: how many digits of an account that is in one match only are kept.
  finish({ names, idDigits }) {
    const seen = new Map();
    for (const { players } of this.#matches) {
      for (const place of players) seen.set(place, (seen.get(place) ?? 0) + 1);
    }
    const accounts = this.#accounts.list.map((id, i) => {
      const kept = seen.get(2 * i) > 1 || names.has(id) ? id : id.slice(0, idDigits);
      return names.has(id) ? [kept, names.get(id)] : kept;
    });
    return {
      accounts,
      bots: this.#bots.list.map(this.#visible),
      matches: this.#matches,
      columns: this.#columns,
    };
  }

  #addEvent({ kind, attacker, victim, attackerAt, victimAt, distanceM, damageType }, time, players) {
    const [x, y] = [tenths(victimAt?.x ?? null), tenths(victimAt?.y ?? null)];
    const row = {
      ...{ time, kind: kind === 'knock' ? 1 : 0, x, y },
      attacker: this.#playerCode(attacker, players),
      victim: this.#playerCode(victim, players),
      dx: difference(tenths(attackerAt?.x ?? null), x),
      dy: difference(tenths(attackerAt?.y ?? null), y),
      ...{ distance: tenths(distanceM), damage: damageType },
    };
    for (const name of COLUMNS) this.#columns[name].push(row[name]);
  }

  // Accounts have the even places in a match's list of players, bots the odd ones.
  #playerCode({ kind, id, name }, players) {
    if (kind === 'account') return players.of(2 * this.#accounts.of(id));
    if (kind === 'bot' && name !== null) return players.of(2 * this.#bots.of(name) + 1);
    return kind === 'bot' ? UNNAMED_BOT : UNKNOWN;
  }
}

const point = (x, y) => (x === null || y === null ? null : { x: x / TENTHS, y: y / TENTHS });
const sum = (a, b) => (a === null || b === null ? null : a + b);

// Returns the matches, each with its events in order of time:
//     Event:  { index, match, timeMs, kind, attacker, victim, attackerAt, victimAt, distanceM, damageType }
//     Player: { kind: 'account' | 'bot' | 'unnamed' | 'unknown', id, name }; accounts and named bots are one object each
function unpack({ accounts, bots, matches, columns }) {
  const ofAccounts = accounts.map((given) => {
    const [id, name] = Array.isArray(given) ? given : [given, null];
    return { kind: 'account', id, name };
  });
  const ofBots = bots.map((name) => ({ kind: 'bot', id: null, name }));
  let row = 0;
  return matches.map(({ players, count, ...facts }, index) => {
    const match = { ...facts, index, events: [] };
    const inMatch = players.map((place) => (place % 2 ? ofBots[place >> 1] : ofAccounts[place >> 1]));
    let time = 0;
    for (const end = row + count; row < end; row += 1) {
      time += columns.time[row];
      match.events.push(unpackEvent(columns, row, { match, time, inMatch }));
    }
    return match;
  });
}

function playerOf(code, inMatch) {
  if (code >= 0) return inMatch[code];
  return { kind: code === UNNAMED_BOT ? 'unnamed' : 'unknown', id: null, name: null };
}

function unpackEvent(columns, row, { match, time, inMatch }) {
  const [x, y] = [columns.x[row], columns.y[row]];
  return {
    ...{ index: match.events.length, match, timeMs: time * MS_PER_TENTH },
    kind: columns.kind[row] ? 'knock' : 'elimination',
    attacker: playerOf(columns.attacker[row], inMatch),
    victim: playerOf(columns.victim[row], inMatch),
    attackerAt: point(sum(x, columns.dx[row]), sum(y, columns.dy[row])),
    victimAt: point(x, y),
    distanceM: columns.distance[row] === null ? null : columns.distance[row] / TENTHS,
    damageType: columns.damage[row],
  };
}

module.exports = { ColumnPacker, unpack };
