// The whole run's log, with the lines of the frame in view marked in their place.
import {h} from './dom.js';
import {WindowedList} from './windowed_list.js';

const kPriorities = {
  D: 'debug',
  I: 'info',
  E: 'error'
};

export function logLine([, priority, text]) {
  return [
    h('span', {class: `priority priority-${priority}`, title: kPriorities[priority] ?? priority}, priority),
    h('span', {class: 'text'}, text)
  ];
}

export class LogList {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.priority_ =
        h('select', {id: 'log-priority', onchange: () => this.refilter_()},
          h('option', {value: ''}, 'All lines'), h('option', {value: 'IE'}, 'Info and errors'),
          h('option', {value: 'E'}, 'Errors'));
    this.search_ = h('input', {
      type: 'search',
      placeholder: 'Contains…',
      'aria-label': 'Log lines that contain',
      oninput: () => this.refilter_()
    });
    this.list_ = new WindowedList('lines', at => this.row_(at));
    this.list_.element.classList.add('log');
    this.element =
        h('div', {class: 'stack'},
          h('div', {class: 'filters'},
            h('label', {class: 'visually-hidden', 'for': 'log-priority'}, 'Priority'), this.priority_,
            this.search_),
          this.list_.element);
    this.refilter_();
  }

  show(frame) {
    const [from, to] = this.report_.logRange(frame);
    const first = this.lines_.findIndex(line => line >= from);
    let end = first;
    while (end >= 0 && end < this.lines_.length && this.lines_[end] < to) ++end;
    this.list_.mark(first < 0 ? this.lines_.length : first, first < 0 ? this.lines_.length : end);
  }

  refilter_() {
    const wanted = this.priority_.value, text = this.search_.value.toLowerCase();
    this.lines_ = [];
    this.report_.log.forEach(([, priority, line], at) => {
      const fits = (!wanted || wanted.includes(priority)) && (!text || line.toLowerCase().includes(text));
      if (fits) this.lines_.push(at);
    });
    this.list_.reset(this.lines_.length, 'No line is like that.');
    this.show(this.player_.index);
  }

  row_(at) {
    const line = this.report_.log[this.lines_[at]];
    return h(
        'li', {},
        h('button', {type: 'button', class: 'row', onclick: () => this.player_.go(line[0])},
          h('span', {class: 'number'}, this.report_.label(line[0])), logLine(line)));
  }
}
