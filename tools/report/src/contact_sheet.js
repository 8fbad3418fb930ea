// Thumbs evenly over the run and of every event, drawn when they come near the window.
import {h} from './dom.js';
import {knownKind} from './events.js';

const kSpread = 24;
const kMostEvents = 96;
const kWidth = 320;
const kShow = {
  labels: 0.65,
  faces: false,
  boxes: true,
  grid: false
};

export class ContactSheet {
  constructor(report, player, painter) {
    this.report_ = report;
    this.painter_ = painter;
    const chosen = chooseFrames(report);
    this.cells_ = new Map(chosen.map(([frame, kinds]) => [frame, this.makeCell_(frame, kinds, player)]));
    const left = new Set(report.events.map(event => event.index)).size -
        chosen.filter(([, kinds]) => kinds.length > 0).length;
    this.element =
        h('section', {'aria-labelledby': 'sheet-heading'},
          h('div', {class: 'section-head'}, h('h2', {id: 'sheet-heading'}, 'Contact sheet'),
            h('p', {class: 'quiet'},
              left > 0 ? `${left} more frames with events are in the event list.` :
                         'Evenly over the run, and every event.')),
          h('ul', {class: 'sheet'}, [...this.cells_.values()]));
    this.drawLazily_();
  }

  show(frame) {
    this.cells_.get(this.current_)?.classList.remove('current');
    this.current_ = frame;
    this.cells_.get(frame)?.classList.add('current');
  }

  makeCell_(frame, kinds, player) {
    const {report_: report} = this;
    const {width, height} = report.geometry(frame);
    const canvas = h('canvas', {
      width: kWidth,
      height: Math.round(kWidth * Math.min(height / width, 1.8)),
      'aria-hidden': 'true',
      'data-frame': frame
    });
    const marks = kinds.map(kind => h('span', {class: `mark mark-${knownKind(kind)}`}, kind));
    return h(
        'li', {},
        h('button', {type: 'button', class: 'jump', 'data-index': frame, onclick: () => player.go(frame)},
          canvas,
          h('span', {class: 'caption'},
            h('span', {}, h('b', {}, report.label(frame)), report.time(frame) && ` · ${report.time(frame)}`, ` · ${report.records.humanRatio(frame)} %`),
            h('span', {class: 'marks'}, marks))));
  }

  drawLazily_() {
    const observer = new IntersectionObserver(entries => {
      for (const {isIntersecting, target} of entries) {
        if (!isIntersecting) continue;
        observer.unobserve(target);
        const frame = Number(target.dataset.frame);
        this.painter_.load(frame).then(() => this.painter_.paint(target, frame, kShow));
      }
    }, {rootMargin: '200px'});
    for (const cell of this.cells_.values()) observer.observe(cell.querySelector('canvas'));
  }
}

// Frames with the kinds of their events, in order.
export function chooseFrames(report) {
  const chosen = new Map();
  const steps = Math.min(kSpread, report.count);
  for (let i = 0; i < steps; ++i)
    chosen.set(steps === 1 ? 0 : Math.round(i * (report.count - 1) / (steps - 1)), []);
  let events = 0;
  for (const {index, kind} of report.events) {
    if (!chosen.get(index)?.length && ++events > kMostEvents) continue;
    if (!chosen.has(index)) chosen.set(index, []);
    chosen.get(index).push(kind);
  }
  return [...chosen].sort(([a], [b]) => a - b);
}
