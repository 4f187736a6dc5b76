// What stands in the page: compressed bytes, meshes, layers.

const $ = id => document.getElementById(id);
const {abs, min, max, hypot, round, floor, ceil, sqrt, sin, cos, PI} = Math;
const make = (name, content = '', kind = '') => { const e = document.createElement(name); e.textContent = content; e.className = kind; return e; };
const hear = (who, type, f, how) => (who.addEventListener ? who : $(who)).addEventListener(type, f, how);
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
const STACKED = [400000, 30000]; // segments of the stack, with a graphics card and without; larger jobs are thinned out
const LEGIBLE = 250000;         // segments of a layer that are drawn with a width, and with its solid
const SNAP = 9;                 // pixels within which a pick takes a corner

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
      const code = next(), count = floor(code / 8);
      paths.push({at, count, closed: code & 1, kind: code & 1 ? code & 4 ? 3 : code & 2 ? 1 : 0 : 5, fill: false});
      at += count;
    }
    for (let n = next(); n > 0; n--) {
      const code = next(), count = 2 * floor(code / 2);
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

// What is drawn of a layer: segments in the order of printing, four coordinates each, and of
// each the kind and where its path begins.
// With `thin`, without travel and fill, and of long paths every so manieth point only.
function segmentsOf({paths, x, y}, thin) {
  let most = 0;
  for (const p of paths) most += p.count + 1 + (p.fill ? p.count / 2 : 0);
  const ends = new Uint16Array(4 * most), info = new Uint16Array(4 * most);
  let n = 0, hx = -1, hy = -1, first = 0;
  const add = (ax, ay, bx, by, kind) => {
    const i = 4 * n;
    ends[i] = ax; ends[i + 1] = ay; ends[i + 2] = bx; ends[i + 3] = by;
    info[i] = kind; info[i + 1] = x[first]; info[i + 2] = y[first]; n++; hx = bx; hy = by;
  };
  const go = i => { if (!thin && hx >= 0 && (hx !== x[i] || hy !== y[i])) add(hx, hy, x[i], y[i], 4); };
  for (const p of paths) {
    if (!p.count || thin && p.kind === 2) continue;
    first = p.at;
    const step = thin && max(1, min(thin, floor(p.count / 12))) || 1;
    if (p.fill) {
      for (let i = p.at; i < p.at + p.count; i += 2 * step) { go(i); add(x[i], y[i], x[i + 1], y[i + 1], p.kind); }
      continue;
    }
    go(p.at);
    const last = p.at + p.count - 1;
    for (let i = p.at; i < last; i += step) { const j = min(i + step, last); add(x[i], y[i], x[j], y[j], p.kind); }
    if (p.closed) add(x[last], y[last], x[p.at], y[p.at], p.kind);
  }
  return {ends: ends.subarray(0, 4 * n), info: info.subarray(0, 4 * n), count: n};
}
