'use strict';
// Who took part in a match, as far as its events name them.

// The reader writes this for a bot without a name. It removes blanks from names in the file, so no name reads like
// this.
const UNNAMED_BOT = 'Unnamed Bot';

const isNobody = ({ kind, name }) => kind === 'unknown' || name === null;

// Without the zero character that ends some texts in the file.
const withoutEnd = (text) => (text.charCodeAt(text.length - 1) === 0 ? text.slice(0, -1) : text);

// null if unknown: an unknown player may be anyone, and two unnamed bots may be one.
function isSelf(attacker, victim) {
  if (attacker === victim) return true;
  const isUnclear = attacker.kind === 'unknown' || victim.kind === 'unknown';
  return isUnclear || (isNobody(attacker) && isNobody(victim)) ? null : false;
}

const SLOTS = 512;
const PROBES = 8;

// Ids are hexadecimal digits at random; the last three choose the slot.
function slotOf(id) {
  const end = id.length;
  return (id.charCodeAt(end - 1) ^ (id.charCodeAt(end - 2) << 3) ^ (id.charCodeAt(end - 3) << 6)) % SLOTS;
}

// Records by the ids of their accounts. JSON.parse makes the id anew for each event, and a Map would hash all of it each
// time, which took half the time of making a match. Here ids are compared with those of a few slots (open addressing);
// ids that find these taken, as in a file that was made for it, go to a Map.
class AccountTable {
  #slots = new Array(SLOTS + PROBES);
  #others = new Map();

  // The record of the account; make(id) gives that of a new one.
  record(id, make) {
    const first = slotOf(id);
    for (let slot = first; slot < first + PROBES; ++slot) {
      const record = this.#slots[slot];
      if (record === undefined) return (this.#slots[slot] = make(id));
      if (record.player.id === id) return record;
    }
    if (!this.#others.has(id)) this.#others.set(id, make(id));
    return this.#others.get(id);
  }
}

// The records of a match's players, in the order in which they are first mentioned. Whoever can be told apart has one
// record; an unnamed bot or an unknown player has another one with each mention.
class Roster {
  #accounts = new AccountTable();
  #newAccount = (id) => this.#added({ kind: 'account', id });
  #bots = new Map(); // name -> record
  records = [];

  // account and bot: the two fields of an event, of which it has one; exact: the bot's name as the file has it, undefined
  // where that is not known, or as the document has it. An unknown player has the name "", or an account that is cut off.
  record(account, bot, exact) {
    if (account) return this.#accounts.record(account, this.#newAccount);
    if (exact === undefined && !bot) return this.#added({ kind: 'unknown' });
    const isUnnamed = exact === undefined && bot === UNNAMED_BOT;
    const name = isUnnamed ? '' : withoutEnd(exact ?? bot);
    if (name === '') return this.#added({ kind: 'bot', name: null });
    return this.#bots.get(name) ?? this.#bot(name);
  }

  // Counts an event for the two whom it concerns. Events may come in any order.
  count(isKnock, timeMs, attacker, victim) {
    if (isKnock) {
      if (attacker !== victim) attacker.knocks += 1;
      victim.timesKnocked += 1;
      return;
    }
    if (attacker !== victim) attacker.eliminations += 1;
    victim.deaths += 1;
    if (victim.endedAtMs !== null && victim.endedAtMs > timeMs) return;
    victim.endedBy = attacker.player;
    victim.endedAtMs = timeMs;
    victim.selfInflicted = isSelf(attacker.player, victim.player);
  }

  #bot(name) {
    const record = this.#added({ kind: 'bot', name });
    this.#bots.set(name, record);
    return record;
  }

  #added(player) {
    const record = {
      player,
      eliminations: 0,
      knocks: 0,
      timesKnocked: 0,
      deaths: 0,
      endedBy: null,
      endedAtMs: null,
      selfInflicted: null,
    };
    this.records.push(record);
    return record;
  }
}

module.exports = { Roster };
