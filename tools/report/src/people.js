// Who is who. The record has a frame's faces by size, so its first face is one person now and another in the next
// frame; here each is followed by the place of its box.
import {kMeasuredBlocks} from './records.js';

const kLongestGap = 60;  // frames
export const kRule =
    `A face is the person whose box was nearest, at most one box away and ${kLongestGap} frames ago. ` +
    'New persons are numbered as they come, from left to right.';

// The person of each face (`at(frame, block)`, -1 for none) and in how many frames each was measured; null where a
// recording does not tell where the faces lie.
export function followPeople(report) {
  const ids = new Int16Array(report.count * kMeasuredBlocks).fill(-1);
  const people = [];
  let recent = [];
  for (let frame = 0; frame < report.count; ++frame) {
    const boxes = report.analysed(frame) ? report.faceBoxes(frame) : [];
    if (boxes.length === 0) continue;
    recent = recent.filter(id => frame - people[id].frame <= kLongestGap);
    const found = nearest(recent.map(id => people[id].box), boxes).map(at => at < 0 ? -1 : recent[at]);
    for (const block of newcomers(found, boxes)) {
      found[block] = people.length;
      recent.push(people.length);
      people.push({frames: 0});
    }
    found.forEach((id, block) => {
      ids[frame * kMeasuredBlocks + block] = id;
      Object.assign(people[id], {box: boxes[block], frame, frames: people[id].frames + 1});
    });
  }
  if (people.length === 0) return null;
  return {
    at: (frame, block) => ids[frame * kMeasuredBlocks + block],
    frames: people.map(person => person.frames)
  };
}

// For each box the place of the known box that is its, -1 for none: the nearest pair first.
function nearest(known, boxes) {
  const pairs = known.flatMap((one, at) => boxes.map((box, block) => ({at, block, away: distance(one, box)})))
                    .filter(({away}) => away <= 1)
                    .sort((a, b) => a.away - b.away);
  const found = boxes.map(() => -1), taken = new Set();
  for (const {at, block} of pairs) {
    if (found[block] >= 0 || taken.has(at)) continue;
    found[block] = at;
    taken.add(at);
  }
  return found;
}

const newcomers = (found, boxes) => found.map((id, block) => id < 0 ? block : -1)
                                        .filter(block => block >= 0)
                                        .sort((a, b) => boxes[a][0] - boxes[b][0]);

// Between the centres, in sides of the larger box.
function distance([ax, ay, aw, ah], [bx, by, bw, bh]) {
  return Math.hypot(ax + aw / 2 - bx - bw / 2, ay + ah / 2 - by - bh / 2) / Math.max(aw, ah, bw, bh, 1);
}
