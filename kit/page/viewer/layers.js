// The chosen layer, the way of the head, and the stack.

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
  index = max(0, min(file.layers.length - 1, index));
  const mine = ++wanted, f = file, about = f.layers[index];
  $('layer').value = index + 1;
  sayLayer(about, index);
  const segments = segmentsOf(await pathsOf(f, index), 0);
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
    ways[i] = sum += hypot((ends[4 * i + 2] - ends[4 * i]) * sx, (ends[4 * i + 3] - ends[4 * i + 1]) * sy);
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
  const kind = layer.info[4 * min(low, count - 1)];
  $('path-text').textContent = share >= 1000 ? `${text(all, 5)} mm, whole layer` : `${text(way, 5)} of ${text(all, 5)} mm, ${(KINDS[kind] || '').toLowerCase()}`;
  $('path').setAttribute('aria-valuetext', $('path-text').textContent);
  draw();
}

const xyOf = (l, x, y) => [l.box[0] + x / 65535 * (l.box[2] - l.box[0]), l.box[1] + y / 65535 * (l.box[3] - l.box[1]), l.z];
function headAt() {
  if (!layer.count) return null;
  const i = min(floor(done), layer.count - 1), f = done - i, e = layer.ends;
  return xyOf(layer, e[4 * i] + f * (e[4 * i + 2] - e[4 * i]), e[4 * i + 1] + f * (e[4 * i + 3] - e[4 * i + 1]));
}

function sayLayer(l, index) {
  const line = `${l.number} of ${file.layers[file.layers.length - 1].number}, z\u00a0=\u00a0${text(l.z)} mm`;
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
  dl.replaceChildren(...rows.flatMap(([term, value, bad]) => [make('dt', term), make('dd', value, bad ? 'bad' : '')]));
}

// The walls of all layers, of every second or third one in large jobs, in one texture.
async function buildStack() {
  const f = file, work = l => l.points - 2 * (l.strokes + l.support) + l.support;
  if (f.stack) { stack = f.stack; return draw(); }
  const over = f.layers.reduce((sum, l) => sum + work(l), 0) / STACKED[slow ? 1 : 0];
  // As much by layers as by points.
  const step = over > 1 ? ceil(sqrt(over)) : 1, mine = f.stack = stack = {layers: [], textures: makeTextures()};
  reserve(mine.textures, f.layers.reduce((sum, l, i) => sum + (i % step ? 0 : work(l) + l.contours), 0));
  let base = 0, last = f.layers[0].z - f.height;
  for (let i = 0; i < f.layers.length; i += step) {
    const l = f.layers[i], s = segmentsOf(await pathsOf(f, i), step), next = f.layers[i + step];
    if (f.stack !== mine) return;
    store(mine.textures, base, s);
    // Where the next layer has much less solid, this one has a lid.
    mine.layers.push({index: i, base, count: s.count, z: l.z, height: min(max(l.z - last, 0), f.height * step * 1.5), box: [l.x0, l.y0, l.x1, l.y1], lid: next ? l.area - next.area : 0});
    base += s.count;
    last = l.z;
    if (i % 32 < step) { say(`Stacking layers: ${round(100 * i / f.layers.length)} %`); draw(); }
  }
  mine.lids = mine.layers.filter(l => l.lid > 0).sort((a, b) => b.lid - a.lid).slice(0, slow ? 8 : 60);
  say(step > 1 ? `The stack is simplified: one layer in ${step}, and fewer points.` : '');
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
