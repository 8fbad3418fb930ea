// The frame in view. Everything that shows a frame listens here; moves within one display refresh are told
// once.

export class Player {
  constructor(count) {
    this.count = count;
    this.index = 0;
    this.perSecond = 15;
    this.playing = false;
    this.frameListeners_ = [];
    this.playListeners_ = [];
    this.told_ = false;
  }

  onFrame(listener) { this.frameListeners_.push(listener); }
  onPlay(listener) { this.playListeners_.push(listener); }

  go(index) {
    const next = Math.min(Math.max(Math.round(index), 0), this.count - 1);
    if (next === this.index) return;
    this.index = next;
    this.tell();
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
    if (this.count < 2) return;
    if (this.index === this.count - 1) this.go(0);
    this.setPlaying_(true);
    this.schedule_();
  }

  stop() {
    clearTimeout(this.timer_);
    this.setPlaying_(false);
  }

  schedule_() {
    this.timer_ = setTimeout(() => {
      this.go(this.index + 1);
      if (this.index === this.count - 1)
        this.stop();
      else
        this.schedule_();
    }, 1000 / this.perSecond);
  }

  setPlaying_(playing) {
    this.playing = playing;
    for (const listener of this.playListeners_) listener(playing);
  }
}
