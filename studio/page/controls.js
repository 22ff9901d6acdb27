// Controls for what the printer's driver offers, and nothing else.
// SPDX-License-Identifier: Apache-2.0
import { t, has } from './texts.js';

const kPicture = ['Brightness', 'Contrast', 'MirrorImage', 'NegativeImage'];
const kHidden = ['PageSize', 'HalftoneType', 'Resolution', 'ColorModel'];
const kNegative = 'NegativeImage';

const make = (name, properties = {}, ...children) => {
  const element = Object.assign(document.createElement(name), properties);
  element.append(...children);
  return element;
};
// A label's explanation in brackets is left to the guide, except where names differ by it alone.
const short = (label) => label.replace(/\s*[(（].*[)）]\s*$/, '');
const labelOf = (option) => (has(option.name) ? t(option.name) : short(option.label));

export const option = (queue, name) => queue.options.find((o) => o.name === name);
export const halftones = (queue) => option(queue, 'HalftoneType')?.choices ?? [];
export const label = (choices, value) => choices.find((c) => c.value === value)?.label ?? value;

// The choices that forbid each other: what has to give way when `name` becomes `value`.
export function resolve(queue, options, name, value) {
  const result = { ...options, [name]: value };
  for (const [one, choice, other, forbidden] of queue.conflicts) {
    if (one === name && choice === value && result[other] === forbidden) {
      const free = option(queue, other).choices.find((c) => !queue.conflicts.some(
        ([a, b, o, f]) => a === name && b === value && o === other && f === c.value));
      if (free) result[other] = free.value;
    }
  }
  return result;
}

export const defaults = (queue) => Object.fromEntries(queue.options.map((o) => [o.name, o.default]));

// What was remembered, as far as the driver still offers it.
export function known(queue, options) {
  const result = defaults(queue);
  for (const [name, value] of Object.entries(options || {})) {
    const offered = option(queue, name);
    const custom = name === 'PageSize' && queue.custom && /^Custom\.[\d.]+x[\d.]+mm$/.test(value);
    if (offered && (custom || offered.choices.some((c) => c.value === value))) result[name] = value;
  }
  const clash = queue.conflicts.some(([a, b, c, d]) => result[a] === b && result[c] === d);
  return clash ? defaults(queue) : result;
}

function makeSwitch(o, value, change) {
  const input = make('input', { type: 'checkbox', checked: value === 'True' });
  input.setAttribute('role', 'switch');
  input.addEventListener('change', () => change(o.name, input.checked ? 'True' : 'False'));
  return make('label', { className: 'switch' }, make('span', { textContent: labelOf(o) }), input, make('i'));
}

function makeSlider(o, value, change) {
  const numbers = o.choices.map((c) => c.value);
  const input = make('input', { type: 'range', min: 0, max: numbers.length - 1, step: 1, value: numbers.indexOf(value) });
  const output = make('b', { textContent: value });
  input.setAttribute('aria-valuetext', value);
  input.addEventListener('input', () => {
    output.textContent = numbers[input.value];
    input.setAttribute('aria-valuetext', output.textContent);
    change(o.name, numbers[input.value]);
  });
  return make('label', { className: 'field' }, make('span', {}, labelOf(o), output), input);
}

function makeSelect(o, value, change) {
  const select = make('select', {}, ...o.choices.map((c) => make('option', { value: c.value, textContent: c.label })));
  select.value = value;
  select.addEventListener('change', () => change(o.name, select.value));
  return make('label', { className: 'field' }, make('span', { textContent: labelOf(o) }), select);
}

function makeControl(o, value, change) {
  const values = o.choices.map((c) => c.value);
  const control = values.length === 2 && values.includes('True') ? makeSwitch(o, value, change)
    : values.length > 5 && values.every((v) => /^-?\d+$/.test(v)) ? makeSlider(o, value, change)
      : makeSelect(o, value, change);
  control.dataset.option = o.name;
  return control;
}

// `change(name, value)` is called for every choice of the visitor's.
export function build(queue, options, change) {
  const offered = queue.options.filter((o) => o.choices.length > 1 && !kHidden.includes(o.name));
  const inPicture = (o) => kPicture.includes(o.name);
  const fill = (id, list) => {
    document.getElementById(id).replaceChildren(...list.map((o) => makeControl(o, options[o.name], change)));
    document.getElementById(id).parentElement.hidden = list.length === 0;
  };
  const order = (o) => kPicture.indexOf(o.name);
  fill('picture-options', offered.filter(inPicture).sort((a, b) => order(a) - order(b)));
  fill('paper-options', offered.filter((o) => !inPicture(o)));
  buildHalftones(queue, options, change);
  buildCompare(queue);
  refresh(queue, options);
}

function buildHalftones(queue, options, change) {
  const cards = halftones(queue).map((choice) => {
    const input = make('input', { type: 'radio', name: 'halftone', value: choice.value, checked: options.HalftoneType === choice.value });
    input.addEventListener('change', () => change('HalftoneType', choice.value));
    const picture = make('canvas', { width: 144, height: 108 });
    picture.setAttribute('aria-hidden', 'true');
    return make('label', { className: 'card' }, picture, input, make('span', { textContent: choice.label }));
  });
  document.getElementById('halftones').replaceChildren(...cards);
  document.getElementById('halftone-part').hidden = cards.length === 0;
}

function buildCompare(queue) {
  const select = document.getElementById('compare');
  const kept = select.value;
  select.replaceChildren(make('option', { value: '', textContent: t('compareNone') }),
    ...halftones(queue).map((c) => make('option', { value: c.value, textContent: c.label })));
  select.value = halftones(queue).some((c) => c.value === kept) ? kept : '';
}

// Shows options that have changed elsewhere, as by undoing.
export function refresh(queue, options) {
  for (const control of document.querySelectorAll('[data-option]')) {
    const value = options[control.dataset.option];
    const input = control.querySelector('input, select');
    if (input.type === 'checkbox') input.checked = value === 'True';
    else if (input.type === 'range') {
      const numbers = option(queue, control.dataset.option).choices.map((c) => c.value);
      input.value = numbers.indexOf(value);
      control.querySelector('b').textContent = value;
    } else input.value = value;
    if (control.dataset.option === kNegative) {
      const free = !queue.conflicts.some(([a, b, c, d]) => a === kNegative && b === 'True' && options[c] === d);
      input.disabled = !free;
      control.title = free ? '' : t('negativeNeedsTattoo');
    }
  }
  for (const input of document.querySelectorAll('[name=halftone]')) input.checked = input.value === options.HalftoneType;
}

// A part of the dots as they are, from the middle of the document.
export function paintSample(value, image, centre) {
  const input = document.querySelector(`[name=halftone][value="${CSS.escape(value)}"]`);
  const canvas = input?.parentElement.querySelector('canvas');
  if (!canvas) return;
  const { width, height } = canvas;
  const limit = (at, size, all) => Math.max(0, Math.min(all - size, Math.round(at - size / 2)));
  const c = canvas.getContext('2d');
  c.fillStyle = '#fff';
  c.fillRect(0, 0, width, height);
  c.imageSmoothingEnabled = false;
  c.drawImage(image, limit(centre.x, width, image.width), limit(centre.y, height, image.height), width, height, 0, 0, width, height);
  canvas.dataset.painted = value;
}
