// Files out of the page: pictures and tables.
import {h} from './dom.js';

const kKeptFor = 60000;  // ms, which is long enough for any browser to write it

// `part`: what of the run it is, with an ending. The browser asks where to, or writes into its folder for downloads.
export function save(report, part, blob) {
  const run = report.data.title.replace(/[^\p{L}\p{N}._-]+/gu, '_').slice(0, 80);
  const address = URL.createObjectURL(blob);
  h('a', {href: address, download: `${run}_${part}`}).click();
  setTimeout(() => URL.revokeObjectURL(address), kKeptFor);
}

export function saveCanvas(report, part, canvas) { canvas.toBlob(blob => save(report, part, blob), 'image/png'); }

// RFC 4180: a text with commas, quotes or line ends stands in quotes, its quotes twice.
export function saveCsv(report, part, rows) {
  const cell = value => /[",\r\n]/.test(value) ? `"${String(value).replace(/"/g, '""')}"` : String(value ?? '');
  save(report, part, new Blob(rows.map(row => `${row.map(cell).join(',')}\r\n`), {type: 'text/csv'}));
}
