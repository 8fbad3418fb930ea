// Where the run differs from its baseline, frame by frame.
import {plural} from './format.js';
import {kWords} from './records.js';

// `events` names every stretch of frames that differ, `frames` how many frames do; `at` looks at one frame.
export function differenceOf(report) {
  const events = [];
  let frames = 0, open = null;
  const close = end => {
    if (!open) return;
    const length = end - open.index;
    const tail = length > 1 ? `; ${length} frames in a row` : '';
    events.push({index: open.index, kind: 'differs', text: describe(open.first) + tail});
    open = null;
  };
  for (let frame = 0; frame < report.count; ++frame) {
    const found = differenceAt(report, frame);
    if (!found.any) {
      close(frame);
      continue;
    }
    ++frames;
    open ??= {index: frame, first: found};
  }
  close(report.count);
  return {events, frames, at: frame => differenceAt(report, frame)};
}

export function differenceAt(report, frame) {
  const {baseline} = report;
  if (!baseline.has(frame)) return {any: true, missing: true, words: [], labels: false, boxes: false};
  const words = [];
  for (let word = 0; word < kWords; ++word)
    if (report.records.word(frame, word) !== baseline.records.word(frame, word)) words.push(word);
  // Runs are cut the same way for the same map, so equal maps have equal texts.
  const labels = (baseline.labelRuns[frame] ?? '') !== report.data.label_runs[frame];
  const boxes = baseline.boxes !== null && report.personCount(frame) !== null &&
      JSON.stringify(baseline.boxes[frame] ?? []) !== JSON.stringify(report.boxes(frame));
  return {any: words.length > 0 || labels || boxes, missing: false, words, labels, boxes};
}

export function describe(found) {
  if (found.missing) return 'Not in the baseline';
  const parts = [];
  if (found.words.length > 0) parts.push(plural(found.words.length, 'field'));
  if (found.labels) parts.push('label map');
  if (found.boxes) parts.push('person boxes');
  return parts.length === 0 ? 'Equals the baseline' : `Differs: ${parts.join(', ')}`;
}

export function differingCells(current, baseline) {
  if (!current || !baseline || current.length !== baseline.length) return null;
  return Uint8Array.from(current, (label, cell) => label === baseline[cell] ? 0 : 1);
}
