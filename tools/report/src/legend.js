// The labels with their share of the map, and the scores of the cell below the pointer.
import {h} from './dom.js';
import {kDifferenceColour} from './frame_painter.js';
import {analysedShare} from './label_map.js';

export class Legend {
  constructor(report) {
    this.report_ = report;
    this.items_ = report.data.labels.map(({name, color}) => {
      const patch = h('span', {class: color ? 'patch' : 'patch none', 'aria-hidden': 'true'});
      if (color) patch.style.background = color;
      const share = h('span', {class: 'aside'}), score = h('b', {class: 'score'});
      return {share, score, element: h('li', {}, patch, name, share, score)};
    });
    this.missed_ = h('li', {}, h('span', {class: 'patch hatched', 'aria-hidden': 'true'}), 'not analysed');
    const differs = h('span', {class: 'patch', 'aria-hidden': 'true'});
    differs.style.background = kDifferenceColour;
    this.element =
        h('ul', {class: 'legend', 'aria-label': 'Labels, with their share of the map'},
          this.items_.map(item => item.element), this.missed_,
          report.baseline ? h('li', {}, differs, 'cell that differs') : null);
  }

  show(frame) {
    const map = this.report_.labels(frame), counts = new Array(8).fill(0);
    for (const label of map ?? []) ++counts[label];
    this.items_.forEach(({share}, label) => {
      share.textContent = map ? `${Math.round(100 * counts[label] / map.length)} %` : '–';
    });
    this.missed_.hidden = analysedShare(this.report_.geometry(frame)) === 1;
  }

  // The scores of a cell, or none; the label that wins it, or -1.
  point(scores, winner) {
    this.items_.forEach(({score, element}, label) => {
      score.textContent = scores?.[label] ?? '';
      element.classList.toggle('wins', label === winner);
    });
  }
}
