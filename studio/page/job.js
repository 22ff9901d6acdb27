// Follows the job that was printed last, in words.
// SPDX-License-Identifier: Apache-2.0
import * as server from './server.js';
import { t } from './texts.js';

const kBetween = 700;  // milliseconds

// `attempt` runs an action and shows its failure.
export function follow(reasonText, attempt) {
  const line = document.getElementById('job');
  const cancel = document.getElementById('cancel');
  const button = document.getElementById('print');
  let number = 0;
  let timer;

  const textOf = (job) => {
    const reason = job.printer.reasons.map(reasonText).find(Boolean);
    if (!job.ended && reason) return reason;
    if (!job.ended && job.printer.state === 'stopped') return t('printerStopped');
    return t(`job-${job.state}`);
  };

  const show = (job) => {
    const reason = !job.ended && job.printer.reasons.map(reasonText).some(Boolean);
    const text = t('job', job.job, textOf(job));
    if (line.textContent !== text) line.textContent = text;
    line.dataset.state = job.state;
    line.classList.toggle('bad', Boolean(reason) || job.state === 'aborted' || job.state === 'stopped');
    cancel.hidden = job.ended;
    button.textContent = t(job.ended ? 'printAgain' : 'print');
  };

  const look = async () => {
    const asked = number;
    const job = await server.job(asked).catch(() => null);
    if (asked !== number) return;
    if (job) show(job);
    if (!job?.ended) timer = setTimeout(look, kBetween);
  };

  cancel.addEventListener('click', () => attempt(async () => show(await server.cancel(number))));
  return {
    // The next job is another document's.
    forget() { button.textContent = t('print'); },
    watch(job) {
      number = job;
      clearTimeout(timer);
      look();
    },
  };
}
