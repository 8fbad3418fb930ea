// The events of the run: what the program found, what is derived here, and what the reader asks for; which of them are
// shown, in the list, on the scrubber and on the charts.
import {plural} from './format.js';

export const kKinds = ['failed', 'gated', 'sluggish', 'lost', 'found', 'faces', 'differs', 'yours'];
export const knownKind = kind => kKinds.includes(kind) ? kind : 'other';

const kFew = 10;

export class Events {
  constructor(report) {
    this.count_ = report.count;
    // Where nearly every run is sluggish, as on a workstation, it is no event but how this machine is.
    const own = report.alwaysSluggish ? report.data.events.filter(({kind}) => kind !== 'sluggish') : report.data.events;
    this.found_ = [...own, ...(report.difference?.events ?? []), ...faceChanges(report)];
    this.thresholds = [];
    this.text_ = '';
    this.listeners_ = [];
    this.hidden_ = new Set([...this.kinds].filter(([, count]) => count > Math.max(kFew, this.count_ / 10)).map(([kind]) => kind));
    this.choose_();
  }

  onChange(listener) { this.listeners_.push(listener); }
  drop(listener) { this.listeners_ = this.listeners_.filter(one => one !== listener); }

  get all() { return [...this.found_, ...this.thresholds.flatMap(({events}) => events)]; }

  // Each kind that there is, with how many there are. One that comes more than ten times, and on more than a
  // tenth of the frames, is hidden at first: it would bury the others.
  get kinds() {
    const counts = new Map();
    for (const {kind} of this.all) counts.set(kind, (counts.get(kind) ?? 0) + 1);
    return counts;
  }

  shows(kind) { return !this.hidden_.has(kind); }
  show(kind, on) {
    on ? this.hidden_.delete(kind) : this.hidden_.add(kind);
    this.tell_();
  }

  search(text) {
    this.text_ = text.toLowerCase();
    this.tell_();
  }

  add(threshold) {
    this.thresholds.push(threshold);
    this.tell_();
  }
  remove(threshold) {
    this.thresholds = this.thresholds.filter(one => one !== threshold);
    this.tell_();
  }

  // The frame of the next shown event after (direction 1) or before (-1) a frame, or null.
  neighbour(frame, direction) {
    const found = direction > 0 ? this.shown.find(({index}) => index > frame) :
                                  this.shown.filter(({index}) => index < frame).pop();
    return found?.index ?? null;
  }

  tell_() {
    this.choose_();
    for (const listener of this.listeners_) listener();
  }

  choose_() {
    const fits = ({kind, text}) => this.shows(kind) && `${kind} ${text}`.toLowerCase().includes(this.text_);
    this.shown = this.all.filter(fits).sort((a, b) => a.index - b.index);
  }
}

function faceChanges(report) {
  const changes = [];
  let before = null;
  for (let index = 0; index < report.count && report.front; ++index) {
    if (!report.analysed(index)) continue;
    const count = report.measuredFaces(index);
    if (before !== null && count !== before)
      changes.push({index, kind: 'faces', text: `${plural(count, 'face')} measured, ${before} before`});
    before = count;
  }
  return changes;
}
