// The page: what the visitor has chosen, its preview, and the job that prints it.
// SPDX-License-Identifier: Apache-2.0
import * as server from './server.js';
import * as controls from './controls.js';
import { Stage } from './stage.js';
import { follow } from './job.js';
import { kLanguages, language, loadTexts, t, has } from './texts.js';

const kMostBytes = 40 << 20;
const kPlain = { fit: 'fit', scale: 1, right: 0, down: 0, turn: 0 };
const $ = (id) => document.getElementById(id);

const state = {
  queues: [], queue: null, document: null,
  order: null,  // { queue, options, placement, page }: what is chosen
  shown: null, past: [], future: [], pending: false,
};
let stage;
let jobs;

// ---- Messages ----

function explain(fault) {
  const key = `fault-${fault.code}`;
  return has(key) ? t(key) : fault.message || t('fault-failed');
}

let messageTimer;
function tell(text) {
  $('message').firstElementChild.textContent = text;
  $('message').hidden = false;
  clearTimeout(messageTimer);
  messageTimer = setTimeout(() => { $('message').hidden = true; }, 12000);
}

async function attempt(action) {
  try {
    return await action();
  } catch (fault) {
    if (fault.name !== 'AbortError' && fault.code !== 'superseded') tell(explain(fault));
    if (fault.code === 'no-document') closeDocument();
    return undefined;
  }
}

// ---- Choices, undo ----

const copyOf = (order) => JSON.parse(JSON.stringify(order));

let lastChange = { what: '', time: 0 };
// `what` names the control: its changes within a second are one step back.
function change(what, edit) {
  const now = Date.now();
  if (what !== lastChange.what || now - lastChange.time > 1000) {
    state.past.push(copyOf(state.order));
    if (state.past.length > 100) state.past.shift();
  }
  lastChange = { what, time: now };
  state.future = [];
  edit(state.order);
  remember();
  showOrder();
  refresh();
}

async function goBack(from, to) {
  if (from.length === 0) return;
  to.push(copyOf(state.order));
  const order = from.pop();
  lastChange = { what: '', time: 0 };
  if (order.queue !== state.order.queue) await chooseQueue(order.queue);
  state.order = order;
  remember();
  showOrder();
  refresh();
}

function remember() {
  const { queue, options, placement } = state.order;
  localStorage.setItem(`korvel-printer-${queue}`, JSON.stringify({ options, fit: placement.fit === 'own' ? 'fit' : placement.fit }));
  localStorage.setItem('korvel-printer', queue);
}

function remembered(name) {
  try {
    return JSON.parse(localStorage.getItem(`korvel-printer-${name}`)) || {};
  } catch {
    return {};
  }
}

// ---- Printer ----

const isCustom = (size) => size.startsWith('Custom.');
const millimetres = (value) => Math.round(value * 10) / 10;

async function chooseQueue(name) {
  const queue = await attempt(() => server.queue(name, language));
  if (!queue) return;
  state.queue = queue;
  const { options, fit } = remembered(name);
  state.order = {
    queue: name, options: controls.known(queue, options),
    placement: state.order?.placement ?? { ...kPlain, fit: fit || 'fit' }, page: state.order?.page ?? 1,
  };
  buildSizes();
  buildFeeds();
  controls.build(queue, state.order.options, (option, value) => change(option, (order) => {
    order.options = controls.resolve(state.queue, order.options, option, value);
  }));
  showOrder();
  showPrinter(queue);
}

function buildFeeds() {
  $('feeds').replaceChildren(...state.queue.feeds.reverse().map((move) => {
    const button = Object.assign(document.createElement('button'), { type: 'button', name: `feed-${move}`, textContent: t(`feed-${move}`) });
    button.addEventListener('click', () => {
      const { queue, options: { PaperType } } = state.order;
      attempt(() => server.feed(queue, move, PaperType && { PaperType }));
    });
    return button;
  }));
  $('feeds').hidden = state.queue.feeds.length === 0;
}

function buildSizes() {
  const list = state.queue.sizes.map((size) => new Option(size.label, size.value));
  if (state.queue.custom) list.push(new Option(t('customSize'), 'Custom'));
  $('size').replaceChildren(...list);
}

function showPrinter(printer) {
  const reasons = printer.reasons.map(reasonText).filter(Boolean);
  const stopped = printer.state === 'stopped' || !printer.accepting;
  $('printer-state').textContent = reasons[0] || t(stopped ? 'printerStopped' : `printer-${printer.state}`);
  $('printer-state').classList.toggle('bad', stopped || reasons.length > 0);
}

// "media-empty-warning" and its like; those that nobody has to act on are left out.
export function reasonText(reason) {
  const key = `reason-${reason.replace(/-(warning|error|report)$/, '')}`;
  return has(key) ? t(key) : '';
}

function showQueues() {
  $('queue').replaceChildren(...state.queues.map((q) => new Option(q.info && q.info !== q.name ? `${q.info} (${q.name})` : q.name, q.name)));
  $('queue').disabled = state.queues.length === 0;
}

async function loadQueues() {
  state.queues = (await attempt(server.queues)) ?? [];
  showQueues();
  if (state.queues.length === 0) {
    $('printer-state').textContent = t('noPrinter');
    $('printer-state').classList.add('bad');
    return;
  }
  const kept = state.order?.queue || localStorage.getItem('korvel-printer');
  await chooseQueue(state.queues.some((q) => q.name === kept) ? kept : state.queues[0].name);
}

async function watchPrinter() {
  if (document.hidden || !state.order) return;
  const queues = await server.queues().catch(() => null);
  const mine = queues?.find((q) => q.name === state.order.queue);
  if (mine) showPrinter(mine);
}

// ---- What the controls show ----

function showOrder() {
  const { order, queue } = state;
  if (!order || !queue) return;
  const size = order.options.PageSize;
  $('queue').value = order.queue;
  $('size').value = isCustom(size) ? 'Custom' : size;
  $('custom').hidden = !isCustom(size);
  if (isCustom(size)) {
    const [width, height] = size.slice(7).replace('mm', '').split('x');
    showNumber('custom-width', width);
    showNumber('custom-height', height);
  }
  for (const radio of document.querySelectorAll('[name=fit]')) radio.checked = radio.value === order.placement.fit;
  for (const key of ['right', 'down', 'turn']) showNumber(key, millimetres(order.placement[key]));
  if (state.document) $('page').value = order.page;
  controls.refresh(queue, order.options);
  $('undo').disabled = state.past.length === 0;
  $('redo').disabled = state.future.length === 0;
  showPlaced(state.shown?.placed);
}

// A number that is being typed is left alone.
function showNumber(id, value) {
  if (document.activeElement !== $(id) || Number($(id).value) !== Number(value)) $(id).value = value;
}

function showPlaced(placed) {
  if (!placed) return;
  showNumber('placed-width', millimetres(placed.width));
  showNumber('turn', millimetres(placed.turn));
  showNumber('right', millimetres(placed.right));
  showNumber('down', millimetres(placed.down));
}

function showDocument() {
  const { document: open } = state;
  document.body.classList.toggle('loaded', Boolean(open));
  $('document-part').hidden = !open;
  $('print').disabled = !open || !state.queue;
  if (!open) return;
  $('title').textContent = open.title;
  $('page-field').hidden = open.pages < 2;
  $('page').replaceChildren(...Array.from({ length: open.pages }, (_, i) => new Option(`${i + 1} / ${open.pages}`, i + 1)));
}

// ---- Preview ----

let previewing = null;
let workingTimer;

function orderFor(view, changes = {}) {
  return { ...state.order, view: `${view}-${kTab}`, options: { ...state.order.options, ...changes } };
}
const kTab = Math.random().toString(36).slice(2, 8);

function working(on) {
  clearTimeout(workingTimer);
  $('stage').setAttribute('aria-busy', on);
  if (on) workingTimer = setTimeout(() => { $('busy').hidden = false; }, 250);
  else $('busy').hidden = true;
}

// Asks for the dots of what is chosen now; an earlier question is dropped.
async function refresh() {
  if (!state.document || !state.queue) return;
  previewing?.abort();
  const mine = previewing = new AbortController();
  state.pending = true;
  working(true);
  stopSamples();
  await attempt(async () => {
    const shown = await server.preview(state.document.id, orderFor('main'), mine.signal);
    const image = await server.dots(shown.image, mine.signal);
    if (previewing !== mine) return;
    state.shown = shown;
    stage.show(shown, image);
    showPlaced(shown.placed);
    showFacts(shown);
    showOrder();
    await showComparison(mine.signal);
    sampleSoon();
  });
  if (previewing !== mine) return;
  state.pending = false;
  working(false);
}

function showFacts(shown) {
  const covered = Math.round(1000 * shown.printed / (shown.width * shown.height)) / 10;
  $('facts').textContent = t('facts', shown.width, shown.height, shown.dpi, covered);
  $('paper').setAttribute('aria-label', `${t('preview')}: ${state.document.title}. ${$('facts').textContent}`);
  $('paper').dataset.ready = shown.picture;
}

async function showComparison(signal) {
  const other = $('compare').value;
  if (!other) {
    stage.showOther(null);
    return;
  }
  const choices = controls.halftones(state.queue);
  const options = controls.resolve(state.queue, state.order.options, 'HalftoneType', other);
  const shown = await server.preview(state.document.id, { ...orderFor('compare'), options }, signal);
  stage.showOther(await server.dots(shown.image, signal),
    [controls.label(choices, state.order.options.HalftoneType), controls.label(choices, other)]);
}

// The small pictures and the barcodes follow when nothing else has to be done.
let sampling = null;
let sampleTimer;

function stopSamples() {
  clearTimeout(sampleTimer);
  sampling?.abort();
}

function sampleSoon() {
  stopSamples();
  sampleTimer = setTimeout(() => {
    sampling = new AbortController();
    sample(sampling.signal).catch(() => {});
  }, 400);
}

async function sample(signal) {
  const { shown } = state;
  const found = await server.barcodes(state.document.id, orderFor('barcodes')).catch(() => null);
  if (signal.aborted) return;
  if (found) showCodes(found.codes);
  const { page, placed, area, width } = shown;
  const [left, top, right, bottom] = page.margins;
  const dot = width / area.width;
  const centre = {
    x: (left + (page.width - left - right) / 2 + placed.right - area.left) * dot,
    y: (top + (page.height - top - bottom) / 2 + placed.down - area.top) * dot,
  };
  for (const { value } of controls.halftones(state.queue)) {
    const options = controls.resolve(state.queue, state.order.options, 'HalftoneType', value);
    const answer = await server.preview(state.document.id, { ...orderFor('sample'), options }, signal);
    controls.paintSample(value, await server.dots(answer.image, signal), centre);
  }
}

function showCodes(codes) {
  stage.showCodes(codes);
  for (const code of codes) {
    $('facts').append(document.createElement('br'), t(code.readable ? 'codeReadable' : 'codeUnreadable', `${code.type} ${code.text}`));
  }
}

// ---- Documents ----

async function openFile(file) {
  if (!file) return;
  if (file.size > kMostBytes) {
    tell(t('fault-too-large'));
    return;
  }
  working(true);
  const open = await attempt(() => server.upload(file));
  working(false);
  if (!open) return;
  if (state.document) server.close(state.document.id).catch(() => {});
  history.replaceState(null, '', `#${open.id}`);
  if (state.order) {
    state.order.page = 1;
    state.order.placement = { ...kPlain, fit: state.order.placement.fit === 'own' ? 'fit' : state.order.placement.fit };
  }
  useDocument(open);
}

function useDocument(open) {
  const inDrop = $('drop').contains(document.activeElement);
  state.document = open;
  state.past = [];
  state.future = [];
  jobs.forget();
  showDocument();
  if (inDrop) $('paper').focus({ preventScroll: true });
  showOrder();
  refresh();
}

function closeDocument() {
  if (state.document) server.close(state.document.id).catch(() => {});
  previewing?.abort();
  previewing = null;
  stopSamples();
  state.document = state.shown = null;
  working(false);
  $('facts').textContent = '';
  history.replaceState(null, '', location.pathname);
  stage.clear();
  showDocument();
  $('file').focus({ preventScroll: true });
}

// After a reload the document is still there.
async function reopen() {
  const id = location.hash.slice(1);
  if (!/^[0-9a-f]{32}$/.test(id)) return;
  const open = await server.documentState(id).catch(() => null);
  if (open) useDocument(open);
  else history.replaceState(null, '', location.pathname);
}

// ---- Print ----

async function print() {
  $('print').disabled = true;
  while (state.pending) await new Promise((done) => setTimeout(done, 50));
  const copies = Math.min(100, Math.max(1, Number($('copies').value) || 1));
  const sent = await attempt(() => server.print(state.document.id, { ...orderFor('print'), copies }));
  $('print').disabled = !state.document;
  if (sent) jobs.watch(sent.job);
}

// ---- Events ----

const on = (id, kind, action) => $(id).addEventListener(kind, action);
const numberOf = (id) => (Number.isFinite($(id).valueAsNumber) ? $(id).valueAsNumber : null);

function place(what, edit) {
  change(what, (order) => edit(order.placement, order));
}

// With its present scale the document keeps its size when it is turned or moved.
function keepScale(placement) {
  if (placement.fit !== 'fit' && placement.fit !== 'fill') return;
  placement.scale = state.shown?.placed.scale ?? 1;
  placement.fit = 'own';
}

function connectPlacement() {
  on('size', 'change', () => change('size', (order) => {
    order.options.PageSize = $('size').value === 'Custom' ? 'Custom.100x150mm' : $('size').value;
  }));
  for (const id of ['custom-width', 'custom-height']) on(id, 'change', customSize);
  for (const radio of document.querySelectorAll('[name=fit]')) {
    radio.addEventListener('change', () => place('fit', (placement) => {
      if (radio.value === 'own') keepScale(placement);
      else Object.assign(placement, { right: 0, down: 0 });
      placement.fit = radio.value;
    }));
  }
  for (const id of ['right', 'down']) {
    on(id, 'change', () => place(id, (placement) => { placement[id] = numberOf(id) ?? 0; }));
  }
  on('turn', 'change', () => place('turn', (placement) => { placement.turn = numberOf('turn') ?? 0; }));
  on('placed-width', 'change', () => {
    const wide = numberOf('placed-width');
    if (!state.shown || !(wide > 0)) return;
    place('width', (placement) => {
      placement.scale = Math.min(100, Math.max(0.01, state.shown.placed.scale * wide / state.shown.placed.width));
      placement.fit = 'own';
    });
  });
  const turnBy = (degrees) => place('turn', (placement) => { placement.turn = (placement.turn + degrees + 540) % 360 - 180; });
  on('turn-left', 'click', () => turnBy(-90));
  on('turn-right', 'click', () => turnBy(90));
  on('centre', 'click', () => place('centre', (placement) => Object.assign(placement, { right: 0, down: 0, turn: 0 })));
}

function customSize() {
  const { custom } = state.queue;
  const within = (id, [least, most]) => Math.min(Math.floor(most), Math.max(Math.ceil(least), Math.round(numberOf(id) ?? least)));
  const width = within('custom-width', custom.width);
  const height = within('custom-height', custom.height);
  change('custom', (order) => { order.options.PageSize = `Custom.${width}x${height}mm`; });
}

function stageChanged(placed, done) {
  showPlaced(placed);
  if (!done) return;
  place('stage', (placement) => {
    const before = state.shown.placed;
    if (placed.scale !== before.scale || placed.turn !== before.turn) {
      placement.fit = 'own';
      placement.scale = placed.scale;
    }
    Object.assign(placement, { right: placed.right, down: placed.down, turn: placed.turn });
  });
}

function connectFiles() {
  for (const id of ['file', 'camera']) {
    on(id, 'change', () => { openFile($(id).files[0]); $(id).value = ''; });
  }
  addEventListener('dragover', (event) => { event.preventDefault(); document.body.classList.add('over'); });
  addEventListener('dragleave', (event) => { if (!event.relatedTarget) document.body.classList.remove('over'); });
  addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('over');
    openFile(event.dataTransfer.files[0]);
  });
  addEventListener('paste', (event) => openFile(event.clipboardData.files[0]));
  on('close', 'click', closeDocument);
  on('other-file', 'click', () => $('file').click());
  on('page', 'change', () => change('page', (order) => { order.page = Number($('page').value); }));
  addEventListener('pagehide', () => { if (state.document) server.leave(state.document.id); });
}

function connectView() {
  for (const radio of document.querySelectorAll('[name=mode]')) radio.addEventListener('change', () => stage.setMode(radio.value));
  on('zoom-in', 'click', () => stage.zoomBy(1.5));
  on('zoom-out', 'click', () => stage.zoomBy(1 / 1.5));
  on('zoom-fit', 'click', () => stage.whole());
  on('zoom-dots', 'click', () => stage.dots());
  on('compare', 'change', refresh);
  on('undo', 'click', () => goBack(state.past, state.future));
  on('redo', 'click', () => goBack(state.future, state.past));
  addEventListener('keydown', (event) => {
    if (!(event.ctrlKey || event.metaKey) || event.target.matches?.('input[type=number]')) return;
    const key = event.key.toLowerCase();
    if (key === 'z' && !event.shiftKey) goBack(state.past, state.future);
    else if (key === 'y' || key === 'z') goBack(state.future, state.past);
    else return;
    event.preventDefault();
  });
}

async function changeLanguage() {
  await loadTexts($('language').value);
  showQueues();
  if (state.order) await chooseQueue(state.order.queue);
  showDocument();
  showOrder();
  refresh();
}

async function start() {
  await loadTexts();
  $('language').replaceChildren(...Object.entries(kLanguages).map(([code, name]) => new Option(name, code)));
  $('language').value = language;
  on('language', 'change', changeLanguage);
  stage = new Stage($('paper'), stageChanged);
  jobs = follow(reasonText, attempt);
  connectFiles();
  connectPlacement();
  connectView();
  on('panel', 'submit', (event) => event.preventDefault());
  on('queue', 'change', async () => { state.past = []; await chooseQueue($('queue').value); remember(); refresh(); });
  on('print', 'click', print);
  $('message').lastElementChild.addEventListener('click', () => { $('message').hidden = true; });
  showDocument();
  await loadQueues();
  await reopen();
  setInterval(watchPrinter, 4000);
}

start();
