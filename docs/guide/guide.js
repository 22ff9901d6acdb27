// Search and copy buttons. Works from file:// too; without scripts the guide is complete except
// for these two. SPDX-License-Identifier: Apache-2.0
'use strict';

// In the language of the edition.
const texts = document.body.dataset;

// ---- Search: every word must occur in a section; hits in headings come first ----

// Small letters without accents, of the same length.
function folded(text) {
  return text.toLowerCase().normalize('NFD').replace(/\p{M}/gu, '');
}

function rank(section, words) {
  const [title, heading, text] = section.slice(1).map(folded);
  let score = 0;
  for (const word of words) {
    if (heading.includes(word)) score += 20;
    else if (title.includes(word)) score += 10;
    else if (text.includes(word)) score += 1;
    else return 0;
  }
  return score;
}

function find(query) {
  const words = folded(query).split(/\s+/).filter((word) => word.length > 1);
  if (words.length === 0) return null;
  return window.guideIndex
    .map((section) => ({section, score: rank(section, words)}))
    .filter((hit) => hit.score > 0)
    .sort((a, b) => b.score - a.score)
    .slice(0, 8)
    .map((hit) => ({section: hit.section, excerpt: excerpt(hit.section[3], words[0])}));
}

function excerpt(text, word) {
  const near = folded(text).indexOf(word) - 40;
  const at = near <= 0 ? 0 : text.indexOf(' ', near) + 1;
  return (at > 0 ? '… ' : '') + text.slice(at, at + 120) + (at + 120 < text.length ? ' …' : '');
}

function element(name, text, className) {
  const made = document.createElement(name);
  if (text) made.textContent = text;
  if (className) made.className = className;
  return made;
}

function show(hits, results) {
  results.replaceChildren();
  results.hidden = hits === null;
  if (hits === null) return;
  if (hits.length === 0) results.append(element('p', texts.nothing));
  for (const {section: [address, title, heading], excerpt: text} of hits) {
    const link = element('a');
    link.href = address;
    link.append(element('strong', heading));
    if (heading !== title) link.append(element('span', title, 'where'));
    link.append(element('span', text));
    results.append(link);
  }
}

function startSearch() {
  const query = document.getElementById('query');
  const results = document.getElementById('results');
  const update = () => show(find(query.value), results);
  query.addEventListener('input', update);
  query.addEventListener('focus', update);
  document.addEventListener('click', (event) => {
    const inside = event.target.closest('.search');
    if (!inside || event.target.closest('#results a')) results.hidden = true;
  });
  document.addEventListener('keydown', (event) => {
    const typing = /^(input|textarea)$/i.test(document.activeElement.tagName);
    if (event.key === 'Escape') {
      query.value = '';
      query.blur();
      results.hidden = true;
    } else if (event.key === '/' && !typing) {
      event.preventDefault();
      query.focus();
    } else if (event.key === 'Enter' && document.activeElement === query) {
      const first = results.querySelector('a');
      if (first) first.click();
    }
  });
  document.querySelector('.search').hidden = false;
  const asked = new URLSearchParams(window.location.search).get('q');
  if (asked) {
    query.value = asked;
    update();
  }
}

// ---- Copy buttons ----

// The clipboard interface is missing on pages that are neither local files nor HTTPS.
async function copy(text) {
  if (navigator.clipboard) return navigator.clipboard.writeText(text);
  const area = element('textarea', text);
  document.body.append(area);
  area.select();
  document.execCommand('copy');
  area.remove();
}

function addCopyButtons() {
  for (const code of document.querySelectorAll('pre > code')) {
    const text = code.textContent.trim();
    const button = element('button', texts.copy, 'copy');
    button.type = 'button';
    button.addEventListener('click', async () => {
      await copy(text);
      button.textContent = texts.copied;
      setTimeout(() => { button.textContent = texts.copy; }, 1500);
    });
    const box = element('div', '', 'code');
    code.parentElement.replaceWith(box);
    box.append(code.parentElement, button);
  }
}

startSearch();
addCopyButtons();
