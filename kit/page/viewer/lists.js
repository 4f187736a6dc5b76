// Switches and numbers beside the view, and how it all begins.

// ---- what is listed

// A switch with a name, a swatch and a number.
function check(parent, name, value, change, swatch, note) {
  const label = make('label', '', 'check'), input = make('input');
  input.type = 'checkbox';
  input.checked = value;
  hear(input, 'change', () => { change(input.checked); draw(); });
  label.append(input);
  if (swatch) { const i = make('i'); i.style.background = swatch; label.append(i); }
  label.append(make('span', name));
  if (note !== undefined) label.append(make('small', note));
  parent.append(label);
  return input;
}

const css = c => `rgb(${c.map(v => round(255 * v))})`;

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
  const slider = make('input', '', 'wide');
  Object.assign(slider, {type: 'range', min: 0, max: 1000, value: 1000, id: 'cut-height'});
  slider.setAttribute('aria-label', 'Height of the cut');
  check(parent, 'Cut at a height', on.cut, v => { on.cut = v; }).dataset.show = 'cut';
  hear(slider, 'input', () => {
    cutHeight = box[2] + (box[5] - box[2]) * slider.value / 1000;
    on.cut = true;
    parent.querySelector('[data-show=cut]').checked = true;
    slider.setAttribute('aria-valuetext', text(cutHeight) + ' mm');
    draw();
  });
  parent.append(slider);
}

function listKinds() {
  $('legend').replaceChildren();
  const has = k => file.layers.some(l => [l.contours, l.contours, l.strokes, l.support, 1, l.open][k] > 0);
  KINDS.forEach((name, k) => { if (has(k)) check($('legend'), name, kindOn[k], v => { kindOn[k] = v; }, theme().kinds[k]).dataset.kind = k; });
}

function listParts() {
  for (const part of parts) {
    const here = make('div'), b = part.box;
    here.append(make('h3', part.name));
    if (part.header.trim()) here.append(make('p', part.header.trim(), 'soft'));
    const dl = make('dl');
    list(dl, [['Format', part.format], ['Size', [0, 1, 2].map(i => text(b[i + 3] - b[i], 5)).join(' \u00d7 ') + ' mm'], ['Facets', text(part.facets, 9)],
      ['Area', text(part.area) + ' mm\u00b2'], ['Volume', text(part.volume) + ' mm\u00b3'], ['Open edges', text(part.open, 9), part.open > 0]]);
    here.append(dl);
    check(here, 'Show the part', true, v => { part.shown = v; }).dataset.part = part.name;
    if (part.bodies.length > 1) {
      const all = make('div', '', 'bodies');
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
    const full = f.layers.filter(l => l.points), n = f.layers.length, low = (list, k) => list.reduce((m, l) => min(m, l[k]), Infinity), high = (list, k) => list.reduce((m, l) => max(m, l[k]), -Infinity);
    f.height = n > 1 ? abs(f.layers[n - 1].z - f.layers[0].z) / (n - 1) : .2;
    const some = full.length ? full : f.layers;
    f.box = [low(some, 'x0'), low(some, 'y0'), low(f.layers, 'z') - f.height, high(some, 'x1'), high(some, 'y1'), high(f.layers, 'z')];
    f.current = n - 1;
    boxes.push(f.box);
  }
  box = [0, 1, 2].map(i => min(...boxes.map(b => b[i]))).concat([3, 4, 5].map(i => max(...boxes.map(b => b[i]))));
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
  hear('mode-3d', 'click', () => setMode(false));
  hear('mode-2d', 'click', () => setMode(true));
  hear('views', 'click', e => e.target.dataset.view && look(e.target.dataset.view));
  hear('fit', 'click', fit);
  hear('measure', 'click', () => setMeasuring(!measuring));
  hear('layer', 'input', () => setLayer(+$('layer').value - 1));
  hear('path', 'input', () => layer && setWay(+$('path').value));
  hear('color', 'change', draw);
  const ramp = () => { $('ramp').hidden = $('path-color').value !== 'order'; draw(); };
  hear('path-color', 'change', ramp);
  ramp();
  hear('file', 'change', () => chooseFile(about.slices[+$('file').value]).catch(report));
  playing($('play-layers'), $('layer'), () => max(1, round(file.layers.length / 400)));
  playing($('play-path'), $('path'), () => 4);
  new ResizeObserver(draw).observe(canvas);
  const print = matchMedia('print'), inPrint = value => { printing = value; root.dataset.theme = dark && !value ? 'dark' : 'light'; if (gl && about) render(); };
  addEventListener('beforeprint', () => inPrint(true));
  addEventListener('afterprint', () => inPrint(false));
  hear(print, 'change', () => inPrint(print.matches));
  const system = matchMedia('(prefers-color-scheme: dark)');
  hear(system, 'change', () => setTheme(system.matches));
  hear('theme', 'click', () => setTheme(!dark));
}

function arrange() {
  $('title').textContent = about.title;
  const options = [['plain', 'nothing'], ...(parts.some(p => p.surfaces) ? [['surface', 'surface']] : []), ...(parts.some(p => p.bodies.length > 1) ? [['body', 'body']] : [])];
  const fill = (select, pairs) => select.replaceChildren(...pairs.map(([value, name]) => { const o = make('option', name); o.value = value; return o; }));
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

// Where the processor draws, smooth edges cost too much: what draws is asked on a canvas that is thrown away.
const probe = make('canvas').getContext('webgl2');
if (probe) {
  const asked = probe.getExtension('WEBGL_debug_renderer_info');
  slow = /swiftshader|llvmpipe|softpipe|software|basic render/i.test(probe.getParameter(asked ? asked.UNMASKED_RENDERER_WEBGL : probe.RENDERER));
  gl = canvas.getContext('webgl2', {antialias: !slow, stencil: true, alpha: false, preserveDrawingBuffer: true});
}
if (!gl) fail('This browser draws nothing in three dimensions (it has no WebGL 2, or it is switched off), so pictures are shown instead.');
else if (!window.DecompressionStream) fail('This browser cannot unpack compressed data (it has no DecompressionStream), so pictures are shown instead.');
else {
  document.body.classList.add('live');
  makeAxes();
  setTheme(matchMedia('(prefers-color-scheme: dark)').matches);
  hear(canvas, 'webglcontextlost', () => { gl = null; fail('The graphics card was lost: load the page again. Pictures are shown instead.'); });
  if (document.readyState === 'loading') document.addEventListener('DOMContentLoaded', begin); else begin();
}
