// What the frame in view is held against: in a comparison the baseline's frame, else a frame of the same run that one
// keeps while going on to others.
import {describe, differingCells} from './difference.js';
import {plural} from './format.js';

export class Pair {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.kept = null;
    this.listeners_ = [];
  }

  onChange(listener) { this.listeners_.push(listener); }

  get on() { return this.report_.baseline !== null || this.kept !== null; }

  // Keeps the frame in view, or lets the kept one go.
  toggle() {
    if (this.report_.baseline) return;
    this.kept = this.kept === null ? this.player_.index : null;
    for (const listener of this.listeners_) listener();
  }

  // The frame and the side to draw beside a frame.
  other(frame) { return this.kept === null ? [frame, 'baseline'] : [this.kept, 'current']; }

  // The other record's value, null where it has none.
  value(frame, field) {
    const {records, baseline} = this.report_;
    if (!baseline) return records.value(this.kept, field);
    return baseline.has(frame) ? baseline.records.value(frame, field) : null;
  }

  get heads() {
    const {baseline} = this.report_;
    return baseline ? ['Baseline', 'Current'] : [`Frame ${this.report_.label(this.kept)}`, 'In view'];
  }

  // What a side shows, in words.
  title(side, frame) {
    const {report_: report} = this;
    if (side === 'difference') return differenceText(report, frame);
    if (report.baseline) return side === 'baseline' ? `Baseline: ${report.baseline.name}` : `Current: ${nameOf(report)}`;
    return report.title(side === 'baseline' ? this.kept : frame);
  }
}

// The last part of its path, unless the baseline has the same.
function nameOf({data: {source}, baseline}) {
  const last = source.name.split('/').filter(Boolean).pop();
  return last === undefined || last === baseline.name ? source.name : last;
}

function differenceText(report, frame) {
  const cells = differingCells(report.labels(frame), report.baselineLabels(frame));
  const count = cells ? cells.reduce((sum, cell) => sum + cell, 0) : 0;
  const text = describe(report.difference.at(frame));
  return count === 0 ? text : `${text} (${plural(count, 'cell')})`;
}
