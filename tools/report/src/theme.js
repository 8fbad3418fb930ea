// Light or dark: the system's choice until the reader makes one. Storage may be refused (a page opened from
// disk in a strict browser); the choice then lasts as long as the page.
import {h, icon} from './dom.js';

const kKey = 'morvale-report-theme';
const listeners = new Set();

function stored() {
  try {
    return localStorage.getItem(kKey);
  } catch {
    return null;
  }
}

function store(theme) {
  try {
    localStorage.setItem(kKey, theme);
  } catch {
    // Not kept; nothing else depends on it.
  }
}

export const onTheme = listener => listeners.add(listener);
export const offTheme = listener => listeners.delete(listener);

function apply(theme) {
  document.documentElement.dataset.theme = theme;
  for (const listener of listeners) listener(theme);
}

export function themeButton() {
  const system = matchMedia('(prefers-color-scheme: dark)');
  let chosen = stored();
  const current = () => chosen === 'dark' || chosen === 'light' ? chosen : system.matches ? 'dark' : 'light';
  const button = h('button', {
    type: 'button',
    class: 'icon-button',
    id: 'theme',
    onclick: () => {
      chosen = current() === 'dark' ? 'light' : 'dark';
      store(chosen);
      apply(current());
    }
  });
  onTheme(theme => {
    const other = theme === 'dark' ? 'light' : 'dark';
    button.replaceChildren(icon(other === 'dark' ? 'moon' : 'sun'));
    button.setAttribute('aria-label', `Switch to the ${other} theme`);
    button.title = `Switch to the ${other} theme`;
  });
  system.addEventListener('change', () => apply(current()));
  apply(current());
  return button;
}

// A colour as it is written, or a custom property's in the theme of the moment, for what is drawn on a canvas.
export const themed = colour => colour.startsWith('--') ?
    getComputedStyle(document.documentElement).getPropertyValue(colour).trim() :
    colour;
