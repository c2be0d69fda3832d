'use strict';
// Which account recorded the replays. They do not say it, so it is a guess from two signs: the account is in most of the
// matches, and the number of its eliminations is the one in the recording player's statistics.

const MIN_MATCHES_SEEN = 5;

class RecordingPlayerGuess {
  #matches = 0;
  #signs = new Map(); // account id -> { id, seen, agrees }: numbers of matches

  add({ players, own }) {
    this.#matches += 1;
    for (const { player, eliminations } of players) {
      if (player.kind !== 'account') continue;
      const signs = this.#signs.get(player.id) ?? { id: player.id, seen: 0, agrees: 0 };
      this.#signs.set(player.id, signs);
      signs.seen += 1;
      if (own !== null && own.eliminations === eliminations) signs.agrees += 1;
    }
  }

  // The account's id, or null when the signs point to nobody in particular.
  best() {
    const [first, second] = [...this.#signs.values()].sort((a, b) => b.seen - a.seen || b.agrees - a.agrees);
    if (first === undefined) return null;
    if (second && second.seen === first.seen && second.agrees === first.agrees) return null;
    const agrees = first.agrees > 0 && 2 * first.agrees >= first.seen;
    const isRegular = first.seen >= MIN_MATCHES_SEEN && 2 * first.seen > this.#matches;
    return agrees || isRegular ? first.id : null;
  }

  // Every account that was seen.
  ids() {
    return [...this.#signs.keys()];
  }
}

module.exports = { RecordingPlayerGuess };
