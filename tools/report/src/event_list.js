// Events as jump marks: a list of buttons, searched and filtered by kind.
import {h} from './dom.js';
import {knownKind} from './events.js';
import {Thresholds} from './thresholds.js';
import {WindowedList} from './windowed_list.js';

// A frame's time stamp beside its number, where it has one.
const timeOf = (report, frame) => report.time(frame) && h('span', {class: 'number time'}, report.time(frame));

export class EventList {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.kinds_ = h('div', {class: 'kinds', role: 'group', 'aria-label': 'Kinds of events'});
    this.list_ = new WindowedList('events', at => this.row_(report.events[at]));
    const search = h('input', {
      type: 'search',
      id: 'event-search',
      placeholder: 'Contains…',
      'aria-label': 'Events that contain',
      oninput: () => report.eventFilter.search(search.value)
    });
    const note = report.alwaysSluggish &&
        h('p', {class: 'quiet event-note', id: 'always-sluggish'},
          `Nearly every run of the network took ${report.data.sluggish_ms} ms or more, as on a workstation: not listed.`);
    this.element = h(
        'div', {class: 'stack'}, h('div', {class: 'filters'}, search, this.kinds_), new Thresholds(report).element, note,
        this.list_.element);
    report.eventFilter.onChange(() => this.refill_());
    this.refill_();
  }

  show(frame) {
    const {events} = this.report_;
    let from = events.findIndex(event => event.index >= frame);
    if (from < 0) from = events.length;
    let to = from;
    while (to < events.length && events[to].index === frame) ++to;
    this.list_.mark(from, to);
  }

  refill_() {
    const {eventFilter, events} = this.report_;
    const focused = document.activeElement?.id;
    this.kinds_.replaceChildren(...[...eventFilter.kinds].map(([kind, count]) => this.kind_(kind, count)));
    if (focused?.startsWith('kind-')) document.getElementById(focused)?.focus();
    const none = eventFilter.all.length === 0 ? 'Nothing out of the ordinary happened.' : 'No event is like that.';
    this.list_.reset(events.length, none);
    this.show(this.player_.index);
  }

  kind_(kind, count) {
    const {eventFilter} = this.report_;
    return h(
        'label', {class: 'chip'}, h('input', {
          type: 'checkbox',
          id: `kind-${knownKind(kind)}`,
          checked: eventFilter.shows(kind),
          onchange: event => eventFilter.show(kind, event.target.checked)
        }),
        h('span', {class: `mark mark-${knownKind(kind)}`}, kind), h('span', {class: 'quiet'}, count));
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
