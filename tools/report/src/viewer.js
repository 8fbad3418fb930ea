// The large view: the frame's picture with overlays to choose, and in a comparison the baseline and the
// difference beside it.
import {describe, differingCells} from './difference.js';
import {h, icon} from './dom.js';
import {marksOf} from './figures.js';
import {plural} from './format.js';
import {Legend} from './legend.js';
import {Overlays} from './overlays.js';
import {Readout} from './readout.js';
import {saveCanvas} from './save.js';
import {Zoom} from './zoom.js';

const kLeastTall = 220, kPhone = 760;
const kTabs = 400;  // the tabs' least column and the gap beside it
const kSide = 268;  // what belongs to a portrait frame, and the gap
const kGaps = 26;

const inColumns = element => getComputedStyle(element).gridTemplateColumns.includes(' ');
const kSharpest = 2000;  // pixels across; more only costs time

export class Viewer {
  // `below`: the height of what stays in view below.
  constructor(report, player, painter, copyButton, below) {
    this.below = below;
    this.report_ = report;
    this.player_ = player;
    this.painter_ = painter;
    this.zoom = new Zoom(() => this.paint());
    this.overlays_ = new Overlays(report, () => this.paint());
    this.legend_ = new Legend(report);
    this.readout_ = new Readout(report, player, this.legend_, frame => painter.image(frame));
    this.sides_ = (report.baseline ? ['baseline', 'current', 'difference'] : [
                    'current'
                  ]).map(side => this.makeSide_(side));
    this.heading_ = h('h2', {id: 'frame-heading'});
    this.marks_ = h('span', {class: 'marks'});
    this.note_ = h('p', {class: 'quiet note'});
    this.shape_ = h('p', {class: 'shape-note', id: 'shape-note'});
    this.views_ =
        h('div', {class: report.baseline ? 'views three' : 'views'}, this.sides_.map(side => side.element));
    this.foot_ = h('div', {class: 'stage-foot'}, this.overlays_.element, this.readout_.element, this.legend_.element, this.shape_);
    this.element =
        h('div', {class: 'stage', id: 'stage'},
          h('div', {class: 'stage-head'}, this.heading_, this.marks_, this.note_, this.tools_(copyButton)), this.views_,
          this.foot_);
    new ResizeObserver(() => this.resize_()).observe(this.views_);
    new ResizeObserver(() => this.resize_()).observe(this.foot_);
    addEventListener('resize', () => this.resize_());
    document.addEventListener('fullscreenchange', () => this.fill_(document.fullscreenElement !== null));
  }

  // Shows a frame; keeps the picture of before until the new one is decoded.
  async render() {
    const frame = this.player_.index;
    this.wanted_ = frame;
    this.describe_(frame);
    if (!this.painter_.ready(frame)) await this.painter_.load(frame);
    if (this.wanted_ !== frame) return;
    this.paint();
    this.readout_.refresh();
    if (this.player_.playing && frame + 2 < this.report_.count) this.painter_.load(frame + 2);
  }

  paint() {
    for (const {canvas, side} of this.sides_) {
      this.painter_.paint(canvas, this.player_.index, this.overlays_.show, side, this.zoom);
      canvas.classList.toggle('zoomed', this.zoom.scale > 1);
    }
    this.fit_.disabled = this.zoom.scale === 1;
    this.element.dataset.frame = this.player_.index;
  }

  // The whole screen where the browser gives it, else the whole window.
  async toggleFull() {
    const full = !document.documentElement.classList.contains('full');
    this.fill_(full);
    try {
      if (full)
        await document.documentElement.requestFullscreen();
      else if (document.fullscreenElement)
        await document.exitFullscreen();
    } catch {
      // The window alone, then.
    }
  }

  fill_(full) {
    document.documentElement.classList.toggle('full', full);
    this.resize_();
  }

  // As the views show it, but all of the frame, and in its own size.
  saveFrame() {
    const frame = this.player_.index, {width, height} = this.report_.geometry(frame);
    const own = Object.assign(document.createElement('canvas'), {width, height});
    const all = Object.assign(document.createElement('canvas'), {width: width * this.sides_.length, height});
    this.sides_.forEach(({side}, at) => {
      this.painter_.paint(own, frame, this.overlays_.show, side);
      all.getContext('2d').drawImage(own, at * width, 0);
    });
    saveCanvas(this.report_, `frame_${this.report_.number(frame)}.png`, all);
  }

  tools_(copyButton) {
    const button = (id, text, picture, onclick) =>
        h('button', {type: 'button', class: 'icon-button', id, 'aria-label': text, title: text, onclick},
          icon(picture));
    this.fit_ = button('zoom-fit', 'The whole frame (0)', 'fit', () => this.zoom.fit());
    return h(
        'div', {class: 'tools', role: 'group', 'aria-label': 'View'}, copyButton,
        button('save-frame', 'Save this picture', 'save', () => this.saveFrame()),
        button('zoom-out', 'Zoom out (−)', 'minus', () => this.zoom.out()),
        button('zoom-in', 'Zoom in (+)', 'plus', () => this.zoom.in()), this.fit_,
        button('fullscreen', 'Full screen (F)', 'full', () => this.toggleFull()));
  }

  makeSide_(side) {
    const titles = {
      baseline: `Baseline: ${this.report_.baseline?.name}`,
      current: this.report_.baseline ? `Current: ${this.report_.data.source.name}` : 'Current',
      difference: 'Difference'
    };
    const canvas = h('canvas', {
      role: 'img',
      'data-side': side,
      onpointermove: event => this.readout_.point(this.zoom.at(canvas, event)),
      onpointerleave: () => this.readout_.clear()
    });
    this.zoom.listen(canvas);
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
    this.legend_.show(frame);
  }

  differenceText_(frame) {
    const cells = differingCells(this.report_.labels(frame), this.report_.baselineLabels(frame));
    const count = cells ? cells.reduce((sum, cell) => sum + cell, 0) : 0;
    const text = describe(this.report_.difference.at(frame));
    return count === 0 ? text : `${text} (${plural(count, 'cell')})`;
  }

  // Beside the tabs, a view has what they leave; their column takes what the picture does not need.
  room_(element) {
    const section = this.element.parentElement;
    if (!section || this.report_.baseline || !inColumns(section)) return element.clientWidth;
    return section.clientWidth - kTabs - (inColumns(this.element) ? kSide : 0);
  }

  tallest_() {
    const above = this.views_.getBoundingClientRect().top + scrollY;
    const caption = this.sides_[0].caption?.offsetHeight ?? 0;
    const foot = inColumns(this.element) ? 0 : this.foot_.offsetHeight;
    return innerHeight - above - caption - foot - this.below() - kGaps;
  }

  // As large as lets the frame, all that belongs to it and the scrubber be seen together, at the frame's shape.
  resize_() {
    const {width, height} = this.report_.geometry(this.player_.index);
    const shape = height / width;
    this.element.classList.toggle('tall', shape > 1 && !this.report_.baseline);
    const side = inColumns(this.element) ? kSide : 0;
    const tallest = Math.max(this.tallest_(), innerWidth < kPhone ? innerHeight / 2 : kLeastTall);
    for (const {canvas, element} of this.sides_) {
      const across = Math.max(Math.min(this.room_(element), tallest / shape), 120);
      const pixels = Math.min(across * devicePixelRatio, kSharpest);
      this.element.parentElement?.style.setProperty('--picture', `${Math.ceil(across) + side}px`);
      canvas.style.width = `${Math.floor(across)}px`;
      canvas.style.height = `${Math.floor(across * shape)}px`;
      if (canvas.width === Math.round(pixels) && canvas.height === Math.round(pixels * shape)) continue;
      canvas.width = Math.round(pixels);
      canvas.height = Math.round(pixels * shape);
    }
    if (this.element.dataset.frame !== undefined) this.paint();
  }
}
