// What a visitor does, in a headless Chromium: node browser_test.mjs PART. Ends with status 1 and what
// was not as expected. STUDIO is the server's address, LABEL_PAGE the emulated printer's page-0.png,
// LABEL_CONTROL its control port, EXAMPLES a folder of documents.
// SPDX-License-Identifier: Apache-2.0
import { existsSync, readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { createConnection } from 'node:net';
import { inflateSync } from 'node:zlib';
import { Browser } from './webdriver.mjs';

const { STUDIO, EXAMPLES, LABEL_PAGE, LABEL_CONTROL } = process.env;
const kLanguages = ['en', 'de', 'es', 'fr', 'it', 'ja', 'nl', 'pl', 'pt', 'pt_BR', 'zh_CN'];
let failures = 0;

function expect(have, want, what) {
  const same = JSON.stringify(have) === JSON.stringify(want);
  if (!same) ++failures;
  if (!same) console.log(`${what}\n  have ${JSON.stringify(have)}\n  want ${JSON.stringify(want)}`);
}
const expectTrue = (have, what) => expect(Boolean(have), true, what);

// ---- Helpers ----

async function openDocument(browser, file = 'label.png') {
  await browser.open(STUDIO);
  await browser.until("document.querySelector('#queue').value");
  await browser.type('#file', `${EXAMPLES}/${file}`);
  await settled(browser);
}
// The preview is that of the settings shown.
const settled = (browser) => browser.until(
  "document.querySelector('#paper').dataset.ready && document.querySelector('#stage').getAttribute('aria-busy') === 'false'", 'a preview');
const textOf = (browser, selector) => browser.run('return document.querySelector(args[0]).textContent;', selector);
const picture = (browser) => browser.run("return document.querySelector('#paper').dataset.picture;");
const number = (browser, selector) => browser.run('return Number(document.querySelector(args[0]).value);', selector);
const middleOf = (browser) => browser.run("const b = document.querySelector('#paper').getBoundingClientRect(); return [b.left + b.width / 2, b.top + b.height / 2];");
const tellPrinter = (line) => new Promise((done, fault) => {
  const socket = createConnection(Number(LABEL_CONTROL), '127.0.0.1', () => socket.write(`${line}\n`));
  socket.on('data', () => { socket.end(); done(); });
  socket.on('error', fault);
});

// A PNG of one bit or eight bits of grey for a dot, as the emulated printer writes its pages.
function readPng(bytes) {
  const width = bytes.readUInt32BE(16);
  const height = bytes.readUInt32BE(20);
  const depth = bytes[24];
  const parts = [];
  for (let at = 8; at < bytes.length;) {
    const length = bytes.readUInt32BE(at);
    if (bytes.toString('latin1', at + 4, at + 8) === 'IDAT') parts.push(bytes.subarray(at + 8, at + 8 + length));
    at += length + 12;
  }
  const data = inflateSync(Buffer.concat(parts));
  const stride = Math.ceil(width * depth / 8);
  let before = Buffer.alloc(stride);
  const rows = [];
  for (let y = 0; y < height; ++y) {
    const filter = data[y * (stride + 1)];
    const row = Buffer.from(data.subarray(y * (stride + 1) + 1, (y + 1) * (stride + 1)));
    for (let x = 0; x < stride; ++x) {
      const left = x > 0 ? row[x - 1] : 0;
      const up = before[x];
      const corner = x > 0 ? before[x - 1] : 0;
      const guess = left + up - corner;
      const [a, b, c] = [left, up, corner].map((value) => Math.abs(guess - value));
      const paeth = a <= b && a <= c ? left : b <= c ? up : corner;
      row[x] = (row[x] + [0, left, up, (left + up) >> 1, paeth][filter]) & 255;
    }
    rows.push(row);
    before = row;
  }
  const isDot = (x, y) => (depth === 1 ? ((rows[y][x >> 3] >> (7 - (x & 7))) & 1) === 0 : rows[y][x] < 128);
  return { width, height, isDot };
}

async function printedPage(number) {
  const path = LABEL_PAGE.replace('-0.', `-${number}.`);
  const end = Date.now() + 60000;
  while (!existsSync(path) && Date.now() < end) await new Promise((done) => setTimeout(done, 100));
  await new Promise((done) => setTimeout(done, 300));
  return readPng(readFileSync(path));
}

async function printAndWait(browser) {
  const before = await textOf(browser, '#job');
  await browser.click('#print');
  await browser.until(`document.querySelector('#job').textContent !== ${JSON.stringify(before)} && document.querySelector('#job').dataset.state === 'done'`, 'a printed job', 120);
}

// ---- The parts ----

const parts = {
  // Every control changes the dots or says why not; undo and reload bring them back.
  async controls() {
    const browser = await Browser.start();
    try {
      await openDocument(browser);
      const steps = [
        ['#size', '2x4'], ['[name=fit][value=fill]', true], ['#turn', '30'], ['#right', '5'], ['#down', '-4'], ['#placed-width', '30'],
        ['[data-option=Brightness] input', '11'], ['[data-option=Contrast] input', '3'], ['[data-option=MirrorImage] input', true],
        ['[name=halftone][value=Tattoo]', true], ['[data-option=NegativeImage] input', true], ['[data-option=Origin] select', 'Rotation180'],
      ];
      const seen = [await picture(browser)];
      for (const [selector, value] of steps) {
        await browser.set(selector, value);
        await settled(browser);
        const now = await picture(browser);
        expectTrue(!seen.includes(now), `${selector} changes the dots`);
        seen.push(now);
      }
      const last = await browser.run("return JSON.parse(localStorage['korvel-printer-labels']).options;");
      expect([last.PageSize, last.HalftoneType, last.MirrorImage, last.NegativeImage], ['2x4', 'Tattoo', 'True', 'True'], 'settings are remembered');
      await browser.click('#undo');
      await settled(browser);
      expect(await picture(browser), seen.at(-2), 'undo brings the dots before back');
      await browser.click('#redo');
      await settled(browser);
      expect(await picture(browser), seen.at(-1), 'redo brings the later ones');
      await browser.set('[name=halftone][value=None]', true);
      await settled(browser);
      expect(await browser.run("return [document.querySelector('[data-option=NegativeImage] input').checked, document.querySelector('[data-option=NegativeImage] input').disabled];"), [false, true], 'negative gives way to a halftone without it');
      await browser.set('#compare', 'Stucki');
      await settled(browser);
      await browser.until("document.querySelectorAll('[data-painted]').length === 10", 'a sample of every halftone');
      // A drag in the mode Place moves the document.
      await browser.set('[name=fit][value=fit]', true);
      await browser.set('#turn', '0');
      await browser.set('#compare', '');
      await settled(browser);
      await browser.click('label:has([name=mode][value=place])');
      const box = await middleOf(browser);
      await browser.drag([box, [box[0] + 20, box[1]], [box[0] + 40, box[1] + 10]]);
      await settled(browser);
      expectTrue(await browser.run("return Number(document.querySelector('#right').value) > 1;"), 'dragging moves to the right');
      // Keys do too.
      const right = await browser.run("return Number(document.querySelector('#right').value);");
      await browser.run("document.querySelector('#paper').focus();");
      await browser.type('#paper', '\uE014');
      await settled(browser);
      expect(await browser.run("return Math.round(10 * (Number(document.querySelector('#right').value) - args[0]));", right), 10, 'an arrow key moves by a millimetre');
      await browser.reload();
      await settled(browser);
      expect(await textOf(browser, '#title'), 'label.png', 'a reload keeps the document');
      expect(await browser.run("return document.querySelector('#size').value;"), '2x4', 'a reload keeps the size');
      // A second tab has its own document.
      await openDocument(browser, 'label.pdf');
      await browser.type('#file', `${EXAMPLES}/note.txt`);
      await browser.until("!document.querySelector('#message').hidden", 'a sentence on a wrong file');
      expect(await textOf(browser, '#message span'), 'This file is not a PNG, JPEG, TIFF, WebP or PDF.', 'the sentence');
      expect(await textOf(browser, '#title'), 'label.pdf', 'the document before stays');
      expect(await browser.complaints(/status of 415/), [], 'the browser complains about nothing');
    } finally {
      await browser.stop();
    }
  },

  // Files arrive by dropping, pasting and the camera; two tabs have a document each.
  async input() {
    const browser = await Browser.start({ width: 820, height: 1180, touch: true });
    const bytes = readFileSync(`${EXAMPLES}/label.png`, 'base64');
    const give = (kind, name) => browser.run(`
      const data = new DataTransfer();
      const bytes = Uint8Array.from(atob(args[2]), (c) => c.charCodeAt(0));
      data.items.add(new File([bytes], args[1], { type: 'image/png' }));
      const target = document.querySelector('#stage');
      if (args[0] === 'paste') target.dispatchEvent(new ClipboardEvent('paste', { clipboardData: data, bubbles: true }));
      else target.dispatchEvent(new DragEvent(args[0], { dataTransfer: data, bubbles: true, cancelable: true }));`, kind, name, bytes);
    const shows = async (name) => {
      await browser.until(`document.querySelector('#title').textContent === ${JSON.stringify(name)}`, name);
      await settled(browser);
    };
    try {
      await browser.open(STUDIO);
      await browser.until("document.querySelector('#queue').value");
      expect(await browser.run("const c = document.querySelector('#camera'); return [c.getAttribute('capture'), c.accept, getComputedStyle(c.parentElement).display];"),
        ['environment', 'image/*', 'flex'], 'a tablet offers its camera');
      await browser.type('#camera', `${EXAMPLES}/label.png`);
      await shows('label.png');
      await give('dragover', 'dropped.png');
      expectTrue(await browser.run("return document.body.classList.contains('over');"), 'the page shows where to drop');
      await give('drop', 'dropped.png');
      await shows('dropped.png');
      expect(await browser.run("return document.body.classList.contains('over');"), false, 'and no longer');
      await give('paste', 'pasted.png');
      await shows('pasted.png');
      // A name is text, whatever it holds.
      await give('drop', '<img src=x onerror=alert(1)>.png');
      await shows('<img src=x onerror=alert(1)>.png');
      expect(await browser.run("return document.querySelectorAll('#title *').length;"), 0, 'a name is no HTML');
      // Two fingers turn by 40 degrees and scale by 0.7; one step back undoes it.
      await browser.click('label:has([name=mode][value=place])');
      const [x, y] = await middleOf(browser);
      const wide = await number(browser, '#placed-width');
      await browser.fingers(Array.from({ length: 9 }, (_, step) => {
        const far = 100 * (1 - 0.3 * step / 8);
        const angle = step * 5 * Math.PI / 180;
        const [dx, dy] = [far * Math.cos(angle), far * Math.sin(angle)];
        return [[x - dx, y - dy], [x + dx, y + dy]];
      }));
      await settled(browser);
      expect(await number(browser, '#turn'), 40, 'two fingers turn');
      expectTrue(Math.abs(await number(browser, '#placed-width') / wide - 0.7) < 0.01, 'two fingers scale');
      expect([await number(browser, '#right'), await number(browser, '#down')], [0, 0], 'two fingers leave the middle where it is');
      await browser.click('#undo');
      await settled(browser);
      expect([await number(browser, '#turn'), await number(browser, '#placed-width')], [0, wide], 'undo');
      const first = await browser.openTab();
      await openDocument(browser, 'label.pdf');
      await browser.show(first);
      expect(await textOf(browser, '#title'), '<img src=x onerror=alert(1)>.png', 'the first tab keeps its document');
      await browser.set('[name=fit][value=fill]', true);
      await settled(browser);
      await browser.click('#close');
      await browser.until("!document.body.classList.contains('loaded')", 'a closed document');
      expect(await browser.run("return [location.hash, document.querySelector('#print').disabled];"), ['', true], 'nothing is left to print');
      expect(await browser.complaints(), [], 'the browser complains about nothing');
    } finally {
      await browser.stop();
    }
  },

  // The tabulator reaches every control, and none is behind the preview, which stays in its place.
  async keyboard() {
    const browser = await Browser.start({ width: 390, height: 844 });
    const kTab = '\uE004';
    const kEnter = '\uE007';
    const focused = () => browser.run("const e = document.activeElement; return e.closest('[data-option]')?.dataset.option || e.id || e.name;");
    const walk = async (count) => {
      const seen = [];
      for (let i = 0; i < count; ++i) {
        await browser.press(kTab);
        seen.push(await focused());
        expect(await browser.run(`
          const box = document.activeElement.getBoundingClientRect();
          const top = document.activeElement.closest('#panel') ? document.querySelector('#stage').getBoundingClientRect().bottom : 0;
          return box.bottom <= top || box.top >= innerHeight;`), false, `${seen.at(-1)} is hidden`);
      }
      return seen;
    };
    try {
      await openDocument(browser, 'label.pdf');
      await browser.click('#language');
      await browser.press('\uE00C');
      expect(await walk(20), ['paper', 'mode', 'zoom-out', 'zoom-in', 'zoom-fit', 'zoom-dots', 'other-file', 'close', 'queue', 'feed-edge', 'feed-cut', 'feed-back', 'size', 'fit', 'placed-width', 'turn', 'right', 'down', 'turn-left', 'turn-right'], 'the order of the controls');
      expect(await walk(9), ['centre', 'Brightness', 'Contrast', 'MirrorImage', 'halftone', 'compare', 'CenterOfPixel', 'Darkness', 'Occurrence'], 'the order of the settings');
      await browser.run("document.querySelector('#close').focus();");
      await browser.press(kEnter);
      expect(await focused(), 'file', 'a closed document leaves the focus where the next one is chosen');
    } finally {
      await browser.stop();
    }
  },

  // Barcodes are marked where they are, and named.
  async barcodes() {
    const browser = await Browser.start();
    try {
      await openDocument(browser, 'label.pdf');
      await browser.until("document.querySelectorAll('#facts br').length === 2", 'two barcodes');
      const facts = await textOf(browser, '#facts');
      expectTrue(facts.includes('Barcode readable: CODE-128 KV2011748206'), facts);
      expectTrue(facts.includes('Barcode readable: QR-Code https://example.com/KV2011748206'), facts);
      const green = await browser.run(`
        await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
        const canvas = document.querySelector('#paper');
        const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
        let count = 0;
        for (let i = 0; i < data.length; i += 4) if (data[i + 1] > data[i] + 60 && data[i + 1] > data[i + 2] + 40) ++count;
        return count;`);
      expectTrue(green > 1000, `green marks, ${green} pixels`);
    } finally {
      await browser.stop();
    }
  },

  // No finding of axe-core, where node finds that module; status 77 where it does not.
  async accessibility() {
    let checker;
    try {
      checker = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
    } catch {
      console.log('node finds no module axe-core (npm install axe-core, or set NODE_PATH)');
      process.exit(77);
    }
    for (const look of [{ width: 1280, height: 900 }, { width: 390, height: 844, dark: true, touch: true }]) {
      const browser = await Browser.start(look);
      try {
        const check = async (what) => {
          await browser.on('/execute/sync', { script: checker, args: [] });
          expect(await browser.run('return (await axe.run()).violations.map((v) => `${v.id}: ${v.nodes[0].target}`);'), [], `${what} ${JSON.stringify(look)}`);
        };
        await browser.open(STUDIO);
        await browser.until("document.querySelector('#queue').value");
        await check('the empty page');
        await openDocument(browser, 'label.pdf');
        await browser.set('#queue', 'stencils');
        await settled(browser);
        await check('a document');
      } finally {
        await browser.stop();
      }
    }
  },

  // The dots on the screen are those that the printer got.
  async dots() {
    const browser = await Browser.start({ width: 1100, height: 800 });
    try {
      await openDocument(browser, 'label.png');
      await browser.set('#size', '2x2');
      await browser.set('[name=halftone][value=Sierra]', true);
      await browser.set('#turn', '20');
      await settled(browser);
      await printAndWait(browser);
      const page = await printedPage(1);
      await browser.click('#zoom-dots');
      await browser.run('await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));');
      // Every dot that is wholly on the screen, its middle read from the canvas.
      const shown = await browser.run(`
        const canvas = document.querySelector('#paper');
        const [zoom, x, y, ratio] = canvas.dataset.view.split(' ').map(Number);
        const preview = args[0];
        const pixels = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height).data;
        const rows = [];
        const dot = preview.size;
        for (let row = 0; row < preview.height; ++row) {
          const middleY = Math.floor((y + (preview.top + (row + 0.5) * dot) * zoom) * ratio);
          if (middleY < 30 || middleY >= canvas.height - 100) continue;
          let text = '';
          let first = -1;
          for (let column = 0; column < preview.width; ++column) {
            const middleX = Math.floor((x + (preview.left + (column + 0.5) * dot) * zoom) * ratio);
            if (middleX < 30 || middleX >= canvas.width - 10) continue;
            if (first < 0) first = column;
            text += pixels[4 * (middleY * canvas.width + middleX)] < 128 ? '#' : '.';
          }
          rows.push([row, first, text]);
        }
        return rows;`, { width: page.width, height: page.height, size: 25.4 / 203, left: 0, top: 0 });
      let compared = 0;
      let black = 0;
      let wrong = 0;
      for (const [row, first, text] of shown) {
        for (let i = 0; i < text.length; ++i, ++compared) {
          const dot = page.isDot(first + i, row);
          black += dot ? 1 : 0;
          if (dot !== (text[i] === '#')) ++wrong;
        }
      }
      expectTrue(compared > 4000, `enough dots are on the screen, ${compared}`);
      expectTrue(black > 200 && black < compared - 200, `dots of both kinds are, ${black} of ${compared}`);
      expect(wrong, 0, 'dots on the screen that are not those of the printer');
    } finally {
      await browser.stop();
    }
  },

  async printing() {
    const browser = await Browser.start({ width: 820, height: 1180, touch: true });
    try {
      await openDocument(browser, 'label.pdf');
      await browser.set('#copies', '2');
      await printAndWait(browser);
      const [one, two] = [await printedPage(1), await printedPage(2)];
      expect([two.width, two.height], [one.width, one.height], 'two copies');
      expect(await textOf(browser, '#print'), 'Print again', 'the button after the job');
      await tellPrinter('out-of-paper');
      await browser.set('#copies', '1');
      await browser.click('#print');
      await browser.until("document.querySelector('#job').textContent.includes('No paper: load a sheet.')", 'paper out in words', 90);
      expectTrue(await browser.run("return document.querySelector('#job').classList.contains('bad');"), 'it stands out');
      await browser.click('#cancel');
      await browser.until("document.querySelector('#job').dataset.state === 'canceled'", 'the job is canceled', 90);
      await tellPrinter('load');
      expect(await browser.complaints(), [], 'the browser complains about nothing');
    } finally {
      await browser.stop();
    }
  },

  // No language overflows a phone's width; all texts are there; every control has a name.
  async languages() {
    const browser = await Browser.start({ width: 390, height: 844, touch: true });
    try {
      await openDocument(browser, 'label.png');
      for (const queue of ['labels', 'stencils']) {
        await browser.set('#queue', queue);
        for (const language of kLanguages) {
          await browser.set('#language', language);
          await browser.until(`document.documentElement.lang === ${JSON.stringify(language.replace('_', '-'))}`);
          await settled(browser);
          const { wide, clipped, nameless, lang } = await browser.run(`
            const wide = document.documentElement.scrollWidth;
            const shown = [...document.querySelectorAll('button, .button, .segment label, h1, h2, .switch span, .field > span, .card span, .state')].filter((e) => e.offsetParent && !e.closest('.hidden') && !e.classList.contains('hidden'));
            const clipped = shown.filter((e) => e.scrollWidth > e.clientWidth + 1 && getComputedStyle(e).display !== 'inline' && e.clientWidth > 1)
              .map((e) => e.outerHTML.slice(0, 120));
            const beyond = shown.filter((e) => { const b = e.getBoundingClientRect(); return b.left < -1 || b.right > innerWidth + 1; }).map((e) => e.outerHTML.slice(0, 120));
            const nameless = [...document.querySelectorAll('button, select, input')].filter((e) => !(e.getAttribute('aria-label') || e.textContent.trim() || [...(e.labels || [])].some((l) => l.textContent.trim())))
              .map((e) => e.outerHTML.slice(0, 120));
            return { wide, clipped: [...clipped, ...beyond], nameless, lang: document.documentElement.lang };`);
          expect({ wide, clipped, nameless }, { wide: 390, clipped: [], nameless: [] }, `${queue} in ${lang}`);
        }
      }
      await browser.set('#language', 'en');
      const small = await browser.run(`return [...document.querySelectorAll('button, .button, select, .card, .segment label, .switch')]
        .filter((e) => e.offsetParent).filter((e) => { const b = e.getBoundingClientRect(); return b.height < 40 || b.width < 40; }).map((e) => e.outerHTML.slice(0, 100));`);
      expect(small, [], 'every target is big enough for a finger');
    } finally {
      await browser.stop();
    }
  },
};

try {
  await parts[process.argv[2]]();
} catch (fault) {
  ++failures;
  console.log(fault.stack);
}
process.exit(failures ? 1 : 0);
