// The page in a real browser. MORVALE_REPORT_TEMPLATE names the built template (made here where it is not
// set); MORVALE_REPORT_HTML, a list with commas, adds whole reports to the checks that hold for every report;
// MORVALE_REPORT_INDEX is an index of reports.
import assert from 'node:assert/strict';
import {execFileSync} from 'node:child_process';
import {mkdtempSync, readdirSync, readFileSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {basename, join} from 'node:path';
import {after, before, test} from 'node:test';

import {
  decoded,
  kReportFolder,
  launch,
  open,
  paintedPicture,
  pixel,
  plainPictures,
  require,
  saved,
  shown
} from './browser.mjs';
import * as fixture from './fixture.mjs';

const {emptyRecords, kFrontGeometry, leftOf, makeData, packRuns, putWords, readData, writePage} = fixture;
const kEvents = [
  {index: 4, kind: 'found', text: 'person found'},
  {index: 12, kind: 'sluggish', text: 'network run of 40 ms'}, {index: 12, kind: 'lost', text: 'person lost'},
  {index: 30, kind: 'failed', text: 'failed'}
];
const folder = mkdtempSync(join(tmpdir(), 'morvale-report-'));
const given = (process.env.MORVALE_REPORT_HTML ?? '').split(',').filter(Boolean);
let browser, template, pictures, front, back, compared;

const page = (name, options) =>
    writePage(template, makeData({pictures, ...options}), join(folder, `${name}.html`));
const near = (actual, expected, slack = 12) =>
    actual.every((channel, i) => Math.abs(channel - expected[i]) <= slack);

before(async () => {
  browser = await launch();
  template = process.env.MORVALE_REPORT_TEMPLATE;
  if (!template) {
    template = join(folder, 'template.html');
    execFileSync(process.execPath, [join(kReportFolder, 'build.mjs'), template]);
  }
  pictures = await plainPictures(browser, ['#c04040', '#40c040', '#4040c0']);
  const events = data => {
    data.events = kEvents;
  };
  front = page('front', {change: events});
  back = page('back', {camera: 'back', change: events});
  compared = page('compared', {
    change: data => {
      const base = makeData();
      data.baseline =
          {name: 'before', records: base.records, label_runs: base.label_runs, boxes: base.frames.boxes};
      putWords(data.records, 7, {1: 90});
      data.label_runs[7] = packRuns(leftOf(40, kFrontGeometry));
    }
  });
});

after(async () => {
  await browser?.close();
  rmSync(folder, {recursive: true});
});

// Whether the page needs no scrolling sideways, once it has followed the window's size.
function fits(tab) {
  return tab.evaluate(async () => {
    const nextDrawing = () => new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done)));
    for (let i = 0; i < 60 && document.documentElement.scrollWidth > innerWidth; ++i) await nextDrawing();
    return document.documentElement.scrollWidth <= innerWidth;
  });
}

const everyReport = () => [front, back, compared, ...given];

// The record as the page lists it, by offset.
async function listedRecord(tab) {
  const rows = await tab.$$eval('table.fields tbody tr', list => list.map(row => {
    const figures = [...row.querySelectorAll('td.figure')].map(cell => cell.textContent);
    return [Number(row.dataset.offset), figures];
  }));
  return new Map(rows);
}

test('every report opens without a complaint and shows what its records say', async () => {
  for (const file of everyReport()) {
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
    assert.deepEqual(complaints, [], basename(file));
    await close();
  }
});

test('every jump mark lands on its frame', async () => {
  for (const file of everyReport()) {
    const data = readData(file);
    const {page: tab, close} = await open(browser, file);
    await tab.click('#tab-events');
    const marks = await tab.$$('#panel-events button.jump');
    for (const mark of marks.slice(0, 8).reverse()) {
      const index = Number(await mark.getAttribute('data-index'));
      await mark.click();
      await shown(tab, index);
      assert.equal(await tab.inputValue('#scrubber'), `${index}`);
      assert.match(await tab.textContent('#where'), new RegExp(`^Frame ${data.frames.number[index]}\\D`));
    }
    await close();
  }
});

test('the scrubber follows mouse and keys, and the picture is the frame\'s', async () => {
  const {page: tab, complaints, close} = await open(browser, front);
  for (const id of ['labels', 'boxes', 'faces']) await tab.uncheck(`#show-${id}`);
  const box = await (await tab.$('#scrubber')).boundingBox();
  await tab.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
  const middle = Number(await tab.inputValue('#scrubber'));
  assert.ok(Math.abs(middle - 19.5) < 2, `the middle of 40 frames, not ${middle}`);
  await shown(tab, middle);

  await tab.keyboard.press('Home');
  const steps = [
    ['ArrowRight', 1], ['ArrowRight', 2], ['ArrowLeft', 1], ['PageDown', 11], ['n', 12], ['n', 30], ['n', 30],
    ['p', 12], ['p', 4], ['p', 4], ['PageUp', 0], ['End', 39]
  ];
  const colours = [[192, 64, 64], [64, 192, 64], [64, 64, 192]];
  for (const [key, frame] of steps) {
    await tab.keyboard.press(key);
    await shown(tab, frame);
    assert.ok(near(await pixel(tab, 0.5, 0.5), colours[frame % 3]), `${key}: frame ${frame}'s picture`);
  }
  await tab.selectOption('.speed', '2');
  await tab.focus('#scrubber');
  await tab.keyboard.press('Space');  // at the end: from the start again
  await tab.waitForSelector('#play[aria-label="Pause"]');
  await tab.keyboard.press('Space');
  await tab.waitForSelector('#play[aria-label="Play"]');
  assert.ok(Number(await tab.inputValue('#scrubber')) < 39);
  assert.deepEqual(complaints, []);
  await close();
});

test('keys stay with what uses them', async () => {
  const {page: tab, close} = await open(browser, front);
  await tab.click('#tab-log');
  await tab.fill('#panel-log input[type=search]', '');
  await tab.type('#panel-log input[type=search]', 'n p');
  await tab.focus('#opacity');
  await tab.keyboard.press('ArrowRight');
  await tab.focus('#tab-log');
  await tab.keyboard.press('ArrowLeft');
  assert.equal(await tab.getAttribute('#tab-events', 'aria-selected'), 'true', 'arrows move between tabs');
  assert.equal(await tab.inputValue('#scrubber'), '0');
  await close();
});

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

test('a film plays in its own time, passing over what cannot be drawn, and loops a range', async () => {
  const film = page('played', {
    count: 400,
    change: data => {
      data.frames.seconds = data.frames.number.map((_, frame) => frame / 100);
    }
  });
  const {page: tab, complaints, close} = await open(browser, film);
  await tab.selectOption('.speed', {label: '2×'});
  const begun = Date.now();
  await tab.keyboard.press(' ');
  await tab.waitForFunction(() => document.querySelector('#scrubber').value === '399');
  await tab.waitForSelector('#play[aria-label=Play]');
  const took = Date.now() - begun;
  assert.ok(took > 1900 && took < 4000, `4 s at twice the speed took ${took} ms; 400 frames at 60 a second take 6.7 s`);

  const goTo = async frame => {
    await tab.evaluate(number => location.hash = `#frame=${number}`, 100 + 2 * frame);
    await shown(tab, frame);
  };
  await goTo(100);
  await tab.keyboard.press('[');
  await goTo(120);
  await tab.keyboard.press(']');
  assert.match(await tab.textContent('#range'), /Frames 300 to 340/);
  await tab.keyboard.press('l');
  await tab.selectOption('.speed', {label: '0.5×'});
  await tab.keyboard.press(' ');
  const seen = await tab.evaluate(async () => {
    const found = [];
    for (const end = performance.now() + 1200; performance.now() < end;) {
      await new Promise(requestAnimationFrame);
      found.push(Number(document.querySelector('#scrubber').value));
    }
    return found;
  });
  assert.ok(seen.slice(3).every(frame => frame >= 100 && frame <= 120), `${seen}`);
  const turns = seen.slice(4).filter((frame, at) => frame < seen[at + 3]).length;
  assert.ok(turns >= 1 && turns <= 4, `21 frames last 0.42 s at half the speed: ${turns} turns`);
  assert.deepEqual(complaints, []);
  await close();
});

test('a click on a chart goes to that frame, a drag zooms all charts', async () => {
  const {page: tab, close} = await open(browser, front);
  const plot = await tab.$('.u-over');
  await plot.scrollIntoViewIfNeeded();
  const box = await plot.boundingBox();
  await tab.mouse.click(box.x + box.width * 10 / 39, box.y + box.height / 2);
  await shown(tab, 10);
  assert.match(await tab.textContent('.chart .readouts'), /humanRatio30 %/);

  const places = () =>
      tab.$$eval('.here', lines => lines.map(line => line.hidden ? 'out' : line.style.transform));
  const whole = await places();
  await tab.mouse.move(box.x + box.width * 20 / 39, box.y + 40);
  await tab.mouse.down();
  await tab.mouse.move(box.x + box.width * 30 / 39, box.y + 40, {steps: 4});
  await tab.mouse.up();
  await tab.click('text=Whole run', {trial: true});
  assert.deepEqual(await places(), whole.map(() => 'out'), 'frame 10 is outside of every chart');
  const network = '.chart:has-text("Network time")';
  assert.match(await tab.textContent('#range'), /Frames 1\d\d to 1\d\d; /);
  assert.match(await tab.getAttribute('.plot', 'aria-label'), /humanRatio 4[01] % to (49|50) %, mean 4\d/);
  assert.match(await tab.textContent(`${network} .chart-note`), /max 1[23]\.\d+ ms over 1\d frames/, 'of the range');
  await tab.click('text=Whole run');
  await tab.waitForSelector('text=Whole run', {state: 'hidden'});
  assert.match(await tab.textContent(`${network} .chart-note`), /max 13\.90 ms over 40 frames/);
  assert.equal(await tab.inputValue('#scrubber'), '10', 'a drag is no click');
  await close();
});

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

test('the whole frame, its toggles and the scrubber are in view without scrolling', async () => {
  const tall = page('tall', {
    change: data => {
      Object.assign(
          data.geometries[0] = {...kFrontGeometry},
          {width: 180, height: 320, shrunkWidth: 144, shrunkHeight: 256, segFactor: 64, notes: ['A portrait frame. '.repeat(12)]});
    }
  });
  for (const file of [...everyReport(), tall])
    for (const [width, height] of [[1440, 900], [1920, 1080]]) {
      const {page: tab, close} = await open(browser, file, {width, height});
      const dock = await (await tab.$('.dock')).boundingBox();
      assert.ok(dock.y + dock.height <= height);
      for (const part of ['.view canvas', '.controls', '.legend', '#readout']) {
        const box = await (await tab.$(part)).boundingBox();
        assert.ok(box.y >= 0 && box.y + box.height <= dock.y, `${basename(file)}, ${width}: ${part}`);
        if (part === '.view canvas') assert.ok(box.height > (readData(file).baseline ? 250 : 550), `${box.height}`);
      }
      await close();
    }
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

test('the scores are the recording\'s, byte for byte', {skip: given.length === 0}, async () => {
  for (const [file, at] of [[given[0], 'front'], [given[1], 'back']]) {
    const labels = join(file, '../..', at, 'labels'), name = readdirSync(labels).sort()[7];
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

test('an address is followed although the page writes its own before it hears of it', async () => {
  const {page: tab, close} = await open(browser, front);
  await tab.evaluate(() => {
    location.hash = '#frame=140';
    history.replaceState(null, '', '#frame=100');
  });
  await shown(tab, 20);
  await close();
});

test('a source that passes twice: each pass has its own links and names', async () => {
  const twice = page('twice', {
    change: data => {
      data.frames.number = data.frames.number.map((_, frame) => 7 + frame % 20);
    }
  });
  for (const [hash, frame, name] of [['#frame=10', 3, 'Frame 10 (1)'], ['#frame=10&pass=2', 23, 'Frame 10 (2)']]) {
    const {page: tab, close} = await open(browser, twice, {hash});
    await shown(tab, frame);
    assert.ok((await tab.textContent('#where')).startsWith(name));
    assert.match(await tab.textContent('#frame-heading'), /^Frame 10, pass [12]$/);
    await close();
  }
});

test('a film\'s frames have its time stamps beside their numbers', async () => {
  const film = page('film', {
    change: data => {
      data.frames.seconds = data.frames.number.map((_, frame) => frame < 39 ? frame * 1.7 : null);
      data.events = kEvents;
    }
  });
  const {page: tab, complaints, close} = await open(browser, film, {hash: '#frame=176'});
  await shown(tab, 38);
  assert.equal(await tab.textContent('#frame-heading'), 'Frame 176 · 1:04.60');
  assert.match(await tab.textContent('#where'), /^Frame 176 39 of 40 · 1:04.60$/);
  await tab.click('#tab-events');
  assert.equal(await tab.textContent('#panel-events .jump .time'), '6.80 s');
  assert.match(await tab.textContent('.sheet .jump[data-index="4"]'), /108 · 6\.80 s/);
  await tab.keyboard.press('End');
  await shown(tab, 39);
  assert.equal(await tab.textContent('#frame-heading'), 'Frame 178', 'a frame without a stamp');
  assert.deepEqual(complaints, []);
  await close();
});

test('the address follows the frame, and a button copies it', async () => {
  const script = () => Object.defineProperty(navigator, 'clipboard', {
    value: {
      writeText: async text => {
        window.copied = text;
      }
    }
  });
  const {page: tab, complaints, close} = await open(browser, front, {script});
  assert.ok(!tab.url().includes('#'), 'a page as it was opened keeps its address');
  const history = await tab.evaluate('history.length');
  for (let step = 1; step <= 3; ++step) {
    await tab.keyboard.press('ArrowRight');
    await shown(tab, step);
  }
  await tab.waitForURL('**/front.html#frame=106');
  assert.equal(await tab.evaluate('history.length'), history, 'back leaves the page');
  await tab.click('#copy-address');
  await tab.waitForSelector('text=Copied');
  assert.equal(await tab.evaluate('copied'), tab.url());
  assert.deepEqual(complaints, []);
  await close();
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

test('an index leads to its reports', {skip: !process.env.MORVALE_REPORT_INDEX}, async () => {
  const {page: tab, complaints, close} =
      await open(browser, process.env.MORVALE_REPORT_INDEX, {width: 360, theme: 'dark', drawn: 'li img'});
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
      for (const file of everyReport()) {
        const {page: tab, complaints, close} = await open(browser, file, {theme: 'dark', script: deny});
        const background = () => tab.evaluate('getComputedStyle(document.body).backgroundColor');
        const dark = await background();
        await tab.evaluate(axe);
        for (const [theme, ids] of [
                 ['dark', ['figures', 'record', 'events', 'log']], ['light', ['figures', 'record']]]) {
          for (const id of ids) {
            await tab.click(`#tab-${id}`);
            const {violations} = await tab.evaluate('axe.run({resultTypes: ["violations"]})');
            const found = violations.map(
                ({id: rule, nodes}) => `${rule}: ${nodes.map(node => node.html.slice(0, 120)).join(' | ')}`);
            assert.deepEqual(found, [], `${basename(file)}, ${theme}, ${id}`);
          }
          if (theme === 'dark') await tab.click('#theme');
        }
        assert.notEqual(await background(), dark);
        for (const width of [1920, 1080, 760, 360]) {
          await tab.setViewportSize({width, height: 800});
          assert.ok(await fits(tab), `${basename(file)} at ${width}`);
        }
        assert.deepEqual(complaints, []);
        await close();
      }
    });
