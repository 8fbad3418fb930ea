// The faces over time: luma of all of them, and hue, saturation and value of one.
import {Chart} from './chart.js';
import {h} from './dom.js';
import {plural} from './format.js';
import {kRule} from './people.js';
import {faceFigures, unwrapped} from './series.js';
import {wrapDegrees} from './stats.js';

const kDashes = [undefined, [7, 3], [2, 3]];
const kBaselineColour = '--baseline';

export class FaceTimelines {
  constructor(report, player) {
    this.report_ = report;
    this.player_ = player;
    this.charts = [];
    this.order_ = report.faces.chooser('timelines');
    this.content_ = h('div', {});
    this.element = report.front ?
        h('div', {}, h('div', {class: 'section-head minor'}, h('h3', {}, 'Faces'), this.order_), this.content_) :
        null;
    this.build_();
    report.faces.onChange(() => this.build_());
  }

  build_() {
    const {report_: report} = this;
    for (const chart of this.charts) chart.dispose();
    this.faces_ = faceFigures(report, report.records);
    this.baselineFaces_ = report.baseline ? faceFigures(report, report.baseline.records) : null;
    this.chosen_ = 0;
    this.colours_ = this.faces_.length > 0 ? this.colourCharts_() : [];
    this.charts = this.faces_.length > 0 ? [this.chart_(lumaChart(this.faces_, this.baselineFaces_)), ...this.colours_] : [];
    this.content_.replaceChildren(...this.parts_().filter(Boolean));
    for (const chart of this.charts) chart.show(this.player_.index);
  }

  parts_() {
    if (this.faces_.length === 0)
      return [h('p', {class: 'quiet', id: 'no-faces'}, 'No face was measured in this run.')];
    const {faces} = this.report_;
    const left = faces.left === 0 ? '' : ` ${plural(faces.left, 'person', 'persons')} measured in fewer frames are left out.`;
    return [
      h('div', {class: 'section-head'}, this.chooser_(),
        h('p', {class: 'quiet'},
          'Trimmed means of hue, saturation and value; the bands reach from the low to the high values.')),
      faces.byPerson ? h('p', {class: 'quiet chart-note'}, kRule + left) : null,
      h('div', {class: 'charts columns-2'}, this.charts.map(chart => chart.element))
    ];
  }

  chart_(definition) { return new Chart(this.report_, this.player_, definition); }

  colourCharts_() {
    return ['Hue', 'Saturation', 'Value'].map((title, c) => {
      const hue = c === 0;
      return this.chart_({
        title,
        unit: hue ? 'degrees' : '0–255',
        ...this.channel_(c),
        leastRoom: 2,
        tick: hue ? value => `${Math.round(wrapDegrees(value))}°` : undefined,
        format: value => hue ? `${Math.round(wrapDegrees(value))}°` : `${Math.round(value)}`
      });
    });
  }

  chooser_() {
    const choose = at => {
      this.chosen_ = at;
      this.colours_.forEach((chart, c) => chart.define(this.channel_(c)));
    };
    const options = this.faces_.map(({name, colour}, at) => {
      const dot = h('i', {class: 'dot', 'aria-hidden': 'true'});
      dot.style.background = colour;
      const input =
          h('input', {type: 'radio', name: 'face', value: at, checked: at === 0, onchange: () => choose(at)});
      return h('label', {}, input, h('span', {}, dot, name));
    });
    return h(
        'fieldset', {class: 'segments'}, h('legend', {class: 'visually-hidden'}, 'Whose hue, saturation, value'),
        options);
  }

  // A channel of the chosen face: low, high and mean, and the baseline's mean. Hues are drawn on the turn of the
  // circle around their common direction, so that reds on both sides of 0 stay together.
  channel_(c) {
    const {figures, colour} = this.faces_[this.chosen_];
    const of = (list, part) => list.map(one => one?.channels ? one.channels[c][part] : null);
    let lists = [of(figures, 'low'), of(figures, 'high'), of(figures, 'mean')];
    if (this.baselineFaces_) {
      const base = this.baselineFaces_[this.chosen_];
      lists.push(base ? of(base.figures, 'mean') : new Array(this.report_.count).fill(null));
    }
    if (c === 0) lists = unwrapped(lists);
    const series = [
      {label: 'low', values: lists[0], colour, hidden: true},
      {label: 'high', values: lists[1], colour, hidden: true},
      {label: 'mean', values: lists[2], colour, format: (value, frame) => channelText(figures, c, value, frame)}
    ];
    if (lists[3]) series.push({label: 'baseline', values: lists[3], colour: kBaselineColour, dash: [4, 3]});
    return {series, bands: [{low: 0, high: 1, colour: `${colour}2b`}]};
  }
}

function channelText(figures, c, value, frame) {
  const write = number => c === 0 ? `${Math.round(wrapDegrees(number))}°` : `${Math.round(number)}`;
  const channel = frame === undefined ? null : figures[frame]?.channels?.[c];
  return channel ? `${write(channel.mean)} (${write(channel.low)}–${write(channel.high)})` : write(value);
}

function lumaChart(faces, baselineFaces) {
  const luma = figures => figures.map(one => one?.luma ?? null);
  const series = faces.map(({name, colour, figures}, at) => ({
                             label: name.toLowerCase(),
                             values: luma(figures),
                             colour,
                             dash: kDashes[at % kDashes.length]
                           }));
  for (const {id, figures} of baselineFaces ?? [])
    series.push({label: `baseline ${id + 1}`, values: luma(figures), colour: kBaselineColour, dash: [4, 3]});
  return {title: 'Face luma', unit: 'mean, 0–255', series, leastRoom: 4};
}
