// The frames' pictures, decoded when they are wanted; the few last used stay decoded.

const kKept = 48;

export class Pictures {
  constructor(base64) {
    this.base64_ = base64;
    this.ready_ = new Map();  // in the order of use
    this.pending_ = new Map();
  }

  // The decoded picture, or null when it is not at hand.
  get(index) {
    const image = this.ready_.get(index);
    if (image) this.keep_(index, image);
    return image ?? null;
  }

  // Decodes a picture; null when it cannot be.
  load(index) {
    const image = this.get(index);
    if (image) return Promise.resolve(image);
    if (!this.pending_.has(index)) this.pending_.set(index, this.decode_(index));
    return this.pending_.get(index);
  }

  async decode_(index) {
    const image = new Image();
    image.src = `data:image/jpeg;base64,${this.base64_[index]}`;
    try {
      await image.decode();
      this.keep_(index, image);
      return image;
    } catch {
      return null;
    } finally {
      this.pending_.delete(index);
    }
  }

  keep_(index, image) {
    this.ready_.delete(index);
    this.ready_.set(index, image);
    if (this.ready_.size > kKept) this.ready_.delete(this.ready_.keys().next().value);
  }
}
