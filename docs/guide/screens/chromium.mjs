// Opens the print dialog of Chromium, which selects the default queue, and saves two pictures of it: its
// upper part with the preview, and its settings further down. Usage: node chromium.mjs PICTURE SETTINGS
// SPDX-License-Identifier: Apache-2.0
import { Browser } from '../../../tests/studio/webdriver.mjs';

const [picture, settings] = process.argv.slice(2);

const pause = (milliseconds) => new Promise((done) => setTimeout(done, milliseconds));

// The dialog is a page of nested shadow trees.
const kFind = `
  const inside = (root) => [...root.querySelectorAll('*')].flatMap((e) => [e, ...(e.shadowRoot ? inside(e.shadowRoot) : [])]);
  const find = (selector, part) => {
    const root = part ? find(part)?.shadowRoot : document;
    return root && inside(root).find((e) => e.matches(selector) && e.getClientRects().length > 0);
  };`;

const browser = await Browser.start({ width: 860, height: 800, headless: false });

async function dialogOpens() {
  const page = await browser.on('/window');
  await browser.run('setTimeout(() => window.print());');
  for (let polls = 0; polls < 300; ++polls) {
    const dialog = (await browser.on('/window/handles')).find((handle) => handle !== page);
    if (dialog) return browser.show(dialog);
    await pause(200);
  }
  throw new Error('there is no print dialog');
}

async function choose(part, label) {
  await browser.until(`(() => { ${kFind}
    const list = find('select', '${part}'), choice = [...list?.options ?? []].find((each) => each.text.trim() === '${label}');
    if (!choice) return false;
    list.value = choice.value;
    list.dispatchEvent(new Event('change'));
    return true;
  })()`, `${part}: ${label}`);
}

try {
  await browser.open(new URL('label.html', import.meta.url).href);
  await dialogOpens();
  await browser.until(`(() => { ${kFind}
    const more = find('cr-expand-button');
    if (more && !more.expanded) more.click();
    return more?.expanded;
  })()`, 'more settings');
  await choose('print-preview-media-size-settings', '4 x 6 in');
  await choose('print-preview-margins-settings', 'None');
  await pause(5000); // nothing says when the preview has been drawn
  await browser.run(`${kFind} find('#container')?.scrollTo(0, 0);`);
  await browser.screenshot(picture);
  await choose('print-preview-scaling-settings', 'Custom');
  await pause(5000);
  await browser.screenshot(settings);
} finally {
  await browser.stop();
}
