// Events that the reader asks for: a figure that jumps, rises above a limit or falls below one.
import {h} from './dom.js';
import {countSet} from './records.js';
import {faceFigures} from './series.js';

const kHow = [['jumps by', 'jumps by'], ['rises above', 'rises above'], ['falls below', 'falls below']];

// [name, lists of one value a frame with a name each]. The lists are made when they are asked for.
function figuresOf(report) {
  const single = of => () => [['', report.series(of)]];
  return [
    ...(report.front ? [[
      'luma', () => faceFigures(report, report.records)
                        .map(({name, figures}) => [` of ${name.toLowerCase()}`, figures.map(one => one?.luma ?? null)])
    ]] :
                       [['grid cells', single(frame => countSet(report.records.grid(frame)))]]),
    [`${report.shareOf} share`, single(frame => report.records.humanRatio(frame))],
    ['boxes', single(frame => report.personCount(frame))],
    ['network ms', () => [['', report.frames.network_ms]]],
    ['library ms', single(frame => report.libraryMs(frame))],
  ];
}

// The frames where it happens. A limit is passed once: the next time counts when the figure has been back.
export function passes(values, how, limit) {
  const frames = [];
  let before = null;
  const beyond = value => how === 'rises above' ? value > limit : value < limit;
  values.forEach((value, frame) => {
    if (value === null || value === undefined) return;
    const happens = how === 'jumps by' ? before !== null && Math.abs(value - before) >= limit :
                                         beyond(value) && (before === null || !beyond(before));
    if (happens) frames.push({frame, value, before});
    before = value;
  });
  return frames;
}

export class Thresholds {
  constructor(report) {
    this.report_ = report;
    this.figures_ = figuresOf(report);
    const select = (id, label, list) =>
        h('select', {id, 'aria-label': label}, list.map(([name], at) => h('option', {value: at}, name)));
    this.figure_ = select('threshold-figure', 'Figure', this.figures_);
    this.how_ = select('threshold-how', 'Does', kHow);
    this.limit_ = h('input', {type: 'number', id: 'threshold-limit', value: 20, min: 0, step: 'any', 'aria-label': 'Limit'});
    this.list_ = h('ul', {class: 'thresholds'});
    this.element =
        h('form', {
          class: 'filters threshold',
          'aria-label': 'Events of your own',
          onsubmit: event => {
            event.preventDefault();
            this.add_();
          }
        },
          h('span', {class: 'quiet'}, 'Mark where'), this.figure_, this.how_, this.limit_,
          h('button', {type: 'submit', class: 'plain'}, 'Add'), this.list_);
  }

  add_() {
    const limit = Number(this.limit_.value), [how] = kHow[this.how_.value], [name, lists] = this.figures_[this.figure_.value];
    if (this.limit_.value === '' || !(limit >= 0)) return;
    const write = value => `${Math.round(value * 100) / 100}`;
    const events = lists().flatMap(
        ([whose, values]) => passes(values, how, limit).map(({frame, value, before}) => ({
          index: frame,
          kind: 'yours',
          text: `${name}${whose} ${how} ${limit}: ${before === null ? '' : `${write(before)} to `}${write(value)}`
        })));
    this.report_.eventFilter.add({text: `${name} ${how} ${limit}`, events});
    this.showList_();
  }

  showList_() {
    const {eventFilter} = this.report_;
    this.list_.replaceChildren(...eventFilter.thresholds.map(
        one => h('li', {},
                 h('button', {
                   type: 'button',
                   class: 'plain',
                   'aria-label': `Remove: ${one.text}`,
                   onclick: () => {
                     eventFilter.remove(one);
                     this.showList_();
                   }
                 },
                   `${one.text} (${one.events.length})`, h('span', {'aria-hidden': 'true'}, '×')))));
  }
}
