// Two frames, and two runs, against each other.
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {open, pixel, plainPictures, shown} from './browser.mjs';
import {makeData, putWords} from './fixture.mjs';
import {browser, compared, front, listedRecord, near, page} from './pages.mjs';

test('two frames of a run beside each other: pictures, records, and what differs', async () => {
  const {page: tab, complaints, close} = await open(browser, front);
  for (const id of ['labels', 'boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const alone = await (await tab.$('canvas[data-side=current]')).boundingBox();
  await tab.keyboard.press('c');
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 1);
  assert.deepEqual(await tab.$$eval('.view figcaption', list => list.map(one => one.textContent)), ['Frame 100', 'Frame 102']);
  const red = [192, 64, 64], green = [64, 192, 64];
  await tab.waitForFunction(() => document.querySelector('canvas[data-side=baseline]').clientWidth > 200);
  assert.ok(near(await pixel(tab, 0.5, 0.5, 'baseline'), red), 'the kept frame');
  assert.ok(near(await pixel(tab, 0.5, 0.5), green), 'the one in view');
  await tab.click('#tab-record');
  const heads = () => tab.$$eval('.fields thead th:not([hidden])', list => list.map(one => one.textContent));
  assert.deepEqual(await heads(), ['Byte', 'Field', 'Frame 100', 'In view', 'Difference']);
  assert.deepEqual((await listedRecord(tab)).get(4), ['4', '20', '21', '+1']);
  await tab.check('#only-differing');
  const bytes = await tab.$$eval('.fields tbody tr:not([hidden])', list => list.map(row => Number(row.dataset.offset)));
  assert.deepEqual(bytes, [0, 4, 8, 16], 'ver, ratio, a bright count and the luma');
  await tab.click('#keep');
  assert.deepEqual(await heads(), ['Byte', 'Field', 'Value', 'Hex']);
  assert.equal(await tab.$('canvas[data-side=baseline]'), null);
  await tab.waitForFunction(
      wide => document.querySelector('canvas[data-side=current]').clientWidth === Math.round(wide), alone.width);
  assert.deepEqual(complaints, []);
  await close();
});

test('wipe and flicker lay the baseline\'s own picture and boxes over the current ones', async () => {
  const others = await plainPictures(browser, ['#202020']);
  const file = page('other_pixels', {
    camera: 'back',
    count: 6,
    change: data => {
      const base = makeData({camera: 'back', count: 6, change: other => putWords(other.records, 2, {12: 200})});
      data.frames.boxes = data.frames.boxes.map((_, frame) => [[40 + frame, 25, 90, 100]]);
      data.baseline = {
        name: 'before',
        records: base.records,
        label_runs: base.label_runs,
        boxes: null,
        pictures: others,
        picture: [null, null, 0, null, null, null],
        other_pixels: [0, 0, 1, 1, 0, 0],
        camera_faces: base.frames.camera_faces
      };
    }
  });
  const {page: tab, complaints, close} = await open(browser, file, {hash: '#frame=104'});
  await shown(tab, 2);
  await tab.uncheck('#show-labels');
  await tab.uncheck('#show-faces');
  const dark = [32, 32, 32], blue = [64, 64, 192];
  // A box from 42 to 132 in the run, from 200 on in the baseline; both from 25 to 125.
  const edge = async (left, side) => {
    const [redness, , blueness] = await pixel(tab, left / 320, 75 / 240, side);
    return redness - blueness > 40;
  };
  assert.ok(near(await pixel(tab, 0.02, 0.02, 'baseline'), dark) && near(await pixel(tab, 0.02, 0.02), blue));
  assert.ok(await edge(200, 'baseline') && !await edge(42, 'baseline'), 'the box of before');
  assert.ok(await edge(42) && !await edge(200), 'the box of now');
  assert.ok(await edge(200, 'difference') && await edge(42, 'difference'), 'both');

  await tab.check('#blend [value=wipe]', {force: true});
  await tab.waitForFunction(() => document.querySelector('canvas[data-side=both]')?.clientWidth > 200);
  const halves = async () => [await pixel(tab, 0.3, 0.9, 'both'), await pixel(tab, 0.7, 0.9, 'both')];
  const [left, right] = await halves();
  assert.ok(near(left, dark) && near(right, blue), `${left} | ${right}`);
  const view = await (await tab.$('canvas[data-side=both]')).boundingBox();
  await tab.mouse.move(view.x + view.width / 2, view.y + 50);
  await tab.mouse.down();
  await tab.mouse.move(view.x + view.width * 0.8, view.y + 50, {steps: 3});
  await tab.mouse.up();
  assert.ok((await halves()).every(colour => near(colour, dark)), 'the edge was dragged');

  await tab.check('#blend [value=flicker]', {force: true});
  const seen = new Set();
  for (let i = 0; i < 40 && seen.size < 2; ++i) {
    seen.add(near(await pixel(tab, 0.5, 0.9, 'both'), dark));
    await tab.waitForTimeout(100);
  }
  assert.equal(seen.size, 2, 'now the one, now the other');
  await tab.check('#blend [value=side]', {force: true});
  await tab.focus('#scrubber');
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 3);
  assert.ok(near(await pixel(tab, 0.02, 0.02, 'baseline'), dark), 'a picture that was left out is borrowed');
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 4);
  assert.ok(near(await pixel(tab, 0.02, 0.02, 'baseline'), [64, 192, 64]), 'the same pixels are in the page once');
  assert.deepEqual(complaints, []);
  await close();
});

test('a comparison shows both records and marks the cells that differ', async () => {
  const {page: tab, close} = await open(browser, compared);
  await tab.keyboard.press('n');
  await shown(tab, 7);
  await tab.click('#tab-record');
  assert.deepEqual((await listedRecord(tab)).get(4), ['4', '27', '90', '+63']);
  for (const id of ['boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const [red, green] = await pixel(tab, 36.5 / 64, 0.5, 'difference');
  assert.ok(red - green > 40, 'columns 32 to 39 changed their label');
  const [grey, same] = await pixel(tab, 0.2, 0.5, 'difference');
  assert.ok(Math.abs(grey - same) < 8, 'column 12 did not');
  assert.match(await tab.textContent('.card:last-child'), /1 frame/);
  await close();

  const banner = page('banner', {
    change: data => {
      data.comparison =
          {same: false, index: 5, field: 'meta[0].hsv[0]', offset: 32, expected: 1, got: 2, differing: 7};
    }
  });
  const second = await open(browser, banner);
  assert.match(
      await second.page.textContent('#comparison'), /meta\[0\]\.hsv\[0\] at byte 32: expected 1, got 2/);
  await second.page.click('#comparison button');
  await shown(second.page, 5);
  await second.close();
});
