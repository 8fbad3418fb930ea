// The page's keys. Arrows, space and the letters work wherever the focus is not on something that uses them
// itself; Home, End and the page keys scroll the page as ever unless the focus is in the viewer or on the
// scrubber.
import {h} from './dom.js';

const kFewFrames = 10;

const kHelp = [
  ['← →', 'a frame back, on'],
  ['Page Up / Down', `${kFewFrames} frames back, on`],
  ['Home / End', 'first, last frame'],
  ['Space', 'play, pause'],
  ['N / P', 'next, previous event'],
  ['+ / − / 0', 'zoom in, out, the whole frame'],
  ['Shift + arrows', 'move the zoomed picture'],
  ['[ / ]', 'the range begins, ends here'],
  ['L', 'loop the range'],
  ['C', 'hold other frames against this one, or end that'],
  ['F', 'full screen, Escape ends it'],
];

export function keysHelp(settings) {
  return h(
      'details', {class: 'popover keys'}, h('summary', {}, 'Keys'),
      h('div', {class: 'popover-body'},
        h('dl', {}, kHelp.map(([key, text]) => [h('dt', {}, h('kbd', {}, key)), h('dd', {}, text)])),
        h('p', {class: 'quiet'},
          'Home, End, Page Up and Page Down while the focus is in the viewer or on the scrubber.'),
        h('label', {class: 'switch'}, h('input', {
            type: 'checkbox',
            role: 'switch',
            checked: settings.everywhere,
            onchange: event => {
              settings.everywhere = event.target.checked;
            }
          }),
          'Keys work on the whole page')));
}

export function listenToKeys(player, range, dock, viewer, pair, viewerElement, settings) {
  const {zoom} = viewer;
  const shifted = {
    ArrowLeft: () => zoom.keyPan(-1, 0),
    ArrowRight: () => zoom.keyPan(1, 0),
    ArrowUp: () => zoom.keyPan(0, -1),
    ArrowDown: () => zoom.keyPan(0, 1),
  };
  const actions = {
    ArrowLeft: () => player.go(player.index - 1),
    ArrowRight: () => player.go(player.index + 1),
    ' ': () => player.toggle(),
    n: () => dock.jump(1),
    p: () => dock.jump(-1),
    '+': () => zoom.in(),
    '=': () => zoom.in(),
    '-': () => zoom.out(),
    0: () => zoom.fit(),
    '[': () => range.begin(player.index),
    ']': () => range.end(player.index),
    l: () => dock.toggleLoop(),
    c: () => pair.toggle(),
    f: () => viewer.toggleFull(),
  };
  const insideActions = {
    PageUp: () => player.go(player.index - kFewFrames),
    PageDown: () => player.go(player.index + kFewFrames),
    Home: () => player.go(0),
    End: () => player.go(player.count - 1),
  };
  document.addEventListener('keydown', event => {
    if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented) return;
    const inside = viewerElement.contains(event.target) || dock.element.contains(event.target);
    if (!inside && !settings.everywhere) return;
    if (usesKey(event.target, event.key, dock.scrubber)) return;
    const key = event.key.length === 1 ? event.key.toLowerCase() : event.key;
    if (key === 'Escape' && document.documentElement.classList.contains('full')) return viewer.toggleFull();
    const panned = event.shiftKey && key in shifted && zoom.scale > 1;
    const action = panned ? shifted[key] : actions[key] ?? (inside ? insideActions[key] : undefined);
    if (!action) return;
    event.preventDefault();
    action();
  });
}

function usesKey(target, key, scrubber) {
  if (target === scrubber) return false;  // the same keys as everywhere, in steps of whole frames
  if (target.matches('input:not([type=checkbox]), select, textarea')) return true;
  if (key === ' ') return target.matches('button, summary, input, a, [tabindex="0"]');
  // A panel with a scrollbar of its own is scrolled by these.
  return ['Home', 'End', 'PageUp', 'PageDown', 'ArrowLeft', 'ArrowRight'].includes(key) &&
      target.matches('.windowed, .scroller');
}
