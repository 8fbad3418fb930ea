// What holds for every page: what it shows, at every width and in both themes, and the least and worst it can be given.
import assert from 'node:assert/strict';
import {readFileSync} from 'node:fs';
import {basename, join} from 'node:path';
import {test} from 'node:test';

import {open, require, shown} from './browser.mjs';
import {emptyRecords, kFrontGeometry, readData} from './fixture.mjs';
import {browser, everyReport, fits, given, listedRecord, page, reports, resize} from './pages.mjs';

test('every report opens without a complaint, shows what its records say, and its jump marks lead there', async () => {
  for (const file of everyReport) {
    const data = readData(file), bytes = Buffer.from(data.records, 'base64'),
          last = data.frames.number.length - 1;
    const {page: tab, complaints, close} = await open(browser, file);
    await tab.click('#tab-record');
    for (const [key, frame] of [['Home', 0], ['ArrowRight', Math.min(1, last)], ['End', last]]) {
      await tab.focus('#scrubber');
      await tab.keyboard.press(key);
      await shown(tab, frame);
      const listed = await listedRecord(tab), column = data.baseline ? 2 : 1;
      assert.equal(listed.size, 72);
      for (const {offset, signed} of data.fields) {
        const value =
            signed ? bytes.readInt32LE(288 * frame + offset) : bytes.readUInt32LE(288 * frame + offset);
        assert.equal(
            listed.get(offset)[column], `${value}`, `${basename(file)}: frame ${frame}, byte ${offset}`);
      }
    }
    const analysed = Array.from({length: last + 1}, (_, frame) => frame)
                         .filter(frame => data.frames.process[frame] === 0 && data.frames.gated[frame] === 0);
    const shares = analysed.map(frame => bytes.readInt32LE(288 * frame + 4));
    if (shares.length > 0) {
      const mean = shares.reduce((sum, share) => sum + share, 0) / shares.length;
      assert.equal(await tab.textContent('.card:nth-child(2) .big'), `${mean.toFixed(1)} %`);
    }
    await tab.click('#tab-events');
    const marks = await tab.$$('#panel-events button.jump');
    for (const mark of marks.slice(0, 8).reverse()) {
      const index = Number(await mark.getAttribute('data-index'));
      await mark.click();
      await shown(tab, index);
      assert.equal(await tab.inputValue('#scrubber'), `${index}`);
      assert.match(await tab.textContent('#where'), new RegExp(`^Frame ${data.frames.number[index]}\\D`));
    }
    assert.deepEqual(complaints, [], basename(file));
    await close();
  }
});

test('the whole frame, its toggles and the scrubber are in view without scrolling', async () => {
  const tall = page('tall', {
    change: data => {
      Object.assign(
          data.geometries[0] = {...kFrontGeometry},
          {width: 180, height: 320, shrunkWidth: 144, shrunkHeight: 256, segFactor: 64, notes: ['A portrait frame. '.repeat(12)]});
    }
  });
  for (const file of [...everyReport, tall]) {
    const {page: tab, close} = await open(browser, file);
    for (const [width, height] of [[1440, 900], [1920, 1080]]) {
      await resize(tab, width, height);
      const dock = await (await tab.$('.dock')).boundingBox();
      assert.ok(dock.y + dock.height <= height);
      for (const part of ['.view canvas', '.controls', '.legend', '#readout']) {
        const box = await (await tab.$(part)).boundingBox();
        assert.ok(box.y >= 0 && box.y + box.height <= dock.y, `${basename(file)}, ${width}: ${part}`);
        if (part === '.view canvas') assert.ok(box.height > (readData(file).baseline ? 250 : 550), `${box.height}`);
      }
    }
    await close();
  }
});

test('names, texts and log lines are shown as they are, never run', async () => {
  const evil = '<script>window.pwned = 1</script><img src=x onerror="window.pwned = 1"></script>@@MORVALE';
  const file = page('hostile', {
    count: 3,
    change: data => {
      Object.assign(data, {title: evil, command: evil, program: evil, engine: evil});
      data.source = {kind: 'pictures', name: evil, made_by: evil};
      data.frames.name = [evil, evil, evil];
      data.labels[1].name = evil;
      Object.assign(data, {log: [[0, 0]], log_lines: [`E${evil}`]});
      data.events = [{index: 0, kind: '"><script>', text: evil}];
      data.fields[0].meaning = evil;
    }
  });
  const {page: tab, complaints, close} = await open(browser, file, {width: 360});
  for (const id of ['record', 'events', 'log']) {
    await tab.click(`#tab-${id}`);
    assert.ok((await tab.textContent(`#panel-${id}`)).includes(evil), id);
  }
  assert.equal(await tab.textContent('h1'), evil);
  assert.equal(await tab.evaluate('window.pwned'), undefined);
  assert.ok(await fits(tab), 'long words wrap');
  assert.deepEqual(complaints, []);
  await close();
});

test('the least a run can hold: one frame, no face, no picture, nothing analysed', async () => {
  const lone = page('lone', {count: 1});
  const bare = page('bare', {
    count: 5,
    pictures: [],
    change: data => {
      data.records = emptyRecords(5);
      data.frames.boxes = data.frames.camera_faces = data.frames.boxes.map(() => []);
      data.log = [];
    }
  });
  const idle = page('idle', {
    count: 3,
    pictures: [],
    change: data => {
      data.records = emptyRecords(3);
      Object.assign(data.frames, {gated: [1, 1, 1], network_ms: [null, null, null]});
      data.label_runs = ['', '', ''];
    }
  });
  for (const file of [lone, bare, idle]) {
    const {page: tab, complaints, close} = await open(browser, file);
    await tab.click('.data-table summary');
    await tab.waitForSelector('.data-table tbody tr');
    await tab.focus('#scrubber');
    for (const key of ['Space', 'n', 'End', 'PageUp']) await tab.keyboard.press(key);
    assert.deepEqual(complaints, [], basename(file));
    if (file === bare) assert.match(await tab.textContent('#no-faces'), /No face was measured/);
    if (file === idle) assert.match(await tab.textContent('.sentence'), /not analysed/);
    await close();
  }
});

test('an index leads to its reports', {skip: !reports}, async () => {
  const {page: tab, complaints, close} =
      await open(browser, join(reports, 'reports/index.html'), {width: 360, theme: 'dark', drawn: 'li img'});
  assert.ok(await fits(tab));
  await tab.evaluate(readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8'));
  const {violations} = await tab.evaluate('axe.run({resultTypes: ["violations"]})');
  assert.deepEqual(violations.map(({id}) => id), []);
  const cards = await tab.$$eval('li', list => list.map(card => card.innerText));
  assert.match(cards[0], /front\s+40 frames, all records as recorded\.\s+40 frames, front camera, 640 × 480/);
  assert.match(cards[1], /back\s+40 frames, all records as recorded\.\s+40 frames, back camera/);
  assert.ok(await tab.$$eval('img', list => list.every(image => image.naturalWidth > 100)));
  await tab.click('text=back');
  await tab.waitForSelector('#stage[data-frame]');
  assert.equal(await tab.textContent('h1'), 'back');
  assert.deepEqual(complaints, []);
  await close();
});

test(
    'both themes and every width: readable, within the window, accessible; the choice needs no storage',
    async () => {
      const axe = readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
      const deny = () => Object.defineProperty(
          window, 'localStorage', {get() { throw new DOMException('denied', 'SecurityError'); }});
      for (const file of everyReport) {
        const {page: tab, complaints, close} = await open(browser, file, {theme: 'dark', script: deny});
        const background = () => tab.evaluate('getComputedStyle(document.body).backgroundColor');
        const dark = await background();
        await tab.evaluate(axe);
        for (const [theme, ids, rules] of [
                 ['dark', ['figures', 'record', 'events', 'log'], {}],
                 ['light', ['figures', 'record'], {runOnly: ['color-contrast']}]]) {  // all that a theme changes
          for (const id of given.includes(file) ? ['figures'] : ids) {  // whose tabs are those of the made pages
            await tab.click(`#tab-${id}`);
            const {violations} = await tab.evaluate(
                options => axe.run({resultTypes: ['violations'], ...options}), rules);
            const found = violations.map(
                ({id: rule, nodes}) => `${rule}: ${nodes.map(node => node.html.slice(0, 120)).join(' | ')}`);
            assert.deepEqual(found, [], `${basename(file)}, ${theme}, ${id}`);
          }
          if (theme === 'dark') await tab.click('#theme');
        }
        assert.notEqual(await background(), dark);
        for (const width of [1920, 1080, 760, 360]) {
          await resize(tab, width, 800);
          assert.ok(await fits(tab), `${basename(file)} at ${width}`);
        }
        assert.deepEqual(complaints, []);
        await close();
      }
    });
