// Opens the print dialog of Firefox, which selects the default queue, and saves a picture of it.
// Usage: node firefox.mjs PICTURE FOLDER, where FOLDER is for files that Firefox needs meanwhile
// SPDX-License-Identifier: Apache-2.0
import { execFileSync, spawn } from 'node:child_process';
import { mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { connect } from 'node:net';
import { join } from 'node:path';

const [picture, folder] = process.argv.slice(2);

// What a user would set in the dialog.
const kDialog = {
  'print.more-settings.open': true,
  'print.printer_labels.print_shrink_to_fit': false,
  ...Object.fromEntries(['top', 'left', 'right', 'bottom'].map((side) => [`print.printer_labels.print_margin_${side}`, '0'])),
  ...Object.fromEntries(['left', 'center', 'right'].flatMap((place) =>
    ['header', 'footer'].map((line) => [`print.printer_labels.print_${line}${place}`, '']))),
};
const kQuiet = {
  'app.normandy.enabled': false,
  'browser.aboutwelcome.enabled': false,
  'browser.shell.checkDefaultBrowser': false,
  'datareporting.policy.dataSubmissionPolicyBypassNotification': true,
  'marionette.port': 0,
  'network.captive-portal-service.enabled': false,
};

const pause = (milliseconds) => new Promise((done) => setTimeout(done, milliseconds));

async function until(attempt, what) {
  for (let polls = 0; polls < 900; ++polls) {
    const found = await attempt().catch(() => undefined);
    if (found) return found;
    await pause(200);
  }
  throw new Error(`not reached: ${what}`);
}

// Runs a function's body in the window of Firefox, by its own protocol: messages are JSON after their length.
function client(port) {
  const socket = connect(port, '127.0.0.1');
  const waiting = new Map();
  let received = Buffer.alloc(0), last = 0;
  socket.on('data', (part) => {
    received = Buffer.concat([received, part]);
    for (;;) {
      const colon = received.indexOf(':'), end = colon + 1 + Number(received.subarray(0, Math.max(colon, 0)));
      if (colon < 0 || received.length < end) return;
      const message = JSON.parse(received.subarray(colon + 1, end));
      received = received.subarray(end);
      if (!Array.isArray(message)) continue; // the greeting
      const [, id, fault, answer] = message;
      if (fault) waiting.get(id).reject(new Error(fault.message)); else waiting.get(id).resolve(answer?.value);
    }
  });
  return (name, parameters) => new Promise((resolve, reject) => {
    waiting.set(++last, { resolve, reject });
    setTimeout(() => reject(new Error(`no answer: ${name}`)), 60000);
    const text = JSON.stringify([0, last, name, parameters]);
    socket.write(`${Buffer.byteLength(text)}:${text}`);
  });
}

const profile = join(folder, 'firefox');
mkdirSync(profile);
writeFileSync(join(profile, 'user.js'), Object.entries({ ...kDialog, ...kQuiet })
  .map(([name, value]) => `user_pref(${JSON.stringify(name)}, ${JSON.stringify(value)});\n`).join(''));
const firefox = spawn('firefox-esr', ['--profile', profile, '--no-remote', '--marionette', '--remote-allow-system-access',
  '--width', '760', '--height', '1080', new URL('label.html', import.meta.url).href], { stdio: 'ignore' });
const ended = new Promise((done) => firefox.on('exit', done));
try {
  const port = await until(async () => Number(readFileSync(join(profile, 'MarionetteActivePort'), 'utf8')), 'Firefox');
  const send = client(port);
  await send('WebDriver:NewSession', { capabilities: {} });
  await send('Marionette:SetContext', { value: 'chrome' });
  const run = (script) => send('WebDriver:ExecuteScript', { script, args: [] });
  await until(() => run("return !gBrowser.selectedBrowser.webProgress.isLoadingDocument && gBrowser.contentTitle === 'Address label';"), 'the label');
  await run("document.getElementById('cmd_print').doCommand();");
  await until(() => run(`
    const settings = document.querySelector('.printSettingsBrowser').contentDocument;
    return settings.querySelector('#printer-picker').value === 'labels' && !document.querySelector('.previewStack').hasAttribute('rendering');`), 'the dialog');
  await pause(5000); // nothing says when the preview has been drawn
  const place = await run(`
    const { x, y, width, height } = document.querySelector('.printSettingsBrowser').closest('.dialogBox').getBoundingClientRect();
    return \`\${width}x\${height}+\${mozInnerScreenX + x}+\${mozInnerScreenY + y}\`;`);
  execFileSync('import', ['-window', 'root', '-crop', place, '+repage', picture]);
} finally {
  firefox.kill();
  await ended;
}
process.exit();
