// Going from frame to frame: by scrubber, keys and charts, in time, and by the address.
import assert from 'node:assert/strict';
import {test} from 'node:test';

import {open, pixel, shown} from './browser.mjs';
import {browser, front, kEvents, near, page} from './pages.mjs';

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
