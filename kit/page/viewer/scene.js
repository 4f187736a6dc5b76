// What is shown, from where, and how a frame is drawn.

// ---- state

let about, parts = [], file = null, layer = null, textures, stack = null, box, twoD = false, dark = false, printing = false;
const cameras = {three: {turn: 40, lift: 26, scale: 1, target: [0, 0, 0]}, two: {turn: 0, lift: 90, scale: 1, target: [0, 0, 0]}};
const on = {solids: true, overhangs: true, hanging: true, open: true, sharp: true, cut: false, stack: true, part: true};
const kindOn = [true, true, true, true, false, true];
const picks = [];
let measuring = false, done = Infinity;

const camera = () => twoD ? cameras.two : cameras.three;
const add = (a, b, f = 1) => [a[0] + f * b[0], a[1] + f * b[1], a[2] + f * b[2]];
const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
const length = a => hypot(...a);
const theme = () => colors[dark && !printing ? 'dark' : 'light'];
const rgb = hex => [1, 3, 5].map(i => parseInt(hex.slice(i, i + 2), 16) / 255);

// Unit vectors to the right and up in the picture, and towards the one who looks.
function eye() {
  const {turn, lift} = camera(), t = turn * PI / 180, l = lift * PI / 180, [s, c, sl, cl] = [sin(t), cos(t), sin(l), cos(l)];
  return {right: [c, s, 0], up: [-s * sl, c * sl, cl], toward: [s * cl, -c * cl, sl]};
}
const size = () => [canvas.clientWidth, canvas.clientHeight];
// Where a point lies in the view, in pixels of the page.
function onScreen(p) {
  const {right, up} = eye(), d = add(p, camera().target, -1), [w, h] = size(), {scale} = camera();
  return [w / 2 + dot(d, right) * scale, h / 2 - dot(d, up) * scale];
}

function fit() {
  const {right, up} = eye(), c = camera(), [w, h] = size(), b = twoD && file ? file.box : box;
  c.target = [0, 1, 2].map(i => (b[i] + b[i + 3]) / 2);
  let x = 0, y = 0;
  for (let i = 0; i < 8; i++) {
    const d = [0, 1, 2].map(k => (i >> k & 1 ? 1 : -1) * (b[k + 3] - b[k]) / 2);
    x = max(x, abs(dot(d, right)));
    y = max(y, abs(dot(d, up)));
  }
  // A tenth of the view stays free at each side, more where the buttons are.
  c.scale = min(w * .4 / max(x, 1e-6), max(h - 100, h * .6) * .47 / max(y, 1e-6));
  draw();
}

const VIEWS = {front: [0, 0], back: [180, 0], left: [-90, 0], right: [90, 0], top: [0, 90], bottom: [0, -90], iso: [40, 26]};
function look(name) {
  if (twoD) setMode(false);
  [cameras.three.turn, cameras.three.lift] = VIEWS[name];
  fit();
}

// ---- frames

let asked = false;
function draw() {
  if (asked) return;
  asked = true;
  requestAnimationFrame(() => { asked = false; if (gl && about) render(); });
}

function render() {
  ratio = min(devicePixelRatio || 1, 2);
  const [w, h] = size(), W = max(1, round(w * ratio)), H = max(1, round(h * ratio));
  if (canvas.width !== W || canvas.height !== H) { canvas.width = W; canvas.height = H; }
  const c = camera(), {right, up, toward} = eye(), t = theme();
  const reach = length(add(box.slice(3), box, -1)) + length(add(c.target, box, -1)) + 1;
  const sx = 2 * c.scale / w, sy = 2 * c.scale / h, sz = -1 / reach;
  const view = {t, toward, m: new Float32Array([0, 1, 2].flatMap(i => [right[i] * sx, up[i] * sy, toward[i] * sz, 0]).concat([0, 0, 0, 1])),
    key: (k => k.map(v => v / length(k)))(add(add(toward, right, -.5), [0, 0, .9])), pixel: [2 / W, 2 / H]};
  gl.viewport(0, 0, W, H);
  gl.clearColor(...t.ground, 1);
  gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT | gl.STENCIL_BUFFER_BIT);
  gl.enable(gl.DEPTH_TEST);
  gl.depthFunc(gl.LEQUAL);
  gl.blendFuncSeparate(gl.SRC_ALPHA, gl.ONE_MINUS_SRC_ALPHA, gl.ONE, gl.ONE_MINUS_SRC_ALPHA);
  if (!twoD) drawParts(view);
  if (layer && (twoD || on.stack)) drawLayers(view);
  if (!twoD) drawGlass(view);
  gl.bindVertexArray(null);
  drawOver();
}

// Where the part is cut: relative to the camera's target.
const clipAt = () => on.cut && layer ? layer.z - camera().target[2] + 1e-6 : on.cut && !file && cutHeight !== null ? cutHeight - camera().target[2] : 1e30;
let cutHeight = null;

function beginMesh(view, b) {
  const {u} = meshProgram, target = camera().target;
  gl.useProgram(meshProgram.p);
  gl.uniformMatrix4fv(u.m, false, view.m);
  gl.uniform3fv(u.eye, view.toward);
  gl.uniform3fv(u.key, view.key);
  gl.uniform3fv(u.inside, view.t.inside);
  gl.uniform1f(u.clip, clipAt());
  gl.uniform3f(u.o, b[0] - target[0], b[1] - target[1], b[2] - target[2]);
  gl.uniform3f(u.s, b[3] - b[0], b[4] - b[1], b[5] - b[2]);
  gl.uniform3f(u.shift, 0, 0, 0);
  gl.uniform1i(u.flat_, 0);
}

const BODY_HUES = 12;
function runColor(part, [body, hanging, color]) {
  if (on.overhangs && hanging) return hanging === 2 ? OVER : LEFT;
  const by = $('color').value;
  if (by === 'surface') return [color >> 16 & 255, color >> 8 & 255, color & 255].map(v => v / 255);
  if (by === 'body') {
    const hue = (body * 5 + 7) % BODY_HUES / BODY_HUES * 6;
    return [0, 4, 2].map(k => .36 + .5 * min(1, max(0, abs((hue + k) % 6 - 3) - 1)));
  }
  return theme().steel;
}
const runShown = (part, run) => part.shown && part.bodies[min(run[0], part.bodies.length - 1)].shown;

function drawParts(view) {
  for (const part of parts) {
    if (!part.mesh || !part.shown) continue;
    beginMesh(view, part.box);
    const {u} = meshProgram, lines = (array, count, color, thick, nearer) => {
      gl.uniform1i(u.flat_, 1);
      gl.uniform4f(u.color, ...color, 1);
      gl.bindVertexArray(array);
      for (const [x, y] of thick ? [[-.6, -.6], [.6, -.6], [-.6, .6], [.6, .6]] : [[0, 0]]) {
        gl.uniform3f(u.shift, x * view.pixel[0] * ratio, y * view.pixel[1] * ratio, -nearer);
        gl.drawElements(gl.LINES, count, gl.UNSIGNED_INT, 0);
      }
    };
    gl.bindVertexArray(part.mesh.facetArray);
    // Neighbours of one colour are drawn at once.
    let from = 0, to = 0, color = null;
    const flush = () => { if (color && to > from) { gl.uniform4f(u.color, ...color, 1); gl.drawElements(gl.TRIANGLES, 3 * (to - from), gl.UNSIGNED_INT, 12 * from); } };
    for (const run of part.runs) {
      const next = runShown(part, run) ? runColor(part, run) : null;
      if (String(next) !== String(color)) { flush(); from = to; color = next; }
      to += run[3];
    }
    flush();
    if (on.sharp) lines(part.mesh.sharpArray, part.mesh.sharp.length, view.t.edge, false, 6e-4);
    if (on.open) lines(part.mesh.openArray, part.mesh.open.length, OPEN, true, 9e-4);
    if (part.hanging && on.hanging) {
      gl.uniform3f(u.o, ...add(part.hanging.from, camera().target, -1));
      gl.uniform3f(u.s, 1, 1, 1);
      lines(part.hanging.array, part.hanging.count, HANG, true, 12e-4);
    }
  }
}

function drawGlass(view) {
  if (!on.solids) return;
  gl.enable(gl.BLEND);
  for (const part of parts) {
    if (!part.solids || !part.shown) continue;
    beginMesh(view, part.supports.box);
    gl.uniform3fv(meshProgram.u.inside, AMBER.map(v => v * .8));
    gl.uniform4f(meshProgram.u.color, ...AMBER, .42);
    gl.bindVertexArray(part.solids.facetArray);
    // Depth first, so that of solids behind each other the nearest alone is seen.
    for (const pass of [true, false]) {
      gl.depthMask(pass);
      gl.colorMask(!pass, !pass, !pass, true);
      gl.drawElements(gl.TRIANGLES, 3 * part.solids.facets, gl.UNSIGNED_INT, 0);
    }
  }
  gl.depthMask(true);
  gl.disable(gl.BLEND);
}

// Draws segments: 0 as lines with a width, 1 as walls, 2 as triangles to where their path begins, 3 as thin lines, 4 the
// box of the layer.
function drawPaths(of, shape, base, count, z, height) {
  const {u} = pathProgram, target = camera().target, b = of.box;
  gl.uniform4f(u.box, b[0] - target[0], b[1] - target[1], b[2] - b[0], b[3] - b[1]);
  gl.uniform1f(u.z, z - target[2]);
  gl.uniform1f(u.height, height);
  gl.uniform1i(u.shape, shape);
  gl.uniform1i(u.base, base);
  gl.uniform1f(u.count, count);
  gl.drawArrays(shape === 3 ? gl.LINES : gl.TRIANGLES, 0, count * (shape === 2 ? 3 : shape === 3 ? 2 : 6));
}

function bindTextures({ends, info}) {
  gl.activeTexture(gl.TEXTURE1);
  gl.bindTexture(gl.TEXTURE_2D, info);
  gl.activeTexture(gl.TEXTURE0);
  gl.bindTexture(gl.TEXTURE_2D, ends);
}

function drawLayers(view) {
  const {u} = pathProgram, t = view.t, shownLines = layer.count <= LEGIBLE;
  gl.useProgram(pathProgram.p);
  gl.bindVertexArray(null);
  gl.uniformMatrix4fv(u.m, false, view.m);
  gl.uniform1i(u.ends, 0);
  gl.uniform1i(u.info, 1);
  gl.uniform2fv(u.pixel, view.pixel);
  gl.uniform3fv(u.key, view.key);
  gl.uniform1f(u.light, t === colors.dark ? .6 : .42);
  gl.uniform1fv(u.width, WIDTHS.map(v => v * ratio));
  const tint = travel => t.kinds.flatMap((hex, i) => [...rgb(hex), kindOn[i] && (travel || i !== 4) ? 1 : 0]);
  gl.uniform1i(u.fill, 0);
  if (!twoD && stack) {
    gl.uniform4fv(u.color, tint(false));
    gl.uniform1i(u.order, 0);
    gl.uniform1f(u.done, 1e9);
    bindTextures(stack.textures);
    for (const l of stack.layers) if (l.index <= file.current) drawPaths(l, 1, l.base, l.count, l.z, l.height);
    if (kindOn[0]) for (const l of stack.lids || []) if (l.index < file.current) drawSolid(l, rgb(t.kinds[0]).map(v => v * .97), l.base, l.count, l.z);
  }
  bindTextures(textures);
  if (kindOn[0] && shownLines) drawSolid(layer, t.solid, 0, layer.count, layer.z);
  gl.uniform4fv(u.color, tint(true));
  gl.uniform1i(u.order, $('path-color').value === 'order' ? 1 : 0);
  gl.uniform1f(u.done, done);
  gl.enable(gl.BLEND);
  gl.depthMask(false);
  drawPaths(layer, shownLines ? 0 : 3, 0, layer.count, layer.z + (twoD ? 0 : 1e-3 * file.height), 0);
  gl.depthMask(true);
  gl.disable(gl.BLEND);
}

// The solid of the layer: by the parity of what covers a pixel, counted in the stencil.
function drawSolid(of, color, base, count, z) {
  const {u} = pathProgram;
  gl.enable(gl.STENCIL_TEST);
  gl.disable(gl.DEPTH_TEST);
  gl.colorMask(false, false, false, false);
  gl.stencilFunc(gl.ALWAYS, 0, 1);
  gl.stencilOp(gl.KEEP, gl.KEEP, gl.INVERT);
  drawPaths(of, 2, base, count, z, 0);
  gl.colorMask(true, true, true, true);
  gl.stencilFunc(gl.EQUAL, 1, 1);
  gl.enable(gl.DEPTH_TEST);
  gl.uniform1i(u.fill, 1);
  gl.uniform4f(u.solid, ...color, 1);
  // What is counted is taken away by the way.
  gl.stencilOp(gl.ZERO, gl.ZERO, gl.ZERO);
  drawPaths(of, 4, 0, 1, z, 0);
  gl.uniform1i(u.fill, 0);
  gl.disable(gl.STENCIL_TEST);
}

// ---- what stands over the picture

const place = (id, at, shown) => {
  const e = $(id);
  e.style.display = shown ? '' : 'none';
  if (shown) { e.setAttribute('cx', at[0]); e.setAttribute('cy', at[1]); }
};
const path = (id, d) => $(id).setAttribute('d', d);

// Seven digits where they are needed, thousands apart.
const text = (v, digits = 6) => v === null ? 'none' : Number(v.toPrecision(digits)).toLocaleString('en', {maximumFractionDigits: 4});

function drawOver() {
  const [w, h] = size(), {scale} = camera();
  // A round length of 50 to 140 pixels.
  const power = 10 ** floor(Math.log10(140 / scale)), bar = [5, 2, 1].find(f => f * power * scale <= 140) * power;
  $('scale-bar').style.width = bar * scale + 'px';
  $('scale-text').textContent = text(bar) + ' mm';
  $('over').setAttribute('viewBox', `0 0 ${w} ${h}`);
  const {right, up} = eye(), axes = $('axes'), [ox, oy] = [w - 52, w < 640 ? h - 52 : 64];
  for (let i = 0; i < 3; i++) {
    const [x, y] = [ox + 30 * right[i], oy - 30 * up[i]], near = hypot(right[i], up[i]) > .08;
    axes.children[2 * i].setAttribute('d', `M${ox} ${oy}L${x} ${y}`);
    const letter = axes.children[2 * i + 1];
    letter.style.display = near ? '' : 'none';
    letter.setAttribute('x', ox + 42 * right[i]);
    letter.setAttribute('y', oy - 42 * up[i]);
  }
  const spots = picks.map(onScreen);
  place('mark-a', spots[0], spots.length > 0);
  place('mark-b', spots[1], spots.length > 1);
  path('rule', spots.length > 1 ? `M${spots[0]}L${spots[1]}` : '');
  path('cross', measuring && document.activeElement === canvas ? `M${w / 2 - 9} ${h / 2}h18M${w / 2} ${h / 2 - 9}v18` : '');
  const at = layer && (twoD || on.stack) && done < layer.count ? headAt() : null;
  place('nozzle', at && onScreen(at), at);
}

function makeAxes() {
  const shape = (name, settings) => {
    const e = document.createElementNS('http://www.w3.org/2000/svg', name);
    for (const key in settings) e.setAttribute(key, settings[key]);
    $('axes').append(e);
    return e;
  };
  for (const [name, color] of [['X', '#d0453a'], ['Y', '#3f9a4c'], ['Z', '#3a78c9']]) {
    shape('path', {stroke: color, 'stroke-width': 2.5, 'stroke-linecap': 'round'});
    shape('text', {}).textContent = name;
  }
}
