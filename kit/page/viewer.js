'use strict';
// Shows the parts and layers that stand in this page as compressed data: see docs/page.md.
(() => {
const $ = id => document.getElementById(id);
const root = document.documentElement, canvas = $('view');
const colors = {
  light: {ground: [1, 1, 1], steel: [.60, .72, .82], inside: [.86, .52, .36], edge: [.13, .18, .24], solid: [.88, .90, .93],
    kinds: ['#174f86', '#8a3fa0', '#3f8f58', '#cf7d14', '#8f9aa5', '#d3201b']},
  dark: {ground: [.106, .133, .161], steel: [.55, .67, .77], inside: [.80, .46, .30], edge: [.04, .06, .08], solid: [.17, .21, .25],
    kinds: ['#7db8ee', '#cf93e0', '#6fc38a', '#f0a843', '#6d7985', '#ff6a5e']}};
const AMBER = [.92, .62, .15], OVER = [.85, .20, .14], LEFT = [.93, .80, .25], OPEN = [.85, .05, .05], HANG = [.75, .1, .65];
const KINDS = ['Contours', 'Holes', 'Fill', 'Support', 'Travel', 'Open paths'];
const WIDTHS = [1.8, 1.8, 1.1, 1.1, 1, 2.6];
const WIDE = 2048;              // of the textures that hold segments
const STACKED = 400000;         // segments of the stack; of larger jobs it shows every second layer, third, ...
const LEGIBLE = 250000;         // segments of a layer that are drawn with a width, and with its solid
const SNAP = 9;                 // pixels within which a pick takes a corner

// ---- data

const fail = text => { root.dataset.state = 'failed'; document.body.classList.remove('live'); $('why').textContent = text; };

async function unpack(id) {
  const element = $(id);
  if (!element) throw Error('the page is cut off');
  const text = element.textContent;
  let raw;
  if (Uint8Array.fromBase64) raw = Uint8Array.fromBase64(text);
  else {
    const letters = atob(text);
    raw = new Uint8Array(letters.length);
    for (let i = 0; i < raw.length; i++) raw[i] = letters.charCodeAt(i);
  }
  const stream = new Blob([raw]).stream().pipeThrough(new DecompressionStream('deflate-raw'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

// Numbers of seven bits a byte.
function varints(bytes, at) {
  return () => {
    let value = 0, scale = 1, byte;
    do { byte = bytes[at++]; value += (byte & 127) * scale; scale *= 128; } while (byte > 127);
    return value;
  };
}
const unzigzag = n => (n >>> 1) ^ -(n & 1);

function readMesh(bytes) {
  const head = new DataView(bytes.buffer), [points, facets, open, sharp] = [0, 4, 8, 12].map(i => head.getUint32(i, true));
  if (16 + 6 * points + 3 * facets > bytes.length) throw Error('the page is damaged');
  const mesh = {points: new Uint16Array(4 * points), corners: new Uint32Array(3 * facets), facets};
  for (let axis = 0; axis < 3; axis++) {
    const low = 16 + 2 * axis * points, high = low + points;
    for (let i = 0, v = 0; i < points; i++) {
      v = v + unzigzag(bytes[low + i] | bytes[high + i] << 8) & 65535;
      mesh.points[4 * i + axis] = v;
    }
  }
  const next = varints(bytes, 16 + 6 * points);
  for (let i = 0, used = 0; i < 3 * facets; i++) {
    const back = next();
    mesh.corners[i] = back ? used - back : used++;
  }
  const edges = count => {
    const ends = new Uint32Array(2 * count);
    for (let i = 0, from = 0; i < count; i++) {
      from += next();
      ends[2 * i] = from;
      ends[2 * i + 1] = from + unzigzag(next());
    }
    return ends;
  };
  mesh.open = edges(open);
  mesh.sharp = edges(sharp);
  return mesh;
}

// The layers of a chunk: for each its paths, and the points of all of them.
function readChunk(bytes, layers) {
  const head = new DataView(bytes.buffer), counts = head.getUint32(0, true), points = head.getUint32(4, true);
  if (8 + counts + 4 * points > bytes.length) throw Error('the page is damaged');
  const next = varints(bytes, 8), list = [], starts = new Set();
  let at = 0;
  for (let l = 0; l < layers; l++) {
    const paths = [];
    starts.add(at);
    for (let n = next(); n > 0; n--) {
      const code = next(), count = Math.floor(code / 8);
      paths.push({at, count, closed: code & 1, kind: code & 1 ? code & 4 ? 3 : code & 2 ? 1 : 0 : 5, fill: false});
      at += count;
    }
    for (let n = next(); n > 0; n--) {
      const code = next(), count = 2 * Math.floor(code / 2);
      paths.push({at, count, kind: code & 1 ? 3 : 2, fill: true});
      at += count;
    }
    list.push(paths);
  }
  const axis = low => {
    const out = new Uint16Array(points);
    for (let i = 0, v = 0; i < points; i++) {
      if (starts.has(i)) v = 0;
      out[i] = v = v + unzigzag(bytes[low + i] | bytes[low + points + i] << 8) & 65535;
    }
    return out;
  };
  return {layers: list, x: axis(8 + counts), y: axis(8 + counts + 2 * points)};
}

// What is drawn of a layer: segments in the order of printing, four coordinates each, and their kinds.
function segmentsOf({paths, x, y}, withTravel, wanted) {
  let most = 0;
  for (const p of paths) most += p.count + 1 + (p.fill ? p.count / 2 : 0);
  const ends = new Uint16Array(4 * most), kinds = new Uint8Array(most);
  let n = 0, hx = -1, hy = -1;
  const add = (ax, ay, bx, by, kind) => {
    const i = 4 * n;
    ends[i] = ax; ends[i + 1] = ay; ends[i + 2] = bx; ends[i + 3] = by;
    kinds[n++] = kind; hx = bx; hy = by;
  };
  const go = i => { if (withTravel && hx >= 0 && (hx !== x[i] || hy !== y[i])) add(hx, hy, x[i], y[i], 4); };
  for (const p of paths) {
    if (!p.count || wanted && !wanted(p.kind)) continue;
    if (p.fill) {
      for (let i = p.at; i < p.at + p.count; i += 2) { go(i); add(x[i], y[i], x[i + 1], y[i + 1], p.kind); }
      continue;
    }
    go(p.at);
    for (let i = p.at; i < p.at + p.count - 1; i++) add(x[i], y[i], x[i + 1], y[i + 1], p.kind);
    const last = p.at + p.count - 1;
    if (p.closed) add(x[last], y[last], x[p.at], y[p.at], p.kind);
  }
  return {ends: ends.subarray(0, 4 * n), kinds: kinds.subarray(0, n), count: n};
}

// ---- drawing

const MESH = [`#version 300 es
layout(location=0) in vec3 p; uniform mat4 m; uniform vec3 o, s; uniform vec3 shift; out vec3 w;
void main() { w = o + p * s; gl_Position = m * vec4(w, 1) + vec4(shift, 0); }`, `#version 300 es
precision highp float; in vec3 w; out vec4 c; uniform vec4 color; uniform vec3 eye, key, inside; uniform float clip; uniform bool flat_;
void main() {
  vec3 n = cross(dFdx(w), dFdy(w));
  if (w.z > clip) discard;
  if (flat_) { c = color; return; }
  n = normalize(dot(n, eye) < 0. ? -n : n);
  float lit = .40 + .52 * max(0., dot(n, key)) + .10 * max(0., n.z);
  c = gl_FrontFacing ? vec4(color.rgb * lit, color.a) : vec4(inside, color.a);
}`];

// Segments stand in a texture, in 16 bits; the corners that a segment is drawn with are made here.
const PATH = [`#version 300 es
precision highp float; precision highp usampler2D;
uniform usampler2D ends, kinds; uniform mat4 m; uniform vec4 box; uniform float z, height, done, count, light;
uniform vec2 pixel; uniform vec4 color[6]; uniform float width[6]; uniform int shape, base; uniform bool order; uniform vec3 key;
out vec4 c; out float along; flat out int dashed;
vec4 at(vec2 p, float h) { return m * vec4(box.xy + p * box.zw, h, 1); }
void main() {
  if (shape == 4) {                     // the whole box
    int q = gl_VertexID;
    c = vec4(0); along = 0.; dashed = 0;
    gl_Position = at(vec2(q == 1 || q == 2 || q == 4 ? 1 : 0, q == 2 || q > 3 ? 1 : 0), z);
    return;
  }
  int corners = shape == 2 ? 3 : shape == 3 ? 2 : 6;
  int i = gl_VertexID / corners, k = gl_VertexID % corners, n = i + base;
  ivec2 t = ivec2(n % ${WIDE}, n / ${WIDE});
  vec4 e = vec4(texelFetch(ends, t, 0)) / 65535.;
  int kind = int(texelFetch(kinds, t, 0).r);
  c = color[kind]; along = 0.; dashed = kind == 4 ? 1 : 0;
  gl_Position = vec4(2, 2, 2, 1);
  if (c.a == 0. && shape != 2) return;
  if (shape == 2) {                     // a triangle to a corner of the box: where an odd number lies, is solid
    if (kind == 0 || kind == 1) gl_Position = at(k == 0 ? vec2(0) : k == 1 ? e.xy : e.zw, z);
    return;
  }
  if (order && kind != 4) {
    vec3 hue = clamp(abs(mod(4. * (1. - float(i) / max(1., count - 1.)) + vec3(0, 4, 2), 6.) - 3.) - 1., 0., 1.);
    c.rgb = light + .8 * (1. - abs(2. * light - 1.)) * (hue - .5);
  }
  if (shape == 1) {                     // a wall as high as the layer
    vec2 d = (e.zw - e.xy) * box.zw;
    float f = dot(normalize(vec3(d.y, -d.x, 0) + 1e-9), key);
    c.rgb *= .72 + .34 * (kind == 3 ? abs(f) : f);
    gl_Position = at(k == 1 || k == 2 || k == 4 ? e.zw : e.xy, k == 2 || k > 3 ? z : z - height);
    return;
  }
  if (float(i) >= done) c.a *= .16;
  if (float(i) < done && float(i) + 1. > done) e.zw = mix(e.xy, e.zw, done - float(i));
  vec4 a = at(e.xy, z), b = at(e.zw, z);
  bool end = k == 1 || k == 2 || k == 4;
  vec2 d = (b.xy - a.xy) / pixel;
  float l = length(d);
  d = l > 0. ? d / l : vec2(1, 0);
  gl_Position = end ? b : a;
  along = end ? l : 0.;
  if (shape == 0) {
    vec2 side = (k == 2 || k > 3 ? 1. : -1.) * vec2(-d.y, d.x) + (end ? d : -d);
    gl_Position.xy += side * pixel * width[kind] * .5;
  }
}`, `#version 300 es
precision highp float; in vec4 c; in float along; flat in int dashed; out vec4 o; uniform bool fill; uniform vec4 solid;
void main() { if (dashed == 1 && mod(along, 9.) > 5.) discard; o = fill ? solid : c; }`];

let gl, meshProgram, pathProgram, ratio = 1;

function program([vertex, fragment]) {
  const p = gl.createProgram();
  for (const [type, text] of [[gl.VERTEX_SHADER, vertex], [gl.FRAGMENT_SHADER, fragment]]) {
    const shader = gl.createShader(type);
    gl.shaderSource(shader, text);
    gl.compileShader(shader);
    if (!gl.getShaderParameter(shader, gl.COMPILE_STATUS)) throw Error(gl.getShaderInfoLog(shader));
    gl.attachShader(p, shader);
  }
  gl.linkProgram(p);
  if (!gl.getProgramParameter(p, gl.LINK_STATUS)) throw Error(gl.getProgramInfoLog(p));
  const u = {};
  for (let i = gl.getProgramParameter(p, gl.ACTIVE_UNIFORMS); i-- > 0;) {
    const name = gl.getActiveUniform(p, i).name;
    u[name.replace('[0]', '')] = gl.getUniformLocation(p, name);
  }
  return {p, u};
}

// A mesh, with lines between some of its points, on the graphics card.
function upload(mesh) {
  const array = (indexes, buffer) => {
    const vao = gl.createVertexArray();
    gl.bindVertexArray(vao);
    gl.bindBuffer(gl.ARRAY_BUFFER, buffer);
    gl.enableVertexAttribArray(0);
    gl.vertexAttribPointer(0, 3, gl.UNSIGNED_SHORT, true, 8, 0);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, gl.createBuffer());
    gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, indexes, gl.STATIC_DRAW);
    gl.bindVertexArray(null);
    return vao;
  };
  const buffer = gl.createBuffer();
  gl.bindBuffer(gl.ARRAY_BUFFER, buffer);
  gl.bufferData(gl.ARRAY_BUFFER, mesh.points, gl.STATIC_DRAW);
  mesh.facetArray = array(mesh.corners, buffer);
  mesh.openArray = array(mesh.open, buffer);
  mesh.sharpArray = array(mesh.sharp, buffer);
  return mesh;
}

// Textures for segments, of a height that grows.
function makeTextures() {
  return {rows: 0, ends: gl.createTexture(), kinds: gl.createTexture()};
}
function reserve(textures, segments) {
  const rows = Math.max(1, Math.ceil(segments / WIDE));
  if (rows <= textures.rows) return;
  if (rows > gl.getParameter(gl.MAX_TEXTURE_SIZE)) throw Error('a layer has more paths than this browser can draw');
  textures.rows = rows;
  const make = (texture, inner, format, type) => {
    gl.bindTexture(gl.TEXTURE_2D, texture);
    gl.texImage2D(gl.TEXTURE_2D, 0, inner, WIDE, rows, 0, format, type, null);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
    gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MAG_FILTER, gl.NEAREST);
  };
  make(textures.ends, gl.RGBA16UI, gl.RGBA_INTEGER, gl.UNSIGNED_SHORT);
  make(textures.kinds, gl.R8UI, gl.RED_INTEGER, gl.UNSIGNED_BYTE);
}
// Writes segments behind the first `base` ones.
function store(textures, base, {ends, kinds, count}) {
  gl.pixelStorei(gl.UNPACK_ALIGNMENT, 1);
  for (let i = 0; i < count;) {
    const x = (base + i) % WIDE, y = Math.floor((base + i) / WIDE);
    const rows = x ? 0 : Math.floor((count - i) / WIDE), w = rows ? WIDE : Math.min(WIDE - x, count - i), h = rows || 1;
    gl.bindTexture(gl.TEXTURE_2D, textures.ends);
    gl.texSubImage2D(gl.TEXTURE_2D, 0, x, y, w, h, gl.RGBA_INTEGER, gl.UNSIGNED_SHORT, ends, 4 * i);
    gl.bindTexture(gl.TEXTURE_2D, textures.kinds);
    gl.texSubImage2D(gl.TEXTURE_2D, 0, x, y, w, h, gl.RED_INTEGER, gl.UNSIGNED_BYTE, kinds, i);
    i += w * h;
  }
}

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
const length = a => Math.hypot(...a);
const theme = () => colors[dark && !printing ? 'dark' : 'light'];
const rgb = hex => [1, 3, 5].map(i => parseInt(hex.slice(i, i + 2), 16) / 255);

// Unit vectors to the right and up in the picture, and towards the one who looks.
function eye() {
  const {turn, lift} = camera(), t = turn * Math.PI / 180, l = lift * Math.PI / 180, [s, c, sl, cl] = [Math.sin(t), Math.cos(t), Math.sin(l), Math.cos(l)];
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
    x = Math.max(x, Math.abs(dot(d, right)));
    y = Math.max(y, Math.abs(dot(d, up)));
  }
  // A tenth of the view stays free at each side, more where the buttons are.
  c.scale = Math.min(w * .4 / Math.max(x, 1e-6), Math.max(h - 100, h * .6) * .47 / Math.max(y, 1e-6));
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
  ratio = Math.min(devicePixelRatio || 1, 2);
  const [w, h] = size(), W = Math.max(1, Math.round(w * ratio)), H = Math.max(1, Math.round(h * ratio));
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
    return [0, 4, 2].map(k => .36 + .5 * Math.min(1, Math.max(0, Math.abs((hue + k) % 6 - 3) - 1)));
  }
  return theme().steel;
}
const runShown = (part, run) => part.shown && part.bodies[Math.min(run[0], part.bodies.length - 1)].shown;

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
    if (on.sharp) lines(part.mesh.sharpArray, part.mesh.sharp.length, view.t.edge, false, 2e-4);
    if (on.open) lines(part.mesh.openArray, part.mesh.open.length, OPEN, true, 4e-4);
    if (part.hanging && on.hanging) {
      gl.uniform3f(u.o, ...add(part.hanging.from, camera().target, -1));
      gl.uniform3f(u.s, 1, 1, 1);
      lines(part.hanging.array, part.hanging.count, HANG, true, 6e-4);
    }
  }
}

function drawGlass(view) {
  if (!on.solids) return;
  gl.enable(gl.BLEND);
  gl.depthMask(false);
  for (const part of parts) {
    if (!part.solids || !part.shown) continue;
    beginMesh(view, part.supports.box);
    gl.uniform3fv(meshProgram.u.inside, AMBER.map(v => v * .8));
    gl.uniform4f(meshProgram.u.color, ...AMBER, .42);
    gl.bindVertexArray(part.solids.facetArray);
    gl.drawElements(gl.TRIANGLES, 3 * part.solids.facets, gl.UNSIGNED_INT, 0);
  }
  gl.depthMask(true);
  gl.disable(gl.BLEND);
}

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

function bindTextures({ends, kinds}) {
  gl.activeTexture(gl.TEXTURE1);
  gl.bindTexture(gl.TEXTURE_2D, kinds);
  gl.activeTexture(gl.TEXTURE0);
  gl.bindTexture(gl.TEXTURE_2D, ends);
}

function drawLayers(view) {
  const {u} = pathProgram, t = view.t, shownLines = layer.count <= LEGIBLE;
  gl.useProgram(pathProgram.p);
  gl.bindVertexArray(null);
  gl.uniformMatrix4fv(u.m, false, view.m);
  gl.uniform1i(u.ends, 0);
  gl.uniform1i(u.kinds, 1);
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
  }
  bindTextures(textures);
  if (kindOn[0] && shownLines) drawSolid(view);
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
function drawSolid(view) {
  const {u} = pathProgram;
  gl.enable(gl.STENCIL_TEST);
  gl.disable(gl.DEPTH_TEST);
  gl.colorMask(false, false, false, false);
  gl.stencilFunc(gl.ALWAYS, 0, 1);
  gl.stencilOp(gl.KEEP, gl.KEEP, gl.INVERT);
  drawPaths(layer, 2, 0, layer.count, layer.z, 0);
  gl.colorMask(true, true, true, true);
  gl.stencilFunc(gl.EQUAL, 1, 1);
  gl.enable(gl.DEPTH_TEST);
  gl.uniform1i(u.fill, 1);
  gl.uniform4f(u.solid, ...view.t.solid, 1);
  drawPaths(layer, 4, 0, 1, layer.z, 0);
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
  const power = 10 ** Math.floor(Math.log10(140 / scale)), round = [5, 2, 1].find(f => f * power * scale <= 140) * power;
  $('scale-bar').style.width = round * scale + 'px';
  $('scale-text').textContent = text(round) + ' mm';
  const {right, up} = eye(), axes = $('axes'), [ox, oy] = [w - 52, 64 + (w < 640 ? 50 : 0)];
  for (let i = 0; i < 3; i++) {
    const [x, y] = [ox + 30 * right[i], oy - 30 * up[i]], near = Math.hypot(right[i], up[i]) > .08;
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
  const make = (name, settings) => {
    const e = document.createElementNS('http://www.w3.org/2000/svg', name);
    for (const key in settings) e.setAttribute(key, settings[key]);
    $('axes').append(e);
    return e;
  };
  for (const [name, color] of [['X', '#d0453a'], ['Y', '#3f9a4c'], ['Z', '#3a78c9']]) {
    make('path', {stroke: color, 'stroke-width': 2.5, 'stroke-linecap': 'round'});
    make('text', {}).textContent = name;
  }
}

// ---- layers

const FIELDS = ['number', 'z', 'x0', 'y0', 'x1', 'y1', 'chunk', 'contours', 'open', 'strokes', 'support', 'points', 'contourLength', 'strokeLength', 'area', 'travel'];
const cache = new Map();

function chunkOf(f, index) {
  const id = f.layers[index].chunk;
  if (cache.has(id)) {
    const known = cache.get(id);
    cache.delete(id);
    cache.set(id, known);
    return known;
  }
  const count = f.layers.filter(l => l.chunk === id).length;
  const promise = unpack('d' + id).then(bytes => readChunk(bytes, count));
  cache.set(id, promise);
  if (cache.size > 6) cache.delete(cache.keys().next().value);
  return promise;
}

async function pathsOf(f, index) {
  const chunk = await chunkOf(f, index), first = f.layers.findIndex(l => l.chunk === f.layers[index].chunk);
  return {paths: chunk.layers[index - first], x: chunk.x, y: chunk.y};
}

let wanted = 0;
async function showLayer(index) {
  index = Math.max(0, Math.min(file.layers.length - 1, index));
  const mine = ++wanted, f = file, about = f.layers[index];
  $('layer').value = index + 1;
  sayLayer(about, index);
  const segments = segmentsOf(await pathsOf(f, index), true);
  if (mine !== wanted) return;
  f.current = index;
  reserve(textures, segments.count);
  store(textures, 0, segments);
  layer = {...segments, z: about.z, box: [about.x0, about.y0, about.x1, about.y1], about};
  layer.ways = waysOf(layer);
  setWay(+$('path').value);
  draw();
  root.dataset.layer = index + 1;
  if (f.layers[index + 1]) chunkOf(f, index + 1).catch(() => {});
}

// How far the head has gone at the end of each segment, millimetres.
function waysOf({ends, count, box: b}) {
  const ways = new Float64Array(count), sx = (b[2] - b[0]) / 65535, sy = (b[3] - b[1]) / 65535;
  for (let i = 0, sum = 0; i < count; i++) {
    ways[i] = sum += Math.hypot((ends[4 * i + 2] - ends[4 * i]) * sx, (ends[4 * i + 3] - ends[4 * i + 1]) * sy);
  }
  return ways;
}

// The head has gone so many thousandths of the layer's way.
function setWay(share) {
  const {ways, count} = layer, all = count ? ways[count - 1] : 0, way = all * share / 1000;
  let low = 0, high = count;
  while (low < high) { const middle = low + high >> 1; if (ways[middle] < way) low = middle + 1; else high = middle; }
  const before = low ? ways[low - 1] : 0;
  done = share >= 1000 ? Infinity : low + (low < count && ways[low] > before ? (way - before) / (ways[low] - before) : 0);
  const kind = layer.kinds[Math.min(low, count - 1)];
  $('path-text').textContent = share >= 1000 ? `${text(all, 5)} mm, whole layer` : `${text(way, 5)} of ${text(all, 5)} mm, ${(KINDS[kind] || '').toLowerCase()}`;
  $('path').setAttribute('aria-valuetext', $('path-text').textContent);
  draw();
}

const xyOf = (l, x, y) => [l.box[0] + x / 65535 * (l.box[2] - l.box[0]), l.box[1] + y / 65535 * (l.box[3] - l.box[1]), l.z];
function headAt() {
  if (!layer.count) return null;
  const i = Math.min(Math.floor(done), layer.count - 1), f = done - i, e = layer.ends;
  return xyOf(layer, e[4 * i] + f * (e[4 * i + 2] - e[4 * i]), e[4 * i + 1] + f * (e[4 * i + 3] - e[4 * i + 1]));
}

function sayLayer(l, index) {
  const line = `${l.number} of ${file.layers[file.layers.length - 1].number}, z = ${text(l.z)} mm`;
  $('layer-text').textContent = line;
  $('layer').setAttribute('aria-valuetext', 'layer ' + line);
  $('numbers-title').textContent = 'Layer ' + l.number;
  list($('numbers'), [['Height', text(l.z) + ' mm'], ['Contours', text(l.contours)], ['Strokes of fill', text(l.strokes)],
    ['Strokes of support', text(l.support)], ['Length of contours', text(l.contourLength) + ' mm'], ['Length of strokes', text(l.strokeLength) + ' mm'],
    ['Area', text(l.area) + ' mm\u00b2'], ['Travel', text(l.travel) + ' mm'], ['Points', text(l.points, 9)],
    ['Open paths', text(l.open), l.open > 0]]);
}

// Terms and what they are.
function list(dl, rows) {
  dl.replaceChildren(...rows.flatMap(([term, value, bad]) => {
    const dt = document.createElement('dt'), dd = document.createElement('dd');
    dt.textContent = term;
    dd.textContent = value;
    if (bad) dd.className = 'bad';
    return [dt, dd];
  }));
}

// The walls of all layers, of every second or third one in large jobs, in one texture.
async function buildStack() {
  const f = file, work = l => l.points - 2 * (l.strokes + l.support) + l.support;
  if (f.stack) { stack = f.stack; return draw(); }
  const step = Math.max(1, Math.ceil(f.layers.reduce((sum, l) => sum + work(l), 0) / STACKED));
  const mine = f.stack = stack = {layers: [], textures: makeTextures(), step};
  const most = f.layers.reduce((sum, l, i) => sum + (i % step ? 0 : work(l) + l.contours), 0);
  reserve(mine.textures, most);
  let base = 0, last = f.layers[0].z - f.height;
  for (let i = 0; i < f.layers.length; i += step) {
    const l = f.layers[i], s = segmentsOf(await pathsOf(f, i), false, kind => kind !== 2);
    if (base + s.count <= most) {
      store(mine.textures, base, s);
      mine.layers.push({index: i, base, count: s.count, z: l.z, height: Math.min(Math.max(l.z - last, 0), f.height * step * 1.5), box: [l.x0, l.y0, l.x1, l.y1]});
      base += s.count;
    }
    last = l.z;
    if (i % 32 < step) { say(`Stacking layers: ${Math.round(100 * i / f.layers.length)} %`); draw(); }
  }
  say(step > 1 ? `The stack shows the walls of every ${step === 2 ? '2nd' : step === 3 ? '3rd' : step + 'th'} layer.` : '');
  root.dataset.stack = 'ready';
  draw();
}

function chooseFile(f) {
  file = f;
  stack = null;
  layer = null;
  $('layer').max = f.layers.length;
  $('slices-about').textContent = f.about;
  if (on.stack) buildStack().catch(report);
  return showLayer(f.current);
}

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
    const [x, y] = onScreen(p), away = Math.hypot(x - px, y - py);
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
  if (!layer || !(twoD || on.stack) || Math.abs(ray.toward[2]) < 1e-6) return null;
  const p = add(ray.from, ray.toward, (layer.z - ray.from[2]) / ray.toward[2]);
  const ends = function* () { for (let i = 0; i < layer.count; i++) if (kindOn[layer.kinds[i]]) yield xyOf(layer, layer.ends[4 * i], layer.ends[4 * i + 1]), yield xyOf(layer, layer.ends[4 * i + 2], layer.ends[4 * i + 3]); };
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
  c.lift = Math.max(-90, Math.min(90, c.lift + dy));
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
  c.scale = Math.max(1e-6, Math.min(1e9, c.scale * factor));
  move(x, y);
}

function takePointers() {
  const held = new Map();
  let moved = 0;
  const at = e => { const r = canvas.getBoundingClientRect(); return [e.clientX - r.left, e.clientY - r.top]; };
  canvas.addEventListener('pointerdown', e => { canvas.setPointerCapture(e.pointerId); if (!held.size) moved = 0; held.set(e.pointerId, at(e)); });
  canvas.addEventListener('pointermove', e => {
    const was = held.get(e.pointerId), is = at(e);
    if (!was) return;
    const d = [is[0] - was[0], is[1] - was[1]];
    moved += Math.hypot(...d);
    held.set(e.pointerId, is);
    if (held.size === 2) {
      const [p, q] = [...held.values()], other = p === is ? q : p;
      move(d[0] / 2, d[1] / 2);
      const before = Math.hypot(was[0] - other[0], was[1] - other[1]), now = Math.hypot(is[0] - other[0], is[1] - other[1]);
      if (before > 5 && now > 5) zoom(now / before, (p[0] + q[0]) / 2, (p[1] + q[1]) / 2);
    } else if (held.size === 1) {
      if (twoD || e.shiftKey || e.buttons & 6) move(...d); else turn(-d[0] * .4, d[1] * .4);
    }
  });
  const end = e => {
    const only = held.size === 1;
    if (held.delete(e.pointerId) && only && e.type === 'pointerup' && moved < 4 && measuring && e.button === 0) pick(...at(e));
  };
  canvas.addEventListener('pointerup', end);
  canvas.addEventListener('pointercancel', end);
  canvas.addEventListener('contextmenu', e => e.preventDefault());
  canvas.addEventListener('wheel', e => { e.preventDefault(); zoom(Math.exp(-Math.max(-120, Math.min(120, e.deltaY * (e.deltaMode ? 30 : 1))) * .0016), ...at(e)); }, {passive: false});
}

function takeKeys() {
  const step = n => file && $('layer').focus !== null && setLayer(+$('layer').value - 1 + n);
  const keys = {
    '+': () => zoom(1.2, ...size().map(v => v / 2)), '-': () => zoom(1 / 1.2, ...size().map(v => v / 2)), '=': () => keys['+'](),
    f: fit, m: () => setMeasuring(!measuring), Enter: () => measuring && pick(...size().map(v => v / 2)), Escape: () => setMeasuring(false),
    PageUp: () => step(1), PageDown: () => step(-1), Home: () => step(-1e9), End: () => step(1e9),
    0: () => look('iso'), 1: () => look('front'), 2: () => look('back'), 3: () => look('left'), 4: () => look('right'), 5: () => look('top'), 6: () => look('bottom')};
  const arrows = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]};
  canvas.addEventListener('keydown', e => {
    if (e.ctrlKey || e.metaKey || e.altKey) return;
    const arrow = arrows[e.key], key = keys[e.key.length === 1 ? e.key.toLowerCase() : e.key];
    if (arrow) { if (e.shiftKey || twoD) move(-30 * arrow[0], -30 * arrow[1]); else turn(-8 * arrow[0], 8 * arrow[1]); }
    else if (key) key();
    else return;
    e.preventDefault();
  });
  canvas.addEventListener('focus', draw);
  canvas.addEventListener('blur', draw);
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
  button.addEventListener('click', () => {
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

// ---- what is listed

// A switch with a name, a swatch and a number.
function check(parent, name, value, change, swatch, note) {
  const label = document.createElement('label'), input = document.createElement('input'), span = document.createElement('span');
  label.className = 'check';
  input.type = 'checkbox';
  input.checked = value;
  span.textContent = name;
  input.addEventListener('change', () => { change(input.checked); draw(); });
  label.append(input);
  if (swatch) { const i = document.createElement('i'); i.style.background = swatch; label.append(i); }
  label.append(span);
  if (note !== undefined) { const small = document.createElement('small'); small.textContent = note; label.append(small); }
  parent.append(label);
  return input;
}

const css = c => `rgb(${c.map(v => Math.round(255 * v))})`;

function listShows() {
  const box = $('shows');
  box.replaceChildren();
  const add = (key, name, swatch, note, change = () => {}) => check(box, name, on[key], v => { on[key] = v; change(v); }, swatch, note).dataset.show = key;
  const sum = key => parts.reduce((n, p) => n + (p.supports ? p.supports[key] : 0), 0);
  if (parts.length) {
    add('sharp', 'Edges', css(theme().edge));
    if (parts.some(p => p.open)) add('open', 'Open edges', css(OPEN), text(parts.reduce((n, p) => n + p.open, 0), 9));
    if (sum('regions')) add('overhangs', 'Overhangs', css(OVER), `${text(sum('supported'))} of ${text(sum('regions'))} supported`);
    if (sum('edges')) add('hanging', 'Hanging edges', css(HANG), text(sum('edges')));
    if (sum('solids')) add('solids', 'Support solids', css(AMBER), text(sum('solids')));
    if (file) add('cut', 'Cut the part at the layer');
    else addCut(box);
  }
  if (file) add('stack', 'Layers up to this one', theme().kinds[0], undefined, v => { if (v && !stack) buildStack().catch(report); });
}

// Without layers, the height of the cut has a slider of its own.
function addCut(parent) {
  const slider = document.createElement('input');
  Object.assign(slider, {type: 'range', min: 0, max: 1000, value: 1000, id: 'cut-height'});
  slider.setAttribute('aria-label', 'Height of the cut');
  check(parent, 'Cut at a height', on.cut, v => { on.cut = v; }).dataset.show = 'cut';
  slider.addEventListener('input', () => {
    cutHeight = box[2] + (box[5] - box[2]) * slider.value / 1000;
    on.cut = true;
    parent.querySelector('[data-show=cut]').checked = true;
    slider.setAttribute('aria-valuetext', text(cutHeight) + ' mm');
    draw();
  });
  slider.className = 'wide';
  parent.append(slider);
}

function listKinds() {
  $('legend').replaceChildren();
  const has = k => file.layers.some(l => [l.contours, l.contours, l.strokes, l.support, 1, l.open][k] > 0);
  KINDS.forEach((name, k) => { if (has(k)) check($('legend'), name, kindOn[k], v => { kindOn[k] = v; }, theme().kinds[k]).dataset.kind = k; });
}

function listParts() {
  const element = (name, content, kind) => { const e = document.createElement(name); e.textContent = content; if (kind) e.className = kind; return e; };
  for (const part of parts) {
    const here = document.createElement('div'), b = part.box;
    here.append(element('h3', part.name));
    if (part.header.trim()) here.append(element('p', part.header.trim(), 'soft'));
    const dl = document.createElement('dl');
    list(dl, [['Format', part.format], ['Size', [0, 1, 2].map(i => text(b[i + 3] - b[i], 5)).join(' \u00d7 ') + ' mm'], ['Facets', text(part.facets, 9)],
      ['Area', text(part.area) + ' mm\u00b2'], ['Volume', text(part.volume) + ' mm\u00b3'], ['Open edges', text(part.open, 9), part.open > 0]]);
    here.append(dl);
    check(here, 'Show the part', true, v => { part.shown = v; }).dataset.part = part.name;
    if (part.bodies.length > 1) {
      const all = document.createElement('div');
      all.className = 'bodies';
      part.bodies.forEach((body, i) => {
        const name = i === part.bodies.length - 1 && part.bodyCount > part.bodies.length ? `${part.bodyCount - i} small bodies` : `Body ${i + 1}`;
        const kind = ['', ', cavity', ', inside out'][body.kind || 0];
        check(all, name + kind, true, v => { body.shown = v; }, null, body.facets ? text(body.volume, 5) + ' mm\u00b3' : '').dataset.body = i;
      });
      here.append(all);
    }
    $('parts').append(here);
  }
}

// ---- the beginning

async function readHanging(part) {
  const bytes = await unpack('d' + part.supports.edgesChunk), head = new DataView(bytes.buffer), chains = head.getUint32(0, true);
  const xyz = new Float32Array(bytes.buffer, 4 + 4 * chains), from = part.box.slice(0, 3), relative = xyz.map((v, i) => v - from[i % 3]), ends = [];
  for (let c = 0, first = 0; c < chains; c++) {
    const count = head.getUint32(4 + 4 * c, true);
    for (let i = first; i < first + count - 1; i++) ends.push(i, i + 1);
    first += count;
  }
  const array = gl.createVertexArray();
  gl.bindVertexArray(array);
  gl.bindBuffer(gl.ARRAY_BUFFER, gl.createBuffer());
  gl.bufferData(gl.ARRAY_BUFFER, relative, gl.STATIC_DRAW);
  gl.enableVertexAttribArray(0);
  gl.vertexAttribPointer(0, 3, gl.FLOAT, false, 0, 0);
  gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, gl.createBuffer());
  gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, new Uint32Array(ends), gl.STATIC_DRAW);
  gl.bindVertexArray(null);
  part.hanging = {array, count: ends.length, from};
}

async function loadPart(part) {
  part.mesh = upload(readMesh(await unpack('d' + part.chunk)));
  const s = part.supports;
  if (s && s.edgesChunk !== undefined) await readHanging(part);
  if (s && s.chunk !== undefined) part.solids = upload(readMesh(await unpack('d' + s.chunk)));
  draw();
}

function prepare() {
  parts = about.parts;
  for (const part of parts) {
    part.shown = true;
    const runs = part.runs;
    part.runs = [];
    for (let i = 0; i < runs.length; i += 4) part.runs.push(runs.slice(i, i + 4));
    part.bodies = part.bodies.map(([facets, volume, open, kind]) => ({facets, volume, open, kind, shown: true}));
    if (part.bodyCount > part.bodies.length) part.bodies.push({shown: true});
  }
  const boxes = parts.flatMap(p => p.supports && p.supports.box ? [p.box, p.supports.box] : [p.box]);
  for (const f of about.slices) {
    f.layers = f.layers.map(row => Object.fromEntries(row.map((v, i) => [FIELDS[i], v])));
    const full = f.layers.filter(l => l.points), n = f.layers.length, low = (list, k) => list.reduce((m, l) => Math.min(m, l[k]), Infinity), high = (list, k) => list.reduce((m, l) => Math.max(m, l[k]), -Infinity);
    f.height = n > 1 ? Math.abs(f.layers[n - 1].z - f.layers[0].z) / (n - 1) : .2;
    const some = full.length ? full : f.layers;
    f.box = [low(some, 'x0'), low(some, 'y0'), low(f.layers, 'z') - f.height, high(some, 'x1'), high(some, 'y1'), high(f.layers, 'z')];
    f.current = n - 1;
    boxes.push(f.box);
  }
  box = [0, 1, 2].map(i => Math.min(...boxes.map(b => b[i]))).concat([3, 4, 5].map(i => Math.max(...boxes.map(b => b[i]))));
}

function setTheme(value) {
  dark = value;
  root.dataset.theme = dark ? 'dark' : 'light';
  $('theme').textContent = dark ? 'Light' : 'Dark';
  if (about) { listShows(); if (file) listKinds(); }
  draw();
}

function wire() {
  takePointers();
  takeKeys();
  $('mode-3d').addEventListener('click', () => setMode(false));
  $('mode-2d').addEventListener('click', () => setMode(true));
  $('views').addEventListener('click', e => e.target.dataset.view && look(e.target.dataset.view));
  $('fit').addEventListener('click', fit);
  $('measure').addEventListener('click', () => setMeasuring(!measuring));
  $('layer').addEventListener('input', () => setLayer(+$('layer').value - 1));
  $('path').addEventListener('input', () => layer && setWay(+$('path').value));
  $('color').addEventListener('change', draw);
  const ramp = () => { $('ramp').hidden = $('path-color').value !== 'order'; draw(); };
  $('path-color').addEventListener('change', ramp);
  ramp();
  $('file').addEventListener('change', () => chooseFile(about.slices[+$('file').value]).catch(report));
  playing($('play-layers'), $('layer'), () => Math.max(1, Math.round(file.layers.length / 400)));
  playing($('play-path'), $('path'), () => 4);
  new ResizeObserver(draw).observe(canvas);
  const print = matchMedia('print'), inPrint = value => { printing = value; root.dataset.theme = dark && !value ? 'dark' : 'light'; if (gl && about) render(); };
  addEventListener('beforeprint', () => inPrint(true));
  addEventListener('afterprint', () => inPrint(false));
  print.addEventListener('change', () => inPrint(print.matches));
  const system = matchMedia('(prefers-color-scheme: dark)');
  system.addEventListener('change', () => setTheme(system.matches));
  $('theme').addEventListener('click', () => setTheme(!dark));
}

function arrange() {
  $('title').textContent = about.title;
  const options = [['plain', 'nothing'], ...(parts.some(p => p.surfaces) ? [['surface', 'surface']] : []), ...(parts.some(p => p.bodies.length > 1) ? [['body', 'body']] : [])];
  const fill = (select, pairs) => select.replaceChildren(...pairs.map(([value, name]) => { const o = document.createElement('option'); o.value = value; o.textContent = name; return o; }));
  fill($('color'), options);
  fill($('file'), about.slices.map((f, i) => [i, f.name]));
  $('color-row').hidden = options.length < 2;
  $('file-row').hidden = about.slices.length < 2;
  $('parts-card').hidden = !parts.length;
  for (const id of ['sliders', 'modes', 'legend-card', 'numbers-card']) $(id).hidden = !about.slices.length;
  on.stack = !parts.length;
  file = about.slices[0] || null;
  listShows();
  listParts();
  if (file) listKinds();
}

async function begin() {
  try {
    if (!$('end')) throw Error('the page is cut off');
    about = JSON.parse(new TextDecoder().decode(await unpack('about')));
    prepare();
    meshProgram = program(MESH);
    pathProgram = program(PATH);
    textures = makeTextures();
    arrange();
    wire();
    say('');
    fit();
    if (file) await chooseFile(file);
    for (const part of parts) await loadPart(part);
    render();
    root.dataset.state = 'ready';
    performance.mark('first-picture');
  } catch (error) {
    fail('This page cannot be shown: ' + error.message + '.');
  }
}

try { gl = canvas.getContext('webgl2', {antialias: true, stencil: true, alpha: false, preserveDrawingBuffer: true}); } catch (error) { gl = null; }
if (!gl) fail('This browser draws nothing in three dimensions (it has no WebGL 2, or it is switched off), so pictures are shown instead.');
else if (!window.DecompressionStream) fail('This browser cannot unpack compressed data (it has no DecompressionStream), so pictures are shown instead.');
else {
  document.body.classList.add('live');
  makeAxes();
  setTheme(matchMedia('(prefers-color-scheme: dark)').matches);
  canvas.addEventListener('webglcontextlost', () => { gl = null; fail('The graphics card was lost: load the page again. Pictures are shown instead.'); });
  if (document.readyState === 'loading') document.addEventListener('DOMContentLoaded', begin); else begin();
}
})();
