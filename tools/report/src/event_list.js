// Events as jump marks: a list of buttons, and the next or previous one from any frame.
import {h} from './dom.js';
import {WindowedList} from './windowed_list.js';

export const kEventKinds = ['failed', 'gated', 'sluggish', 'lost', 'found', 'differs'];

export const knownKind = kind => kEventKinds.includes(kind) ? kind : 'other';

// The frame of the next event after (direction 1) or before (-1) a frame, or null.
export function neighbourEvent(report, frame, direction) {
  const {events} = report;
  if (direction > 0) return events.find(event => event.index > frame)?.index ?? null;
  for (let i = events.length - 1; i >= 0; --i)
    if (events[i].index < frame) return events[i].index;
  return null;
}

// A frame's time stamp beside its number, where it has one.
export const timeOf = (report, frame) =>
    report.time(frame) && h('span', {class: 'number time'}, report.time(frame));

export class EventList {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.list_ = new WindowedList('events', at => this.row_(report.events[at]));
    this.list_.reset(report.events.length, 'Nothing out of the ordinary happened.');
    this.element = this.list_.element;
  }

  show(frame) {
    const {events} = this.report_;
    let from = events.findIndex(event => event.index >= frame);
    if (from < 0) from = events.length;
    let to = from;
    while (to < events.length && events[to].index === frame) ++to;
    this.list_.mark(from, to);
  }

  row_({index, kind, text}) {
    return h(
        'li', {},
        h('button',
          {type: 'button', class: 'row jump', 'data-index': index, onclick: () => this.player_.go(index)},
          h('span', {class: 'number'}, this.report_.label(index)), timeOf(this.report_, index),
          h('span', {class: `mark mark-${knownKind(kind)}`}, kind), h('span', {class: 'text'}, text)));
  }
}
