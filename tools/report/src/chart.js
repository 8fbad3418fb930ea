// One time line: a uPlot chart with our colours, the frame in view as a line across it, events as ticks at
// its top, and the figures at the pointer (or of the frame in view) written above it.
import uPlot from 'uplot';

import {chartPicture} from './chart_picture.js';
import {h, icon} from './dom.js';
import {knownKind} from './events.js';
import {saveCanvas} from './save.js';
import {spread} from './stats.js';
import {offTheme, onTheme, themed} from './theme.js';

const kHeight = 168;
const kClickReach = 3;  // a press that moves further is a zoom
const kSyncKey = 'frames';
const kFont = '11px ui-sans-serif, system-ui, -apple-system, "Segoe UI", Roboto, sans-serif';
const kWholeStep =
    [1, 2, 5, 10, 20, 25, 50, 100, 200, 250, 500, 1000, 2000, 2500, 5000, 10000, 20000, 50000, 100000];

// `definition`: title, unit, series [{label, values, colour, dash, stepped, hidden, format}], bands [{low,
// high, colour}] (places in series), lines [{value, label, colour, dash}], format, floor, ceiling.
export class Chart {
  constructor(report, player, definition) {
    this.report_ = report;
    this.player_ = player;
    this.definition_ = definition;
    this.readouts_ = h('div', {class: 'readouts'});
    this.note_ = definition.statistics ? h('p', {class: 'quiet chart-note'}) : null;
    this.host_ = h('div', {class: 'plot', role: 'img', 'aria-label': this.summary_()});
    this.element =
        h('figure', {class: 'chart'},
          h('figcaption', {},
            h('h3', {}, definition.title,
              definition.unit ? h('span', {class: 'aside'}, definition.unit) : null),
            this.readouts_, this.saveButton_()),
          this.host_, this.note_);
    this.cursor_ = h('div', {class: 'here', 'aria-hidden': 'true'});
    this.observer_ = new ResizeObserver(() => this.fit_());
    this.observer_.observe(this.host_);
    this.recolour_ = () => this.plot_?.redraw(false);
    onTheme(this.recolour_);
    this.follow_ = () => this.zoom_();
    report.range.onChange(this.follow_);
    report.eventFilter.onChange(this.recolour_);
    this.measure_();
  }

  dispose() {
    this.observer_.disconnect();
    offTheme(this.recolour_);
    this.report_.range.drop(this.follow_);
    this.report_.eventFilter.drop(this.recolour_);
    this.plot_?.destroy();
    this.plot_ = null;
  }

  show(frame) {
    this.frame_ = frame;
    if (!this.plot_) return;
    const at = this.plot_.valToPos(frame, 'x');
    this.cursor_.hidden = !(at >= -0.5 && at <= this.plot_.over.clientWidth + 0.5);
    this.cursor_.style.transform = `translateX(${Math.round(at)}px)`;
    this.read_(this.plot_.cursor.idx ?? frame);
  }

  // Other values, labels and colours for as many series.
  define({series, bands}) {
    this.definition_ = {...this.definition_, series, bands};
    this.measure_();
    if (this.plot_) this.plot_.setData(this.data_());
    this.show(this.frame_ ?? 0);
  }

  saveButton_() {
    const {title} = this.definition_, text = `Save the chart: ${title}`;
    return h(
        'button', {
          type: 'button',
          class: 'icon-button save-chart',
          'aria-label': text,
          title: text,
          onclick: () => saveCanvas(
              this.report_, `${title.toLowerCase().replace(/ /g, '_')}.png`, chartPicture(this.plot_, this.definition_))
        },
        icon('save'));
  }

  // Statistics and lines are those of the range.
  measure_() {
    const {statistics, series} = this.definition_;
    const [from, to] = this.report_.range.frames;
    this.host_.setAttribute('aria-label', this.summary_());
    if (!statistics) return;
    const {note, lines} = statistics(series[0].values.slice(from, to + 1));
    this.note_.textContent = note;
    this.lines_ = lines;
  }

  zoom_() {
    this.measure_();
    if (this.plot_) this.plot_.setScale('x', this.window_());
  }

  summary_() {
    const [from, to] = this.report_.range.frames;
    const parts = this.definition_.series.filter(series => !series.hidden).map(series => {
      const found = spread(series.values.slice(from, to + 1));
      const write = this.writer_(series);
      return found ? `${series.label} ${write(found.min)} to ${write(found.max)}, mean ${write(found.mean)}` :
                     `${series.label} not measured`;
    });
    return `${this.definition_.title}: ${parts.join('; ')}. The table below has every frame.`;
  }

  writer_(series) {
    return series.format ?? this.definition_.format ?? (value => `${Math.round(value * 10) / 10}`);
  }

  whole_() {
    const last = this.report_.count - 1;
    return last === 0 ? {min: -0.5, max: 0.5} : {min: 0, max: last};
  }

  data_() {
    return [
      Array.from({length: this.report_.count}, (_, frame) => frame),
      ...this.definition_.series.map(series => series.values)
    ];
  }

  fit_() {
    const width = this.host_.clientWidth;
    if (width === 0) return;
    if (!this.plot_)
      this.make_(width);
    else if (this.plot_.width !== width)
      this.plot_.setSize({width, height: kHeight});
  }

  make_(width) {
    this.plot_ = new uPlot(this.options_(width), this.data_(), this.host_);
    this.plot_.over.append(this.cursor_);
    this.listenToClicks_(this.plot_.over);
  }

  options_(width) {
    const {series, bands = [], statistics} = this.definition_;
    const frames = {values: (plot, splits) => splits.map(frame => this.number_(frame))};
    const figures = {values: (plot, splits) => splits.map(value => this.tick_(value))};
    const fill = (band, at) =>
        ({series: [band.high + 1, band.low + 1], fill: () => themed(this.definition_.bands[at].colour)});
    return {
      width,
      height: kHeight,
      padding: [12, statistics ? 44 : 10, 0, 0],
      legend: {show: false},
      cursor: {
        y: false,
        sync: {key: kSyncKey, setSeries: false},
        drag: {x: true, y: false, dist: kClickReach + 1},
        points: {size: 7},
      },
      scales: {
        x: {time: false, range: (plot, min, max) => this.chosen_(min, max)},
        y: {range: (plot, min, max) => this.height_(min, max)},
      },
      axes: [
        this.axis_({space: 64, size: 30, incrs: kWholeStep, ...frames}),
        this.axis_({space: 32, size: 46, ...figures}),
      ],
      series: [{}, ...series.map((one, at) => this.seriesOptions_(one, at))],
      bands: bands.map(fill),
      hooks: {
        drawClear: [plot => this.drawMarks_(plot)],
        setCursor: [plot => this.read_(plot.cursor.idx ?? this.frame_ ?? 0)],
        // Not earlier: until it draws, the plot has no size that the frame's line could be placed in.
        draw: [() => this.show(this.frame_ ?? this.player_.index)],
      },
    };
  }

  axis_(more) {
    const line = {stroke: () => themed('--chart-grid'), width: 1};
    return {font: kFont, stroke: () => themed('--muted'), grid: line, ticks: {...line, size: 4}, ...more};
  }

  tick_(value) {
    return this.definition_.tick ? this.definition_.tick(value) : `${Math.round(value * 100) / 100}`;
  }
  number_(frame) {
    return Number.isInteger(frame) && frame < this.report_.count ? this.report_.label(frame) : '';
  }

  // Colours are asked for at each drawing: they change with the theme, and with whom the chart is about.
  seriesOptions_(series, at) {
    const colour = () => themed(this.definition_.series[at].colour);
    return {
      label: series.label,
      width: series.hidden ? 0 : 1.6,
      stroke: () => series.hidden ? 'transparent' : colour(),
      dash: series.dash,
      spanGaps: false,
      paths: series.stepped ? uPlot.paths.stepped({align: 1}) : undefined,
      points: series.hidden ?
          {show: false} :
          {size: 5, fill: colour, show: this.report_.count <= 2 ? true : undefined},
    };
  }

  window_() {
    const {range} = this.report_, {min, max} = this.whole_();
    return range.whole ? {min, max} : {min: range.frames[0], max: range.frames[1]};
  }

  // A drag, of which uPlot asks here, chooses the range for the whole page; a double click ends it.
  chosen_(min, max) {
    if (this.plot_ && max > min) this.report_.range.set(min, max);
    const window = this.window_();
    return [window.min, window.max];
  }

  height_(min, max) {
    const {floor, ceiling} = this.definition_, lines = this.lines_ ?? [], zoomed = !this.report_.range.whole;
    let low = Math.min(min ?? Infinity, ...lines.map(line => line.value));
    let high = Math.max(max ?? -Infinity, ...lines.map(line => line.value));
    if (!Number.isFinite(low) || !Number.isFinite(high)) [low, high] = [0, 1];
    const room = Math.max((high - low) * 0.12, this.definition_.leastRoom ?? 0.5);
    if (floor === undefined)
      low -= room;
    else
      low = zoomed ? Math.max(low - room, Math.min(floor, low)) : Math.min(floor, low);
    high += room;
    return [low, ceiling === undefined ? high : Math.min(Math.max(high, low + 1), ceiling)];
  }

  drawMarks_(plot) {
    const {ctx, bbox} = plot;
    const sharp = devicePixelRatio;
    ctx.save();
    for (const {index, kind} of this.report_.events) {
      const x = plot.valToPos(index, 'x', true);
      if (x < bbox.left - 1 || x > bbox.left + bbox.width + 1) continue;
      ctx.fillStyle = themed(`--event-${knownKind(kind)}`);
      ctx.globalAlpha = 0.3;
      ctx.fillRect(x - 0.5 * sharp, bbox.top, sharp, bbox.height);
      ctx.globalAlpha = 1;
      ctx.beginPath();
      ctx.moveTo(x - 4 * sharp, bbox.top - 8 * sharp);
      ctx.lineTo(x + 4 * sharp, bbox.top - 8 * sharp);
      ctx.lineTo(x, bbox.top - 1 * sharp);
      ctx.fill();
    }
    this.drawLines_(plot, sharp);
    ctx.restore();
  }

  // Lines across with their labels at the right, the important ones first; a label that would lie on an
  // earlier one is left out, since the figures stand below the chart anyway.
  drawLines_(plot, sharp) {
    const {ctx, bbox} = plot;
    const written = [];
    ctx.font = kFont.replace('11px', `${11 * sharp}px`);
    ctx.textAlign = 'left';
    ctx.textBaseline = 'middle';
    ctx.lineWidth = sharp;
    for (const {value, label, colour, dash} of this.lines_ ?? []) {
      const y = plot.valToPos(value, 'y', true);
      if (y < bbox.top - 1 || y > bbox.top + bbox.height + 1) continue;
      ctx.strokeStyle = ctx.fillStyle = themed(colour);
      ctx.setLineDash((dash ?? []).map(length => length * sharp));
      ctx.beginPath();
      ctx.moveTo(bbox.left, y);
      ctx.lineTo(bbox.left + bbox.width, y);
      ctx.stroke();
      if (written.some(other => Math.abs(other - y) < 13 * sharp)) continue;
      written.push(y);
      ctx.fillText(label, bbox.left + bbox.width + 4 * sharp, y);
    }
    ctx.setLineDash([]);
  }

  read_(frame) {
    const items = this.definition_.series.filter(series => !series.hidden).map(series => {
      const value = series.values[frame];
      const patch = h('span', {class: 'key', 'aria-hidden': 'true'});
      patch.style.background = series.colour.startsWith('--') ? `var(${series.colour})` : series.colour;
      const text = value === null || value === undefined ? '–' : this.writer_(series)(value, frame);
      return h('span', {class: 'readout'}, patch, series.label, h('b', {}, text));
    });
    this.readouts_.replaceChildren(...items);
  }

  listenToClicks_(over) {
    let pressed = 0;
    over.addEventListener('mousedown', event => {
      pressed = event.clientX;
    });
    over.addEventListener('click', event => {
      if (Math.abs(event.clientX - pressed) > kClickReach) return;
      this.player_.go(this.plot_.posToVal(event.clientX - over.getBoundingClientRect().left, 'x'));
    });
  }
}
