// Requests to the server. A failure is an Error with the server's code, or "offline".
// SPDX-License-Identifier: Apache-2.0

export class ServerError extends Error {
  constructor(code, sentence) {
    super(sentence);
    this.code = code;
  }
}

const kOwn = { 'X-Korvel-Studio': '1' };

async function send(method, address, body, options = {}) {
  let response;
  try {
    response = await fetch(address, { method, body, headers: kOwn, ...options });
  } catch (fault) {
    if (fault.name === 'AbortError') throw fault;
    throw new ServerError('offline', '');
  }
  if (response.ok) return response;
  const told = await response.json().catch(() => ({}));
  throw new ServerError(told.code || 'failed', told.error || '');
}

const json = async (...words) => (await send(...words)).json();

export const queues = async () => (await json('GET', '/api/queues')).queues;
export const queue = (name, language) =>
  json('GET', `/api/queues/${encodeURIComponent(name)}?language=${language}`);
export const upload = (file) =>
  json('POST', `/api/documents?title=${encodeURIComponent(file.name || 'picture')}`, file);
export const documentState = (id) => json('GET', `/api/documents/${id}`);
export const close = (id) => json('DELETE', `/api/documents/${id}`);
export const leave = (id) =>
  fetch(`/api/documents/${id}/leave`, { method: 'POST', headers: kOwn, keepalive: true }).catch(() => {});
export const preview = (id, order, signal) =>
  json('POST', `/api/documents/${id}/preview`, JSON.stringify(order), { signal });
export const barcodes = (id, order) => json('POST', `/api/documents/${id}/barcodes`, JSON.stringify(order));
export const print = (id, order) => json('POST', `/api/documents/${id}/print`, JSON.stringify(order));
export const feed = (queue, move, paper) =>
  json('POST', `/api/feed?${new URLSearchParams({ queue, move, ...paper })}`);
export const job = (number) => json('GET', `/api/jobs/${number}`);
export const cancel = (number) => json('DELETE', `/api/jobs/${number}`);
export const dots = async (address, signal) =>
  createImageBitmap(await (await send('GET', address, undefined, { signal })).blob());
