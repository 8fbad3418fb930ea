// The charts' figures as a table, a page of frames at a time: for reading out, for copying, and for whoever
// wants the number itself.
import {h} from './dom.js';
import {marksOf} from './figures.js';
import {plural} from './format.js';
import {countSet} from './records.js';
import {faceFigures} from './series.js';
import {wrapDegrees} from './stats.js';

const kRows = 100;

export class DataTable {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.first_ = 0;
    this.heads_ = h('tr', {});
    this.body_ = h('tbody', {});
    this.range_ = h('span', {class: 'quiet', role: 'status'});
    const turn = (text, rows) =>
        h('button', {type: 'button', class: 'plain', onclick: () => this.turn_(rows)}, text);
    this.earlier_ = turn('Earlier', -kRows);
    this.later_ = turn('Later', kRows);
    this.element = h(
        'details', {class: 'data-table', ontoggle: event => event.target.open && this.turnTo_(player.index)},
        h('summary', {}, 'Figures of every frame as a table'),
        h('div', {class: 'filters'}, this.earlier_, this.later_, this.range_),
        h('div', {class: 'scroller', tabindex: 0, role: 'region', 'aria-label': 'Figures of every frame'},
          h('table', {},
            h('thead', {}, this.heads_), this.body_)));
    report.faces.onChange(() => this.element.open && this.turn_(0));
  }

  turnTo_(frame) {
    this.first_ = Math.floor(frame / kRows) * kRows;
    this.turn_(0);
  }

  turn_(rows) {
    const {count} = this.report_;
    this.first_ = Math.min(Math.max(this.first_ + rows, 0), Math.floor((count - 1) / kRows) * kRows);
    const end = Math.min(this.first_ + kRows, count);
    this.columns_ = columnsOf(this.report_);
    this.heads_.replaceChildren(...this.columns_.map(([title]) => h('th', {scope: 'col'}, title)));
    this.body_.replaceChildren(
        ...Array.from({length: end - this.first_}, (_, k) => this.row_(this.first_ + k)));
    this.earlier_.disabled = this.first_ === 0;
    this.later_.disabled = end === count;
    this.range_.textContent = `${this.first_ + 1} to ${end} of ${plural(count, 'frame')}`;
  }

  row_(frame) {
    const [[, number], ...others] = this.columns_;
    return h(
        'tr', {},
        h('th', {scope: 'row'},
          h('button', {type: 'button', class: 'link', onclick: () => this.player_.go(frame)}, number(frame))),
        others.map(([, of]) => h('td', {}, of(frame))));
  }
}

function columnsOf(report) {
  const {records, frames} = report;
  const time = value => value === null ? '–' : value.toFixed(3);
  const columns = [
    ['Frame', frame => report.label(frame)],
    ['State', frame => marksOf(report, frame).map(([, text]) => text).join(', ') || 'analysed'],
    [report.front ? 'Person, %' : 'Body, %', frame => records.humanRatio(frame)],
    ['Boxes', frame => report.personCount(frame)],
    ['ver', frame => records.ver(frame)],
  ];
  if (!report.front) columns.push(['Grid cells', frame => countSet(records.grid(frame))]);
  for (const {name, figures} of faceFigures(report, records)) columns.push(...faceColumns(name, figures));
  columns.push(
      ['Network, ms', frame => time(frames.network_ms[frame])],
      ['Library, ms', frame => time(report.libraryMs(frame))]);
  return columns;
}

function faceColumns(name, figures) {
  const channel = c => frame => {
    const found = figures[frame]?.channels?.[c];
    if (!found) return '–';
    const [mean, low, high] =
        [found.mean, found.low, found.high].map(value => c === 0 ? wrapDegrees(value) : value);
    return `${mean} (${low}–${high})`;
  };
  return [
    [`${name} luma`, frame => figures[frame]?.luma ?? '–'], [`${name} H`, channel(0)],
    [`${name} S`, channel(1)], [`${name} V`, channel(2)]
  ];
}
