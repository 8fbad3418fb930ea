// A row of tabs after the usual keyboard pattern: arrows move between tabs, Tab goes into the panel.
import {h} from './dom.js';

// `panels`: {id, title, badge, element, show}; `badge` gives a number or null; `show` runs when a panel comes up.
export class Tabs {
  constructor(label, panels) {
    this.panels_ = panels;
    this.buttons_ = panels.map(
        panel =>
            h('button', {
              type: 'button',
              role: 'tab',
              id: `tab-${panel.id}`,
              'aria-controls': `panel-${panel.id}`,
              onclick: () => this.select(panel.id)
            },
              panel.title, panel.badge ? panel.counter = h('span', {class: 'badge'}) : null));
    for (const panel of panels) {
      panel.host =
          h('div',
            {role: 'tabpanel', id: `panel-${panel.id}`, 'aria-labelledby': `tab-${panel.id}`, class: 'panel'},
            panel.element);
    }
    this.element = h(
        'div', {class: 'tabs'},
        h('div', {role: 'tablist', 'aria-label': label, onkeydown: event => this.key_(event)}, this.buttons_),
        panels.map(panel => panel.host));
    this.count();
    this.select(panels[0].id);
  }

  // What the badges say now.
  count() {
    for (const {badge, counter} of this.panels_) {
      if (!badge) continue;
      counter.textContent = badge() ?? '';
      counter.hidden = badge() === null;
    }
  }

  get selected() { return this.selected_; }

  select(id) {
    this.panels_.forEach((panel, at) => {
      const on = panel.id === id;
      this.buttons_[at].setAttribute('aria-selected', String(on));
      this.buttons_[at].tabIndex = on ? 0 : -1;
      panel.host.hidden = !on;
      if (on) this.selected_ = panel;
    });
    this.selected_.show();
  }

  key_(event) {
    const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    if (!step) return;
    event.preventDefault();
    event.stopPropagation();  // the arrows move between tabs here, not between frames
    const count = this.buttons_.length;
    const at = (this.panels_.indexOf(this.selected_) + step + count) % count;
    this.select(this.panels_[at].id);
    this.buttons_[at].focus();
  }
}
