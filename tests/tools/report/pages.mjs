// What the tests of the page share: one browser, and pages made byte by byte. MORVALE_REPORT_TEMPLATE names the built
// template (made here where it is not set), MORVALE_REPORTS the folder that make_reports.sh has filled; without it what
// needs whole reports is skipped.
import {execFileSync} from 'node:child_process';
import {mkdtempSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {after} from 'node:test';

import {kReportFolder, launch, plainPictures} from './browser.mjs';
import {kFrontGeometry, leftOf, makeData, packRuns, putWords, writePage} from './fixture.mjs';

const folder = mkdtempSync(join(tmpdir(), 'morvale-report-'));
export const browser = await launch();
after(async () => {
  await browser.close();
  rmSync(folder, {recursive: true});
});

function builtTemplate() {
  const template = join(folder, 'template.html');
  execFileSync(process.execPath, [join(kReportFolder, 'build.mjs'), template]);
  return template;
}
const template = process.env.MORVALE_REPORT_TEMPLATE ?? builtTemplate();
const pictures = await plainPictures(browser, ['#c04040', '#40c040', '#4040c0']);

export const page = (name, options) => writePage(template, makeData({pictures, ...options}), join(folder, `${name}.html`));
export const near = (actual, expected, slack = 12) =>
    actual.every((channel, i) => Math.abs(channel - expected[i]) <= slack);

export const kEvents = [
  {index: 4, kind: 'found', text: 'person found'},
  {index: 12, kind: 'sluggish', text: 'network run of 40 ms'}, {index: 12, kind: 'lost', text: 'person lost'},
  {index: 30, kind: 'failed', text: 'failed'}
];
const withEvents = data => {
  data.events = kEvents;
};
export const front = page('front', {change: withEvents});
export const back = page('back', {camera: 'back', change: withEvents});
export const compared = page('compared', {
  change: data => {
    const base = makeData();
    data.baseline = {name: 'before', records: base.records, label_runs: base.label_runs, boxes: base.frames.boxes};
    putWords(data.records, 7, {1: 90});
    data.label_runs[7] = packRuns(leftOf(40, kFrontGeometry));
  }
});
export const reports = process.env.MORVALE_REPORTS;
export const given = reports ? ['front', 'back', 'diff'].map(name => join(reports, `report_${name}/report.html`)) : [];
export const everyReport = [front, back, compared, ...given];

// Gives the window a size, and the page the time to follow it.
export async function resize(tab, width, height) {
  await tab.setViewportSize({width, height});
  await tab.evaluate(async () => {
    for (let i = 0; i < 4; ++i) await new Promise(requestAnimationFrame);
  });
}

// Whether the page needs no scrolling sideways, once it has followed the window's size.
export function fits(tab) {
  return tab.evaluate(async () => {
    for (let i = 0; i < 120 && document.documentElement.scrollWidth > innerWidth; ++i) await new Promise(requestAnimationFrame);
    return document.documentElement.scrollWidth <= innerWidth;
  });
}

// The record as the page lists it, by offset.
export async function listedRecord(tab) {
  const rows = await tab.$$eval('table.fields tbody tr', list => list.map(row => {
    const figures = [...row.querySelectorAll('td.figure')].map(cell => cell.textContent);
    return [Number(row.dataset.offset), figures];
  }));
  return new Map(rows);
}
