// The analysed run: the page's data with what is derived from it. Frames are counted by their place in the
// run; their number in the source is only shown.
import {bytesOf, unpackRuns} from './bytes.js';
import {differenceOf} from './difference.js';
import {Events} from './events.js';
import {FaceOrder} from './face_order.js';
import {clock} from './format.js';
import {Range} from './range.js';
import {kMeasuredBlocks, Records} from './records.js';

const kFormat = 'morvale-report';
const kVersion = 2;
const kKeptMaps = 64;

export class Report {
  constructor(data) {
    if (data.format !== kFormat || data.version !== kVersion)
      throw new Error(`this page shows ${kFormat} ${kVersion}, not ${data.format} ${data.version}`);
    this.data = data;
    this.frames = data.frames;
    this.count = data.frames.number.length;
    this.front = data.camera === 'front';
    this.passes_ = passesOf(data.frames.number);
    this.repeated = this.count > 0 && this.passes_[this.count - 1] > 1;
    this.records = new Records(data.records);
    this.pictureFrames_ = framesWithPicture(data.frames.picture);
    this.maps_ = new Map();
    this.log = data.log.map(([frame, place]) => [frame, data.log_lines[place][0], data.log_lines[place].slice(1)]);
    this.logStart_ = firstLines(this.log, this.count);
    this.baseline = data.baseline ? new Baseline(data.baseline, this.front) : null;
    this.difference = this.baseline ? differenceOf(this) : null;
    this.faces = new FaceOrder(this);
    this.alwaysSluggish = mostly(this, frame => this.sluggish(frame));
    this.eventFilter = new Events(this);
    this.range = new Range(this.count);
  }

  // A frame's number in its source. Where the source passed more than once, `label` says in which pass.
  number(frame) { return this.frames.number[frame]; }
  label(frame) { return this.repeated ? `${this.number(frame)} (${this.passes_[frame]})` : `${this.number(frame)}`; }
  title(frame) {
    if (this.frames.name) return this.frames.name[frame];
    const time = this.time(frame);
    return `Frame ${this.number(frame)}${this.repeated ? `, pass ${this.passes_[frame]}` : ''}${time && ` · ${time}`}`;
  }

  // The film's own time stamp; null and '' where the source has none.
  seconds(frame) { return this.frames.seconds?.[frame] ?? null; }
  time(frame) {
    const seconds = this.seconds(frame);
    return seconds === null ? '' : clock(seconds);
  }

  // What an address says of a frame, behind its #.
  place(frame) { return `frame=${this.number(frame)}${this.passes_[frame] > 1 ? `&pass=${this.passes_[frame]}` : ''}`; }

  // The frame of a number and a pass, or -1.
  find(number, pass = 1) {
    return this.frames.number.findIndex((own, frame) => own === number && this.passes_[frame] === pass);
  }
  geometry(frame) { return this.data.geometries[this.frames.geometry[frame]]; }
  // The library's person boxes and their number; a recording on its own does not tell them on the front
  // camera: none to draw, and a number of null.
  boxes(frame) { return this.frames.boxes[frame] ?? []; }
  get boxesKnown() {
    return [this.frames.boxes, this.baseline?.boxes ?? []].flat().some(boxes => boxes !== null);
  }
  personCount(frame) { return this.frames.boxes[frame]?.length ?? null; }

  // Where the measured faces lie, block by block; empty where that is not known.
  faceBoxes(frame) {
    const count = this.measuredFaces(frame);
    const given = this.frames.face_boxes?.[frame] ?? this.boxes(frame).slice(0, count);
    return given.length < count ? [] : given;
  }

  // In their order, as far as they are shown.
  get events() { return this.eventFilter.shown; }

  gated(frame) { return this.frames.gated[frame] !== 0; }
  failed(frame) { return this.frames.process[frame] !== 0; }
  // Whether the record tells about this very frame: a gated frame clears it, a failed one leaves an older
  // map's.
  analysed(frame) { return !this.gated(frame) && !this.failed(frame); }
  sluggish(frame) {
    const time = this.frames.network_ms[frame];
    return time !== null && Math.floor(time) >= this.data.sluggish_ms;
  }

  // What humanRatio counts: every person cell on the front camera, the body alone on the back camera.
  get shareOf() { return this.front ? 'person' : 'body'; }

  measuredFaces(frame) {
    return this.front ? Math.min(Math.max(this.records.ver(frame), 0), kMeasuredBlocks) : 0;
  }

  // The library's own time, without the network's run; null where it is not known. A recording that answers
  // for the network may bring that network's times: where they exceed the whole call, they are of another
  // run.
  libraryMs(frame) {
    const {process_ms, network_ms, analysis_ms} = this.frames;
    const process = process_ms[frame], network = network_ms[frame] ?? 0, analysis = analysis_ms[frame];
    return process === null || analysis === null || network > process ? null : process - network + analysis;
  }

  // One figure of every frame, null where `of` knows none or the frame was not analysed.
  series(of) {
    return Array.from({length: this.count}, (_, frame) => this.analysed(frame) ? of(frame) ?? null : null);
  }

  // The winning label of every cell, or null where the frame has no map.
  labels(frame) { return this.kept_(`${frame}`, () => this.unpack_(this.data.label_runs[frame], frame)); }
  baselineLabels(frame) {
    return this.kept_(`baseline ${frame}`, () => this.unpack_(this.baseline.labelRuns[frame], frame));
  }

  // The last frame up to this one that has a picture; before the first, the first. null without pictures.
  pictureFrame(frame) {
    const at = this.pictureFrames_[frame];
    return at < 0 ? null : at;
  }

  // Log lines of a frame: their range in `log`, whose lines are [frame, priority, text].
  logRange(frame) { return [this.logStart_[frame], this.logStart_[frame + 1]]; }

  unpack_(runs, frame) {
    const {netSize, segFactor} = this.geometry(frame);
    return runs ? unpackRuns(bytesOf(runs), netSize * segFactor) : null;
  }

  kept_(key, make) {
    if (!this.maps_.has(key)) {
      if (this.maps_.size >= kKeptMaps) this.maps_.delete(this.maps_.keys().next().value);
      this.maps_.set(key, make());
    }
    return this.maps_.get(key);
  }
}

class Baseline {
  constructor({name, records, label_runs, boxes, camera_faces, picture, other_pixels}, front) {
    this.name = name;
    this.records = new Records(records);
    this.labelRuns = label_runs;
    // The back camera's record has the library's one box; the front camera's has none.
    this.boxes = boxes ?? (front ? null : Array.from({length: this.records.count}, (_, frame) => this.box_(frame)));
    this.cameraFaces = camera_faces;
    this.otherPixels_ = picture ? other_pixels : [];
    this.picture = picture;
    this.pictureFrames_ = picture ? framesWithPicture(picture) : [];
  }

  // The frame of its own picture to show; null where the current run's is the same.
  pictureFrame(frame) { return this.otherPixels_[frame] && this.pictureFrames_[frame] >= 0 ? this.pictureFrames_[frame] : null; }

  box_(frame) {
    const box = this.records.personBox(frame);
    return box ? [box] : [];
  }

  has(frame) { return frame < this.records.count; }
}

const kMostly = 0.5, kEnough = 3;  // of the frames that asked the network

function mostly({frames, count}, is) {
  const asked = Array.from({length: count}, (_, frame) => frame).filter(frame => frames.network_ms[frame] !== null);
  return asked.length >= kEnough && asked.filter(is).length > kMostly * asked.length;
}

// A source's numbers rise; where they do not, it passes once more.
function passesOf(numbers) {
  let pass = 1;
  return Int32Array.from(
      numbers, (number, frame) => frame > 0 && number <= numbers[frame - 1] ? ++pass : pass);
}

function framesWithPicture(pictures) {
  let last = pictures.findIndex(picture => picture !== null);
  return Int32Array.from(pictures, (picture, frame) => {
    if (picture !== null) last = frame;
    return last;
  });
}

// Where each frame's lines begin in the log, which is in the order of the frames; one entry more for the end.
function firstLines(log, frames) {
  const start = new Int32Array(frames + 1);
  let line = 0;
  for (let frame = 0; frame <= frames; ++frame) {
    while (line < log.length && log[line][0] < frame) ++line;
    start[frame] = line;
  }
  return start;
}
