// How figures are written, everywhere the same.

export const ms = value =>
    value === null || value === undefined ? '–' : `${value.toFixed(value < 100 ? 2 : 0)} ms`;
export const plural = (count, one, many = `${one}s`) => `${count} ${count === 1 ? one : many}`;
export const range = (low, high) => low === high ? `${low}` : `${low}–${high}`;
export const boxText = ([x, y, w, h]) => `${w} × ${h} at ${x}, ${y}`;
export const hex = word => (word >>> 0).toString(16).toUpperCase().padStart(8, '0');
