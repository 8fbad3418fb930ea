// What is laid over the picture, as a row of boxes to tick.
import {h} from './dom.js';

const kFirstOpacity = 0.5;

export class Overlays {
  constructor(report, onChange) {
    this.onChange_ = onChange;
    this.show = {labels: kFirstOpacity, faces: true, boxes: true, grid: false};
    this.slider_ = h('input', {
      type: 'range',
      id: 'opacity',
      min: 10,
      max: 100,
      value: 100 * kFirstOpacity,
      'aria-label': 'Opacity of the labels',
      oninput: () => this.choose_('labels', true)
    });
    this.element = h(
        'div', {class: 'controls', role: 'group', 'aria-label': 'Overlays'},
        h('span', {class: 'chip-group'}, this.box_('labels', 'Labels'), this.slider_),
        report.boxesKnown ? this.box_('boxes', 'Library boxes', 'solid') : null,
        this.box_('faces', 'Camera faces', 'dashed'), report.front ? null : this.box_('grid', 'Grid'));
  }

  box_(key, text, style) {
    const input = h('input', {
      type: 'checkbox',
      id: `show-${key}`,
      checked: Boolean(this.show[key]),
      onchange: event => this.choose_(key, event.target.checked)
    });
    if (key === 'labels') this.labels_ = input;
    return h(
        'label', {class: 'chip'}, input,
        style ? h('span', {class: `line ${style}`, 'aria-hidden': 'true'}) : null, text);
  }

  choose_(key, on) {
    this.show[key] = key !== 'labels' ? on : on ? this.slider_.value / 100 : 0;
    if (key === 'labels') this.labels_.checked = on;
    this.onChange_();
  }
}
