// What lies below the pointer: pixel, cell of the label map, cell of the occupancy grid; the cell's scores go into the
// legend. One line of a fixed height: a page that moved below the pointer would have it point elsewhere.
import {h} from './dom.js';
import {kCellPixels} from './label_map.js';
import {kGridColumns, kGridRows} from './records.js';
import {Scores} from './scores.js';

export class Readout {
  constructor(report, player, legend, pictureOf) {
    this.report_ = report;
    this.player_ = player;
    this.legend_ = legend;
    this.pictureOf_ = pictureOf;
    this.scores_ = new Scores(report);
    this.element = h('p', {class: 'readout-line', id: 'readout'});
    this.clear();
  }

  clear() {
    this.place_ = null;
    this.legend_.point(null, -1);
    this.element.replaceChildren(
        h('span', {class: 'quiet'}, 'Point at the picture for pixel, cell and scores; the wheel zooms.'));
  }

  // A place in shares of the frame.
  point(place) {
    const [x, y] = place;
    if (!(x >= 0 && x < 1 && y >= 0 && y < 1)) return this.clear();
    this.place_ = place;
    this.refresh();
  }

  // For the frame now in view.
  refresh() {
    if (!this.place_) return;
    const frame = this.player_.index, [x, y] = this.place_, geometry = this.report_.geometry(frame);
    const pixel = [Math.floor(x * geometry.width), Math.floor(y * geometry.height)];
    const column = Math.floor(x * geometry.shrunkWidth / kCellPixels),
          row = Math.floor(y * geometry.shrunkHeight / kCellPixels);
    const parts =
        [part('pixel', `${pixel[0]}, ${pixel[1]}`), this.colour_(frame), ...this.cell_(frame, column, row)];
    this.element.replaceChildren(...parts.filter(Boolean).flatMap(one => [one, ' ']));
  }

  cell_(frame, column, row) {
    const {report_: report} = this, map = report.labels(frame), {netSize, segFactor} = report.geometry(frame);
    const analysed = map && row < segFactor, winner = analysed ? map[row * netSize + column] : -1;
    const scores = analysed ? this.scores_.at(frame, column, row, () => this.refresh()) : null;
    this.legend_.point(scores, winner);
    if (!map) return [];
    if (!analysed) return [part('cell', `${column}, ${row}: not analysed`)];
    const parts = [part('cell', `${column}, ${row}`)];
    if (!report.front) parts.push(this.grid_(frame, column, row));
    if (!this.scores_.known(frame)) parts.push(h('span', {}, 'This frame\'s scores were left out.'));
    return parts;
  }

  grid_(frame, column, row) {
    const {netSize, segFactor} = this.report_.geometry(frame);
    const across = Math.floor(column * kGridColumns / netSize), down = Math.floor(row * kGridRows / segFactor);
    const set = this.report_.records.grid(frame)[down * kGridColumns + across];
    return part('grid', `${across}, ${down} ${set ? 'occupied' : 'free'}`);
  }

  // As the page's picture has it, which is smaller than the frame and a JPEG.
  colour_(frame) {
    const image = this.pictureOf_(frame);
    if (!image) return null;
    this.canvas_ ??= Object.assign(document.createElement('canvas'), {width: 1, height: 1});
    const context = this.canvas_.getContext('2d', {willReadFrequently: true});
    const at = (share, size) => Math.min(Math.floor(share * size), size - 1);
    context.drawImage(
        image, at(this.place_[0], image.naturalWidth), at(this.place_[1], image.naturalHeight), 1, 1, 0, 0, 1, 1);
    const [red, green, blue] = context.getImageData(0, 0, 1, 1).data;
    const patch = h('i', {class: 'patch', 'aria-hidden': 'true'});
    patch.style.background = `rgb(${red} ${green} ${blue})`;
    return h('span', {title: 'As in this page\'s picture'}, patch, h('b', {}, `${red} ${green} ${blue}`));
  }
}

const part = (name, text) => h('span', {}, `${name} `, h('b', {}, text));
