// The label map's scores of a frame: five planes below each other in a grey PNG, which the browser unpacks.

export class Scores {
  constructor(report) {
    this.report_ = report;
    this.index_ = null;
  }

  known(frame) { return this.report_.frames.scores[frame] !== null; }

  // The five scores of a cell; null where they are not known or not unpacked yet. `ready` is called when they are.
  at(frame, column, row, ready) {
    const index = this.report_.frames.scores[frame];
    if (index === null) return null;
    if (index !== this.index_) {
      this.index_ = index;
      this.planes_ = null;
      this.unpack_(index, frame).then(ready, () => {});
    }
    if (!this.planes_) return null;
    const {netSize, segFactor} = this.report_.geometry(frame), cell = row * netSize + column;
    return this.report_.data.labels.map((_, label) => this.planes_[4 * (label * netSize * segFactor + cell)]);
  }

  async unpack_(index, frame) {
    const image = new Image();
    image.src = `data:image/png;base64,${this.report_.data.scores[index]}`;
    await image.decode();
    const {netSize, segFactor} = this.report_.geometry(frame), rows = this.report_.data.labels.length * segFactor;
    const canvas = Object.assign(document.createElement('canvas'), {width: netSize, height: rows});
    const context = canvas.getContext('2d', {willReadFrequently: true});
    context.drawImage(image, 0, 0);
    const {data} = context.getImageData(0, 0, netSize, rows);
    if (this.index_ === index) this.planes_ = data;
  }
}
