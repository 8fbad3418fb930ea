// Elements. Every string becomes a text node or an attribute, so what a file is called never becomes markup.

export function h(tag, attributes = {}, ...children) {
  return filled(document.createElement(tag), attributes, children);
}

export function svg(tag, attributes = {}, ...children) {
  return filled(document.createElementNS('http://www.w3.org/2000/svg', tag), attributes, children);
}

function filled(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === null || value === undefined || value === false) continue;
    if (name.startsWith('on'))
      element.addEventListener(name.slice(2), value);
    else
      element.setAttribute(name, value === true ? '' : value);
  }
  element.append(
      ...children.flat(Infinity).filter(child => child !== null && child !== undefined && child !== false && child !== ''));
  return element;
}

export const byId = id => document.getElementById(id);
export const hidden = text => h('span', {class: 'visually-hidden'}, text);

const kIcons = {
  play: 'M7 4.5v15l12-7.5z',
  pause: 'M7 5h3.5v14H7zM13.5 5H17v14h-3.5z',
  previous: 'M6 5h2v14H6zM19 5v14L9 12z',
  next: 'M16 5h2v14h-2zM5 5v14l10-7z',
  copy:
      'M9 3h10a2 2 0 0 1 2 2v10h-2V5H9zM5 7h8a2 2 0 0 1 2 2v10a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2V9a2 2 0 0 1 2-2zm0 2v10h8V9z',
  link:
      'M10 6H6a5 5 0 0 0 0 10h4v-2H6a3 3 0 0 1 0-6h4zM14 6h4a5 5 0 0 1 0 10h-4v-2h4a3 3 0 0 0 0-6h-4zM8 10h8v2H8z',
  loop: 'M7 7h10v4l5-5-5-5v4H5v7h2zM17 17H7v-4l-5 5 5 5v-4h12v-7h-2z',
  pair: 'M3 5h8v14H3zm2 2v10h4V7zM13 5h8v14h-8z',
  save: 'M11 3h2v9l3.5-3.5 1.4 1.4L12 15.8 6.1 9.9l1.4-1.4L11 12zM4 18h16v2H4z',
  minus: 'M5 11h14v2H5z',
  plus: 'M11 5h2v6h6v2h-6v6h-2v-6H5v-2h6z',
  fit: 'M4 4h6v2H6v4H4zM14 4h6v6h-2V6h-4zM4 14h2v4h4v2H4zM18 14h2v6h-6v-2h4z',
  full: 'M3 5h18v14H3zm2 2v10h14V7z',
  sun:
      'M12 7.5a4.5 4.5 0 1 1 0 9 4.5 4.5 0 0 1 0-9zM11 1h2v4h-2zM11 19h2v4h-2zM1 11h4v2H1zM19 11h4v2h-4zM4.9 3.5l2.8 2.8-1.4 1.4-2.8-2.8zM17.7 16.3l2.8 2.8-1.4 1.4-2.8-2.8zM19.1 3.5l1.4 1.4-2.8 2.8-1.4-1.4zM6.3 16.3l1.4 1.4-2.8 2.8-1.4-1.4z',
  moon: 'M20 14.5A8.5 8.5 0 0 1 9.5 4 8.5 8.5 0 1 0 20 14.5z',
};

export function icon(name) {
  return svg(
      'svg', {viewBox: '0 0 24 24', width: 18, height: 18, 'aria-hidden': 'true', class: 'icon'},
      svg('path', {d: kIcons[name], fill: 'currentColor'}));
}
