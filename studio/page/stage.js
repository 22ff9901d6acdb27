// The paper on the screen: dots without smoothing, ruler, outlines, barcodes; fingers, mouse and keys.
// Lengths on the paper are millimetres from its upper left corner.
// SPDX-License-Identifier: Apache-2.0

const kRuler = 22;  // pixels
const kHandle = 22;  // pixels around a handle that take the finger
const kMost = 400;  // pixels for a millimetre
const kDotPixels = 8;  // of the zoom that shows single dots

export class Stage {
  // `changed(placement, done)`: the visitor has moved, scaled or turned the document.
  constructor(canvas, changed) {
    this.canvas = canvas;
    this.changed = changed;
    this.context = canvas.getContext('2d');
    this.view = { zoom: 1, x: 0, y: 0 };
    this.mode = 'look';
    this.split = 0.5;
    this.codes = [];
    this.pointers = new Map();
    new ResizeObserver(() => { if (!this.touched) this.whole(); this.draw(); }).observe(canvas);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.draw());
    canvas.addEventListener('pointerdown', (event) => this.down(event));
    canvas.addEventListener('pointermove', (event) => this.move(event));
    for (const kind of ['pointerup', 'pointercancel']) canvas.addEventListener(kind, (event) => this.up(event));
    canvas.addEventListener('wheel', (event) => this.wheel(event), { passive: false });
    canvas.addEventListener('keydown', (event) => this.key(event));
  }

  // `shown` is the server's answer, `image` its dots.
  show(shown, image) {
    const other = !this.shown || this.shown.page.width !== shown.page.width || this.shown.page.height !== shown.page.height;
    this.shown = shown;
    this.image = image;
    this.ghost = null;
    this.codes = [];
    this.canvas.dataset.picture = shown.image;
    if (other) this.whole();
    this.draw();
  }
  showOther(image, names) { this.other = image; this.names = names; this.draw(); }
  showCodes(codes) { this.codes = codes; this.draw(); }
  clear() { this.shown = this.image = this.other = null; this.draw(); }
  setMode(mode) { this.mode = mode; this.draw(); }

  // ---- View ----

  get size() { return { width: this.canvas.clientWidth, height: this.canvas.clientHeight }; }

  whole() {
    this.touched = false;
    if (!this.shown) return;
    const { page } = this.shown;
    const { width, height } = this.size;
    const room = { width: width - kRuler - 40, height: height - kRuler - 100 };
    const zoom = Math.max(0.05, Math.min(room.width / page.width, room.height / page.height));
    this.view = { zoom, x: kRuler + (width - kRuler - page.width * zoom) / 2, y: kRuler + 20 + (room.height - page.height * zoom) / 2 };
    this.draw();
  }
  zoomBy(factor, at = { x: this.size.width / 2, y: this.size.height / 2 }) {
    this.zoomTo(this.view.zoom * factor, at);
  }
  zoomTo(asked, at = { x: this.size.width / 2, y: this.size.height / 2 }) {
    const zoom = Math.min(kMost, Math.max(0.2, asked));
    const { view } = this;
    const scale = zoom / view.zoom;
    this.view = { zoom, x: at.x - (at.x - view.x) * scale, y: at.y - (at.y - view.y) * scale };
    this.touched = true;
    this.draw();
  }
  // One dot is a whole number of pixels, and begins on one.
  dots() {
    if (!this.shown) return;
    this.zoomTo(kDotPixels * this.shown.width / this.shown.area.width);
    const { area } = this.shown;
    this.view.x = Math.round(this.view.x + area.left * this.view.zoom) - area.left * this.view.zoom;
    this.view.y = Math.round(this.view.y + area.top * this.view.zoom) - area.top * this.view.zoom;
    this.draw();
  }

  // ---- Drawing ----

  draw() {
    cancelAnimationFrame(this.frame);
    this.frame = requestAnimationFrame(() => this.paint());
  }

  colour(name) { return getComputedStyle(this.canvas).getPropertyValue(name); }

  paint() {
    const { canvas, context: c } = this;
    const ratio = devicePixelRatio || 1;
    const { width, height } = this.size;
    if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
      canvas.width = Math.round(width * ratio);
      canvas.height = Math.round(height * ratio);
    }
    c.setTransform(ratio, 0, 0, ratio, 0, 0);
    c.clearRect(0, 0, width, height);
    if (!this.shown) return;
    this.paintPaper(c);
    this.paintDots(c, ratio);
    this.paintMarks(c);
    if (this.mode === 'place') this.paintBox(c);
    this.paintRuler(c);
    const { view } = this;
    canvas.dataset.view = [view.zoom, view.x, view.y, ratio].join(' ');
  }

  paintPaper(c) {
    const { page } = this.shown;
    const { zoom, x, y } = this.view;
    c.save();
    c.shadowColor = '#0005';
    c.shadowBlur = 14;
    c.shadowOffsetY = 3;
    c.fillStyle = '#fff';
    c.beginPath();
    c.roundRect(x, y, page.width * zoom, page.height * zoom, Math.min(12, 1.5 * zoom));
    c.fill();
    c.restore();
  }

  place() {
    const { area } = this.shown;
    const { zoom, x, y } = this.view;
    return [x + area.left * zoom, y + area.top * zoom, area.width * zoom, area.height * zoom];
  }

  // Only what is reduced is smooth.
  smooth(pixels) { Object.assign(this.context, { imageSmoothingEnabled: pixels < 1, imageSmoothingQuality: 'high' }); }

  paintDots(c, ratio) {
    const pixels = this.view.zoom * this.shown.area.width / this.shown.width * ratio;
    c.save();
    this.smooth(pixels);
    if (this.ghost) {
      const { page } = this.shown;
      const { zoom, x, y } = this.view;
      c.beginPath();
      c.rect(x, y, page.width * zoom, page.height * zoom);
      c.clip();
      c.globalAlpha = 0.6;
      this.followGhost(c);
    }
    c.globalCompositeOperation = 'multiply';
    c.drawImage(this.image, ...this.place());
    c.restore();
    if (this.other && !this.ghost) this.paintOther(c, pixels);
  }

  paintOther(c, pixels) {
    const { width, height } = this.size;
    const at = width * this.split;
    c.save();
    c.beginPath();
    c.rect(at, 0, width - at, height);
    c.clip();
    this.smooth(pixels);
    c.drawImage(this.other, ...this.place());
    c.restore();
    c.fillStyle = this.colour('--accent');
    c.fillRect(at - 1.5, kRuler, 3, height);
    c.beginPath();
    c.arc(at, height / 2, 14, 0, 7);
    c.fill();
    c.font = '600 13px system-ui, sans-serif';
    for (const [i, name] of this.names.entries()) {
      const wide = c.measureText(name).width + 16;
      const left = i ? at + 8 : at - 8 - wide;
      c.fillStyle = this.colour('--accent');
      c.beginPath();
      c.roundRect(left, kRuler + 8, wide, 26, 8);
      c.fill();
      c.fillStyle = this.colour('--on-accent');
      c.fillText(name, left + 8, kRuler + 26);
    }
  }

  paintMarks(c) {
    const { page, area, width } = this.shown;
    const { zoom, x, y } = this.view;
    const [left, top, right, bottom] = page.margins;
    c.lineWidth = 1;
    c.strokeStyle = '#7d8a92';
    c.setLineDash([4, 4]);
    c.strokeRect(x + left * zoom, y + top * zoom, (page.width - left - right) * zoom, (page.height - top - bottom) * zoom);
    c.setLineDash([]);
    const dot = area.width / width * zoom;
    for (const code of this.codes) {
      if (!code.box) continue;
      const [l, t, r, b] = code.box;
      c.strokeStyle = c.fillStyle = code.readable ? '#1d7a3d' : '#b3261e';
      c.lineWidth = 2.5;
      const [at, from] = this.place();
      c.strokeRect(at + l * dot - 4, from + t * dot - 4, (r - l) * dot + 8, (b - t) * dot + 8);
      c.beginPath();
      c.arc(at + r * dot + 4, from + t * dot - 4, 12, 0, 7);
      c.fill();
      c.fillStyle = '#fff';
      c.font = '600 15px system-ui, sans-serif';
      c.fillText(code.readable ? '✓' : '✗', at + r * dot - 2, from + t * dot + 1);
    }
  }

  paintRuler(c) {
    const { width, height } = this.size;
    const { zoom, x, y } = this.view;
    const step = [1, 2, 5, 10, 20, 50, 100].find((mm) => mm * zoom >= 42) || 200;
    c.fillStyle = this.colour('--surface');
    c.fillRect(0, 0, width, kRuler);
    c.fillRect(0, 0, kRuler, height);
    c.strokeStyle = c.fillStyle = this.colour('--muted');
    c.font = '11px system-ui, sans-serif';
    c.lineWidth = 1;
    c.beginPath();
    const small = step / (step === 2 || step === 20 ? 4 : 5);
    const mark = (origin, end, line, text) => {
      const first = Math.ceil((kRuler - origin) / zoom / small);
      for (let i = first; origin + i * small * zoom < end; ++i) {
        const at = Math.round(origin + i * small * zoom) + 0.5;
        const big = Math.abs((i * small) % step) < 1e-6;
        line(at, big ? 9 : 4);
        if (big) text(String(Math.round(i * small)), at);
      }
    };
    mark(x, width, (at, long) => { c.moveTo(at, kRuler); c.lineTo(at, kRuler - long); }, (text, at) => c.fillText(text, at + 3, 11));
    mark(y, height, (at, long) => { c.moveTo(kRuler, at); c.lineTo(kRuler - long, at); }, (text, at) => {
      c.save(); c.translate(10, at - 3); c.rotate(-Math.PI / 2); c.fillText(text, 0, 0); c.restore();
    });
    c.stroke();
    c.fillStyle = this.colour('--surface');
    c.fillRect(0, 0, kRuler, kRuler);
    c.fillStyle = this.colour('--muted');
    c.fillText('mm', 3, 14);
  }

  // ---- The document's box ----

  get placed() { return this.ghost || this.shown.placed; }

  // Its middle on the screen, and its half sides in pixels.
  box() {
    const { page } = this.shown;
    const [left, top, right, bottom] = page.margins;
    const { zoom, x, y } = this.view;
    const placed = this.placed;
    return {
      x: x + (left + (page.width - left - right) / 2 + placed.right) * zoom,
      y: y + (top + (page.height - top - bottom) / 2 + placed.down) * zoom,
      halfX: placed.width * zoom / 2, halfY: placed.height * zoom / 2,
      angle: placed.turn * Math.PI / 180,
    };
  }

  handles() {
    const box = this.box();
    const at = (dx, dy) => ({
      x: box.x + dx * Math.cos(box.angle) - dy * Math.sin(box.angle),
      y: box.y + dx * Math.sin(box.angle) + dy * Math.cos(box.angle),
    });
    return {
      corners: [at(-box.halfX, -box.halfY), at(box.halfX, -box.halfY), at(box.halfX, box.halfY), at(-box.halfX, box.halfY)],
      turn: at(0, -box.halfY - 30), top: at(0, -box.halfY),
    };
  }

  paintBox(c) {
    const { corners, turn, top } = this.handles();
    c.strokeStyle = this.colour('--accent');
    c.fillStyle = '#fff';
    c.lineWidth = 2;
    c.beginPath();
    corners.forEach((corner, i) => c[i ? 'lineTo' : 'moveTo'](corner.x, corner.y));
    c.closePath();
    c.moveTo(top.x, top.y);
    c.lineTo(turn.x, turn.y);
    c.stroke();
    for (const handle of [...corners, turn]) {
      c.beginPath();
      c.arc(handle.x, handle.y, 8, 0, 7);
      c.fill();
      c.stroke();
    }
  }

  // What the present dots look like where the finger has brought the document.
  followGhost(c) {
    const now = this.box();
    const ghost = this.ghost;
    this.ghost = null;
    const before = this.box();
    this.ghost = ghost;
    const scale = now.halfX / before.halfX;
    c.translate(now.x, now.y);
    c.rotate(now.angle - before.angle);
    c.scale(scale, scale);
    c.translate(-before.x, -before.y);
  }

  // ---- Fingers, mouse, keys ----

  point(event) {
    const at = this.canvas.getBoundingClientRect();
    return { x: event.clientX - at.left, y: event.clientY - at.top };
  }

  down(event) {
    if (!this.shown) return;
    this.canvas.setPointerCapture(event.pointerId);
    const point = this.point(event);
    this.pointers.set(event.pointerId, point);
    this.start();
    const near = (handle) => Math.hypot(handle.x - point.x, handle.y - point.y) < kHandle;
    const { corners, turn } = this.handles();
    const mayGrip = this.mode === 'place' && this.pointers.size === 1;
    if (mayGrip && near(turn)) this.grip = 'turn';
    else if (mayGrip && corners.some(near)) this.grip = 'scale';
    else if (this.other && Math.abs(point.x - this.size.width * this.split) < kHandle) this.grip = 'split';
    else this.grip = 'all';
  }

  // Remembers where all fingers and the document are.
  start() {
    this.begun = {
      points: new Map(this.pointers), view: { ...this.view }, placed: { ...this.placed }, box: this.box(),
    };
  }

  // Of the one or two fingers: middle, distance, direction.
  static grasp(points) {
    const [a, b] = [...points.values()];
    if (!b) return { x: a.x, y: a.y, distance: 1, angle: 0 };
    return { x: (a.x + b.x) / 2, y: (a.y + b.y) / 2, distance: Math.hypot(a.x - b.x, a.y - b.y) || 1, angle: Math.atan2(b.y - a.y, b.x - a.x) };
  }

  move(event) {
    if (!this.pointers.has(event.pointerId)) return;
    this.pointers.set(event.pointerId, this.point(event));
    const then = Stage.grasp(this.begun.points);
    const now = Stage.grasp(this.pointers);
    if (this.grip === 'split') this.split = Math.min(0.95, Math.max(0.05, now.x / this.size.width));
    else if (this.mode === 'look') this.moveView(then, now);
    else this.moveDocument(then, now);
    this.draw();
  }

  moveView(then, now) {
    const { view } = this.begun;
    const zoom = Math.min(kMost, Math.max(0.2, view.zoom * now.distance / then.distance));
    const scale = zoom / view.zoom;
    this.view = { zoom, x: now.x - (then.x - view.x) * scale, y: now.y - (then.y - view.y) * scale };
    this.touched = true;
  }

  moveDocument(then, now) {
    const { placed, box } = this.begun;
    let scale = now.distance / then.distance;
    let turned = now.angle - then.angle;
    let { x, y } = { x: now.x - then.x, y: now.y - then.y };
    const polar = (point) => ({ far: Math.hypot(point.x - box.x, point.y - box.y) || 1, angle: Math.atan2(point.y - box.y, point.x - box.x) });
    if (this.grip === 'scale') [scale, x, y] = [polar(now).far / polar(then).far, 0, 0];
    if (this.grip === 'turn') [turned, x, y] = [polar(now).angle - polar(then).angle, 0, 0];
    const { zoom } = this.view;
    this.setGhost({
      scale: placed.scale * scale, width: placed.width * scale, height: placed.height * scale,
      right: placed.right + x / zoom, down: placed.down + y / zoom, turn: snap(placed.turn + turned * 180 / Math.PI),
    });
    this.changed(this.ghost, false);
  }

  setGhost(placed) {
    this.ghost = { ...placed, scale: Math.min(100, Math.max(0.01, placed.scale)) };
  }

  up(event) {
    if (!this.pointers.delete(event.pointerId)) return;
    if (this.pointers.size > 0) this.start();
    else if (this.ghost) this.changed(this.ghost, true);
  }

  wheel(event) {
    if (!this.shown) return;
    event.preventDefault();
    this.zoomBy(Math.exp(-event.deltaY / (event.ctrlKey ? 100 : 400)), this.point(event));
  }

  key(event) {
    if (!this.shown || event.ctrlKey || event.metaKey || event.altKey) return;
    const arrows = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
    const arrow = arrows[event.key];
    if (arrow && this.mode === 'place') {
      const far = event.shiftKey ? 10 : 1;
      const { placed } = this;
      this.setGhost({ ...placed, right: placed.right + arrow[0] * far, down: placed.down + arrow[1] * far });
      this.changed(this.ghost, true);
    } else if (arrow) {
      this.view.x -= arrow[0] * 60;
      this.view.y -= arrow[1] * 60;
      this.touched = true;
    } else if (event.key === '+' || event.key === '=') this.zoomBy(1.5);
    else if (event.key === '-') this.zoomBy(1 / 1.5);
    else if (event.key === '0') this.whole();
    else if (event.key === '1') this.dots();
    else return;
    event.preventDefault();
    this.draw();
  }
}

// Near a quarter turn it is one.
function snap(degrees) {
  const round = Math.round(degrees * 10) / 10;
  const quarter = Math.round(round / 90) * 90;
  const turn = Math.abs(round - quarter) < 3 ? quarter : round;
  return ((turn + 180) % 360 + 360) % 360 - 180;
}
