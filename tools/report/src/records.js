// The result records: 288 bytes a frame, little-endian, read by word.
import {bytesOf} from './bytes.js';

export const kWords = 72;
const kRecordBytes = 4 * kWords;
const kBlockWords = 14;  // one element of meta, from word 2 on
export const kMeasuredBlocks = 3;
export const kGridColumns = 19;
export const kGridRows = 15;
const kGridCells = kGridColumns * kGridRows;

const blockWord = (block, word) => 2 + kBlockWords * block + word;

export class Records {
  constructor(base64) {
    const bytes = bytesOf(base64);
    this.count = Math.floor(bytes.length / kRecordBytes);
    this.view_ = new DataView(bytes.buffer);
  }

  word(frame, word) { return this.view_.getInt32(frame * kRecordBytes + 4 * word, true); }
  unsigned(frame, word) { return this.view_.getUint32(frame * kRecordBytes + 4 * word, true); }
  value(frame, field) {
    const word = field.offset / 4;
    return field.signed ? this.word(frame, word) : this.unsigned(frame, word);
  }

  ver(frame) { return this.word(frame, 0); }
  humanRatio(frame) { return this.word(frame, 1); }

  // Front camera: the figures of one block. `channels` are H, S and V with the low and the high band; a block
  // without a colour pixel has none (it is written as a hue of 360 and zeros), without a luma pixel no luma.
  face(frame, block) {
    const word = k => this.word(frame, blockWord(block, k));
    const channels = [0, 1, 2].map(c => {
      const mean = word(6 + c);
      return {mean, low: mean - word(3 + c), high: mean + word(10 + c)};
    });
    const colourless = channels[0].mean === 360 && channels[1].mean === 0 && channels[2].mean === 0;
    return {
      above200: this.unsigned(frame, blockWord(block, 0)),
      above230: this.unsigned(frame, blockWord(block, 1)),
      luma: word(2) === 0 ? null : word(2),
      channels: colourless ? null : channels,
      skinRatio: word(9),
    };
  }

  // Back camera: the person's box as [x, y, w, h]; the record has the width before the top.
  personBox(frame) {
    const [x, w, y, h] = [10, 11, 12, 13].map(k => this.word(frame, blockWord(0, k)));
    return w > 0 && h > 0 ? [x, y, w, h] : null;
  }

  resourceHint(frame) { return this.word(frame, blockWord(3, 13)); }

  // Back camera: 19 x 15 cells of 0 or 1, row by row, packed most significant bit first.
  grid(frame) {
    const cells = new Uint8Array(kGridCells);
    for (let i = 0; i < kGridCells; ++i) {
      const word = i >> 5;
      cells[i] = this.unsigned(frame, blockWord(1 + (word >> 2), 10 + (word & 3))) >>> (31 - (i & 31)) & 1;
    }
    return cells;
  }
}

export const countSet = cells => cells.reduce((sum, cell) => sum + cell, 0);
