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
        h('button', {type: 'button', class: 'plain', hidden: true, onclick: () => report.range.clear()},
          'Whole run');
    this.where_ = h('p', {class: 'quiet', id: 'range', role: 'status'});
    this.element =
        h('section', {'aria-labelledby': 'timelines-heading'},
          h('div', {class: 'section-head'}, h('h2', {id: 'timelines-heading'}, 'Over time'),
            h('p', {class: 'quiet'}, 'Click a chart to go to that frame, drag to zoom.'), this.where_, this.reset_),
          row(this.people_), row(this.times_), this.faces_.element);
    report.range.onChange(() => this.tellRange_());
  }

  show(frame) {
    for (const chart of this.all_()) chart.show(frame);
  }

  all_() { return [...this.people_, ...this.times_, ...this.faces_.charts]; }

  tellRange_() {
    const {range} = this.report_, [from, to] = range.frames.map(frame => this.report_.label(frame));
    this.reset_.hidden = range.whole;
    this.where_.textContent = range.whole ? '' : `Frames ${from} to ${to}; figures and statistics are of these.`;
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
  const chart = (title, values, colour, limits = []) => ({
    title,
    unit: 'ms a frame',
    floor: 0,
    leastRoom: 0.05,
    format: ms,
    statistics: of => timeStatistics(of, limits),
    series: [{label: 'time', values, colour}]
  });
  const limit = {
    value: report.data.sluggish_ms,
    label: `${report.data.sluggish_ms} ms`,
    colour: '--event-failed'
  };
  const charts = [], network = networkTimes(report), library = libraryTimes(report);
  if (spread(network)) charts.push(chart('Network time', network, '--series-2', [limit]));
  if (spread(library)) charts.push(chart('Library time', library, '--series-0'));
  return charts;
}

function timeStatistics(values, limits) {
  const found = spread(values);
  return found ? {note: percentileText(found), lines: [...limits, ...percentiles(found)]} :
                 {note: 'Not measured here.', lines: limits};
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
