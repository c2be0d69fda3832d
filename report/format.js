// Numbers and times as the page writes them, all in this file.

export const NONE = '–';

const MONTHS = ['Jan', 'Feb', 'Mar', 'Apr', 'May', 'Jun', 'Jul', 'Aug', 'Sep', 'Oct', 'Nov', 'Dec'];
const MINUS = '−';

const twoDigits = (value) => String(value).padStart(2, '0');

// 12345.6 with 1 decimal is 12,345.6.
export function number(value, decimals = 0) {
  if (value === null) return NONE;
  const [whole, fraction] = Math.abs(value).toFixed(decimals).split('.');
  const grouped = whole.replace(/\B(?=(\d{3})+$)/g, ',');
  const isNegative = value < 0 && /[1-9]/.test(whole + (fraction ?? ''));
  return `${isNegative ? MINUS : ''}${grouped}${fraction ? `.${fraction}` : ''}`;
}

// 0.3125 is 31 %.
export const percent = (share) => (share === null ? NONE : `${number(share * 100)} %`);

// Of a match: 8:12, or 1:08:12.
export function clock(milliseconds) {
  if (milliseconds === null) return NONE;
  const seconds = Math.floor(milliseconds / 1000);
  const [hours, minutes] = [Math.floor(seconds / 3600), Math.floor(seconds / 60) % 60];
  const rest = twoDigits(seconds % 60);
  return hours > 0 ? `${hours}:${twoDigits(minutes)}:${rest}` : `${minutes}:${rest}`;
}

// Of many matches together: 18 h 29 min.
export function hours(milliseconds) {
  const minutes = Math.round(milliseconds / 60_000);
  return minutes < 60 ? `${minutes} min` : `${number(Math.floor(minutes / 60))} h ${minutes % 60} min`;
}

export function metres(value) {
  if (value === null) return NONE;
  if (Math.abs(value) >= 1000) return `${number(value / 1000, 2)} km`;
  return `${number(value, Math.abs(value) < 10 && value !== 0 ? 1 : 0)} m`;
}

// Where on the map, in metres.
export const position = ({ x, y }) => `x ${number(x)} m, y ${number(y)} m`;

// The replay's own clock, which the model has as UTC.
export function date(milliseconds) {
  if (milliseconds === null) return null;
  const at = new Date(milliseconds);
  return `${at.getUTCDate()} ${MONTHS[at.getUTCMonth()]} ${at.getUTCFullYear()}`;
}

export function dateAndTime(milliseconds) {
  if (milliseconds === null) return null;
  const at = new Date(milliseconds);
  return `${date(milliseconds)}, ${twoDigits(at.getUTCHours())}:${twoDigits(at.getUTCMinutes())}`;
}

export const month = (milliseconds) => MONTHS[new Date(milliseconds).getUTCMonth()];

export function ordinal(value) {
  const special = value % 100 >= 11 && value % 100 <= 13;
  return `${number(value)}${(!special && ['', 'st', 'nd', 'rd'][value % 10]) || 'th'}`;
}

// count(1, 'event') is "1 event", count(2, 'event') "2 events".
export const count = (value, noun, plural = `${noun}s`) => `${number(value)} ${value === 1 ? noun : plural}`;

// Cut by code points, so that no character is halved.
export function shortened(text, longest = 24) {
  const points = Array.from(text);
  return points.length <= longest ? text : `${points.slice(0, longest - 1).join('')}…`;
}
