// Bytes out of the page's data: base64, and label maps packed as runs.

export function bytesOf(base64) {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

// Each byte is a run: the label in the upper three bits, the length less one in the lower five. Runs beyond
// the map are cut and a short map is filled with label 0, so that a damaged map is drawn as far as it goes.
export function unpackRuns(runs, cells) {
  const labels = new Uint8Array(cells);
  let at = 0;
  for (const run of runs) {
    const length = (run & 31) + 1;
    labels.fill(run >> 5, at, Math.min(at + length, cells));
    at += length;
  }
  return labels;
}
