// The head of the page, the summary cards and the verdict of a comparison.
import {copy} from './clipboard.js';
import {h, icon} from './dom.js';
import {digitsOf, plural, range} from './format.js';
import {libraryTimes, networkTimes} from './series.js';
import {spread} from './stats.js';

// One line of facts; the rest of them opens from it.
export function pageHead(report, player, themeButton, keys) {
  const {data} = report;
  const sizes = [...new Set(data.geometries.map(({width, height}) => `${width} × ${height}`))].join(', ');
  const line = [`${data.camera} camera`, sizes, plural(report.count, 'frame'), data.source.kind, data.engine];
  return h(
      'header', {class: 'page-head'}, h('h1', {}, data.title), verdict(report, player),
      h('p', {class: 'run-line'}, line.filter(Boolean).join(' · ')),
      h('div', {class: 'head-buttons'}, about(report, sizes), keys, themeButton));
}

function about(report, sizes) {
  const {data} = report;
  const facts = [
    ['Camera', data.camera], ['Size', sizes],
    ['Source', [data.source.kind, data.source.name].filter(Boolean).join(' ')], ['Engine', data.engine],
    ['Kernels', data.kernels], ['Program', data.program]
  ];
  const pictures = data.frames.picture.filter(picture => picture !== null).length;
  if (pictures < report.count) facts.push(['Pictures', `${pictures} of ${report.count}`]);
  if (report.baseline) facts.push(['Baseline', report.baseline.name]);
  if (data.source.made_by) facts.push(['Made by', h('code', {}, data.source.made_by)]);
  return h(
      'details', {class: 'popover'}, h('summary', {}, 'About'),
      h('div', {class: 'popover-body about'},
        h('p', {class: 'eyebrow'}, report.baseline ? 'Morvale Capture · comparison' : 'Morvale Capture · report'),
        h('dl', {class: 'facts'}, facts.map(([name, value]) => [h('dt', {}, name), h('dd', {}, value)])),
        commandLine(data.command)));
}

// How the records compare, in a word; the summary says it in full.
function verdict(report, player) {
  const {comparison} = report.data;
  if (!comparison) return null;
  if (comparison.same) return h('span', {class: 'verdict good'}, 'identical');
  return h('span', {class: 'verdict bad'}, 'differs at ', goTo(report, player, comparison.index));
}

function commandLine(command) {
  const status = h('span', {class: 'visually-hidden', role: 'status'});
  const label = h('span', {}, 'Copy');
  const button =
      h('button', {
        type: 'button',
        class: 'plain',
        id: 'copy',
        'aria-label': 'Copy the command',
        onclick: async () => {
          const done = await copy(command);
          label.textContent = done ? 'Copied' : 'Select it';
          status.textContent = done ? 'Command copied' : 'The browser does not allow copying';
        }
      },
        icon('copy'), label);
  return h(
      'div', {class: 'command'},
      h('code', {tabindex: 0, role: 'region', 'aria-label': 'Command', class: 'scroller'}, command), button,
      status);
}

export function cards(report, player) {
  const count = test => Array.from({length: report.count}, (_, frame) => test(frame)).filter(Boolean).length;
  const failed = count(frame => report.failed(frame)), gated = count(frame => report.gated(frame));
  const sluggish = count(frame => report.sluggish(frame));
  return h(
      'div', {class: 'cards'},
      card(
          'Frames', `${report.count}`,
          [tally(failed, 'failed'), tally(gated, 'gated'), tally(sluggish, 'sluggish')]),
      shareCard(report), peopleCard(report, count),
      timeCard('Network', spread(networkTimes(report)), 'times not known'),
      timeCard('Library', spread(libraryTimes(report)), 'times not known'), recordsCard(report, player));
}

function card(title, figure, details, kind = '') {
  return h(
      'div', {class: `card ${kind}`}, h('h2', {}, title), h('p', {class: 'big'}, figure),
      h('p', {class: 'details'}, details));
}

const tally = (count, kind) =>
    h('span', {class: count > 0 ? `tally mark-${kind}` : 'tally'}, h('b', {}, count), ` ${kind}`);

function shareCard(report) {
  const share = spread(report.series(frame => report.records.humanRatio(frame)));
  const title = report.front ? 'Person share' : 'Body share';
  if (!share) return card(title, '–', ['no frame was analysed']);
  return card(title, `${share.mean.toFixed(1)} %`, [`mean; ${range(share.min, share.max)} % over the run`]);
}

function peopleCard(report, count) {
  if (report.frames.boxes.every(boxes => boxes === null))
    return card('Persons seen', '–', ['a recording alone does not tell']);
  const most = report.frames.boxes.reduce((highest, boxes) => Math.max(highest, boxes?.length ?? 0), 0);
  if (most === 0) return card('Persons seen', '0', ['no person box in the run']);
  const seen = `${count(frame => report.personCount(frame) > 0)} of ${plural(report.count, 'frame')}`;
  return report.front ? card('Persons seen', `${most}`, [`at most; one or more in ${seen}`]) :
                        card('Person boxed', `${most}`, [`in ${seen}; the back camera boxes no more than one`]);
}

function timeCard(title, times, none) {
  if (!times) return card(title, '–', [none]);
  const digits = digitsOf(times), write = value => value.toFixed(digits);
  const item = (name, value) => h('span', {}, `${name} `, h('b', {}, write(value)));
  return card(
      title, h('span', {}, write(times.p50), h('small', {}, ' ms p50')),
      [item('p90', times.p90), item('p99', times.p99), item('max', times.max)]);
}

function recordsCard(report, player) {
  const {comparison} = report.data;
  if (report.difference) {
    const {frames} = report.difference;
    return frames === 0 ?
        card('Against the baseline', 'Identical', ['records and label maps'], 'good') :
        card('Against the baseline', plural(frames, 'frame'), ['differ'], 'bad');
  }
  if (!comparison) return card('Records', '–', ['nothing to compare them with']);
  if (comparison.same)
    return card('Records', 'Identical', [`all ${plural(comparison.frames, 'frame')}, byte for byte`], 'good');
  return card('Records', 'Different', ['first at ', goTo(report, player, comparison.index)], 'bad');
}

const goTo = (report, player, index) =>
    h('button', {type: 'button', class: 'link', onclick: () => player.go(index)},
      `frame ${report.label(index)}`);

export function banner(report, player) {
  const {comparison} = report.data;
  if (!comparison) return null;
  if (comparison.same)
    return h(
        'p', {class: 'banner good', id: 'comparison'}, h('b', {}, 'The records are identical. '),
        `All ${plural(comparison.frames, 'frame')} equal the recorded ones, byte for byte.`);
  return h(
      'p', {class: 'banner bad', id: 'comparison'}, h('b', {}, 'The records differ. '), 'First in ',
      goTo(report, player, comparison.index), ', ', h('code', {}, comparison.field),
      comparison.offset === null ? '' : ` at byte ${comparison.offset}`, report.baseline ? ': baseline ' : ': expected ',
      h('b', {}, comparison.expected), report.baseline ? ', current ' : ', got ',
      h('b', {}, comparison.got),
      `. ${plural(comparison.differing, 'frame differs', 'frames differ')} in all.`);
}
