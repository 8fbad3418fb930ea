// What the page works out from the data before anything is drawn.
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {unpackRuns} from '../../../tools/report/src/bytes.js';
import {chooseFrames} from '../../../tools/report/src/contact_sheet.js';
import {Report} from '../../../tools/report/src/report.js';
import {faceFigures, unwrapped} from '../../../tools/report/src/series.js';
import {spread} from '../../../tools/report/src/stats.js';

import {emptyRecords, kFrontGeometry, leftOf, makeData, packRuns, putWords} from './fixture.mjs';

test('runs: the longest run, the label bits and a damaged tail', () => {
  assert.deepEqual([...unpackRuns([0xFF, 2 << 5], 33)], [...new Array(32).fill(7), 2]);
  assert.deepEqual([...unpackRuns([4 << 5 | 9], 3)], [4, 4, 4], 'a run beyond the map is cut');
  assert.deepEqual([...unpackRuns([1 << 5], 3)], [1, 0, 0], 'a short map is filled');
});

test('percentiles are values that occurred, and missing frames do not count', () => {
  const found = spread([null, 4, 1, undefined, 3, 2]);
  assert.deepEqual(
      [found.count, found.min, found.p50, found.p90, found.max, found.mean], [4, 1, 2, 4, 4, 2.5]);
  assert.equal(spread([null]), null);
});

test('hues on both sides of 0 stay together, with their bands', () => {
  const [low, high, mean] = unwrapped([[352, null, -1], [362, null, 9], [358, null, 3]]);
  assert.deepEqual(mean.map(value => value === null ? null : Math.round(value - mean[0])), [0, null, 5]);
  assert.deepEqual([mean[0] - low[0], high[0] - mean[0], mean[2] - low[2], high[2] - mean[2]], [6, 4, 4, 6]);
});

test('a face is a gap where it was not measured: ver, gate, failure, no colour or luma pixel', () => {
  const change = data => {
    data.frames.gated[2] = 1;
    data.frames.process[3] = -1;
    data.records = emptyRecords(6);
    for (let frame = 0; frame < 6; ++frame)
      putWords(data.records, frame, {0: 5, 4: 100, 8: 20, 9: 80, 10: 90, 36: 360});
    putWords(data.records, 1, {0: 0});
    putWords(data.records, 4, {4: 0, 8: 360, 9: 0, 10: 0});
  };
  const report = new Report(makeData({count: 6, change}));
  const faces = faceFigures(report, report.records);
  assert.equal(faces.length, 3, 'five camera faces, of which three are measured');
  assert.equal(faces[0].name, 'Face 1', 'where they lie is not known');
  assert.deepEqual(faces[0].figures.map(face => face?.luma ?? null), [100, null, null, null, null, 100]);
  assert.deepEqual(faces[0].figures.map(face => face?.channels?.[0].mean ?? null), [20, null, null, null, null, 20]);
});

test('a person is followed by place: swaps, gaps, newcomers, and two who share a box', () => {
  const left = [10, 10, 40, 40], right = [120, 10, 30, 30], middle = [70, 12, 30, 30];
  const boxes = [[right, left], [left, right], [[30, 14, 40, 40]], [right, [50, 18, 40, 40]], [middle, right, left]];
  const people = (change, list = boxes) => {
    const report = new Report(makeData({
      count: list.length,
      change: data => {
        data.frames.boxes = [...list];
        list.forEach((of, frame) => putWords(data.records, frame, {0: of.length}));
        change?.(data);
      }
    }));
    const {faces} = report;
    return list.map((of, frame) => of.map((_, block) => faces.byPerson ? faces.id(frame, block) : null));
  };
  // The walker comes from the left to the middle; the one on the left is somebody new.
  assert.deepEqual(people(), [[1, 0], [0, 1], [0], [1, 0], [0, 1, 2]]);
  const away = frames => [[left], ...new Array(frames).fill([]), [left]];
  assert.deepEqual(people(null, away(59)).at(-1), [0]);
  assert.deepEqual(people(null, away(60)).at(-1), [1], 'nobody is awaited for more than 60 frames');
  // Two camera faces in one box are measured as they are.
  const shared = data => {
    data.frames.face_boxes[1] = [left, right];
  };
  assert.deepEqual(people(shared, [[left, right], [[0, 0, 200, 60], [0, 0, 9, 9]]]), [[0, 1], [0, 1]]);
  assert.deepEqual(people(data => data.frames.boxes.fill(null)).flat(), new Array(10).fill(null));
});

test('the library\'s time is not known without its parts, nor from the times of two runs', () => {
  const change = data => {
    Object.assign(data.frames, {
      network_ms: [10, null, 10, 10, 128],
      process_ms: [11.5, 1.5, null, 11.5, 0.3],
      analysis_ms: [0.5, 0.5, 0.5, null, 0.1],
    });
  };
  const report = new Report(makeData({count: 5, change}));
  assert.deepEqual([0, 1, 2, 3, 4].map(frame => report.libraryMs(frame)), [2, 2, null, null, null]);
});

test('stretches of frames that differ from the baseline are one event each', () => {
  const base = makeData({count: 8});
  const change = data => {
    for (const frame of [2, 3, 4]) putWords(data.records, frame, {1: 99, 10: 1});
    data.label_runs[6] = packRuns(leftOf(3, kFrontGeometry));
    data.baseline = {name: 'before', records: base.records, label_runs: base.label_runs, boxes: null};
  };
  const {difference} = new Report(makeData({count: 8, change}));
  assert.equal(difference.frames, 4);
  assert.deepEqual(
      difference.events.map(({index, text}) => [index, text]),
      [[2, 'Differs: 2 fields; 3 frames in a row'], [6, 'Differs: label map']]);

  const shorter = new Report(makeData({
    count: 10,
    change: data => {
      data.baseline = {name: 'before', records: base.records, label_runs: base.label_runs, boxes: null};
    }
  }));
  assert.deepEqual(
      shorter.difference.events.map(({index, text}) => [index, text]),
      [[8, 'Not in the baseline; 2 frames in a row']]);
});

test('the contact sheet spans the run and has every event once', () => {
  const events = [{index: 7, kind: 'lost', text: ''}, {index: 7, kind: 'gated', text: ''}];
  const chosen = chooseFrames(new Report(makeData({
    count: 1000,
    change: data => {
      data.events = events;
    }
  })));
  assert.equal(chosen.length, 25);
  assert.deepEqual([chosen[0][0], chosen.at(-1)[0]], [0, 999]);
  assert.deepEqual(chosen.find(([frame]) => frame === 7)[1], ['lost', 'gated']);
  assert.equal(chooseFrames(new Report(makeData({count: 1}))).length, 1);
});

test('another format or version is refused', () => {
  assert.throws(() => new Report({...makeData(), version: 9}), /not morvale-report 9/);
});
