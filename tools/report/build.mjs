// Makes the report's template: node build.mjs OUT_FILE, after `npm ci` in this folder. One HTML file with
// script and style inlined; the program puts a run's data in the place of the marker. MORVALE_NODE_MODULES
// names another node_modules folder, for a build that leaves the sources alone.
import {createHash} from 'node:crypto';
import {mkdirSync, readFileSync, writeFileSync} from 'node:fs';
import {createRequire} from 'node:module';
import {dirname, join, resolve} from 'node:path';
import {fileURLToPath} from 'node:url';

const kMarker = '@@MORVALE_REPORT_DATA@@';
const here = dirname(fileURLToPath(import.meta.url));
const modules = resolve(process.env.MORVALE_NODE_MODULES ?? join(here, 'node_modules'));

async function bundle() {
  const esbuild = createRequire(join(modules, 'any.js'))('esbuild');
  const result = await esbuild.build({
    entryPoints: [join(here, 'src/main.js')],
    bundle: true,
    minify: true,
    write: false,
    outdir: 'out',
    format: 'iife',
    target: ['es2020', 'safari15'],
    charset: 'utf8',
    nodePaths: [modules],
    logLevel: 'warning',
  });
  const text = extension => result.outputFiles.find(file => file.path.endsWith(extension)).text.trim();
  return {script: text('.js'), style: text('.css')};
}

// What stands between the tags is what the browser hashes, so nothing may be added there.
const hash = text => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

function policy({script, style}) {
  return [
    'default-src \'none\'',
    `script-src ${hash(script)}`,
    `style-src ${hash(style)}`,
    'img-src data:',
    'base-uri \'none\'',
    'form-action \'none\'',
  ].join('; ');
}

function fill(template, parts) {
  return Object.entries(parts).reduce(
      (page, [marker, text]) => page.replace(`@@${marker}@@`, () => text), template);
}

function check(page, {script, style}) {
  if (page.split(kMarker).length !== 2) throw new Error(`${kMarker} must stand in the template exactly once`);
  if (/<\/script/i.test(script) || /<!--/.test(script)) throw new Error('the script would end its own tag');
  if (/<\/style/i.test(style)) throw new Error('the style would end its own tag');
  if (/url\((?!["']?data:)/i.test(style)) throw new Error('the style refers to something outside');
}

const [outFile] = process.argv.slice(2);
if (!outFile) {
  console.error('usage: node build.mjs OUT_FILE');
  process.exit(2);
}
const parts = await bundle();
const licence = readFileSync(join(modules, 'uplot/LICENSE'), 'utf8').trim();
let page = fill(readFileSync(join(here, 'src/template.html'), 'utf8'), {
  CSP: policy(parts),
  STYLE: parts.style,
  SCRIPT: parts.script,
});
page = `${page.trimEnd()}\n<!-- The charts are drawn with uPlot, under this licence:\n\n${licence}\n-->\n`;
check(page, parts);
mkdirSync(dirname(resolve(outFile)), {recursive: true});
writeFileSync(outFile, page);
