// The page's address names the frame in view: report.html#frame=37, or #frame=37&pass=2 when that number came for the
// second time.
import {copy} from './clipboard.js';
import {h, icon} from './dom.js';

const kRest = 350;      // ms: some browsers take a hundred addresses in 30 s, and refuse the next
const kToldFor = 1500;  // ms

export class Address {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    // By the event's own address: the page may have written another since.
    addEventListener('hashchange', event => this.follow_(new URL(event.newURL).hash));
    this.follow_(location.hash);
    player.onFrame(frame => {
      clearTimeout(this.timer_);
      this.timer_ = setTimeout(() => this.write_(frame), kRest);
    });
  }

  copyButton() {
    const text = 'Copy the address of this frame';
    const told = h('span', {class: 'told', role: 'status'});
    const copyIt = async () => {
      const done = await copy(`${location.href.replace(/#.*/, '')}#${this.report_.place(this.player_.index)}`);
      told.textContent = done ? 'Copied' : 'Not allowed';
      setTimeout(() => told.textContent = '', kToldFor);
    };
    const button =
        {type: 'button', class: 'icon-button', id: 'copy-address', 'aria-label': text, title: text, onclick: copyIt};
    return [h('button', button, icon('link')), told];
  }

  follow_(hash) {
    const match = /^#frame=(\d+)(?:&pass=(\d+))?$/.exec(hash);
    const index = match ? this.report_.find(Number(match[1]), Number(match[2] ?? 1)) : -1;
    if (index >= 0) this.player_.go(index);
  }

  write_(frame) {
    if (frame === 0 && location.hash === '') return;
    history.replaceState(null, '', `#${this.report_.place(frame)}`);
  }
}
