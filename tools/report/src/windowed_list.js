// A long list of which a stretch around the marked rows is in the page; buttons at its ends show more. A run
// of thousands of frames logs tens of thousands of lines.
import {h} from './dom.js';

const kStretch = 300;

export class WindowedList {
  constructor(what, makeRow) {
    this.makeRow_ = makeRow;
    this.earlier_ =
        h('button', {type: 'button', class: 'more', onclick: () => this.grow_(-kStretch)}, `Earlier ${what}`);
    this.later_ =
        h('button', {type: 'button', class: 'more', onclick: () => this.grow_(kStretch)}, `Later ${what}`);
    this.rows_ = h('ol', {});
    this.empty_ = h('p', {class: 'quiet'});
    this.element =
        h('div', {class: 'windowed', tabindex: 0, role: 'region', 'aria-label': what}, this.empty_,
          this.earlier_, this.rows_, this.later_);
    this.reset(0, '');
  }

  reset(count, emptyText) {
    this.count_ = count;
    this.from_ = this.to_ = 0;
    this.marked_ = [0, 0];
    this.empty_.textContent = count === 0 ? emptyText : '';
    this.fill_(0, kStretch);
  }

  // Marks rows from..to-1 and brings them into view; an empty range shows the place where they would be.
  mark(from, to) {
    if (this.count_ === 0) return;
    const at = Math.min(from, this.count_ - 1);
    if (at < this.from_ || Math.max(to - 1, at) >= this.to_) this.fill_(at - kStretch / 2, at + kStretch / 2);
    for (let row = this.marked_[0]; row < this.marked_[1]; ++row) this.setMark_(row, false);
    for (let row = from; row < to; ++row) this.setMark_(row, true);
    this.marked_ = [from, to];
    this.scrollTo_(
        this.rows_.children[at - this.from_], this.rows_.children[Math.max(to - 1, at) - this.from_]);
  }

  setMark_(row, marked) {
    const element = this.rows_.children[row - this.from_];
    if (!element) return;
    element.classList.toggle('current', marked);
    if (marked)
      element.setAttribute('aria-current', 'true');
    else
      element.removeAttribute('aria-current');
  }

  // Scrolls the list only, never the page.
  scrollTo_(first, last) {
    const box = this.element;
    if (!first || !last || box.clientHeight === 0) return;
    const top = first.offsetTop, bottom = last.offsetTop + last.offsetHeight;
    if (top >= box.scrollTop && bottom <= box.scrollTop + box.clientHeight) return;
    box.scrollTop = top - Math.max((box.clientHeight - (bottom - top)) / 2, 0);
  }

  grow_(rows) {
    const before = this.rows_.firstElementChild, top = before ? before.offsetTop : 0;
    const [from, to] = [this.from_, this.to_];
    this.fill_(rows < 0 ? from + rows : from, rows < 0 ? to : to + rows);
    // What was in view stays where it was.
    const same = this.rows_.children[from - this.from_];
    if (same) this.element.scrollTop += same.offsetTop - top;
  }

  fill_(from, to) {
    this.from_ = Math.max(from, 0);
    this.to_ = Math.min(to, this.count_);
    this.rows_.replaceChildren(
        ...Array.from({length: this.to_ - this.from_}, (_, k) => this.makeRow_(this.from_ + k)));
    for (let row = this.marked_[0]; row < this.marked_[1]; ++row) this.setMark_(row, true);
    this.earlier_.hidden = this.from_ === 0;
    this.later_.hidden = this.to_ === this.count_;
  }
}
