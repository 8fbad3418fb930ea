// The stretch of the run that is looked at: charts zoom into it, their statistics are of it, and playback loops it.

export class Range {
  constructor(count) {
    this.last_ = count - 1;
    this.frames = [0, this.last_];
    this.listeners_ = [];
  }

  onChange(listener) { this.listeners_.push(listener); }
  drop(listener) { this.listeners_ = this.listeners_.filter(one => one !== listener); }

  get whole() { return this.frames[0] === 0 && this.frames[1] === this.last_; }
  holds(frame) { return frame >= this.frames[0] && frame <= this.frames[1]; }

  // A single frame is no stretch: the whole run, then.
  set(from, to) {
    const wanted = [Math.max(Math.ceil(from), 0), Math.min(Math.floor(to), this.last_)];
    const next = wanted[0] < wanted[1] ? wanted : [0, this.last_];
    if (next[0] === this.frames[0] && next[1] === this.frames[1]) return;
    this.frames = next;
    for (const listener of this.listeners_) listener();
  }

  begin(frame) { this.set(frame, this.frames[1]); }
  end(frame) { this.set(this.frames[0], frame); }
  clear() { this.set(0, this.last_); }
}
