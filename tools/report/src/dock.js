// The bar that stays in view: a thumb of the frame, play, events back and forth, and the scrubber over a
// profile of the run in which the events are marked.
import {h, icon} from './dom.js';
import {knownKind} from './events.js';
import {sentence} from './figures.js';
import {onTheme, themed} from './theme.js';

const kEventReach = 6;  // pixels within which a click on the profile means the event
// A film with time stamps keeps its own time, or a part of it.
const kSpeeds = [[0.1, '0.1×'], [0.25, '0.25×'], [0.5, '0.5×'], [1, '1×'], [2, '2×'], [4, '4×']];
const kRates = [1, 2, 5, 15, 30].map(rate => [rate, `${rate}/s`]);
const kThumb = {
  labels: 0.7,
  faces: false,
  boxes: true,
  grid: false
};

export class Dock {
  constructor(report, player, painter) {
    this.report_ = report;
    this.player_ = player;
    this.painter_ = painter;
    const button = (id, label, name, onclick) =>
        h('button', {type: 'button', class: 'icon-button', id, 'aria-label': label, title: label, onclick},
          icon(name));
    this.play_ = button('play', 'Play', 'play', () => player.toggle());
    this.loop_ = button('loop', 'Loop the range (L)', 'loop', () => this.toggleLoop());
    this.loop_.setAttribute('aria-pressed', false);
    this.scrubber = h('input', {
      type: 'range',
      id: 'scrubber',
      min: 0,
      max: Math.max(report.count - 1, 0),
      value: 0,
      'aria-label': 'Frame',
      oninput: event => player.go(Number(event.target.value))
    });
    this.profile_ =
        h('canvas', {class: 'profile', 'aria-hidden': 'true', onpointerdown: event => this.press_(event)});
    this.where_ = h('span', {class: 'where', id: 'where'});
    const {width, height} = report.geometry(0);
    this.thumb_ = h('canvas', {
      class: 'thumb',
      width: 128,
      height: Math.round(Math.min(128 * height / width, 128)),
      'aria-hidden': 'true'
    });
    this.live_ = h('p', {class: 'visually-hidden', role: 'status', id: 'live'});
    this.element =
        h('section', {class: 'dock', 'aria-label': 'Scrubber'}, this.thumb_,
          h('div', {class: 'buttons'},
            button('previous-event', 'Previous event', 'previous', () => this.jump(-1)), this.play_,
            button('next-event', 'Next event', 'next', () => this.jump(1)), this.loop_),
          h('div', {class: 'track'}, this.profile_, this.scrubber), this.where_, this.speed_(), this.live_);
    player.onPlay(playing => this.showPlaying_(playing));
    new ResizeObserver(() => this.drawProfile_()).observe(this.profile_);
    onTheme(() => this.drawProfile_());
    report.eventFilter.onChange(() => this.drawProfile_());
    report.range.onChange(() => this.drawProfile_());
  }

  toggleLoop() {
    this.player_.loop = !this.player_.loop;
    this.loop_.setAttribute('aria-pressed', this.player_.loop);
  }

  jump(direction) {
    const frame = this.report_.eventFilter.neighbour(this.player_.index, direction);
    if (frame !== null) this.player_.go(frame);
  }

  show(frame) {
    const {report_: report} = this;
    const place = `${frame + 1} of ${report.count}`;
    this.scrubber.value = frame;
    this.scrubber.setAttribute('aria-valuetext', `${report.title(frame)}, ${place}`);
    this.where_.replaceChildren(
        h('b', {}, `Frame ${report.label(frame)}`), ' ',
        h('span', {}, [place, report.time(frame)].filter(Boolean).join(' · ')));
    // A running film would drown everything else that is read out.
    if (!this.player_.playing) this.live_.textContent = `${report.title(frame)}: ${sentence(report, frame)}`;
    if (this.painter_.ready(frame))
      this.painter_.paint(this.thumb_, frame, kThumb);
    else
      this.painter_.load(frame).then(() => {
        if (this.player_.index === frame) this.painter_.paint(this.thumb_, frame, kThumb);
      });
  }

  speed_() {
    const select =
        h('select', {
          'aria-label': this.player_.timed ? 'Speed' : 'Frames a second',
          class: 'speed',
          onchange: event => {
            this.player_.rate = Number(event.target.value);
          }
        },
          (this.player_.timed ? kSpeeds : kRates)
              .map(([rate, text]) => h('option', {value: rate, selected: rate === this.player_.rate}, text)));
    return select;
  }

  showPlaying_(playing) {
    this.play_.replaceChildren(icon(playing ? 'pause' : 'play'));
    this.play_.setAttribute('aria-label', playing ? 'Pause' : 'Play');
    this.play_.title = playing ? 'Pause' : 'Play';
    if (!playing) this.show(this.player_.index);
  }

  x_(frame) {
    return this.report_.count < 2 ? this.profile_.clientWidth / 2 :
                                    frame / (this.report_.count - 1) * this.profile_.clientWidth;
  }

  press_(event) {
    const near =
        this.report_.events.map(({index}) => ({index, away: Math.abs(this.x_(index) - event.offsetX)}))
            .filter(({away}) => away <= kEventReach)
            .sort((a, b) => a.away - b.away);
    const place = event.offsetX / Math.max(this.profile_.clientWidth, 1) * (this.report_.count - 1);
    this.player_.go(near.length > 0 ? near[0].index : place);
    event.preventDefault();
    this.scrubber.focus({preventScroll: true});
  }

  // The person share as a low relief, the events as ticks through it.
  drawProfile_() {
    const {clientWidth: width, clientHeight: height} = this.profile_;
    if (width === 0) return;
    const sharp = devicePixelRatio;
    this.profile_.width = Math.round(width * sharp);
    this.profile_.height = Math.round(height * sharp);
    const context = this.profile_.getContext('2d');
    context.scale(sharp, sharp);
    const shares = this.report_.series(frame => this.report_.records.humanRatio(frame));
    const highest = Math.max(...shares.map(share => share ?? 0), 1);
    const step = Math.max(width / this.report_.count, 1);
    context.fillStyle = themed('--relief');
    shares.forEach((share, frame) => {
      const tall = Math.max(share ?? 0, 0) / highest * (height - 8);
      context.fillRect(this.x_(frame) - step / 2, height - tall, step + 0.3, tall);
    });
    const {range} = this.report_;
    if (!range.whole) {
      const [from, to] = range.frames.map(frame => this.x_(frame));
      context.fillStyle = themed('--accent');
      context.globalAlpha = 0.16;
      context.fillRect(from, 0, to - from, height);
      context.globalAlpha = 1;
    }
    for (const {index, kind} of this.report_.events) {
      context.fillStyle = themed(`--event-${knownKind(kind)}`);
      context.fillRect(this.x_(index) - 1, 6, 2, height - 6);
      context.beginPath();
      context.arc(this.x_(index), 4, 3.5, 0, 2 * Math.PI);
      context.fill();
    }
  }
}
