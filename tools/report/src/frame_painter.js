// Draws a frame as the library saw it, with what it found laid over. One painter serves the large view, the
// thumbs and the views of a comparison.
import {differingCells} from './difference.js';
import {analysedShare, cellLayer, labelLayer, mapExtent} from './label_map.js';
import {Pictures} from './pictures.js';
import {kGridColumns, kGridRows} from './records.js';

export const kDifferenceColour = '#ff2d95';
const kFaceColour = '#ffffff';
const kBoxColour = '#f0e442';
const kGridColour = '#ffffff';
const kKeptLayers = 32;

const kWhole = {
  scale: 1,
  x: 0,
  y: 0
};

const sameBox = (a, b) => a.every((value, i) => value === b[i]);

export class FramePainter {
  constructor(report) {
    this.report_ = report;
    this.pictures_ = new Pictures(report.data.pictures);
    this.baselinePictures_ = new Pictures(report.data.baseline?.pictures ?? []);
    this.layers_ = new Map();
  }

  // Makes the frame's picture ready; true when it can be drawn at once.
  ready(frame, side) {
    const [pictures, index] = this.place_(frame, side);
    return index === null || pictures.get(index) !== null;
  }
  load(frame, side) {
    const [pictures, index] = this.place_(frame, side);
    return index === null ? Promise.resolve(null) : pictures.load(index);
  }

  // The frame's picture when it is ready, else null.
  image(frame, side) {
    const [pictures, index] = this.place_(frame, side);
    return index === null ? null : pictures.get(index);
  }

  // `show`: labels (opacity, 0 for none), faces, boxes, grid; `side`: 'current', 'baseline' or 'difference'; `zoom`:
  // the part of the frame to draw.
  paint(canvas, frame, show, side = 'current', zoom = kWhole) {
    const context = canvas.getContext('2d');
    const {width, height} = canvas;
    context.setTransform(zoom.scale, 0, 0, zoom.scale, -zoom.x * zoom.scale * width, -zoom.y * zoom.scale * height);
    const geometry = this.report_.geometry(frame);
    const view = {
      context,
      width,
      height,
      frame,
      geometry,
      show,
      side,
      scale: width / geometry.width,
      down: height / geometry.height,
      line: Math.max(Math.max(width, height) / 420, 1) / zoom.scale
    };
    this.picture_(view);
    this.labelMap_(view);
    this.hatch_(view);
    if (show.grid) this.grid_(view);
    if (show.faces) this.rectangles_(view, this.cameraFaces_(frame, side), kFaceColour, true);
    if (show.boxes) this.boxes_(view);
    context.resetTransform();
  }

  place_(frame, side) {
    const {report_: report} = this;
    const own = side === 'baseline' ? report.baseline.pictureFrame(frame) : null;
    if (own !== null) return [this.baselinePictures_, report.baseline.picture[own]];
    const at = report.pictureFrame(frame);
    return [this.pictures_, at === null ? null : report.frames.picture[at]];
  }

  picture_({context, width, height, frame, side}) {
    const image = this.image(frame, side);
    context.globalAlpha = 1;
    context.fillStyle = '#20242c';
    context.fillRect(0, 0, width, height);
    if (!image) return;
    context.imageSmoothingQuality = 'high';
    context.drawImage(image, 0, 0, width, height);
    if (side !== 'difference') return;
    // Grey and darker, so that the marked cells are the only colour.
    context.globalCompositeOperation = 'saturation';
    context.fillStyle = '#808080';
    context.fillRect(0, 0, width, height);
    context.globalCompositeOperation = 'source-over';
    context.fillStyle = 'rgb(0 0 0 / 0.45)';
    context.fillRect(0, 0, width, height);
  }

  labelMap_({context, width, height, frame, geometry, show, side}) {
    if (show.labels <= 0 && side !== 'difference') return;
    const layer = this.layer_(frame, side);
    if (!layer) return;
    const [across, down] = mapExtent(geometry);
    context.globalAlpha = side === 'difference' ? 1 : show.labels;
    context.imageSmoothingEnabled = side !== 'difference';
    context.drawImage(layer, 0, 0, width * across, height * down);
    context.imageSmoothingEnabled = true;
    context.globalAlpha = 1;
  }

  hatch_({context, width, height, geometry, line}) {
    const top = height * analysedShare(geometry);
    if (top >= height || geometry.segFactor === 0) return;
    const region = new Path2D();
    region.rect(0, top, width, height - top);
    context.save();
    context.clip(region);
    context.fillStyle = 'rgb(0 0 0 / 0.45)';
    context.fillRect(0, top, width, height - top);
    context.beginPath();
    for (let x = top - height; x < width; x += 6 * line) {
      context.moveTo(x, height);
      context.lineTo(x + height - top, top);
    }
    context.strokeStyle = 'rgb(255 255 255 / 0.6)';
    context.lineWidth = 0.6 * line;
    context.stroke();
    context.restore();
  }

  layer_(frame, side) {
    const key = `${side} ${frame}`;
    if (!this.layers_.has(key)) {
      if (this.layers_.size >= kKeptLayers) this.layers_.delete(this.layers_.keys().next().value);
      this.layers_.set(key, this.makeLayer_(frame, side));
    }
    return this.layers_.get(key);
  }

  makeLayer_(frame, side) {
    const geometry = this.report_.geometry(frame);
    const current = side === 'baseline' ? null : this.report_.labels(frame);
    const baseline = side === 'current' ? null : this.report_.baselineLabels(frame);
    if (side === 'difference') {
      const cells = differingCells(current, baseline);
      return cells && cellLayer(cells, geometry, kDifferenceColour);
    }
    const map = current ?? baseline;
    const colours = this.report_.data.labels.map(label => label.color);
    return map && labelLayer(map, geometry, colours, this.report_.front);
  }

  cameraFaces_(frame, side) {
    const faces = side === 'baseline' ? this.report_.baseline.cameraFaces : null;
    return faces?.[frame] ?? this.report_.frames.camera_faces[frame];
  }

  boxes_(view) {
    const baseline = this.report_.baseline?.boxes?.[view.frame] ?? [];
    if (view.side === 'difference') this.rectangles_(view, baseline, kBoxColour, true);
    if (view.side === 'baseline') return this.rectangles_(view, baseline, kBoxColour, false);
    const faces = this.report_.faceBoxes(view.frame);
    const others = this.report_.boxes(view.frame).filter(box => !faces.some(face => sameBox(face, box)));
    this.rectangles_(view, others, kBoxColour, false);
    faces.forEach((box, block) => this.person_(view, box, this.report_.faces.id(view.frame, block)));
  }

  // A measured face with its number.
  person_(view, box, id) {
    const {context, scale, down, line} = view, colour = this.report_.faces.colour(id);
    this.rectangles_(view, [box], colour, false);
    const size = 10 * line, text = `${id + 1}`;
    context.font = `700 ${size}px system-ui, sans-serif`;
    context.textBaseline = 'middle';
    const wide = context.measureText(text).width + 0.7 * size, [x, y] = [box[0] * scale, box[1] * down];
    context.fillStyle = colour;
    context.fillRect(x, y, wide, 1.4 * size);
    context.fillStyle = '#ffffff';
    context.fillText(text, x + 0.35 * size, y + 0.75 * size);
  }

  rectangles_({context, scale, down, line}, boxes, colour, dashed) {
    for (const [x, y, w, h] of boxes) {
      const place = [x * scale, y * down, w * scale, h * down];
      context.setLineDash([]);
      context.strokeStyle = 'rgb(0 0 0 / 0.4)';
      context.lineWidth = 1.9 * line;
      context.strokeRect(...place);
      context.setLineDash(dashed ? [5 * line, 3.5 * line] : []);
      context.strokeStyle = colour;
      context.lineWidth = 1.1 * line;
      context.strokeRect(...place);
    }
    context.setLineDash([]);
  }

  // It spans the whole label map, of which on a portrait frame a part lies beside the picture.
  grid_({context, width, height, frame, geometry, side, line}) {
    const records = side === 'baseline' ? this.report_.baseline.records : this.report_.records;
    if (frame >= records.count) return;
    const cells = records.grid(frame);
    const [wide, tall] = mapExtent(geometry), across = width * wide / kGridColumns, down = height * tall / kGridRows;
    context.lineWidth = 0.5 * line;
    context.strokeStyle = kGridColour;
    for (let i = 0; i < cells.length; ++i) {
      const place = [(i % kGridColumns) * across, Math.floor(i / kGridColumns) * down, across, down];
      context.globalAlpha = 0.22;
      context.strokeRect(...place);
      if (!cells[i]) continue;
      context.globalAlpha = 0.38;
      context.fillStyle = kGridColour;
      context.fillRect(...place);
    }
    context.globalAlpha = 1;
  }
}
