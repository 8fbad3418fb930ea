// Two pictures in one place: wiped, the first left of an edge that one moves, or flickering, now the one, now the other.
// What moved or changed between them then catches the eye.
import {h} from './dom.js';

const kTurn = 500;  // ms; no more than two changes a second
const kModes = [['side', 'Side by side'], ['wipe', 'Wipe'], ['flicker', 'Flicker']];

export class Blend {
  constructor(onChange) {
    this.onChange_ = onChange;
    this.mode = 'side';
    this.first_ = true;
    this.edge_ = 0.5;
    this.slider_ = h('input', {
      type: 'range',
      id: 'wipe',
      min: 0,
      max: 100,
      value: 50,
      'aria-label': 'Where the first picture ends',
      oninput: event => this.wipeAt(event.target.value / 100)
    });
    const option = ([mode, text]) =>
        h('label', {}, h('input', {
            type: 'radio',
            name: 'blend',
            value: mode,
            checked: mode === this.mode,
            onchange: () => this.choose_(mode)
          }), h('span', {}, text));
    this.element =
        h('div', {class: 'blend'}, this.slider_,
          h('fieldset', {class: 'segments', id: 'blend'}, h('legend', {class: 'visually-hidden'}, 'Two pictures'),
            kModes.map(option)));
  }

  show(on) {
    this.element.hidden = !on;
    this.slider_.hidden = this.mode !== 'wipe';
    clearInterval(this.timer_);
    if (on && this.mode === 'flicker') this.timer_ = setInterval(() => this.turn_(), kTurn);
  }

  wipeAt(edge) {
    this.edge_ = Math.min(Math.max(edge, 0), 1);
    this.slider_.value = 100 * this.edge_;
    this.onChange_(false);
  }

  // `paint(canvas, first)` draws one of the two.
  paint(canvas, paint) {
    if (this.mode === 'flicker') return paint(canvas, this.first_);
    paint(canvas, false);
    const {width, height} = canvas, end = Math.round(this.edge_ * width);
    const over = this.over_ ??= document.createElement('canvas');
    if (over.width !== width || over.height !== height) Object.assign(over, {width, height});
    paint(over, true);
    const context = canvas.getContext('2d');
    if (end > 0) context.drawImage(over, 0, 0, end, height, 0, 0, end, height);
    context.fillStyle = '#ffffff';
    context.fillRect(end - 1, 0, 2, height);
  }

  // Which of the two is seen, by their names.
  title(first, second) {
    return this.mode === 'wipe' ? `${first} | ${second}` : this.first_ ? first : second;
  }

  choose_(mode) {
    this.mode = mode;
    this.onChange_(true);
  }

  turn_() {
    this.first_ = !this.first_;
    this.onChange_(false);
  }
}
