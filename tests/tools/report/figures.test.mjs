// The figures of a frame, of faces and of a person.
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {open, pixel, shown} from './browser.mjs';
import {putWords} from './fixture.mjs';
import {back, browser, front, near, page} from './pages.mjs';

test('front camera: each measured face has its figures, in words and in the table', async () => {
  const {page: tab, close} = await open(browser, front);
  const faces = () => tab.$$eval(
      '#figures .face',
      list => list.map(face => ({
                         cells: [...face.querySelectorAll('td')].map(cell => cell.textContent),
                         text: face.textContent
                       })));
  const [first, ...others] = await faces();
  assert.equal(others.length, 0);
  assert.deepEqual(first.cells, ['19°', '23°', '28°', '75', '85', '100', '180', '200', '230']);
  assert.match(first.text, /110 ‰.*Luma 150 · 500 pixels above 200, 30 above 230/);
  await tab.keyboard.press('ArrowRight');
  await shown(tab, 1);
  assert.equal((await faces()).length, 2);
  await tab.click('.data-table summary');
  await tab.waitForSelector('.data-table tbody tr');
  const row =
      await tab.$$eval('.data-table tbody tr:nth-child(2) > *', list => list.map(cell => cell.textContent));
  assert.deepEqual(row, [
    '102', 'analysed', '21', '2', '2', '151', '23 (19–28)', '85 (75–100)', '200 (180–230)', '120',
    '40 (40–40)', '90 (90–90)', '170 (170–170)', '10.100', '1.500'
  ]);
  await close();
});

test('faces by person: number and colour stay with the person, the record\'s order is one click away', async () => {
  const left = [40, 60, 80, 80], right = [220, 60, 70, 70];
  const file = page('people', {
    count: 4,
    change: data => {
      data.frames.boxes = [[left, right], [right, left], [left, right], [right, left]];
      for (let frame = 0; frame < 4; ++frame) putWords(data.records, frame, {0: 2});
    }
  });
  const {page: tab, complaints, close} = await open(browser, file);
  for (const id of ['labels', 'faces']) await tab.uncheck(`#show-${id}`);
  const cards = () => tab.$$eval('#figures .face', list => list.map(card => {
    const [name, place] = [card.getAttribute('aria-label'), card.querySelector('code').textContent];
    return [name, place, getComputedStyle(card.querySelector('.dot')).backgroundColor];
  }));
  const colours = ['rgb(229, 83, 45)', 'rgb(59, 125, 224)'];
  const onBox = async ([x, y, , h]) => near(await pixel(tab, x / 320, (y + h * 0.6) / 240), [229, 83, 45], 40);
  for (const [frame, blocks] of [[0, [0, 1]], [1, [1, 0]]]) {
    await tab.focus('#scrubber');
    await tab.keyboard.press(frame === 0 ? 'Home' : 'ArrowRight');
    await shown(tab, frame);
    assert.deepEqual(
        await cards(), blocks.map((block, id) => [`Person ${id + 1}`, `meta[${block}]`, colours[id]]));
    assert.ok(await onBox(left) && !await onBox(right), 'the first person is the left one');
  }
  // Luma of the second frame: 151 in the record's first block, the right person's.
  assert.match(await tab.textContent('.chart:has-text("Face luma") .readouts'), /person 1120 ?person 2151/);

  await tab.check('#order-figures [value=record]', {force: true});
  await tab.waitForSelector('#figures .face[aria-label="Face 1"]');
  assert.deepEqual(await cards(), [0, 1].map(block => [`Face ${block + 1}`, `meta[${block}]`, colours[block]]));
  assert.ok(await onBox(right) && !await onBox(left), 'the record begins with the right one');
  assert.match(await tab.textContent('.chart:has-text("Face luma") .readouts'), /face 1151 ?face 2120/);
  assert.ok(await tab.isChecked('#order-timelines [value=record]'), 'one choice for the page');
  assert.deepEqual(complaints, []);
  await close();
});

test('back camera: person box and grid come from their words', async () => {
  const {page: tab, close} = await open(browser, back);
  assert.match(
      await tab.textContent('.sentence'), /A person, 90 × 100 at 40, 25; 30 % of the label map is body/);
  const cells = await tab.$$eval('.occupancy i', list => list.map(cell => cell.className === 'on' ? 1 : 0));
  assert.deepEqual(cells, Array.from({length: 285}, (_, cell) => cell % 19 < 9 ? 1 : 0));
  assert.match(await tab.textContent('#figures'), /Resource hint 77/);
  await close();
});

test('what a recording alone does not tell is left out, not shown as 0', async () => {
  const alone = page('alone', {
    change: data => {
      for (const part of ['network_ms', 'process_ms', 'analysis_ms', 'boxes']) data.frames[part].fill(null);
      data.comparison = {same: false, index: 0, field: 'process', offset: null, expected: 0, got: -1, differing: 1};
    }
  });
  const {page: tab, complaints, close} = await open(browser, alone);
  assert.match(await tab.textContent('#comparison'), /First in .*, process: expected 0, got -1/);
  assert.match(await tab.textContent('#figures'), /Library–/);
  assert.doesNotMatch(await tab.textContent('#figures'), /library box/);
  assert.match(await tab.textContent('main'), /a recording alone does not tell/);
  assert.equal(await tab.$('#show-boxes'), null, 'no box that could do nothing');
  assert.deepEqual(complaints, []);
  await close();
});
