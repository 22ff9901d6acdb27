// The studio as ./dev studio starts it, for programs that measure it or take its pictures.
// SPDX-License-Identifier: Apache-2.0
import { spawn } from 'node:child_process';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

export const kRoot = join(dirname(fileURLToPath(import.meta.url)), '../..');

// Its address, and `stop()`.
export async function startStudio(build) {
  const server = spawn(join(kRoot, 'studio/try_out'), [build, '0'], { stdio: ['ignore', 'pipe', 'inherit'] });
  const address = await new Promise((found, fault) => {
    let text = '';
    server.on('exit', () => fault(new Error('the studio did not start')));
    server.stdout.on('data', (part) => { text += part; const at = /Open (http\S+)/.exec(text); if (at) found(at[1]); });
  });
  return { address, stop: () => server.kill('SIGTERM') };
}
