// The large view: the frame's picture with overlays to choose, and in a comparison the baseline and the
// difference beside it.
import {describe, differingCells} from './difference.js';
import {h} from './dom.js';
import {marksOf} from './figures.js';
import {plural} from './format.js';
import {kDifferenceColour} from './frame_painter.js';
import {analysedShare} from './label_map.js';

const kTallest = 0.72;   // of the window's height
const kSharpest = 2000;  // pixels across; more only costs time
const kFirstOpacity = 0.5;

export class Viewer {
  constructor(report, player, painter) {
    this.report_ = report;
    this.player_ = player;
    this.painter_ = painter;
    this.show = {labels: kFirstOpacity, faces: true, boxes: true, grid: false};
    this.sides_ = (report.baseline ? ['baseline', 'current', 'difference'] : [
                    'current'
                  ]).map(side => this.makeSide_(side));
    this.heading_ = h('h2', {id: 'frame-heading'});
    this.marks_ = h('span', {class: 'marks'});
    this.note_ = h('p', {class: 'quiet note'});
    this.legend_ = h('ul', {class: 'legend', 'aria-label': 'Labels, with their share of the map'});
    this.shape_ = h('p', {class: 'shape-note', id: 'shape-note'});
    this.views_ =
        h('div', {class: report.baseline ? 'views three' : 'views'}, this.sides_.map(side => side.element));
    this.element =
        h('div', {class: 'stage', id: 'stage'},
          h('div', {class: 'stage-head'}, this.heading_, this.marks_, this.note_), this.views_,
          h('div', {class: 'stage-foot'}, this.controls_(), this.legend_, this.shape_));
    new ResizeObserver(() => this.resize_()).observe(this.views_);
    addEventListener('resize', () => this.resize_());
  }

  // Shows a frame; keeps the picture of before until the new one is decoded.
  async render() {
    const frame = this.player_.index;
    this.wanted_ = frame;
    this.describe_(frame);
    if (!this.painter_.ready(frame)) await this.painter_.load(frame);
    if (this.wanted_ !== frame) return;
    this.paint();
    if (this.player_.playing && frame + 2 < this.report_.count) this.painter_.load(frame + 2);
  }

  paint() {
    for (const {canvas, side} of this.sides_)
      this.painter_.paint(canvas, this.player_.index, this.show, side);
    this.element.dataset.frame = this.player_.index;
  }

  makeSide_(side) {
    const titles = {
      baseline: `Baseline: ${this.report_.baseline?.name}`,
      current: this.report_.baseline ? `Current: ${this.report_.data.source.name}` : 'Current',
      difference: 'Difference'
    };
    const canvas = h('canvas', {role: 'img', 'data-side': side});
    const caption = this.report_.baseline ? h('figcaption', {}, titles[side]) : null;
    return {
      side,
      canvas,
      title: titles[side],
      caption,
      element: h('figure', {class: 'view'}, caption, canvas)
    };
  }

  describe_(frame) {
    const {report_: report} = this;
    this.heading_.textContent = report.title(frame);
    this.marks_.replaceChildren(
        ...marksOf(report, frame).map(([kind, text]) => h('span', {class: `mark mark-${kind}`}, text)));
    const from = report.pictureFrame(frame);
    const notes = [];
    if (report.frames.name) notes.push(`Frame ${report.label(frame)}`);
    if (from === null)
      notes.push('No pictures in this recording');
    else if (from !== frame)
      notes.push(`Picture of frame ${report.label(from)}; the overlays are this frame's`);
    if (!report.labels(frame)) notes.push('No label map');
    this.note_.textContent = notes.join(' · ');
    this.shape_.textContent = report.geometry(frame).notes.join(' ');
    for (const {canvas, title, side, caption} of this.sides_) {
      canvas.setAttribute(
          'aria-label', `${title}: picture of ${report.title(frame)} with what the library found`);
      if (side === 'difference') caption.textContent = this.differenceText_(frame);
    }
    this.fillLegend_(frame);
  }

  differenceText_(frame) {
    const cells = differingCells(this.report_.labels(frame), this.report_.baselineLabels(frame));
    const count = cells ? cells.reduce((sum, cell) => sum + cell, 0) : 0;
    const text = describe(this.report_.difference.at(frame));
    return count === 0 ? text : `${text} (${plural(count, 'cell')})`;
  }

  fillLegend_(frame) {
    const map = this.report_.labels(frame);
    const counts = new Array(8).fill(0);
    if (map)
      for (const label of map) ++counts[label];
    const items = this.report_.data.labels.map(({name, color}, label) => {
      const patch = h('span', {class: color ? 'patch' : 'patch none', 'aria-hidden': 'true'});
      if (color) patch.style.background = color;
      const share = map ? `${Math.round(100 * counts[label] / map.length)} %` : '–';
      return h('li', {}, patch, name, h('span', {class: 'aside'}, share));
    });
    if (analysedShare(this.report_.geometry(frame)) < 1)
      items.push(h('li', {}, h('span', {class: 'patch hatched', 'aria-hidden': 'true'}), 'not analysed'));
    if (this.report_.baseline) {
      const patch = h('span', {class: 'patch', 'aria-hidden': 'true'});
      patch.style.background = kDifferenceColour;
      items.push(h('li', {}, patch, 'cell that differs'));
    }
    this.legend_.replaceChildren(...items);
  }

  controls_() {
    const box = (key, text, style) =>
        h('label', {class: 'chip'}, h('input', {
            type: 'checkbox',
            id: `show-${key}`,
            checked: this.show[key] !== 0 && this.show[key] !== false,
            onchange: event => this.choose_(key, event.target.checked)
          }),
          style ? h('span', {class: `line ${style}`, 'aria-hidden': 'true'}) : null, text);
    this.slider_ = h('input', {
      type: 'range',
      id: 'opacity',
      min: 10,
      max: 100,
      value: 100 * kFirstOpacity,
      'aria-label': 'Opacity of the labels',
      oninput: () => this.choose_('labels', true)
    });
    return h(
        'div', {class: 'controls', role: 'group', 'aria-label': 'Overlays'},
        h('span', {class: 'chip-group'}, box('labels', 'Labels'), this.slider_),
        this.report_.boxesKnown ? box('boxes', 'Library boxes', 'solid') : null, box('faces', 'Camera faces', 'dashed'),
        this.report_.front ? null : box('grid', 'Grid'));
  }

  choose_(key, on) {
    this.show[key] = key !== 'labels' ? on : on ? this.slider_.value / 100 : 0;
    if (key === 'labels') this.element.querySelector('#show-labels').checked = on;
    this.paint();
  }

  // As large as the column and the window allow, at the frame's shape.
  resize_() {
    const {width, height} = this.report_.geometry(this.player_.index);
    const shape = height / width;
    for (const {canvas, element} of this.sides_) {
      const room = element.clientWidth;
      const across = Math.max(Math.min(room, innerHeight * kTallest / shape), 120);
      const pixels = Math.min(across * devicePixelRatio, kSharpest);
      canvas.style.width = `${Math.floor(across)}px`;
      canvas.style.height = `${Math.floor(across * shape)}px`;
      if (canvas.width === Math.round(pixels) && canvas.height === Math.round(pixels * shape)) continue;
      canvas.width = Math.round(pixels);
      canvas.height = Math.round(pixels * shape);
    }
    if (this.element.dataset.frame !== undefined) this.paint();
  }
}
