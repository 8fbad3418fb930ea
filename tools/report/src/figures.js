// The panel that says a frame's record in words: what was found, the colours of each face, the occupancy
// grid.
import {h, hidden} from './dom.js';
import {boxText, ms, plural} from './format.js';
import {logLine} from './log_list.js';
import {countSet, kGridColumns, kGridRows} from './records.js';
import {wrapDegrees} from './stats.js';

const kChannels = ['H', 'S', 'V'];
const kChannelNames = ['hue', 'saturation', 'value'];

// What happened to the frame, as [kind, text] marks.
export function marksOf(report, frame) {
  const marks = [];
  if (report.failed(frame)) marks.push(['failed', 'failed']);
  if (report.gated(frame)) marks.push(['gated', 'gated']);
  if (report.sluggish(frame) && !report.alwaysSluggish) marks.push(['sluggish', 'sluggish']);
  return marks;
}

export function sentence(report, frame) {
  if (report.gated(frame)) return 'Above the gate: not analysed, the record is cleared.';
  const {records} = report;
  const share = `${records.humanRatio(frame)} % of the label map is ${report.shareOf}`;
  const failed =
      report.failed(frame) ? 'The network run failed; the figures are those of an older label map. ' : '';
  if (report.front) {
    const faces = plural(report.measuredFaces(frame), 'face');
    return `${failed}${faces} measured, ${share}.`;
  }
  const box = records.personBox(frame);
  return `${failed}${box ? `A person, ${boxText(box)}` : 'No person'}; ${share}.`;
}

export function figures(report, frame) {
  return [
    h('p', {class: 'sentence'}, sentence(report, frame)),
    report.front ? facesOf(report, frame) : backFigures(report, frame),
    facts(report, frame),
    frameLog(report, frame),
  ];
}

function facts(report, frame) {
  const {frames} = report;
  const {width, height, shrunkWidth, shrunkHeight, netSize, segFactor} = report.geometry(frame);
  const boxes = list => list.length === 0 ? 'none' : list.map(boxText).join('; ');
  const rows = [
    ['Network', report.gated(frame) ? 'not asked' : ms(frames.network_ms[frame])],
    ['Library', ms(report.libraryMs(frame))],
    ...(report.personCount(frame) === null ?
            [] :
            [[plural(report.personCount(frame), 'library box', 'library boxes'), boxes(report.boxes(frame))]]),
    [plural(frames.camera_faces[frame].length, 'camera face'), boxes(frames.camera_faces[frame])],
    ['Returned', `${frames.process[frame]}, ver ${report.records.ver(frame)}`],
    ['Frame', `${width} × ${height}, shrunk to ${shrunkWidth} × ${shrunkHeight}`],
    ['Label map', `${netSize} × ${segFactor} cells`],
  ];
  return h('dl', {class: 'facts'}, rows.map(([name, value]) => [h('dt', {}, name), h('dd', {}, value)]));
}

function facesOf(report, frame) {
  const cards = report.faces.blocks(frame).map(block => faceCard(report, frame, block));
  return h('div', {class: 'faces'}, cards);
}

function faceCard(report, frame, block) {
  const face = report.records.face(frame, block), id = report.faces.id(frame, block);
  const name = report.faces.name(id), dot = h('span', {class: 'dot'});
  dot.style.background = report.faces.colour(id);
  return h(
      'section', {class: 'face', 'aria-label': name},
      h('h3', {}, dot, name, h('code', {class: 'aside'}, `meta[${block}]`),
        h('span', {class: 'aside'}, `${face.skinRatio} ‰ of the map`)),
      face.channels ? colours(face.channels) : h('p', {class: 'quiet'}, 'No colour pixel.'),
      h('p', {class: 'quiet'}, 'Luma ', h('b', {}, face.luma ?? 'none'),
        ` · ${face.above200} pixels above 200, ${face.above230} above 230`));
}

function colours(channels) {
  const bands = ['low', 'mean', 'high'];
  return h(
      'table', {class: 'swatches'},
      h('thead', {},
        h('tr', {}, h('th', {scope: 'col'}, hidden('Channel')),
          bands.map(band => h('th', {scope: 'col'}, swatch(channels, band), band)))),
      h('tbody', {},
        channels.map(
            (channel, c) =>
                h('tr', {}, h('th', {scope: 'row', title: kChannelNames[c]}, kChannels[c]),
                  bands.map(
                      band => h('td', {}, c === 0 ? `${wrapDegrees(channel[band])}°` : channel[band]))))));
}

function swatch(channels, band) {
  const patch = h('span', {class: 'swatch', 'aria-hidden': 'true'});
  patch.style.background = cssColour(channels.map(channel => channel[band]));
  return patch;
}

// H in degrees, S and V 0..255.
export function cssColour([hue, saturation, value]) {
  const share = byte => Math.min(Math.max(byte / 255, 0), 1);
  const s = share(saturation), v = share(value);
  const lightness = v * (1 - s / 2);
  const room = Math.min(lightness, 1 - lightness);
  const chroma = room === 0 ? 0 : (v - lightness) / room;
  const percent = part => `${(100 * part).toFixed(1)}%`;
  return `hsl(${wrapDegrees(hue)} ${percent(chroma)} ${percent(lightness)})`;
}

function backFigures(report, frame) {
  const cells = report.records.grid(frame);
  return h(
      'section', {class: 'face', 'aria-label': 'Occupancy grid'},
      h('h3', {}, 'Occupancy grid',
        h('span', {class: 'aside'}, `${countSet(cells)} of ${cells.length} cells`)),
      gridPicture(cells),
      h('p', {class: 'quiet'}, 'Resource hint ', h('b', {}, report.records.resourceHint(frame))));
}

export function gridPicture(cells) {
  const grid = h('div', {
    class: 'occupancy',
    role: 'img',
    'aria-label': `${kGridColumns} by ${kGridRows} cells, ${countSet(cells)} occupied`
  });
  for (const cell of cells) grid.append(h('i', cell ? {class: 'on'} : {}));
  return grid;
}

function frameLog(report, frame) {
  const [from, to] = report.logRange(frame);
  return h(
      'section', {class: 'frame-log', 'aria-label': 'Log lines of this frame'},
      h('h3', {}, 'Log', h('span', {class: 'aside'}, plural(to - from, 'line'))),
      to === from ?
          h('p', {class: 'quiet'}, 'Nothing was logged.') :
          h('ol', {class: 'log'}, report.log.slice(from, to).map(line => h('li', {}, logLine(line)))));
}
