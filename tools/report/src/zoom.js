// Which part of the frame the large view shows: zoomed by wheel, keys and buttons, moved by drag and keys. All views
// of a comparison show the same part.
const kMost = 24;
const kStep = 1.25;
const kKeyPan = 0.15;  // of the part in view

export class Zoom {
  constructor(onChange) {
    this.onChange_ = onChange;
    this.scale = 1;
    this.x = this.y = 0;  // the left upper corner, in shares of the frame
  }

  // The place in the frame below the pointer, in shares; outside of 0..1 beside it.
  at(canvas, {clientX, clientY}) {
    const {left, top, width, height} = canvas.getBoundingClientRect();
    return [this.x + (clientX - left) / width / this.scale, this.y + (clientY - top) / height / this.scale];
  }

  // The place keeps where it is in the view.
  by(factor, [x, y] = [this.x + 0.5 / this.scale, this.y + 0.5 / this.scale]) {
    const scale = Math.min(Math.max(this.scale * factor, 1), kMost), change = this.scale / scale;
    this.show_(scale, x - (x - this.x) * change, y - (y - this.y) * change);
  }
  in() { this.by(kStep ** 2); }
  out() { this.by(kStep ** -2); }
  fit() { this.show_(1, 0, 0); }

  // In shares of the part in view.
  pan(across, down) { this.show_(this.scale, this.x + across / this.scale, this.y + down / this.scale); }
  keyPan(across, down) { this.pan(kKeyPan * across, kKeyPan * down); }

  listen(canvas) {
    canvas.addEventListener('wheel', event => this.wheel_(canvas, event), {passive: false});
    canvas.addEventListener('dblclick', event => this.scale > 1 ? this.fit() : this.by(3, this.at(canvas, event)));
    canvas.addEventListener('pointerdown', event => {
      if (this.scale === 1 || event.button !== 0) return;
      canvas.setPointerCapture(event.pointerId);
      event.preventDefault();
    });
    canvas.addEventListener('pointermove', event => {
      if (!canvas.hasPointerCapture(event.pointerId)) return;
      this.pan(-event.movementX / canvas.clientWidth, -event.movementY / canvas.clientHeight);
    });
  }

  // A page that can be scrolled this way is: the picture must not hold up who only passes over it.
  wheel_(canvas, event) {
    const inward = event.deltaY < 0;
    const passing = !event.ctrlKey && (inward ? this.scale === 1 && scrollY > 0 : this.scale === 1);
    if (passing || event.deltaY === 0) return;
    event.preventDefault();
    this.by(inward ? kStep : 1 / kStep, this.at(canvas, event));
  }

  show_(scale, x, y) {
    const room = 1 - 1 / scale, within = value => Math.min(Math.max(value, 0), room);
    this.scale = scale;
    this.x = within(x);
    this.y = within(y);
    this.onChange_();
  }
}
