// How the faces of a frame are told apart: by the person that each is, or by their place in the record. One choice for
// the whole page: names and colours of boxes, swatches, charts and columns come from here.
import {h} from './dom.js';
import {followPeople, kRule} from './people.js';
import {kMeasuredBlocks} from './records.js';

const kMostShown = 8;

export class FaceOrder {
  constructor(report) {
    this.report_ = report;
    this.people_ = report.front ? followPeople(report) : null;
    this.byPerson = this.people_ !== null;
    this.listeners_ = [];
  }

  onChange(listener) { this.listeners_.push(listener); }

  id(frame, block) { return this.byPerson ? this.people_.at(frame, block) : block; }
  name(id) { return `${this.byPerson ? 'Person' : 'Face'} ${id + 1}`; }
  colour(id) { return this.report_.data.person_colors[id % this.report_.data.person_colors.length]; }

  // The blocks of a frame, in the order of their names.
  blocks(frame) {
    return Array.from({length: this.report_.measuredFaces(frame)}, (_, block) => block)
        .sort((a, b) => this.id(frame, a) - this.id(frame, b));
  }

  // Who has charts and columns: those measured in the most frames.
  get shown() {
    if (!this.byPerson) return Array.from({length: kMeasuredBlocks}, (_, block) => block);
    const {frames} = this.people_;
    return frames.map((_, id) => id).sort((a, b) => frames[b] - frames[a]).slice(0, kMostShown).sort((a, b) => a - b);
  }
  get left() { return this.byPerson ? Math.max(this.people_.frames.length - kMostShown, 0) : 0; }

  // A pair of buttons, or nothing where there is no choice. `place` keeps the names of two such pairs apart.
  chooser(place) {
    if (!this.people_) return null;
    const option = (byPerson, text, title) => {
      const input = h('input', {
        type: 'radio',
        name: `order-${place}`,
        value: byPerson ? 'person' : 'record',
        onchange: () => this.choose_(byPerson)
      });
      const follow = () => {
        input.checked = this.byPerson === byPerson;
      };
      follow();
      this.onChange(follow);
      return h('label', {title}, input, h('span', {}, text));
    };
    return h(
        'fieldset', {class: 'segments', id: `order-${place}`}, h('legend', {class: 'visually-hidden'}, 'Faces'),
        option(true, 'By person', kRule), option(false, 'As recorded', 'In the order of the record: by size'));
  }

  choose_(byPerson) {
    this.byPerson = byPerson;
    for (const listener of this.listeners_) listener();
  }
}
