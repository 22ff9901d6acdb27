// A small client of chromedriver: what the tests need of the WebDriver protocol, and no more.
// SPDX-License-Identifier: Apache-2.0
import { spawn } from 'node:child_process';
import { writeFileSync } from 'node:fs';

const kElement = 'element-6066-11e4-a52e-4f735466cecf';

export class Browser {
  // Ends with `stop()`; chromedriver ends the browser.
  static async start({ width = 1280, height = 900, dark = false, language = 'en-US', touch = false, headless = true } = {}) {
    const browser = new Browser();
    process.on('exit', () => browser.driver?.kill());
    browser.driver = spawn('chromedriver', ['--port=0'], { stdio: ['ignore', 'pipe', 'ignore'] });
    browser.address = await new Promise((found, fault) => {
      let text = '';
      browser.driver.on('error', fault);
      browser.driver.stdout.on('data', (part) => {
        text += part;
        const port = /successfully on port (\d+)/.exec(text);
        if (port) found(`http://127.0.0.1:${port[1]}`);
      });
    });
    const args = [...(headless ? ['--headless=new'] : []), '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', `--window-size=${width},${height}`,
      `--lang=${language}`, `--accept-lang=${language}`, '--hide-scrollbars', '--no-proxy-server', '--disable-background-networking', '--disable-component-update', '--no-first-run'];
    const options = { args, prefs: { 'intl.accept_languages': language } };
    const { sessionId } = await browser.command('POST', '/session', {
      capabilities: { alwaysMatch: { browserName: 'chrome', 'goog:chromeOptions': options, 'goog:loggingPrefs': { browser: 'ALL' } } },
    });
    browser.session = `/session/${sessionId}`;
    await browser.devtools('Emulation.setDeviceMetricsOverride', { width, height, deviceScaleFactor: 1, mobile: touch });
    await browser.devtools('Emulation.setEmulatedMedia', { features: [{ name: 'prefers-color-scheme', value: dark ? 'dark' : 'light' }] });
    if (touch) await browser.devtools('Emulation.setTouchEmulationEnabled', { enabled: true });
    return browser;
  }

  async command(method, path, body) {
    const response = await fetch(this.address + path, { method, body: body && JSON.stringify(body) });
    const { value } = await response.json();
    if (value?.error) throw new Error(`${path}: ${value.error}: ${value.message}`);
    return value;
  }
  on(path, body) { return this.command(body ? 'POST' : 'GET', this.session + path, body); }
  devtools(cmd, params) { return this.on('/goog/cdp/execute', { cmd, params }); }

  open(url) { return this.on('/url', { url }); }
  reload() { return this.on('/refresh', {}); }
  // Runs the body of an async function in the page; returns its JSON value.
  run(body, ...args) {
    return this.on('/execute/async', {
      script: `const done = arguments[arguments.length - 1];
        (async (...args) => { ${body} })(...[...arguments].slice(0, -1)).then(done, (f) => done({ fault: String(f) }));`,
      args,
    }).then((value) => { if (value?.fault) throw new Error(value.fault); return value; });
  }
  async find(selector) {
    return (await this.on('/element', { using: 'css selector', value: selector }))[kElement];
  }
  async click(selector) { await this.on(`/element/${await this.find(selector)}/click`, {}); }
  async type(selector, text) { await this.on(`/element/${await this.find(selector)}/value`, { text }); }
  // Opens another tab and shows it; `show` goes back with a tab's name.
  async openTab() {
    const before = await this.on('/window');
    const { handle } = await this.on('/window/new', { type: 'tab' });
    await this.show(handle);
    return before;
  }
  show(handle) { return this.on('/window', { handle }); }
  // Sets a control as a visitor would, with its events.
  set(selector, value) {
    return this.run(`const element = document.querySelector(args[0]);
      if (element.type === 'checkbox' || element.type === 'radio') { if (element.checked !== args[1]) element.click(); return; }
      element.value = args[1];
      element.dispatchEvent(new Event('input', { bubbles: true }));
      element.dispatchEvent(new Event('change', { bubbles: true }));`, selector, value);
  }
  // Waits until an expression in the page is true.
  async until(expression, what = expression, seconds = 60) {
    const end = Date.now() + seconds * 1000;
    for (;;) {
      if (await this.run(`return Boolean(${expression});`)) return;
      if (Date.now() > end) throw new Error(`not reached in ${seconds} s: ${what}`);
      await new Promise((done) => setTimeout(done, 50));
    }
  }
  async drag(points, kind = 'mouse') {
    const [first, ...rest] = points;
    const at = ([x, y], duration = 20) => ({ type: 'pointerMove', duration, x: Math.round(x), y: Math.round(y) });
    await this.on('/actions', { actions: [{ type: 'pointer', id: kind, parameters: { pointerType: kind },
      actions: [at(first, 0), { type: 'pointerDown', button: 0 }, ...rest.map((p) => at(p)), { type: 'pointerUp', button: 0 }] }] });
  }
  async press(key) {
    await this.on('/actions', { actions: [{ type: 'key', id: 'keys', actions: [{ type: 'keyDown', value: key }, { type: 'keyUp', value: key }] }] });
  }
  // Moves fingers together: each step is where all of them are.
  async fingers(steps) {
    const touch = (type, points) => this.devtools('Input.dispatchTouchEvent', { type, touchPoints: points.map(([x, y], id) => ({ x, y, id })) });
    for (const [i, points] of steps.entries()) await touch(i ? 'touchMove' : 'touchStart', points);
    await touch('touchEnd', []);
  }
  async screenshot(path) { writeFileSync(path, Buffer.from(await this.on('/screenshot'), 'base64')); }
  // What the browser complained about, but for answers that a test has asked for.
  async complaints(expected = /a pattern that matches nothing^/) {
    const lines = await this.on('/se/log', { type: 'browser' });
    return lines.filter((l) => l.level === 'SEVERE' && !expected.test(l.message)).map((l) => l.message);
  }
  async stop() {
    if (this.session) await this.command('DELETE', this.session).catch(() => {});
    this.driver.kill();
  }
}
