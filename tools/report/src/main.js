// Puts the page together from the data that the program wrote into it.
import './report.css';

import {Address} from './address.js';
import {ContactSheet} from './contact_sheet.js';
import {DataTable} from './data_table.js';
import {Dock} from './dock.js';
import {byId, h} from './dom.js';
import {EventList} from './event_list.js';
import {FieldTable} from './field_table.js';
import {figures} from './figures.js';
import {FramePainter} from './frame_painter.js';
import {keysHelp, listenToKeys} from './keys.js';
import {LogList} from './log_list.js';
import {Pair} from './pair.js';
import {Player} from './player.js';
import {Report} from './report.js';
import {banner, cards, pageHead} from './summary.js';
import {Tabs} from './tabs.js';
import {themeButton} from './theme.js';
import {Timelines} from './timelines.js';
import {Viewer} from './viewer.js';

function build(report) {
  const player = new Player(report.count, report.range, report.frames.seconds);
  const painter = new FramePainter(report);
  const dock = new Dock(report, player, painter);
  const address = new Address(report, player), pair = new Pair(report, player);
  const viewer = new Viewer(report, player, painter, pair, address.copyButton(), () => dock.element.offsetHeight);
  const timelines = new Timelines(report, player);
  const sheet = new ContactSheet(report, player, painter);
  const tabs = inspector(report, player, pair);
  const settings = {everywhere: true};
  const viewerSection = h(
      'section', {class: 'viewer', 'aria-labelledby': 'frame-heading'}, viewer.element, tabs.element);

  document.title = `${report.data.title} · Morvale report`;
  document.body.replaceChildren(
      h('a', {class: 'skip', href: '#scrubber'}, 'To the scrubber'),
      pageHead(report, player, themeButton(), keysHelp(settings)),
      h('main', {}, viewerSection,
        h('section', {class: 'summary', 'aria-label': 'Summary'}, banner(report, player), cards(report, player)),
        timelines.element, sheet.element, new DataTable(report, player).element),
      dock.element);

  listenToKeys(player, report.range, dock, viewer, pair, viewerSection, settings);
  player.onFrame(frame => {
    viewer.render();
    dock.show(frame);
    tabs.selected.show();
    timelines.show(frame);
    sheet.show(frame);
  });
  report.faces.onChange(() => player.tell());
  pair.onChange(() => tabs.selected.show());
  hideThumbBeside(viewer.element, dock.element);
  player.tell();
}

function inspector(report, player, pair) {
  const figuresHost =
      h('div',
        {class: 'windowed figures', id: 'figures', tabindex: 0, role: 'region', 'aria-label': 'Figures'});
  const fields = new FieldTable(report, pair), events = new EventList(report, player),
        log = new LogList(report, player);
  const tabs = new Tabs('About this frame', [
    {
      id: 'figures',
      title: 'Figures',
      element: withOrder(report, figuresHost),
      show: () => figuresHost.replaceChildren(...figures(report, player.index))
    },
    {id: 'record', title: 'Record', element: fields.element, show: () => fields.show(player.index)},
    {
      id: 'events',
      title: 'Events',
      badge: () => report.events.length || null,
      element: events.element,
      show: () => events.show(player.index)
    },
    {id: 'log', title: 'Log', element: log.element, show: () => log.show(player.index)},
  ]);
  report.eventFilter.onChange(() => tabs.count());
  return tabs;
}

function withOrder(report, figures) {
  const chooser = report.faces.chooser('figures');
  return chooser ? h('div', {class: 'stack'}, h('div', {class: 'filters'}, chooser), figures) : figures;
}

// The dock's thumb stands in for the large view only while that is out of sight.
function hideThumbBeside(stage, dock) {
  new IntersectionObserver(([entry]) => dock.classList.toggle('with-thumb', !entry.isIntersecting), {
    threshold: 0.15
  }).observe(stage);
}

// Data and script stay in the head, so that a copy which the browser saves builds itself again.
document.addEventListener('DOMContentLoaded', () => {
  try {
    build(new Report(JSON.parse(byId('report-data').textContent)));
  } catch (error) {
    const text = `This report cannot be shown: ${error.message}`;
    document.body.replaceChildren(h('main', {}, h('p', {class: 'banner bad', role: 'alert'}, text)));
    throw error;
  }
});
