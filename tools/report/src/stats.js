// Summaries of figures that may be missing (null) on some frames.

export const present = values => values.filter(value => value !== null && value !== undefined);

export function spread(values) {
  const known = present(values).sort((a, b) => a - b);
  if (known.length === 0) return null;
  const rank = share => known[Math.max(Math.ceil(share * known.length) - 1, 0)];  // nearest rank
  return {
    count: known.length,
    mean: known.reduce((sum, value) => sum + value, 0) / known.length,
    min: known[0],
    p50: rank(0.5),
    p90: rank(0.9),
    p99: rank(0.99),
    max: known[known.length - 1],
  };
}

// The direction that angles point to together, in degrees 0..360; null without any.
export function circularMean(degrees) {
  let x = 0, y = 0;
  for (const angle of degrees) {
    x += Math.cos(angle * Math.PI / 180);
    y += Math.sin(angle * Math.PI / 180);
  }
  return degrees.length === 0 ? null : wrapDegrees(Math.atan2(y, x) * 180 / Math.PI);
}

export const wrapDegrees = degrees => ((degrees % 360) + 360) % 360;

// The turn of an angle that lies within half a circle of `centre`.
export const unwrapNear = (degrees, centre) => centre + wrapDegrees(degrees - centre + 180) - 180;
