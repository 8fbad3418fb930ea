// Chromium's headless shell (it opens a page in half the time of the whole browser), and pages that fail a test for
// whatever they print, raise or ask for.
import {readFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {join} from 'node:path';
import {fileURLToPath, pathToFileURL} from 'node:url';

export const kReportFolder = fileURLToPath(new URL('../../../tools/report', import.meta.url));
const modules = process.env.MORVALE_NODE_MODULES ?? join(kReportFolder, 'node_modules');
export const require = createRequire(join(modules, 'any.js'));

const kFlags = [
  '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
  '--disable-component-update', '--disable-sync'
];

export function launch() {
  const executablePath = process.env.MORVALE_CHROMIUM ?? '/usr/bin/chromium-headless-shell';
  return require('playwright-core').chromium.launch({executablePath, headless: true, args: kFlags});
}

// Opens a page and waits until its first frame is drawn. `complaints` gathers what must not be.
export async function open(
    browser, file, {width = 1280, height = 900, theme = 'light', script, hash = '', drawn = '#stage[data-frame]'} = {}) {
  const context =
      await browser.newContext({viewport: {width, height}, colorScheme: theme, reducedMotion: 'reduce'});
  const page = await context.newPage();
  const complaints = [];
  page.on('console', message => complaints.push(`console: ${message.text()}`));
  page.on('pageerror', error => complaints.push(`error: ${error.message}`));
  page.on('request', request => {
    if (!/^(file|data|blob):/.test(request.url())) complaints.push(`request: ${request.url()}`);
  });
  if (script) await page.addInitScript(script);
  await page.goto(pathToFileURL(file).href + hash);
  await page.waitForSelector(drawn);
  return {page, complaints, close: () => context.close()};
}

// What a click has the browser write, with the name it proposes.
export async function saved(page, selector) {
  const [download] = await Promise.all([page.waitForEvent('download'), page.click(selector)]);
  return {name: download.suggestedFilename(), bytes: readFileSync(await download.path())};
}

// A picture out of the page, decoded: its size, and the colours at places in shares of it.
export async function decoded(page, bytes, places) {
  return page.evaluate(async ([base64, wanted]) => {
    const image = new Image();
    image.src = `data:image/png;base64,${base64}`;
    await image.decode();
    const {naturalWidth: width, naturalHeight: height} = image;
    const context = Object.assign(document.createElement('canvas'), {width, height})
                        .getContext('2d', {willReadFrequently: true});
    context.drawImage(image, 0, 0);
    const at = ([x, y]) => [...context.getImageData(Math.floor(x * width), Math.floor(y * height), 1, 1).data].slice(0, 3);
    return {width, height, colours: wanted.map(at)};
  }, [bytes.toString('base64'), places]);
}

export const shown = (page, frame) => page.waitForSelector(`#stage[data-frame="${frame}"]`);

// One pixel of the large view, by its place in shares of the picture; read from a copy, as the view's own
// canvas is not made for it.
export function pixel(page, across, down, side = 'current') {
  return page.evaluate(([x, y, which]) => {
    const canvas = document.querySelector(`canvas[data-side="${which}"]`);
    const copy = Object.assign(document.createElement('canvas'), {width: 1, height: 1});
    const context = copy.getContext('2d', {willReadFrequently: true});
    context.drawImage(canvas, -Math.floor(x * canvas.width), -Math.floor(y * canvas.height));
    return [...context.getImageData(0, 0, 1, 1).data].slice(0, 3);
  }, [across, down, side]);
}

// A picture of plain parts, as base64: each part a colour from its left edge, down to its end, from its top.
export async function paintedPicture(browser, parts, width = 32, height = 24, type = 'image/jpeg') {
  const page = await browser.newPage();
  const url = await page.evaluate(([list, across, down, kind]) => {
    const canvas = Object.assign(document.createElement('canvas'), {width: across, height: down});
    const context = canvas.getContext('2d');
    context.fillStyle = '#000000';
    context.fillRect(0, 0, across, down);
    for (const [colour, left, end = down, top = 0] of list) {
      context.fillStyle = colour;
      context.fillRect(left, top, across - left, end - top);
    }
    return canvas.toDataURL(kind, 0.95);
  }, [parts, width, height, type]);
  await page.close();
  return url.slice(url.indexOf(',') + 1);
}

// Plain pictures, one for each colour.
export const plainPictures = (browser, colours) =>
    Promise.all(colours.map(colour => paintedPicture(browser, [[colour, 0]])));
