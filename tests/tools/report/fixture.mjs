// Small runs for the page, made here byte by byte, so that what the page shows is compared with figures that
// the page's own code had no part in.
import {readFileSync, writeFileSync} from 'node:fs';

const kMarker = '@@MORVALE_REPORT_DATA@@';
const kLabels = [
  ['background', null], ['hair', '#e69f00'], ['face skin', '#56b4e9'], ['other face parts', '#cc79a7'],
  ['body', '#009e73']
];

export const kFrontGeometry = {
  width: 320,
  height: 240,
  stride: 320,
  padSize: 256,
  netSize: 64,
  shrunkWidth: 256,
  shrunkHeight: 192,
  segFactor: 48,
  scaleRatio: 1.25,
  notes: [],
};
export const kBackGeometry = {
  width: 320,
  height: 240,
  stride: 320,
  padSize: 128,
  netSize: 32,
  shrunkWidth: 128,
  shrunkHeight: 96,
  segFactor: 24,
  scaleRatio: 2.5,
  notes: [],
};

const kBlockFields = [
  'brightCount[0]', 'brightCount[1]', 'faceYavg', 'hsvMin[0]', 'hsvMin[1]', 'hsvMin[2]', 'hsv[0]', 'hsv[1]',
  'hsv[2]', 'skinRatio', 'box[0]', 'box[1]', 'box[2]', 'box[3]'
];

function fields() {
  const names = ['ver', 'humanRatio'];
  for (let block = 0; block < 5; ++block) names.push(...kBlockFields.map(name => `meta[${block}].${name}`));
  return names.map(
      (name, word) => ({name, offset: 4 * word, signed: !name.includes('bright'), meaning: `of ${name}`}));
}

// A map as the program packs it: label << 5 | length - 1, runs of at most 32.
export function packRuns(labels) {
  const runs = [];
  for (let i = 0; i < labels.length;) {
    let length = 1;
    while (length < 32 && labels[i + length] === labels[i]) ++length;
    runs.push(labels[i] << 5 | (length - 1));
    i += length;
  }
  return Buffer.from(runs).toString('base64');
}

// Label 2 in the columns left of `edge`, background elsewhere.
export function leftOf(edge, {netSize, segFactor}) {
  return Uint8Array.from({length: netSize * segFactor}, (_, cell) => cell % netSize < edge ? 2 : 0);
}

export function emptyRecords(frames) { return Buffer.alloc(288 * frames); }

// Words by their place; the rest stays 0.
export function putWords(records, frame, words) {
  for (const [word, value] of Object.entries(words))
    records.writeInt32LE(value, 288 * frame + 4 * Number(word));
}

// A run of `count` frames with figures that differ from frame to frame; `change` edits the data before it is
// written.
export function makeData(
    {count = 40, camera = 'front', pictures = [], pictureEvery = 1, change = () => {}} = {}) {
  const front = camera === 'front', geometry = front ? kFrontGeometry : kBackGeometry;
  const each = of => Array.from({length: count}, (_, frame) => of(frame));
  const records = emptyRecords(count);
  for (let frame = 0; frame < count; ++frame)
    putWords(records, frame, front ? frontWords(frame) : backWords(frame));
  const data = {
    format: 'morvale-report',
    version: 2,
    title: 'fixture.bundle',
    program: 'morvale 1.0.0',
    command: 'morvale replay fixture.bundle --report out',
    source: {kind: 'bundle', name: 'fixture.bundle', made_by: 'a test'},
    camera,
    engine: 'recorded',
    kernels: 'portable',
    sluggish_ms: 31,
    person_colors: ['#e5532d', '#3b7de0', '#9a5fe0'],
    labels: kLabels.map(([name, color]) => ({name, color})),
    fields: fields(),
    geometries: [geometry],
    frames: {
      number: each(frame => 100 + 2 * frame),
      name: null,
      seconds: null,
      geometry: each(() => 0),
      process: each(() => 0),
      gated: each(() => 0),
      network_ms: each(frame => 10 + frame / 10),
      process_ms: each(frame => 11 + frame / 10),
      analysis_ms: each(() => 0.5),
      camera_faces: each(() => [[100, 60, 80, 90]]),
      boxes: each(() => [[96, 64, 88, 88], [200, 60, 80, 80]]),
      face_boxes: each(() => null),
      picture: each(
          frame => pictures.length > 0 && frame % pictureEvery === 0 ?
              frame / pictureEvery % pictures.length :
              null),
      scores: each(() => null),
    },
    scores: [],
    records,
    label_runs: each(() => packRuns(leftOf(geometry.netSize / 2, geometry))),
    pictures,
    log: each(frame => [frame, frame]),
    log_lines: each(frame => `Dline of ${frame}`),
    events: [],
    comparison: null,
    baseline: null,
  };
  change(data);
  return {...data, records: data.records.toString('base64')};
}

function frontWords(frame) {
  return {
    0: 1 + frame % 2,
    1: 20 + frame,
    2: 500 + frame,
    3: 30,
    4: 150 + frame % 5,
    5: 4,
    6: 10,
    7: 20,
    8: 23,
    9: 85,
    10: 200,
    11: 110,
    12: 5,
    13: 15,
    14: 30,
    18: 120,
    22: 40,
    23: 90,
    24: 170
  };
}

// The left half of the grid: nine ones and ten zeros in each of the 15 rows, most significant bit first.
function backWords(frame) {
  const grid = [
    0xFF801FF0, 0x03FE007F, 0xC00FF801, 0xFF003FE0, 0x07FC00FF, 0x801FF003, 0xFE007FC0, 0x0FF801FF, 0x003FE000
  ];
  const places = [26, 27, 28, 29, 40, 41, 42, 43, 54];
  const words = {0: 5, 1: 30 + frame, 12: 40 + frame, 13: 90, 14: 25, 15: 100, 57: 77};
  places.forEach((word, i) => {
    words[word] = grid[i] | 0;
  });
  return words;
}

export function writePage(template, data, file) {
  const [before, after, ...more] = readFileSync(template, 'utf8').split(kMarker);
  if (after === undefined || more.length > 0) throw new Error('the template must hold the marker once');
  writeFileSync(file, before + JSON.stringify(data).replace(/</g, '\\u003c') + after);
  return file;
}

// The data of a page, from the file itself.
export function readData(file) {
  const text = readFileSync(file, 'utf8');
  const start = text.indexOf('>', text.indexOf('id="report-data"')) + 1;
  return JSON.parse(text.slice(start, text.indexOf('</script>', start)));
}
