'use strict';
// Who eliminated whom how often, over many matches: a player's nemesis and favourite victim. Accounts only.

const { count } = require('./units.js');

const FIGURES = [
  { name: 'eliminated_player', label: 'ELIMINATED YOU', text: count },
  { name: 'eliminated_by_player', label: 'BY YOU', text: count },
];

class Opponents {
  #matches = new Map(); // account -> in how many matches it was
  #pairs = new Map(); // account -> other account -> { eliminated_player, eliminated_by_player }

  add({ players, eliminations }) {
    for (const { player } of players) {
      if (player.kind === 'account') this.#matches.set(player.id, (this.#matches.get(player.id) ?? 0) + 1);
    }
    for (const { kind, attacker, victim } of eliminations) {
      const counts = kind === 'elimination' && attacker.kind === 'account' && victim.kind === 'account';
      if (!counts || attacker === victim) continue;
      this.#pair(victim.id, attacker.id).eliminated_player += 1;
      this.#pair(attacker.id, victim.id).eliminated_by_player += 1;
    }
  }

  // The account in most matches; in your own replays that is yours. Undefined without any account.
  get mostFrequent() {
    const [first] = [...this.#matches].reduce(
      (most, each) => (each[1] > most[1] ? each : most),
      [undefined, 0],
    );
    return first;
  }

  get accounts() {
    return [...this.#matches.keys()];
  }

  // The opponents of this account, as figures.js gives groups.
  of(account) {
    return [...(this.#pairs.get(account) ?? [])].map(([key, values]) => ({ key, values }));
  }

  #pair(account, other) {
    if (!this.#pairs.has(account)) this.#pairs.set(account, new Map());
    const pairs = this.#pairs.get(account);
    if (!pairs.has(other)) pairs.set(other, { eliminated_player: 0, eliminated_by_player: 0 });
    return pairs.get(other);
  }
}

module.exports = { FIGURES, Opponents };
