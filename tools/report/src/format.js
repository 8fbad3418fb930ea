// How figures are written, everywhere the same.

// Decimals that tell times up to `max` ms apart.
export const digitsOf = ({max}) => max < 1 ? 3 : max < 100 ? 2 : 0;
export const ms = value => value === null ? '–' : `${value.toFixed(digitsOf({max: value}))} ms`;
export const plural = (count, one, many = `${one}s`) => `${count} ${count === 1 ? one : many}`;
export const range = (low, high) => low === high ? `${low}` : `${low}–${high}`;
export const boxText = ([x, y, w, h]) => `${w} × ${h} at ${x}, ${y}`;
// A film's time: "1.32 s", from a minute on "2:05.32".
export function clock(seconds) {
  const hundredths = Math.round(seconds * 100), minutes = Math.floor(hundredths / 6000);
  const rest = (hundredths % 6000 / 100).toFixed(2);
  return minutes === 0 ? `${rest} s` : `${minutes}:${rest.padStart(5, '0')}`;
}
export const hex = word => (word >>> 0).toString(16).toUpperCase().padStart(8, '0');
