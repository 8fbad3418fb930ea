// The large view: the frame's picture with overlays to choose, and what it is held against beside it.
import {Blend} from './blend.js';
import {h, icon} from './dom.js';
import {marksOf} from './figures.js';
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
  constructor(report, player, painter, pair, copyButton, below) {
    this.below = below;
    this.report_ = report;
    this.player_ = player;
    this.painter_ = painter;
    this.pair_ = pair;
    this.blend_ = new Blend(laidOut => laidOut ? this.layOut_() : this.paint());
    this.zoom = new Zoom(() => this.paint());
    this.overlays_ = new Overlays(report, () => this.paint());
    this.legend_ = new Legend(report);
    this.readout_ = new Readout(report, player, this.legend_, frame => painter.image(frame));
    const sides = ['baseline', 'current', report.baseline ? 'difference' : null, 'both'].filter(Boolean);
    this.all_ = sides.map(side => this.makeSide_(side));
    this.heading_ = h('h2', {id: 'frame-heading'});
    this.marks_ = h('span', {class: 'marks'});
    this.note_ = h('p', {class: 'quiet note'});
    this.shape_ = h('p', {class: 'shape-note', id: 'shape-note'});
    this.views_ =
        h('div', {class: 'views'});
    this.foot_ = h('div', {class: 'stage-foot'}, this.overlays_.element, this.readout_.element, this.legend_.element, this.shape_);
    this.element =
        h('div', {class: 'stage', id: 'stage'},
          h('div', {class: 'stage-head'}, this.heading_, this.marks_, this.note_, this.blend_.element, this.tools_(copyButton)),
          this.views_,
          this.foot_);
    new ResizeObserver(() => this.resize_()).observe(this.views_);
    new ResizeObserver(() => this.resize_()).observe(this.foot_);
    addEventListener('resize', () => this.resize_());
    document.addEventListener('fullscreenchange', () => this.fill_(document.fullscreenElement !== null));
    pair.onChange(() => this.layOut_());
  }

  // Shows a frame; keeps the picture of before until the new one is decoded.
  async render() {
    const frame = this.player_.index;
    this.wanted_ = frame;
    if (!this.sides_) this.layOut_();
    this.describe_(frame);
    if (!this.painter_.ready(frame)) await this.painter_.load(frame);
    const [other, side] = this.pair_.other(frame);
    if (this.pair_.on && !this.painter_.ready(other, side)) await this.painter_.load(other, side);
    if (this.wanted_ !== frame) return;
    this.paint();
    this.readout_.refresh();
    if (this.player_.playing && frame + 2 < this.report_.count) this.painter_.load(frame + 2);
  }

  paint() {
    for (const {canvas, side} of this.sides_) {
      if (side === 'both')
        this.paintBoth_(canvas, this.zoom);
      else
        this.paintSide_(canvas, side, this.zoom);
      canvas.classList.toggle('zoomed', this.zoom.scale > 1);
    }
    this.fit_.disabled = this.zoom.scale === 1;
    this.element.dataset.frame = this.player_.index;
  }

  paintSide_(canvas, side, zoom) {
    const frame = this.player_.index;
    const [drawn, as] = side === 'baseline' ? this.pair_.other(frame) : [frame, side];
    this.painter_.paint(canvas, drawn, this.overlays_.show, as, zoom);
  }

  paintBoth_(canvas, zoom) {
    this.blend_.paint(canvas, (target, first) => this.paintSide_(target, first ? 'baseline' : 'current', zoom));
    this.captionBoth_();
  }

  captionBoth_() {
    const {caption} = this.all_.find(({side}) => side === 'both');
    const [first, second] = ['baseline', 'current'].map(side => this.pair_.title(side, this.player_.index));
    caption.textContent = this.blend_.title(first, second);
  }

  // Which views there are. Several take the page's width, one leaves room for the tabs.
  layOut_() {
    const {on} = this.pair_, both = on && this.blend_.mode !== 'side';
    this.sides_ = this.all_.filter(({side}) => side === 'both' ? both : !both && (on || side === 'current'));
    this.views_.replaceChildren(...this.sides_.map(({element}) => element));
    this.views_.style.setProperty('--views', this.sides_.length);
    this.element.parentElement.classList.toggle('comparing', this.sides_.length > 1);
    this.keep_?.setAttribute('aria-pressed', this.pair_.kept !== null);
    this.blend_.show(on);
    this.describe_(this.player_.index);
    this.resize_();
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
      if (side === 'both')
        this.paintBoth_(own, undefined);
      else
        this.paintSide_(own, side);
      all.getContext('2d').drawImage(own, at * width, 0);
    });
    saveCanvas(this.report_, `frame_${this.report_.number(frame)}.png`, all);
  }

  tools_(copyButton) {
    const button = (id, text, picture, onclick) =>
        h('button', {type: 'button', class: 'icon-button', id, 'aria-label': text, title: text, onclick},
          icon(picture));
    this.keep_ = this.report_.baseline ?
        null :
        button('keep', 'Hold other frames against this one (C)', 'pair', () => this.pair_.toggle());
    this.fit_ = button('zoom-fit', 'The whole frame (0)', 'fit', () => this.zoom.fit());
    return h(
        'div', {class: 'tools', role: 'group', 'aria-label': 'View'}, this.keep_, copyButton,
        button('save-frame', 'Save this picture', 'save', () => this.saveFrame()),
        button('zoom-out', 'Zoom out (−)', 'minus', () => this.zoom.out()),
        button('zoom-in', 'Zoom in (+)', 'plus', () => this.zoom.in()), this.fit_,
        button('fullscreen', 'Full screen (F)', 'full', () => this.toggleFull()));
  }

  makeSide_(side) {
    const canvas = h('canvas', {
      role: 'img',
      'data-side': side,
      onpointermove: event => this.point_(canvas, side, event),
      onpointerleave: () => this.readout_.clear()
    });
    this.zoom.listen(canvas);
    const caption = h('figcaption', {});
    return {
      side,
      canvas,
      caption,
      element: h('figure', {class: 'view'}, caption, canvas)
    };
  }

  // The edge of a wipe follows a drag, unless that moves the zoomed picture.
  point_(canvas, side, event) {
    const place = this.zoom.at(canvas, event);
    this.readout_.point(place);
    if (side === 'both' && event.buttons === 1 && this.zoom.scale === 1) this.blend_.wipeAt(place[0]);
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
    for (const side of this.sides_) this.name_(side, frame);
    this.legend_.show(frame);
  }

  name_({side, canvas, caption}, frame) {
    if (side === 'both') return this.captionBoth_();
    caption.hidden = !this.pair_.on;
    const title = this.pair_.on ? this.pair_.title(side, frame) : this.report_.title(frame);
    caption.textContent = title;
    canvas.setAttribute('aria-label', `${title}: picture with what the library found`);
  }

  // Beside the tabs, a view has what they leave; their column takes what the picture does not need.
  room_(element) {
    const section = this.element.parentElement;
    if (!section || !inColumns(section)) return element.clientWidth;
    return section.clientWidth - kTabs - (inColumns(this.element) ? kSide : 0);
  }

  tallest_() {
    const above = this.views_.getBoundingClientRect().top + scrollY;
    const caption = this.sides_[0].caption.offsetHeight;
    const foot = inColumns(this.element) ? 0 : this.foot_.offsetHeight;
    return innerHeight - above - caption - foot - this.below() - kGaps;
  }

  // As large as lets the frame, all that belongs to it and the scrubber be seen together, at the frame's shape.
  resize_() {
    if (!this.sides_) return;
    const {width, height} = this.report_.geometry(this.player_.index);
    const shape = height / width;
    this.element.classList.toggle('tall', shape > 1 && this.sides_.length === 1);
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
