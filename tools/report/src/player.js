// The frame in view. Everything that shows a frame listens here; moves within one display refresh are told
// once.

export class Player {
  // `seconds`: the frames' own time stamps, or null. With them the film keeps its own time and `rate` is a factor, else it
  // is frames a second.
  constructor(count, range, seconds = null) {
    this.count = count;
    this.index = 0;
    this.timed = rising(seconds);
    this.seconds_ = seconds;
    this.rate_ = this.timed ? 1 : 15;
    this.loop = false;
    this.playing = false;
    this.range_ = range;
    this.frameListeners_ = [];
    this.playListeners_ = [];
    this.told_ = false;
  }

  onFrame(listener) { this.frameListeners_.push(listener); }
  onPlay(listener) { this.playListeners_.push(listener); }

  get rate() { return this.rate_; }
  set rate(rate) {
    this.rate_ = rate;
    this.start_();
  }

  go(index) {
    const next = Math.min(Math.max(Math.round(index), 0), this.count - 1);
    this.start_(next);
    this.show_(next);
  }

  tell() {
    if (this.told_) return;
    this.told_ = true;
    requestAnimationFrame(() => {
      this.told_ = false;
      for (const listener of this.frameListeners_) listener(this.index);
    });
  }

  toggle() { this.playing ? this.stop() : this.play(); }

  play() {
    const [from, to] = this.range_.frames;
    if (from >= to) return;
    if (this.index < from || this.index >= to) this.go(from);
    this.setPlaying_(true);
    this.start_();
    this.tick_();
  }

  stop() {
    cancelAnimationFrame(this.timer_);
    this.setPlaying_(false);
  }

  // Frames go by as the clock says: those that cannot be drawn in time are passed over.
  tick_() {
    this.timer_ = requestAnimationFrame(() => {
      const [from, to] = this.range_.frames;
      const time = this.startTime_ + (performance.now() - this.startClock_) / 1000 * this.rate;
      if (time < this.time_(to) + this.lastFor_(to)) {
        let next = this.index;
        while (next < to && this.time_(next + 1) <= time) ++next;
        this.show_(next);
      } else if (this.loop) {
        this.go(from);
      } else {
        this.show_(to);
        return this.stop();
      }
      this.tick_();
    });
  }

  // A range that loops shows its last frame as long as the one before; else the film ends with it.
  lastFor_(to) { return this.loop ? this.time_(to) - this.time_(to - 1) : 0; }

  // From here on the clock counts anew.
  start_(index = this.index) {
    this.startTime_ = this.time_(index);
    this.startClock_ = performance.now();
  }

  show_(next) {
    if (next === this.index) return;
    this.index = next;
    this.tell();
  }

  time_(index) { return this.timed ? this.seconds_[Math.max(index, 0)] : index; }

  setPlaying_(playing) {
    this.playing = playing;
    for (const listener of this.playListeners_) listener(playing);
  }
}

// A source that passes more than once, or lacks some of its stamps, has no time of its own.
const rising = seconds => seconds !== null && seconds.every((time, at) => time !== null && (at === 0 || time > seconds[at - 1]));
