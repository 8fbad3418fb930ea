// The frame: what lies over its picture, closer up, read out and saved.
import assert from 'node:assert/strict';
import {readFileSync, readdirSync} from 'node:fs';
import {join} from 'node:path';
import {test} from 'node:test';

import {decoded, open, paintedPicture, pixel, saved, shown} from './browser.mjs';
import {kFrontGeometry, leftOf, packRuns} from './fixture.mjs';
import {back, browser, front, near, page, reports} from './pages.mjs';

test('the label map lies over the picture as the network saw it', async () => {
  // A portrait picture fills 144 of the network's 256 columns: cell columns left of 18 are its left half.
  const geometry = {
    ...kFrontGeometry,
    width: 180,
    height: 320,
    stride: 180,
    shrunkWidth: 144,
    shrunkHeight: 256,
    segFactor: 64
  };
  const file = page('portrait', {
    count: 2,
    change: data => {
      data.geometries = [geometry];
      data.label_runs = [packRuns(leftOf(18, geometry)), packRuns(leftOf(18, geometry))];
    }
  });
  const {page: tab, close} = await open(browser, file);
  for (const id of ['boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const plain = [192, 64, 64];
  assert.ok(!near(await pixel(tab, 0.4, 0.97), plain), 'left of the edge');
  assert.ok(near(await pixel(tab, 0.6, 0.97), plain), 'right of the edge');
  await tab.uncheck('#show-labels');
  assert.ok(near(await pixel(tab, 0.4, 0.97), plain));
  await close();
});

test('rows that are not analysed are hatched, and a sentence says what the shape does', async () => {
  const geometry = {...kFrontGeometry, height: 256, shrunkHeight: 205, segFactor: 28, notes: ['The lowest 45 % …']};
  const file = page('five_to_four', {
    count: 2,
    change: data => {
      data.geometries = [geometry];
      data.label_runs = [packRuns(leftOf(0, geometry)), packRuns(leftOf(0, geometry))];
    }
  });
  const {page: tab, close} = await open(browser, file);
  for (const id of ['boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const plain = [192, 64, 64], edge = 4 * 28 / 205;
  assert.ok(near(await pixel(tab, 0.5, edge - 0.02), plain));
  for (const [across, down] of [[0.5, edge + 0.02], [0.1, 0.9], [0.9, 0.98]])
    assert.ok(!near(await pixel(tab, across, down), plain), `${across}, ${down}`);
  assert.equal(await tab.textContent('#shape-note'), 'The lowest 45 % …');
  await close();
  const usual = await open(browser, front);
  assert.equal(await usual.page.textContent('#shape-note'), '');
  await usual.close();
});

test('zoom: the wheel keeps the place below the pointer, keys and drag move it, the page still scrolls', async () => {
  // The left half is red, the right half blue.
  const halves = await paintedPicture(browser, [['#c04040', 0], ['#4040c0', 160]], 320, 240);
  const file = page('halves', {pictures: [halves], count: 3});
  const {page: tab, complaints, close} = await open(browser, file);
  for (const id of ['labels', 'boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const red = [192, 64, 64], blue = [64, 64, 192];
  const box = await (await tab.$('.view canvas')).boundingBox();
  const wheel = async delta => {
    await tab.mouse.move(box.x + 0.45 * box.width, box.y + 0.5 * box.height);
    await tab.mouse.wheel(0, delta);
    await tab.waitForTimeout(100);
  };
  for (let i = 0; i < 8; ++i) await wheel(-100);
  assert.ok(near(await pixel(tab, 0.4, 0.5), red), 'left of the pointer it stays red');
  assert.ok(near(await pixel(tab, 0.6, 0.5), red), 'the edge has moved to the right');
  assert.ok(near(await pixel(tab, 0.9, 0.5), blue));
  assert.equal(await tab.evaluate('scrollY'), 0);
  await tab.keyboard.press('Shift+ArrowRight');
  await tab.keyboard.press('Shift+ArrowRight');
  assert.ok(near(await pixel(tab, 0.6, 0.5), blue), 'moved to the right');
  await tab.mouse.move(box.x + 50, box.y + 50);
  await tab.mouse.down();
  await tab.mouse.move(box.x + box.width - 50, box.y + 50, {steps: 5});
  await tab.mouse.up();
  assert.ok(near(await pixel(tab, 0.9, 0.5), red), 'dragged back');
  await tab.keyboard.press('0');
  assert.ok(near(await pixel(tab, 0.48, 0.5), red) && near(await pixel(tab, 0.52, 0.5), blue), 'all of it');
  await wheel(300);
  assert.ok(await tab.evaluate('scrollY') > 0, 'whoever only passes over the picture scrolls the page');
  await wheel(-100);
  assert.ok(near(await pixel(tab, 0.48, 0.5), red), 'and back');
  assert.equal(await tab.inputValue('#scrubber'), '0');
  assert.deepEqual(complaints, []);
  await close();
});

test('full screen shows the frame and the scrubber alone, and Escape ends it', async () => {
  const {page: tab, complaints, close} = await open(browser, front);
  const before = await (await tab.$('.view canvas')).boundingBox();
  await tab.keyboard.press('f');
  await tab.waitForSelector('.page-head', {state: 'hidden'});
  await tab.waitForFunction(tall => document.querySelector('.view canvas').clientHeight > tall, before.height);
  assert.ok(await tab.isVisible('.controls') && await tab.isVisible('#scrubber'));
  assert.ok(!await tab.isVisible('.tabs') && !await tab.isVisible('.cards'));
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 1);
  await tab.keyboard.press('Escape');
  await tab.waitForSelector('.page-head', {state: 'visible'});
  assert.deepEqual(complaints, []);
  await close();
});

test('the read-out tells pixel, cell, scores and grid below the pointer', async () => {
  const scores = await paintedPicture(browser, [['#0a0a0a', 0, 48], ['#fafafa', 0, 96, 48], ['#c8c8c8', 33, 144, 96]], 64, 240, 'image/png');
  const file = page('scores', {
    count: 2,
    change: data => {
      data.scores = [scores];
      data.frames.scores = [0, null];
    }
  });
  const {page: tab, complaints, close} = await open(browser, file);
  const box = await (await tab.$('.view canvas')).boundingBox();
  const point = (x, y) => tab.mouse.move(box.x + (x + 0.5) / 320 * box.width, box.y + (y + 0.5) / 240 * box.height);
  const readout = async pattern => {
    await tab.waitForFunction(
        text => new RegExp(text).test(document.querySelector('#readout').textContent), pattern.source, {timeout: 5000});
  };
  const scored = wanted => tab.waitForFunction(
      text => [...document.querySelectorAll('.legend .score')].map(one => one.textContent).join() === text,
      wanted.join(), {timeout: 5000});
  await point(200, 100);  // 320 pixels over 64 cells: 5 a cell
  await readout(/pixel 200, 100 19\d 6\d 6\d cell 40, 20/);
  await scored([10, 250, 200, 0, 0]);
  assert.match(await tab.textContent('.legend .wins'), /background/, 'the winner is marked');
  await point(20, 239);
  await readout(/pixel 20, 239.*cell 4, 47/);
  await scored([10, 250, 0, 0, 0]);
  assert.match(await tab.textContent('.legend .wins'), /face skin/);
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 1);
  await readout(/cell 4, 47.*scores were left out/);
  assert.match(await tab.textContent('.legend .wins'), /face skin/, 'who wins is known all the same');
  await tab.mouse.move(5, 5);
  await readout(/Point at the picture/);
  assert.deepEqual(complaints, []);
  await close();

  const other = await open(browser, back);
  const view = await (await other.page.$('.view canvas')).boundingBox();
  await other.page.mouse.move(view.x + view.width * 0.4, view.y + view.height * 0.7);
  await other.page.waitForFunction(() => /grid 7, 10 occupied/.test(document.querySelector('#readout').textContent));
  await other.page.mouse.move(view.x + view.width * 0.6, view.y + view.height * 0.7);
  await other.page.waitForFunction(() => /grid 11, 10 free/.test(document.querySelector('#readout').textContent));
  await other.close();
});

test('the scores are the recording\'s, byte for byte', {skip: !reports}, async () => {
  for (const at of ['front', 'back']) {
    const file = join(reports, `report_${at}/report.html`), labels = join(reports, at, 'labels');
    const name = readdirSync(labels).sort()[7];
    const [columns, rows] = name.match(/_(\d+)x(\d+)x5/).slice(1).map(Number), bytes = readFileSync(join(labels, name));
    const {page: tab, close} = await open(browser, file, {hash: '#frame=7'});
    await shown(tab, 7);
    const box = await (await tab.$('.view canvas')).boundingBox();
    for (const [column, row] of [[0, 0], [columns / 2, rows / 2], [columns - 1, rows - 1], [5, rows - 4]]) {
      await tab.mouse.move(box.x + (column + 0.5) / columns * box.width, box.y + (row + 0.5) / rows * box.height);
      await tab.waitForFunction(
          cell => document.querySelector('.score').textContent !== '' &&
              document.querySelector('#readout').textContent.includes(cell),
          `cell ${column}, ${row}`, {timeout: 10000});
      const shownScores = await tab.$$eval('.legend .score', list => list.map(one => Number(one.textContent)));
      const cell = 5 * (row * columns + column);
      assert.deepEqual(shownScores, [...bytes.subarray(cell, cell + 5)], `${at}: ${column}, ${row}`);
    }
    await close();
  }
});

test('picture, chart and table are saved as they are seen', async () => {
  const {page: tab, complaints, close} = await open(browser, front, {hash: '#frame=102'});
  await shown(tab, 1);
  for (const id of ['boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  await tab.keyboard.press('+');
  const picture = await saved(tab, '#save-frame');
  assert.equal(picture.name, 'fixture.bundle_frame_102.png');
  const drawn = await decoded(tab, picture.bytes, [[0.25, 0.5], [0.75, 0.5]]);
  assert.deepEqual([drawn.width, drawn.height], [320, 240], 'the whole frame in its own size');
  assert.ok(near(drawn.colours[1], [64, 192, 64]), 'the picture');
  assert.ok(!near(drawn.colours[0], [64, 192, 64]), 'under the labels');

  const chart = await saved(tab, '.chart .save-chart');
  assert.equal(chart.name, 'fixture.bundle_person_share.png');
  const plot = await tab.$eval('.chart canvas', canvas => [canvas.width, canvas.height]);
  const {width, height, colours} = await decoded(tab, chart.bytes, [[0.99, 0.01]]);
  assert.ok(width === plot[0] && height > plot[1] && near(colours[0], [255, 255, 255], 0), 'title and all');

  await tab.click('.data-table summary');
  const table = await saved(tab, '#save-table');
  assert.equal(table.name, 'fixture.bundle_figures.csv');
  const rows = table.bytes.toString().split('\r\n').map(row => row.split(','));
  assert.equal(rows.length, 1 + 40 + 1);
  const [heads, , second] = rows;
  assert.equal(
      second.join(), '102,analysed,21,2,2,151,23,19,28,85,75,100,200,180,230,120,40,40,40,90,90,90,170,170,170,10.1,1.5');
  assert.equal(heads.slice(6, 10).join(), 'Person 1 luma,Person 1 H,Person 1 H low,Person 1 H high');
  assert.deepEqual(complaints, []);
  await close();
});

test('a frame without a picture borrows the last one and says so', async () => {
  const {page: tab, close} = await open(browser, page('sparse', {pictureEvery: 5}), {hash: '#frame=116'});
  await shown(tab, 8);
  for (const id of ['labels', 'boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  assert.ok(near(await pixel(tab, 0.5, 0.5), [64, 192, 64]), 'the picture of the sixth frame');
  assert.match(await tab.textContent('.note'), /Picture of frame 110/);
  assert.match(await tab.textContent('.page-head'), /Pictures8 of 40/);
  await close();
});
