'use strict';
// Who took part in a match, as far as its events name them.

// What the reader writes for a bot without a name. It removes blanks from names in the file, so that no name reads so.
const UNNAMED_BOT = 'Unnamed Bot';

// account and bot: the two fields of an event, of which it has one; exact: the bot's name as the file has it, undefined
// where that is not known.
function playerOf(account, bot, exact) {
  if (account) return { kind: 'account', id: account };
  if (exact === undefined && bot === UNNAMED_BOT) return { kind: 'bot', name: null };
  const name = (exact ?? bot).replace(/\0$/, '');
  return name || exact !== undefined ? { kind: 'bot', name: name || null } : { kind: 'unknown' };
}

// What makes two mentions the same player; undefined where nothing can.
function identity({ kind, id, name }) {
  if (kind === 'account') return `account ${id}`;
  return kind === 'bot' && name !== null ? `bot ${name}` : undefined;
}

const emptyRecord = (player) => ({
  player,
  eliminations: 0,
  knocks: 0,
  timesKnocked: 0,
  deaths: 0,
  endedBy: null,
  endedAtMs: null,
  selfInflicted: null,
});

// The players of a match. Whoever can be told apart is one object, wherever the match mentions them; an unnamed bot or an
// unknown player is another one with each mention.
class Roster {
  #known = new Map(); // identity -> player
  #records = new Map(); // player -> record, in the order of their coming

  // The object that stands for this player.
  member(player) {
    const key = identity(player);
    const known = key === undefined ? undefined : this.#known.get(key);
    if (known !== undefined) return known;
    if (key !== undefined) this.#known.set(key, player);
    this.#records.set(player, emptyRecord(player));
    return player;
  }

  // The players' records; eliminations: in the order of time.
  records(eliminations) {
    for (const event of eliminations) this.#count(event);
    return [...this.#records.values()];
  }

  #count({ kind, attacker, victim, timeMs }) {
    const isEnd = kind === 'elimination';
    if (attacker !== victim) this.#records.get(attacker)[isEnd ? 'eliminations' : 'knocks'] += 1;
    const record = this.#records.get(victim);
    record[isEnd ? 'deaths' : 'timesKnocked'] += 1;
    if (!isEnd) return;
    record.endedBy = attacker;
    record.endedAtMs = timeMs;
    record.selfInflicted = this.#isSame(attacker, victim);
  }

  // null where it cannot be known: two unnamed bots may be one.
  #isSame(attacker, victim) {
    if (attacker === victim) return true;
    if (attacker.kind === 'unknown' || victim.kind === 'unknown') return null;
    const bothUnnamed = [attacker, victim].every((player) => identity(player) === undefined);
    return bothUnnamed ? null : false;
  }
}

module.exports = { Roster, playerOf };
