// The facts of a match as the page names them.

const MODE_KEYS = ['SubGame', 'Mode'];

// Names in the game's files have "_" where people write a blank.
export const words = (name) => name?.replaceAll('_', ' ') ?? null;

const setting = (match, keys) =>
  match.settings.find(([key, value]) => keys.includes(key) && value !== null)?.[1];

// What kind of match it was, or null.
export const modeOf = (match) => setting(match, MODE_KEYS) ?? null;

// The other settings: [key, value].
export const otherSettings = (match) => match.settings.filter(([key]) => !MODE_KEYS.includes(key));

// What a match is called: its name, else its file's.
export const titleOf = ({ name, file }) => name ?? file;
