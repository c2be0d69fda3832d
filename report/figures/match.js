// What the events of one match come to.

export const isEnd = (event) => event.kind === 'elimination';

// Whether mentions of this player can be told from those of others.
export const isNamed = ({ kind }) => kind === 'account' || kind === 'bot';

// By whom an event was done, or to whom.
export const concerns = (event, player) => event.attacker === player || event.victim === player;

// Players whose elimination was their last one; each unnamed one counts as another player. In order of time.
function exits(events) {
  const last = new Map();
  for (const event of events.filter(isEnd)) last.set(isNamed(event.victim) ? event.victim : event, event);
  return [...last.values()].sort((a, b) => a.timeMs - b.timeMs);
}

// { total, steps: [{ timeMs, alive }], halfAtMs }: how many players are left. Who comes back after an elimination counts as
// out only from the last one. Without a number in the file, the total is of those whom an event mentions.
export function aliveOf({ events, team }) {
  const out = exits(events);
  const seen = new Set(events.flatMap(({ attacker, victim }) => [attacker, victim]).filter(isNamed));
  const unnamed = out.filter(({ victim }) => !isNamed(victim)).length;
  const total = Math.max(team?.of ?? seen.size + unnamed, out.length);
  const steps = out.map(({ timeMs }, i) => ({ timeMs, alive: total - i - 1 }));
  const half = steps.find(({ alive }) => 2 * alive <= total);
  return { total, isSaid: typeof team?.of === 'number', steps, halfAtMs: half?.timeMs ?? null };
}

const longer = (a, b) => (a === null || (b.distanceM ?? -1) > (a.distanceM ?? -1) ? b : a);

// The elimination over the longest known distance, or null.
export function longestOf(events) {
  const longest = events.filter((event) => isEnd(event) && event.distanceM !== null).reduce(longer, null);
  return longest;
}

// The length of the match: the file's, or up to its last event where the file says less or nothing.
export const lengthOf = ({ durationMs, events }) =>
  Math.max(durationMs ?? 0, events.at(-1)?.timeMs ?? 0, 1000);

// A record for each player who can be told from others: { player, ends, knocks, longest, exit }. ends: the events in which
// the player eliminated others; exit: the last event in which the player was eliminated, or null. Most eliminations first.
export function playersOf(events) {
  const records = new Map();
  const record = (player) => {
    if (!records.has(player)) records.set(player, { player, ends: [], knocks: 0, longest: null, exit: null });
    return records.get(player);
  };
  for (const event of events) {
    const [by, of] = [record(event.attacker), record(event.victim)];
    if (by !== of && isEnd(event)) by.ends.push(event);
    if (by !== of && !isEnd(event)) by.knocks += 1;
    if (isEnd(event)) of.exit = event;
  }
  const named = [...records.values()].filter(({ player }) => isNamed(player));
  for (const each of named) each.longest = longestOf(each.ends);
  return named.sort((a, b) => b.ends.length - a.ends.length || b.knocks - a.knocks);
}

const CLASS_ENDS = [5, 10, 20, 40, 80, 160, 320, Infinity];

// How many eliminations were over which distance: [{ from, to, count }], in metres, and how many are without one.
export function distancesOf(events) {
  const ends = events.filter(isEnd);
  const classes = CLASS_ENDS.map((to, i) => ({ from: CLASS_ENDS[i - 1] ?? 0, to, count: 0 }));
  const known = ends.filter(({ distanceM }) => distanceM !== null);
  for (const { distanceM } of known) classes.find(({ to }) => distanceM < to).count += 1;
  return { classes, unknown: ends.length - known.length };
}
