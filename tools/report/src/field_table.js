// The record field by field, with what changed since the frame before and, in a comparison, the baseline's
// value.
import {h, hidden} from './dom.js';
import {hex} from './format.js';

export class FieldTable {
  constructor(report) {
    this.report_ = report;
    this.rows_ = report.data.fields.map(field => this.makeRow_(field));
    this.all_ = h('input', {type: 'checkbox', role: 'switch', onchange: () => this.show(this.frame_)});
    const heads = report.baseline ? ['Baseline', 'Current', 'Difference'] : ['Value', 'Hex'];
    this.element = h(
        'div', {class: 'stack'},
        h('div', {class: 'filters'}, h('label', {class: 'switch'}, this.all_, 'Zero and unused fields too'),
          h('span', {class: 'quiet'}, hidden('Changed fields: '), h('span', {class: 'changed-key'}),
            'changed since the frame before')),
        h('div', {class: 'windowed', tabindex: 0, role: 'region', 'aria-label': 'Record by field'},
          h('table', {class: 'fields'},
            h('thead', {},
              h('tr', {}, h('th', {scope: 'col', class: 'figure'}, 'Byte'), h('th', {scope: 'col'}, 'Field'),
                heads.map(head => h('th', {scope: 'col', class: 'figure'}, head)))),
            h('tbody', {}, this.rows_.map(row => row.element)))));
  }

  makeRow_(field) {
    const cells = Array.from({length: this.report_.baseline ? 3 : 2}, () => h('td', {class: 'figure'}));
    const element =
        h('tr', {'data-offset': field.offset}, h('td', {class: 'figure quiet'}, field.offset),
          h('th', {scope: 'row'}, h('code', {}, field.name), h('small', {}, field.meaning)), cells);
    return {field, cells, element};
  }

  show(frame) {
    this.frame_ = frame;
    const {records, baseline} = this.report_;
    for (const {field, cells, element} of this.rows_) {
      const value = records.value(frame, field);
      const before = frame > 0 ? records.value(frame - 1, field) : value;
      const base = baseline?.has(frame) ? baseline.records.value(frame, field) : null;
      const differs = Boolean(baseline) && base !== value;
      const idle = field.meaning === '' || (value === 0 && before === 0);
      element.hidden = !this.all_.checked && idle && !differs;
      element.classList.toggle('changed', before !== value);
      element.classList.toggle('differs', differs);
      element.title = before === value ? '' : `${before} in the frame before`;
      if (baseline) {
        cells[0].textContent = base ?? '–';
        cells[1].textContent = value;
        cells[2].textContent = base === null ? '–' : signed(value - base);
      } else {
        cells[0].textContent = value;
        cells[1].textContent = hex(records.word(frame, field.offset / 4));
      }
    }
  }
}

const signed = difference => difference === 0 ? '' : difference > 0 ? `+${difference}` : `−${- difference}`;
