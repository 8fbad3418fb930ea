// The list of events.
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {open, shown} from './browser.mjs';
import {putWords} from './fixture.mjs';
import {browser, front, kEvents, page} from './pages.mjs';

test('events: filtered by kind, searched, faces that come and go, and limits of one\'s own', async () => {
  const file = page('events', {
    change: data => {
      data.events = [...kEvents];
      for (let frame = 0; frame < 40; ++frame) putWords(data.records, frame, {0: frame < 20 ? 1 : 2});
      putWords(data.records, 25, {4: 200});
    }
  });
  const {page: tab, complaints, close} = await open(browser, file);
  await tab.click('#tab-events');
  const listed = () => tab.$$eval(
      '#panel-events .jump', rows => rows.map(row => [Number(row.dataset.index), row.querySelector('.mark').textContent]));
  const all = kEvents.map(({index, kind}) => [index, kind]);
  assert.deepEqual(await listed(), [...all.slice(0, 3), [20, 'faces'], all[3]]);
  assert.match(await tab.textContent('.jump[data-index="20"] .text'), /2 faces measured, 1 before/);
  await tab.uncheck('#kind-lost');
  await tab.uncheck('#kind-faces');
  assert.deepEqual(await listed(), [all[0], all[1], all[3]]);
  assert.equal(await tab.textContent('#tab-events .badge'), '3');
  await tab.fill('#event-search', '40 MS');
  assert.deepEqual(await listed(), [all[1]]);
  await tab.focus('#scrubber');
  await tab.keyboard.press('n');
  await shown(tab, 12);
  await tab.keyboard.press('n');
  assert.equal(await tab.inputValue('#scrubber'), '12', 'the keys go from one listed event to the next');

  await tab.fill('#event-search', 'luma');
  await tab.fill('#threshold-limit', '20');
  await tab.click('.threshold [type=submit]');
  assert.deepEqual(await listed(), [[25, 'yours'], [26, 'yours']], 'there and back');
  assert.match(await tab.textContent('.jump[data-index="25"] .text'), /luma of person 1 jumps by 20: 154 to 200/);
  await tab.selectOption('#threshold-figure', {label: 'person share'});
  await tab.selectOption('#threshold-how', {label: 'rises above'});
  await tab.fill('#threshold-limit', '49.5');
  await tab.click('.threshold [type=submit]');
  await tab.fill('#event-search', 'share');
  assert.deepEqual(await listed(), [[30, 'yours']], 'once, where it does');
  await tab.click('.thresholds button >> nth=1');
  assert.deepEqual(await listed(), []);
  assert.match(await tab.textContent('#panel-events .windowed'), /No event is like that/);
  assert.deepEqual(complaints, []);
  await close();
});

test('where nearly every run is sluggish one note says so', async () => {
  const slow = page('slow', {
    change: data => {
      data.frames.network_ms = data.frames.network_ms.map((_, frame) => frame === 3 ? 20 : 60 + frame);
      data.events = [...kEvents];
    }
  });
  const {page: tab, close} = await open(browser, slow);
  assert.equal(await tab.textContent('.stage-head .marks'), '', 'no mark on the frame');
  await tab.click('#tab-events');
  assert.match(await tab.textContent('#always-sluggish'), /31 ms or more/);
  assert.equal(await tab.$('#kind-sluggish'), null);
  assert.match(await tab.textContent('.cards'), /39 sluggish/);
  await close();
  const usual = await open(browser, front);
  assert.equal(await usual.page.$('#always-sluggish'), null);
  await usual.close();
});
