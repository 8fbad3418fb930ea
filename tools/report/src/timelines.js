// The run over time: which lines are drawn of which figures.
import {Chart} from './chart.js';
import {h} from './dom.js';
import {digitsOf, ms, plural} from './format.js';
import {countSet, kGridColumns, kGridRows} from './records.js';
import {faceFigures, libraryTimes, networkTimes, unwrapped} from './series.js';
import {spread, wrapDegrees} from './stats.js';

const kFaceColours = ['--series-0', '--series-1', '--series-2'];
const kDashes = [undefined, [7, 3], [2, 3]];
const kBaselineColour = '--baseline';

export class Timelines {
  constructor(report, player) {
    this.report_ = report;
    this.faces_ = faceFigures(report, report.records);
    this.baselineFaces_ = report.baseline ? faceFigures(report, report.baseline.records) : null;
    const charts = definitions => definitions.map(definition => new Chart(report, player, definition));
    this.people_ =
        charts([shareChart(report), peopleChart(report), ...(report.front ? [] : [gridChart(report)])]);
    this.times_ = charts(timeCharts(report));
    this.colours_ = this.faces_.length > 0 ? this.colourCharts_(player) : [];
    this.luma_ = this.faces_.length > 0 ? charts([lumaChart(this.faces_, this.baselineFaces_)]) : [];
    this.reset_ =
        h('button', {type: 'button', class: 'plain', hidden: true, onclick: () => this.resetZoom_()},
          'Whole run');
    this.element =
        h('section', {'aria-labelledby': 'timelines-heading'},
          h('div', {class: 'section-head'}, h('h2', {id: 'timelines-heading'}, 'Over time'),
            h('p', {class: 'quiet'}, 'Click a chart to go to that frame, drag to zoom.'), this.reset_),
          row(this.people_), row(this.times_), this.facesSection_());
    this.element.addEventListener('mouseup', () => requestAnimationFrame(() => this.offerReset_()));
    this.element.addEventListener('dblclick', () => requestAnimationFrame(() => this.offerReset_()));
  }

  show(frame) {
    for (const chart of this.all_()) chart.show(frame);
  }

  all_() { return [...this.people_, ...this.times_, ...this.luma_, ...this.colours_]; }

  facesSection_() {
    if (!this.report_.front) return null;
    if (this.faces_.length === 0)
      return h('p', {class: 'quiet', id: 'no-faces'}, 'No face was measured in this run.');
    return [
      h('div', {class: 'section-head minor'}, h('h3', {}, 'Faces'), this.chooser_(),
        h('p', {class: 'quiet'},
          'Trimmed means of hue, saturation and value; the bands reach from the low to the high values.')),
      h('div', {class: 'charts columns-2'}, [...this.luma_, ...this.colours_].map(chart => chart.element))
    ];
  }

  offerReset_() { this.reset_.hidden = !this.all_().some(chart => chart.zoomed); }

  resetZoom_() {
    for (const chart of this.all_()) chart.resetZoom();
    this.offerReset_();
  }

  colourCharts_(player) {
    return ['Hue', 'Saturation', 'Value'].map((title, c) => {
      const {series, bands} = this.channel_(0, c);
      const hue = c === 0;
      return new Chart(this.report_, player, {
        title,
        unit: hue ? 'degrees' : '0–255',
        series,
        bands,
        leastRoom: 2,
        tick: hue ? value => `${Math.round(wrapDegrees(value))}°` : undefined,
        format: value => hue ? `${Math.round(wrapDegrees(value))}°` : `${Math.round(value)}`
      });
    });
  }

  chooser_() {
    return h(
        'fieldset', {class: 'segments'}, h('legend', {class: 'visually-hidden'}, 'Face'),
        this.faces_.map(
            (_, face) =>
                h('label', {}, h('input', {
                    type: 'radio',
                    name: 'face',
                    value: face,
                    checked: face === 0,
                    onchange: () => this.choose_(face)
                  }),
                  h('span', {}, `Face ${face + 1}`))));
  }

  choose_(face) {
    this.colours_.forEach((chart, c) => {
      const {series, bands} = this.channel_(face, c);
      chart.setValues(series, bands);
    });
  }

  // A channel of one face: low, high and mean, and the baseline's mean. Hues are drawn on the turn of the
  // circle around their common direction, so that reds on both sides of 0 stay together.
  channel_(face, c) {
    const of = (faces, part) =>
        faces[face].map(figures => figures?.channels ? figures.channels[c][part] : null);
    const base = this.baselineFaces_?.[face];
    let lists = [of(this.faces_, 'low'), of(this.faces_, 'high'), of(this.faces_, 'mean')];
    if (base)
      lists.push(of(this.baselineFaces_, 'mean'));
    else if (this.baselineFaces_)
      lists.push(new Array(this.report_.count).fill(null));
    if (c === 0) lists = unwrapped(lists);
    const colour = '--channel';
    const series = [
      {label: 'low', values: lists[0], colour, hidden: true},
      {label: 'high', values: lists[1], colour, hidden: true}, {
        label: 'mean',
        values: lists[2],
        colour,
        format: (value, frame) => this.channelText_(face, c, value, frame)
      }
    ];
    if (lists[3]) series.push({label: 'baseline', values: lists[3], colour: kBaselineColour, dash: [4, 3]});
    return {series, bands: [{low: 0, high: 1, colour: '--channel-band'}]};
  }

  channelText_(face, c, value, frame) {
    const write = number => c === 0 ? `${Math.round(wrapDegrees(number))}°` : `${Math.round(number)}`;
    const channel = frame === undefined ? null : this.faces_[face][frame]?.channels?.[c];
    return channel ? `${write(channel.mean)} (${write(channel.low)}–${write(channel.high)})` : write(value);
  }
}

const row = charts =>
    h('div', {class: `charts columns-${charts.length}`}, charts.map(chart => chart.element));

function withBaseline(report, series, of) {
  const {baseline} = report;
  if (!baseline) return series;
  const values = report.series(frame => baseline.has(frame) ? of(baseline, frame) : null);
  return [
    ...series, {label: 'baseline', values, colour: kBaselineColour, dash: [4, 3], stepped: series[0].stepped}
  ];
}

function shareChart(report) {
  const values = report.series(frame => report.records.humanRatio(frame));
  return {
    title: report.front ? 'Person share' : 'Body share',
    unit: '% of the label map',
    floor: 0,
    ceiling: 100,
    leastRoom: 3,
    format: value => `${Math.round(value * 10) / 10} %`,
    series: withBaseline(
        report, [{label: 'humanRatio', values, colour: '--series-0'}],
        ({records}, frame) => records.humanRatio(frame))
  };
}

function peopleChart(report) {
  const count = {
    label: 'personCount',
    values: report.series(frame => report.personCount(frame)),
    colour: '--series-0',
    stepped: true
  };
  const ver = {
    label: 'ver',
    values: report.series(frame => report.records.ver(frame)),
    colour: '--series-1',
    stepped: true,
    dash: [6, 3]
  };
  return {
    title: 'People',
    unit: report.front ? 'boxes, faces measured' : 'boxes, ver',
    floor: 0,
    leastRoom: 0.6,
    series: withBaseline(report, [count, ver], ({boxes}, frame) => boxes?.[frame]?.length),
    tick: value => Number.isInteger(value) ? `${value}` : ''
  };
}

function lumaChart(faces, baselineFaces) {
  const luma = figures => figures.map(figure => figure?.luma ?? null);
  const series = faces.map((figures, face) => ({
                             label: `face ${face + 1}`,
                             values: luma(figures),
                             colour: kFaceColours[face],
                             dash: kDashes[face]
                           }));
  for (const [face, figures] of (baselineFaces ?? []).entries())
    series.push(
        {label: `baseline ${face + 1}`, values: luma(figures), colour: kBaselineColour, dash: [4, 3]});
  return {title: 'Face luma', unit: 'mean, 0–255', series, leastRoom: 4};
}

function gridChart(report) {
  const values = report.series(frame => countSet(report.records.grid(frame)));
  return {
    title: 'Occupied grid cells',
    unit: `of ${kGridColumns * kGridRows}`,
    floor: 0,
    leastRoom: 3,
    series: withBaseline(
        report, [{label: 'cells', values, colour: '--series-0'}],
        ({records}, frame) => countSet(records.grid(frame)))
  };
}

function timeCharts(report) {
  const chart = (title, note, values, colour, lines) => ({
    title,
    unit: 'ms a frame',
    note,
    floor: 0,
    leastRoom: 0.05,
    format: ms,
    lines,
    series: [{label: 'time', values, colour}]
  });
  const limit = {
    value: report.data.sluggish_ms,
    label: `${report.data.sluggish_ms} ms`,
    colour: '--event-failed'
  };
  const network = spread(networkTimes(report)), library = spread(libraryTimes(report));
  const charts = [];
  if (network)
    charts.push(chart(
        'Network time', percentileText(network), networkTimes(report), '--series-2',
        [limit, ...percentiles(network)]));
  if (library)
    charts.push(chart(
        'Library time', percentileText(library), libraryTimes(report), '--series-0', percentiles(library)));
  return charts;
}

const percentile = (value, label, dash) => ({value, label, colour: '--muted', dash});
const percentiles = ({
  p50,
  p90,
  p99
}) => [percentile(p99, 'p99', [1, 3]), percentile(p50, 'p50', [8, 4]), percentile(p90, 'p90', [4, 4])];

function percentileText({p50, p90, p99, max, count}) {
  const digits = digitsOf({max});
  const [middle, most, nearlyAll, highest] = [p50, p90, p99, max].map(value => value.toFixed(digits));
  const over = plural(count, 'frame');
  return `p50 ${middle} · p90 ${most} · p99 ${nearlyAll} · max ${highest} ms over ${over}`;
}
