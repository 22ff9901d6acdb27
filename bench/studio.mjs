// Times of korvel-studio for each kind of change, as a visitor's program sees them: node studio.mjs
// BUILD_FOLDER. The medians of several runs, in milliseconds, as a table; beside them what rasteriser
// and filter alone take for the same page, so that the difference is the studio's own share.
// SPDX-License-Identifier: Apache-2.0
import { spawnSync } from 'node:child_process';
import { mkdtempSync, openSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { loadavg, tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { kRoot as root, startStudio } from '../tests/studio/tried_studio.mjs';

const kRuns = 9;
const build = resolve(process.argv[2]);
const folder = mkdtempSync(join(tmpdir(), 'korvel-studio-bench-'));
const studio = await startStudio(build);
const { address } = studio;

const post = async (path, body) => {
  const response = await fetch(address + path, { method: 'POST', body });
  const answer = await response.json();
  if (!response.ok) throw new Error(answer.error);
  return answer;
};
const median = (times) => times.sort((a, b) => a - b)[times.length >> 1];
async function time(action) {
  const times = [];
  for (let run = 0; run < kRuns; ++run) {
    const start = performance.now();
    await action(run);
    times.push(performance.now() - start);
  }
  return Math.round(median(times));
}

const kPages = [
  { name: 'label 4 x 6 in, 203 dpi', queue: 'labels', ppd: 'korvel-label-203', size: '4x6', halftones: ['Stucki', 'Burkes'] },
  { name: 'sheet A4, 300 dpi', queue: 'stencils', ppd: 'korvel-stencil-300', size: 'A4', halftones: ['Tattoo', 'Tattoo_Z4'] },
];

// Rasteriser and filter as the worker runs them, without the studio.
async function alone(page) {
  const ppd = join(build, 'ppd', `${page.ppd}.ppd`);
  const raster = join(folder, `${page.queue}.ras`);
  const rasterise = await time(() => spawnSync('cupsfilter', ['-p', ppd, '-i', 'application/vnd.cups-pdf', '-m', 'application/vnd.cups-raster',
    '-o', `PageSize=${page.size}`, join(root, 'examples/stencil.pdf')], { stdio: ['ignore', openSync(raster, 'w'), 'ignore'], env: { ...process.env, PATH: `${process.env.PATH}:/usr/sbin` } }));
  // The one-way variant of the model, which waits for no status.
  const oneWay = join(folder, `${page.queue}.ppd`);
  writeFileSync(oneWay, readFileSync(ppd, 'latin1').replace(/^(\*ModelName: *"[^"]*)"/m, '$1-OneWay"'), 'latin1');
  const filter = await time(() => spawnSync(join(build, 'bin/rastertokorvel'), ['1', 'u', 't', '1', `PageSize=${page.size} HalftoneType=${page.halftones[0]}`, raster],
    { stdio: 'ignore', env: { ...process.env, PPD: oneWay, KORVEL_DUMPS: 'off' } }));
  return { rasterise, filter };
}

async function measure(page) {
  const open = async (file) => {
    const { id } = await post('api/documents?title=bench', readFileSync(join(root, 'examples', file)));
    return (options, placement = {}) => post(`api/documents/${id}/preview`, JSON.stringify({
      queue: page.queue, options: { PageSize: page.size, HalftoneType: page.halftones[0], ...options }, placement }));
  };
  const preview = await open('stencil.pdf');
  const picture = await open('label.png');
  await preview({});
  await picture({});
  const { rasterise, filter } = await alone(page);
  const brightness = ['-50', '-40', '-30', '-20', '-15', '-10', '-5', '5', '10'];
  const rows = [
    ['tone', await time((run) => preview({ Brightness: brightness[run] })), filter],
    ['halftone', await time((run) => preview({ HalftoneType: page.halftones[1], Contrast: ['10', '20', '30', '40', '50', '75', '100', '-10', '-20'][run] })), filter],
    ['PDF moved', await time((run) => preview({}, { fit: 'own', scale: 0.3, right: run })), filter],
    ['PDF scaled or turned', await time((run) => preview({}, { fit: 'own', scale: 0.5 + run / 100 })), rasterise + filter],
    ['picture moved', await time((run) => picture({}, { fit: 'own', scale: 0.5, right: run })), filter],
    ['picture scaled', await time((run) => picture({}, { fit: 'own', scale: 0.5 + run / 100 })), filter],
    ['picture turned', await time((run) => picture({}, { fit: 'fit', turn: 7 + run })), filter],
    ['the same again', await time(() => preview({})), 0],
  ];
  for (const [kind, all, others] of rows) {
    console.log(`| ${page.name} | ${kind} | ${all} | ${others} | ${all - others} |`);
  }
}

try {
  console.log(`load average before: ${loadavg().map((l) => l.toFixed(1)).join(', ')}\n`);
  console.log('| page | change | all, ms | rasteriser and filter alone, ms | difference, ms |\n|---|---|---|---|---|');
  for (const page of kPages) await measure(page);
} finally {
  studio.stop();
  rmSync(folder, { recursive: true });
}
