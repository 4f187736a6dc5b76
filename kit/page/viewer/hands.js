// Picking, mouse, touch and keys.

// ---- picking

function rayAt(px, py) {
  const {right, up, toward} = eye(), [w, h] = size(), c = camera();
  const from = add(add(c.target, right, (px - w / 2) / c.scale), up, (h / 2 - py) / c.scale);
  return {from, toward};
}

// The nearest point of a mesh on the line of sight: Moeller and Trumbore (1997), in the steps of the mesh's box.
function hitMesh(mesh, b, runs, part, ray, best) {
  const s = [0, 1, 2].map(i => (b[i + 3] - b[i]) / 65535 || 1), clip = clipAt() + camera().target[2];
  const o = [0, 1, 2].map(i => (ray.from[i] - b[i]) / s[i]), d = ray.toward.map((v, i) => v / s[i]), p = mesh.points, q = mesh.corners;
  let t0 = 0;
  for (const run of runs) {
    const t1 = t0 + run[3], shown = runShown(part, run);
    for (let t = shown ? t0 : t1; t < t1; t++) {
      const a = 4 * q[3 * t], i = 4 * q[3 * t + 1], j = 4 * q[3 * t + 2], ax = p[a], ay = p[a + 1], az = p[a + 2];
      const e1x = p[i] - ax, e1y = p[i + 1] - ay, e1z = p[i + 2] - az, e2x = p[j] - ax, e2y = p[j + 1] - ay, e2z = p[j + 2] - az;
      const hx = d[1] * e2z - d[2] * e2y, hy = d[2] * e2x - d[0] * e2z, hz = d[0] * e2y - d[1] * e2x, det = e1x * hx + e1y * hy + e1z * hz;
      if (!det) continue;
      const sx = o[0] - ax, sy = o[1] - ay, sz = o[2] - az, u = (sx * hx + sy * hy + sz * hz) / det;
      if (!(u >= 0 && u <= 1)) continue;
      const qx = sy * e1z - sz * e1y, qy = sz * e1x - sx * e1z, qz = sx * e1y - sy * e1x, v = (d[0] * qx + d[1] * qy + d[2] * qz) / det;
      if (!(v >= 0 && u + v <= 1)) continue;
      const along = (e2x * qx + e2y * qy + e2z * qz) / det;
      if (along <= best.along || ray.from[2] + along * ray.toward[2] > clip) continue;
      best = {along, point: add(ray.from, ray.toward, along), corners: [a, i, j].map(c => [0, 1, 2].map(k => b[k] + p[c + k] * s[k]))};
    }
    t0 = t1;
  }
  return best;
}

const nearOnScreen = (points, px, py) => {
  let best = null, reach = SNAP;
  for (const p of points) {
    const [x, y] = onScreen(p), away = hypot(x - px, y - py);
    if (away < reach) { reach = away; best = p; }
  }
  return best;
};

// The point at a pixel: a corner that is near, else where the surface or the layer is.
function pointAt(px, py) {
  const ray = rayAt(px, py);
  let best = {along: -Infinity, point: null};
  if (!twoD) for (const part of parts) if (part.mesh && part.shown) best = hitMesh(part.mesh, part.box, part.runs, part, ray, best);
  if (best.point) return nearOnScreen(best.corners, px, py) || best.point;
  if (!layer || !(twoD || on.stack) || abs(ray.toward[2]) < 1e-6) return null;
  const p = add(ray.from, ray.toward, (layer.z - ray.from[2]) / ray.toward[2]);
  const ends = function* () { for (let i = 0; i < layer.count; i++) if (kindOn[layer.info[4 * i]]) yield xyOf(layer, layer.ends[4 * i], layer.ends[4 * i + 1]), yield xyOf(layer, layer.ends[4 * i + 2], layer.ends[4 * i + 3]); };
  return nearOnScreen(ends(), px, py) || p;
}

function pick(px, py) {
  const p = pointAt(px, py);
  if (!p) return readOut('There is nothing at this point.');
  if (picks.length > 1) picks.length = 0;
  picks.push(p);
  const coordinates = q => q.map(v => text(v, 7)).join(', ');
  if (picks.length < 2) readOut(`From ${coordinates(p)}: pick a second point`);
  else {
    const d = add(picks[1], picks[0], -1);
    readOut(`${text(length(d), 7)} mm (x ${text(d[0], 6)}, y ${text(d[1], 6)}, z ${text(d[2], 6)})`);
  }
  draw();
}
const readOut = line => { $('reading').textContent = line; };
const say = line => { $('status').textContent = line; };
const report = error => { say(error.message); root.dataset.error = error.message; };

// ---- hands

function turn(dx, dy) {
  const c = cameras.three;
  c.turn = (c.turn + dx) % 360;
  c.lift = max(-90, min(90, c.lift + dy));
  draw();
}
function move(dx, dy) {
  const {right, up} = eye(), c = camera();
  c.target = add(add(c.target, right, -dx / c.scale), up, dy / c.scale);
  draw();
}
// What is under the pixel stays there.
function zoom(factor, px, py) {
  const c = camera(), [w, h] = size(), x = px - w / 2, y = py - h / 2;
  move(-x, -y);
  c.scale = max(1e-6, min(1e9, c.scale * factor));
  move(x, y);
}

function takePointers() {
  const held = new Map();
  let moved = 0;
  const at = e => { const r = canvas.getBoundingClientRect(); return [e.clientX - r.left, e.clientY - r.top]; };
  hear(canvas, 'pointerdown', e => { canvas.setPointerCapture(e.pointerId); if (!held.size) moved = 0; held.set(e.pointerId, at(e)); });
  hear(canvas, 'pointermove', e => {
    const was = held.get(e.pointerId), is = at(e);
    if (!was) return;
    const d = [is[0] - was[0], is[1] - was[1]];
    moved += hypot(...d);
    held.set(e.pointerId, is);
    if (held.size === 2) {
      const [p, q] = [...held.values()], other = p === is ? q : p;
      move(d[0] / 2, d[1] / 2);
      const before = hypot(was[0] - other[0], was[1] - other[1]), now = hypot(is[0] - other[0], is[1] - other[1]);
      if (before > 5 && now > 5) zoom(now / before, (p[0] + q[0]) / 2, (p[1] + q[1]) / 2);
    } else if (held.size === 1) {
      if (twoD || e.shiftKey || e.buttons & 6) move(...d); else turn(-d[0] * .4, d[1] * .4);
    }
  });
  const end = e => {
    const only = held.size === 1;
    if (held.delete(e.pointerId) && only && e.type === 'pointerup' && moved < 4 && measuring && e.button === 0) pick(...at(e));
  };
  hear(canvas, 'pointerup', end);
  hear(canvas, 'pointercancel', end);
  hear(canvas, 'contextmenu', e => e.preventDefault());
  hear(canvas, 'wheel', e => { e.preventDefault(); zoom(Math.exp(-max(-120, min(120, e.deltaY * (e.deltaMode ? 30 : 1))) * .0016), ...at(e)); }, {passive: false});
}

function takeKeys() {
  const step = n => file && setLayer(+$('layer').value - 1 + n);
  const keys = {
    '+': () => zoom(1.2, ...size().map(v => v / 2)), '-': () => zoom(1 / 1.2, ...size().map(v => v / 2)), '=': () => keys['+'](),
    f: fit, m: () => setMeasuring(!measuring), Enter: () => measuring && pick(...size().map(v => v / 2)), Escape: () => setMeasuring(false),
    PageUp: () => step(1), PageDown: () => step(-1), Home: () => step(-1e9), End: () => step(1e9),
    0: () => look('iso'), 1: () => look('front'), 2: () => look('back'), 3: () => look('left'), 4: () => look('right'), 5: () => look('top'), 6: () => look('bottom')};
  const arrows = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
  hear(canvas, 'keydown', e => {
    if (e.ctrlKey || e.metaKey || e.altKey) return;
    const arrow = arrows[e.key], key = keys[e.key.length === 1 ? e.key.toLowerCase() : e.key];
    if (arrow) { if (e.shiftKey || twoD) move(-30 * arrow[0], -30 * arrow[1]); else turn(-8 * arrow[0], 8 * arrow[1]); }
    else if (key) key();
    else return;
    e.preventDefault();
  });
  hear(canvas, 'focus', draw);
  hear(canvas, 'blur', draw);
}

const setLayer = index => showLayer(index).catch(report);

function setMeasuring(value) {
  measuring = value;
  picks.length = 0;
  document.body.classList.toggle('measuring', value);
  $('measure').setAttribute('aria-pressed', value);
  readOut(value ? 'Pick two points' : '');
  draw();
}

function setMode(two) {
  twoD = two;
  $('mode-3d').setAttribute('aria-pressed', !two);
  $('mode-2d').setAttribute('aria-pressed', two);
  picks.length = 0;
  if (measuring) readOut('Pick two points');
  fit();
}

// Steps through a slider while a button is pressed.
function playing(button, slider, step) {
  let timer = 0;
  hear(button, 'click', () => {
    const start = !timer;
    clearInterval(timer);
    timer = 0;
    if (start) {
      if (+slider.value >= +slider.max) slider.value = slider.min;
      timer = setInterval(() => {
        if (+slider.value >= +slider.max) return button.click();
        slider.value = +slider.value + step();
        slider.dispatchEvent(new Event('input'));
      }, 60);
    }
    button.setAttribute('aria-pressed', start);
    button.textContent = start ? '\u23f8' : '\u25b6';
  });
}
