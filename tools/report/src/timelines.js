// The run over time: which lines are drawn of which figures.
import {Chart} from './chart.js';
import {h} from './dom.js';
import {FaceTimelines} from './face_timelines.js';
import {digitsOf, ms, plural} from './format.js';
import {countSet, kGridColumns, kGridRows} from './records.js';
import {libraryTimes, networkTimes} from './series.js';
import {spread} from './stats.js';

const kBaselineColour = '--baseline';

export class Timelines {
  constructor(report, player) {
    this.report_ = report;
    const charts = definitions => definitions.map(definition => new Chart(report, player, definition));
    this.people_ =
        charts([shareChart(report), peopleChart(report), ...(report.front ? [] : [gridChart(report)])]);
    this.times_ = charts(timeCharts(report));
    this.faces_ = new FaceTimelines(report, player);
    this.reset_ =
        h('button', {type: 'button', class: 'plain', hidden: true, onclick: () => this.resetZoom_()},
          'Whole run');
    this.element =
        h('section', {'aria-labelledby': 'timelines-heading'},
          h('div', {class: 'section-head'}, h('h2', {id: 'timelines-heading'}, 'Over time'),
            h('p', {class: 'quiet'}, 'Click a chart to go to that frame, drag to zoom.'), this.reset_),
          row(this.people_), row(this.times_), this.faces_.element);
    this.element.addEventListener('mouseup', () => requestAnimationFrame(() => this.offerReset_()));
    this.element.addEventListener('dblclick', () => requestAnimationFrame(() => this.offerReset_()));
  }

  show(frame) {
    for (const chart of this.all_()) chart.show(frame);
  }

  all_() { return [...this.people_, ...this.times_, ...this.faces_.charts]; }

  offerReset_() { this.reset_.hidden = !this.all_().some(chart => chart.zoomed); }

  resetZoom_() {
    for (const chart of this.all_()) chart.resetZoom();
    this.offerReset_();
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
    unit: 'boxes, ver',
    floor: 0,
    leastRoom: 0.6,
    series: withBaseline(report, [count, ver], ({boxes}, frame) => boxes?.[frame]?.length),
    tick: value => Number.isInteger(value) ? `${value}` : ''
  };
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
