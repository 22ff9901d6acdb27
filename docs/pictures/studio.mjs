// Takes the pictures of korvel-studio for README and guide: node studio.mjs BUILD_FOLDER. Look at them
// before they are committed.
// SPDX-License-Identifier: Apache-2.0
import { join, resolve } from 'node:path';
import { kRoot, startStudio } from '../../tests/studio/tried_studio.mjs';
import { Browser } from '../../tests/studio/webdriver.mjs';

const kSettled = "document.querySelector('#paper').dataset.ready && document.querySelector('#stage').getAttribute('aria-busy') === 'false'";
const kPictures = [
  { path: 'docs/pictures/studio.png', file: 'label.pdf', queue: 'labels', size: { width: 1280, height: 860 }, scrollTo: '#picture-part' },
  { path: 'docs/guide/screens/studio-tablet.png', file: 'stencil.pdf', queue: 'stencils', size: { width: 820, height: 1180, touch: true }, place: true },
];

const studio = await startStudio(resolve(process.argv[2]));
try {
  for (const { path, file, queue, size, scrollTo, place } of kPictures) {
    const browser = await Browser.start(size);
    try {
      await browser.open(studio.address);
      await browser.until("document.querySelector('#queue').value");
      await browser.type('#file', join(kRoot, 'examples', file));
      await browser.until(kSettled);
      await browser.set('#queue', queue);
      await browser.until(kSettled);
      if (place) await browser.click('label:has([name=mode][value=place])');
      const samples = await browser.run("return document.querySelectorAll('.card').length;");
      await browser.until(`document.querySelectorAll('[data-painted]').length === ${samples}`, 'a sample of every halftone', 300);
      if (scrollTo) await browser.run('document.querySelector(args[0]).scrollIntoView();', scrollTo);
      await browser.run('await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));');
      await browser.screenshot(join(kRoot, path));
    } finally {
      await browser.stop();
    }
  }
} finally {
  studio.stop();
}
