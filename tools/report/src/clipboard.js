import {h} from './dom.js';

// A page opened from disk may be refused the clipboard; the old way still works there.
export async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const field = h('textarea', {class: 'visually-hidden', 'aria-hidden': 'true'});
    field.value = text;
    document.body.append(field);
    field.select();
    const done = document.execCommand('copy');
    field.remove();
    return done;
  }
}
