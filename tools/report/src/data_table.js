// The charts' figures as a table, a page of frames at a time: for reading out, for copying, and for whoever
// wants the number itself.
import {h, icon} from './dom.js';
import {marksOf} from './figures.js';
import {plural} from './format.js';
import {countSet} from './records.js';
import {saveCsv} from './save.js';
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
        h('div', {class: 'filters'}, this.earlier_, this.later_, this.range_,
          h('button', {type: 'button', class: 'plain', id: 'save-table', onclick: () => this.save_()}, icon('save'),
            'Save as CSV')),
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

  // Every frame, and each figure in a column of its own.
  save_() {
    const columns = columnsOf(this.report_).flatMap(([title, of, parts]) => parts ?? [[title, of]]);
    const rows = Array.from({length: this.report_.count}, (_, frame) => columns.map(([, of]) => of(frame) ?? ''));
    saveCsv(this.report_, 'figures.csv', [columns.map(([title]) => title), ...rows]);
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

// [title, text of a frame, columns of the file]; these, [title, value of a frame], where the text is not the value.
function columnsOf(report) {
  const {records, frames} = report;
  const time = value => value === null ? '–' : value.toFixed(3);
  const timed = (title, of) => [title, frame => time(of(frame)), [[title, of]]];
  const count = frame => report.personCount(frame);
  const columns = [
    ['Frame', frame => report.label(frame)],
    ...(frames.seconds ? [timed('Seconds', frame => report.seconds(frame))] : []),
    ['State', frame => marksOf(report, frame).map(([, text]) => text).join(', ') || 'analysed'],
    [report.front ? 'Person, %' : 'Body, %', frame => records.humanRatio(frame)],
    ['Boxes', frame => count(frame) ?? '–', [['Boxes', count]]],
    ['ver', frame => records.ver(frame)],
  ];
  if (!report.front) columns.push(['Grid cells', frame => countSet(records.grid(frame))]);
  for (const {name, figures} of faceFigures(report, records)) columns.push(...faceColumns(name, figures));
  columns.push(
      timed('Network, ms', frame => frames.network_ms[frame]), timed('Library, ms', frame => report.libraryMs(frame)));
  return columns;
}

function faceColumns(name, figures) {
  const value = (c, part, frame) => {
    const figure = figures[frame]?.channels?.[c][part];
    return c === 0 && figure !== undefined ? wrapDegrees(figure) : figure;
  };
  const channel = (title, c) => {
    const write = frame => figures[frame]?.channels ?
        `${value(c, 'mean', frame)} (${value(c, 'low', frame)}–${value(c, 'high', frame)})` :
        '–';
    const parts = [['', 'mean'], [' low', 'low'], [' high', 'high']];
    return [title, write, parts.map(([more, part]) => [title + more, frame => value(c, part, frame)])];
  };
  const luma = frame => figures[frame]?.luma;
  return [
    [`${name} luma`, frame => luma(frame) ?? '–', [[`${name} luma`, luma]]], channel(`${name} H`, 0), channel(`${name} S`, 1),
    channel(`${name} V`, 2)
  ];
}
