// Figures frame by frame, null where there is none, as charts and tables want them.
import {kMeasuredBlocks} from './records.js';
import {circularMean, present, unwrapNear} from './stats.js';

export const networkTimes = report => report.frames.network_ms;
// A gated or failed frame costs next to nothing and would only flatter the figures.
export const libraryTimes = report => report.series(frame => report.libraryMs(frame));

// Low and high keep their distance from the mean, which alone says on which turn of the circle the figures
// lie.
export function unwrapped([low, high, mean, baseline]) {
  const centre = circularMean(present(mean)) ?? 0;
  const near = value => value === null ? null : unwrapNear(value, centre);
  const shift = mean.map(value => value === null ? 0 : near(value) - value);
  const lists = [
    low.map((value, i) => value === null ? null : value + shift[i]),
    high.map((value, i) => value === null ? null : value + shift[i]), mean.map(near)
  ];
  return baseline ? [...lists, baseline.map(near)] : lists;
}

// Per measured face and frame its figures, null where it was not measured; as many faces as were ever
// measured.
export function faceFigures(report, records) {
  const faces = Array.from(
      {length: report.front ? kMeasuredBlocks : 0},
      (_, face) => Array.from(
          {length: report.count},
          (_, frame) => frame < records.count && report.analysed(frame) &&
                  face < Math.min(records.ver(frame), kMeasuredBlocks) ?
              records.face(frame, face) :
              null));
  while (faces.length > 0 && present(faces[faces.length - 1]).length === 0) faces.pop();
  return faces;
}
