// The record field by field, with what changed since the frame before and, beside another frame, both values and their
// difference.
import {h, hidden} from './dom.js';
import {hex} from './format.js';

export class FieldTable {
  constructor(report, pair) {
    this.report_ = report;
    this.pair_ = pair;
    this.rows_ = report.data.fields.map(field => this.makeRow_(field));
    const choice = id => h('input', {type: 'checkbox', role: 'switch', id, onchange: () => this.show(this.frame_)});
    this.all_ = choice('all-fields');
    this.differing_ = choice('only-differing');
    this.only_ = h('label', {class: 'switch'}, this.differing_, 'Only what differs');
    this.heads_ = Array.from({length: 3}, () => h('th', {scope: 'col', class: 'figure'}));
    this.table_ =
        h('table', {class: 'fields'},
          h('thead', {},
            h('tr', {}, h('th', {scope: 'col', class: 'figure'}, 'Byte'), h('th', {scope: 'col'}, 'Field'), this.heads_)),
          h('tbody', {}, this.rows_.map(row => row.element)));
    this.element = h(
        'div', {class: 'stack'},
        h('div', {class: 'filters'}, this.only_, h('label', {class: 'switch'}, this.all_, 'Zero and unused fields too'),
          h('span', {class: 'quiet'}, hidden('Changed fields: '), h('span', {class: 'changed-key'}),
            'changed since the frame before')),
        h('div', {class: 'windowed', tabindex: 0, role: 'region', 'aria-label': 'Record by field'}, this.table_));
  }

  makeRow_(field) {
    const cells = Array.from({length: 3}, () => h('td', {class: 'figure'}));
    const element =
        h('tr', {'data-offset': field.offset}, h('td', {class: 'figure quiet'}, field.offset),
          h('th', {scope: 'row'}, h('code', {}, field.name), h('small', {}, field.meaning)), cells);
    return {field, cells, element};
  }

  show(frame) {
    this.frame_ = frame;
    const {on} = this.pair_;
    this.only_.hidden = !on;
    this.table_.classList.toggle('paired', on);
    const heads = on ? [...this.pair_.heads, 'Difference'] : ['Value', 'Hex', ''];
    this.heads_.forEach((head, at) => head.textContent = heads[at]);
    for (const row of [...this.rows_, {cells: this.heads_}]) row.cells[2].hidden = !on;
    for (const row of this.rows_) this.fill_(row, frame, on);
  }

  fill_({field, cells, element}, frame, on) {
    const {records} = this.report_, value = records.value(frame, field);
    const before = frame > 0 ? records.value(frame - 1, field) : value;
    const base = on ? this.pair_.value(frame, field) : null, differs = on && base !== value;
    const idle = field.meaning === '' || (value === 0 && before === 0);
    element.hidden = on && this.differing_.checked ? !differs : !this.all_.checked && idle && !differs;
    element.classList.toggle('changed', before !== value);
    element.classList.toggle('differs', differs);
    element.title = before === value ? '' : `${before} in the frame before`;
    const difference = base === null ? '–' : signed(value - base);
    const texts = on ? [base ?? '–', value, difference] : [value, hex(records.word(frame, field.offset / 4)), ''];
    cells.forEach((cell, at) => cell.textContent = texts[at]);
  }
}

const signed = difference => difference === 0 ? '' : difference > 0 ? `+${difference}` : `−${- difference}`;
