// The page's texts in the visitor's language.
// SPDX-License-Identifier: Apache-2.0

export const kLanguages = {
  en: 'English', de: 'Deutsch', es: 'Español', fr: 'Français', it: 'Italiano', ja: '日本語',
  nl: 'Nederlands', pl: 'Polski', pt: 'Português', pt_BR: 'Português (Brasil)', zh_CN: '简体中文',
};

let texts = {};
export let language = 'en';

function wanted() {
  const kept = localStorage.getItem('korvel-language');
  for (const asked of [kept, ...navigator.languages]) {
    const tag = (asked || '').replace('-', '_');
    if (kLanguages[tag]) return tag;
    if (tag.startsWith('zh')) return 'zh_CN';
    if (kLanguages[tag.slice(0, 2)]) return tag.slice(0, 2);
  }
  return 'en';
}

export async function loadTexts(asked) {
  if (asked) localStorage.setItem('korvel-language', asked);
  language = asked || wanted();
  texts = (await import(`./languages/${language}.js`)).default;
  document.documentElement.lang = language.replace('_', '-');
  for (const element of document.querySelectorAll('[data-t]')) element.textContent = t(element.dataset.t);
  for (const element of document.querySelectorAll('[data-label]')) {
    element.setAttribute('aria-label', t(element.dataset.label));
    if (element.classList.contains('icon')) element.title = t(element.dataset.label);
  }
}

// "{0}" in a text stands for the first value.
export const t = (key, ...values) =>
  (texts[key] ?? key).replace(/\{(\d)\}/g, (_, i) => values[i]);
export const has = (key) => key in texts;
