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

// Of each person or face that has charts: name, colour, and frame by frame the figures, null where it was not
// measured.
export function faceFigures(report, records) {
  if (!report.front) return [];
  const {faces} = report;
  const found = new Map(faces.shown.map(id => [id, new Array(report.count).fill(null)]));
  for (let frame = 0; frame < Math.min(report.count, records.count); ++frame) {
    if (!report.analysed(frame)) continue;
    for (let block = 0; block < Math.min(records.ver(frame), kMeasuredBlocks); ++block) {
      const figures = found.get(faces.id(frame, block));
      if (figures) figures[frame] = records.face(frame, block);
    }
  }
  return [...found]
      .filter(([, figures]) => present(figures).length > 0)
      .map(([id, figures]) => ({id, name: faces.name(id), colour: faces.colour(id), figures}));
}
