// Opens pages of `varnet view` in Chromium and looks at them: pixels, switches, keys, what is read out.
import {execFileSync, spawnSync} from 'node:child_process';
import {writeFileSync, existsSync, readFileSync} from 'node:fs';
import {join} from 'node:path';
import {pathToFileURL} from 'node:url';
import assert from 'node:assert/strict';
import puppeteer from 'puppeteer-core';
import {boxStl, cli, outer, hole, open, strokes, rectangle} from './models.mjs';

const {VARNET, BROWSER, WORK, VARNET_PICTURES} = process.env;
const software = ['--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'];
const launch = args => puppeteer.launch({executablePath: BROWSER, headless: true, protocolTimeout: 300000,
  args: ['--no-sandbox', '--disable-dev-shm-usage', '--force-color-profile=srgb', ...args]});
const file = (name, text) => { writeFileSync(join(WORK, name), text); return join(WORK, name); };
const varnet = (...args) => execFileSync(VARNET, args, {cwd: WORK, encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe']});
function view(name, ...inputs) {
  varnet('view', ...inputs, '-o', `${name}.html`);
  return join(WORK, `${name}.html`);
}

let browser;
/** Opens a page; everything that it logs, and every request but its own, is a complaint. */
async function openPage(path, {width = 1200, height = 800, dark = false, by = browser, state = 'ready'} = {}) {
  const page = await by.newPage();
  page.complaints = [];
  page.on('console', message => page.complaints.push(`console: ${message.text()}`));
  page.on('pageerror', error => page.complaints.push(`error: ${error.message}`));
  page.on('request', request => {
    const url = request.url();
    if (url !== pathToFileURL(path).href && !url.startsWith('data:')) page.complaints.push(`request: ${url}`);
  });
  await page.setViewport({width, height});
  await page.emulateMediaFeatures([{name: 'prefers-color-scheme', value: dark ? 'dark' : 'light'}]);
  await page.goto(pathToFileURL(path).href);
  await page.waitForFunction(s => document.documentElement.dataset.state === s, {timeout: 120000}, state);
  page.done = async () => { assert.deepEqual(page.complaints, []); await page.close(); };
  return page;
}
const settle = page => page.evaluate(() => new Promise(done => requestAnimationFrame(() => requestAnimationFrame(done))));
const textOf = (page, selector) => page.$eval(selector, e => e.textContent);
const set = async (page, selector, value) => {
  await page.$eval(selector, (e, v) => { e.value = v; e.dispatchEvent(new Event('input')); e.dispatchEvent(new Event('change')); }, value);
  await settle(page);
};
const setLayer = async (page, number) => {
  await set(page, '#layer', number);
  await page.waitForFunction(n => document.documentElement.dataset.layer === String(n), {}, number);
  await settle(page);
};

/** The colours of the canvas, and what lies where: pixels a millimetre of a view that was fitted to w by h mm. */
async function canvasOf(page, w, h) {
  await settle(page);
  const picture = await page.evaluate(() => {
    const c = document.getElementById('view'), copy = document.createElement('canvas');
    copy.width = c.width;
    copy.height = c.height;
    const d = copy.getContext('2d');
    d.drawImage(c, 0, 0);
    return {w: c.width, h: c.height, data: Array.from(d.getImageData(0, 0, c.width, c.height).data)};
  });
  const scale = Math.min(picture.w * .8 / w, Math.max(picture.h - 100, picture.h * .6) * .94 / h);
  // x and y in millimetres from the middle of what is shown, y upward.
  picture.at = (x, y) => {
    const i = 4 * (Math.round(picture.h / 2 - y * scale - .5) * picture.w + Math.round(picture.w / 2 + x * scale - .5));
    return picture.data.slice(i, i + 3);
  };
  picture.scale = scale;
  picture.count = test => { let n = 0; for (let i = 0; i < picture.data.length; i += 4) n += test(picture.data.slice(i, i + 3)) ? 1 : 0; return n; };
  return picture;
}
const near = (color, expected, within, what) =>
  assert.ok(color.every((v, i) => Math.abs(v - expected[i]) <= within), `${what}: ${color} is not ${expected}`);
const times = (color, f) => color.map(v => v * f * 255);
const hex = text => [1, 3, 5].map(i => parseInt(text.slice(i, i + 2), 16));
const STEEL = [.60, .72, .82], SOLID = times([.88, .90, .93], 1), WHITE = [255, 255, 255], CONTOUR = hex('#174f86');

const plate = () => file('plate.cli', cli([
  [0.5, [outer(rectangle(0, 0, 20, 20)), hole(rectangle(5, 5, 15, 15).reverse()), strokes([[[1, 2.5], [19, 2.5]]])]],
  [1.0, [outer(rectangle(0, 0, 20, 20)), open([[22, 0], [22, 20]])]],
  [1.5, [outer(rectangle(5, 5, 15, 15)), strokes([[[6, 8], [14, 8]], [[14, 12], [6, 12]]])]]]));

const tests = {
  async 'A layer has its solid, its holes and its lines where they are'() {
    const page = await openPage(view('layer', plate()));
    await page.click('#mode-2d');
    await setLayer(page, 1);
    // The box of all layers is 22 by 20, its middle at (11, 10).
    const c = await canvasOf(page, 22, 20), at = (x, y) => c.at(x - 11, y - 10);
    near(at(17.5, 10), SOLID, 1, 'solid');
    near(at(10, 17.5), SOLID, 1, 'solid above the hole');
    near(at(10, 10), WHITE, 1, 'hole');
    near(at(21.5, 10), WHITE, 1, 'outside');
    near(at(0, 10), CONTOUR, 40, 'contour');
    near(at(5, 10), hex('#8a3fa0'), 40, 'rim of the hole');
    near(at(10, 2.5), hex('#3f8f58'), 60, 'fill');
    // 300 of the 440 square millimetres are solid, less the lines: 120 mm of contours and 18 of fill.
    const solid = c.count(p => p.every((v, i) => Math.abs(v - SOLID[i]) <= 1)), whole = 300 * c.scale ** 2;
    assert.ok(solid < whole && solid > whole - 4 * 138 * c.scale, `${solid} pixels of solid, of ${whole}`);
    await setLayer(page, 2);
    near((await canvasOf(page, 22, 20)).at(11, 0), hex('#d3201b'), 40, 'an open path');
    assert.equal(await page.$eval('#numbers .bad', e => e.textContent), '1');
    await page.done();
  },

  async 'A cube is shaded by its slope'() {
    const page = await openPage(view('cube', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10]))));
    await page.click('[data-view=front]');
    const c = await canvasOf(page, 10, 10);
    // Light from toward - right / 2 + 0.9 up: of a face that looks at the eye 1 / sqrt(1 + 0.25 + 0.81).
    near(c.at(2, 2.5), times(STEEL, .40 + .52 / Math.sqrt(2.06)), 2, 'the front');
    near(c.at(5.5, 0), WHITE, 0, 'beside');
    const seen = c.count(p => p.some(v => v < 250)), whole = (10 * c.scale) ** 2;
    assert.ok(Math.abs(seen - whole) < 8 * 10 * c.scale, `${seen} pixels of ${whole}`);
    await page.click('[data-view=top]');
    near((await canvasOf(page, 10, 10)).at(2, 2.5), times(STEEL, .40 + .52 * 1.9 / Math.sqrt(1.9 ** 2 + .25) + .10), 2, 'the top');
    await page.done();
  },

  async 'A part that is cut shows its inside'() {
    const page = await openPage(view('cut', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10]))));
    await page.click('[data-view=top]');
    await set(page, '#cut-height', 500);
    near((await canvasOf(page, 10, 10)).at(2, 2.5), times([.86, .52, .36], 1), 2, 'the bottom from inside');
    await page.click('[data-view=front]');
    const c = await canvasOf(page, 10, 10);
    near(c.at(2, 2), WHITE, 0, 'above the cut');
    near(c.at(2, -2), times(STEEL, .40 + .52 / Math.sqrt(2.06)), 2, 'below the cut');
    await page.done();
  },

  async 'Stacked layers are walls up to the chosen one'() {
    const square = outer(rectangle(0, 0, 10, 10));
    const page = await openPage(view('stack', file('stack.cli', cli([1, 2, 3, 4, 5, 6, 7, 8, 9, 10].map(z => [z, [square]])))));
    await page.waitForFunction(() => document.documentElement.dataset.stack === 'ready');
    await page.click('[data-view=front]');
    let c = await canvasOf(page, 10, 10);
    const wall = CONTOUR.map(v => v * (.72 + .34 / Math.sqrt(2.06)));
    near(c.at(2, 2.5), wall, 3, 'upper half');
    await setLayer(page, 5);
    c = await canvasOf(page, 10, 10);
    near(c.at(2, 2.5), WHITE, 0, 'above layer 5');
    near(c.at(2, -2.5), wall, 3, 'below layer 5');
    await page.done();
  },

  async 'Layers are gone through by mouse and by keys'() {
    const page = await openPage(view('layers', plate()));
    const layer = () => textOf(page, '#layer-text');
    const shows = line => page.waitForFunction(l => document.getElementById('layer-text').textContent === l, {timeout: 60000}, line);
    await shows('3 of 3, z\u00a0=\u00a01.5 mm');
    const slider = await (await page.$('#layer')).boundingBox();
    await page.mouse.click(slider.x + 4, slider.y + slider.height / 2);
    await shows('1 of 3, z\u00a0=\u00a00.5 mm');
    await page.keyboard.press('ArrowRight');
    await shows('2 of 3, z\u00a0=\u00a01 mm');
    await page.focus('#view');
    await page.keyboard.press('PageUp');
    await shows('3 of 3, z\u00a0=\u00a01.5 mm');
    await page.keyboard.press('Home');
    await shows('1 of 3, z\u00a0=\u00a00.5 mm');
    // 80 mm outside, 40 mm of the hole, 18 mm of fill; from (0, 0) to (5, 15) or (5, 5), and on to (1, 2.5).
    const numbers = await page.$$eval('#numbers dt', list => Object.fromEntries(list.map(e => [e.textContent, e.nextSibling.textContent])));
    assert.deepEqual([numbers.Contours, numbers['Length of contours'], numbers['Length of strokes'], numbers.Area, numbers['Open paths']],
      ['2', '120 mm', '18 mm', '300 mm\u00b2', '0']);
    await page.$eval('#play-layers', e => e.click());
    await shows('3 of 3, z\u00a0=\u00a01.5 mm');
    assert.match(await layer(), /^3 of 3/);
    await page.done();
  },

  async 'The head runs along the paths'() {
    const page = await openPage(view('head', file('way.cli', cli([[1, [strokes([[[0, 0], [10, 0]], [[10, 10], [0, 10]]])]]]))));
    await page.click('#mode-2d');
    // 10 mm of stroke, 10 mm of travel, 10 mm of stroke: at half of it the head is at (10, 5), on its way.
    await set(page, '#path', 500);
    assert.equal(await textOf(page, '#path-text'), '15 of 30 mm, travel');
    const scale = (await canvasOf(page, 10, 10)).scale, [x, y] = await page.$eval('#nozzle', e => [+e.getAttribute('cx'), +e.getAttribute('cy')]);
    const box = await (await page.$('#view')).boundingBox();
    assert.ok(Math.abs(x - box.width / 2 - 5 * scale) < 1 && Math.abs(y - box.height / 2) < 1, `the head is at ${x}, ${y}`);
    await page.focus('#path');
    await page.keyboard.press('End');
    assert.equal(await textOf(page, '#path-text'), '30 mm, whole layer');
    await page.done();
  },

  async 'Switches hide kinds, bodies and parts'() {
    const two = boxStl([0, 0, 0], [10, 10, 10]).replace('endsolid box\n', '') + boxStl([20, 0, 0], [30, 10, 10]).replace('solid box\n', '');
    let page = await openPage(view('bodies', file('two.stl', two)));
    await page.click('[data-view=front]');
    let c = await canvasOf(page, 30, 10);
    near(c.at(-12, 1), times(STEEL, .40 + .52 / Math.sqrt(2.06)), 2, 'the left body');
    await page.click('[data-body="0"]');
    c = await canvasOf(page, 30, 10);
    near(c.at(-12, 1), WHITE, 0, 'the left body is hidden');
    near(c.at(12, 1), times(STEEL, .40 + .52 / Math.sqrt(2.06)), 2, 'the right body');
    await page.focus('[data-part]');
    await page.keyboard.press('Space');
    near((await canvasOf(page, 30, 10)).at(12, 1), WHITE, 0, 'the part is hidden');
    await page.done();
    page = await openPage(view('kinds', plate()));
    await page.click('#mode-2d');
    await setLayer(page, 1);
    await page.click('[data-kind="2"]');
    near((await canvasOf(page, 22, 20)).at(-1, -7.5), SOLID, 1, 'no fill');
    await page.click('[data-kind="0"]');
    near((await canvasOf(page, 22, 20)).at(6.5, 0), WHITE, 0, 'no solid');
    await page.select('#path-color', 'order');
    near((await canvasOf(page, 22, 20)).at(-6, 0), [40, 193, 79], 160, 'by order');
    await page.done();
  },

  async 'A picked distance is the true one'() {
    const page = await openPage(view('measure', file('brick.stl', boxStl([0, 0, 0], [30, 20, 10]))));
    await page.click('[data-view=front]');
    const c = await canvasOf(page, 30, 10), box = await (await page.$('#view')).boundingBox();
    const click = (x, y) => page.mouse.click(box.x + box.width / 2 + x * c.scale, box.y + box.height / 2 - y * c.scale);
    await page.click('#measure');
    await click(-14.9, -4.9);   // near two corners, which it takes
    await click(14.9, 4.9);
    assert.equal(await textOf(page, '#reading'), `${Math.sqrt(1000).toFixed(4)} mm (x 30, y 0, z 10)`);
    await click(-10, 0);        // on the face, where nothing is to be taken
    await click(5, 0);
    const [, length] = /^([0-9.]+) mm/.exec(await textOf(page, '#reading'));
    assert.ok(Math.abs(length - 15) < 2 / c.scale, `${length} of 15 mm, a pixel is ${1 / c.scale}`);
    await click(-17, 0);
    assert.equal(await textOf(page, '#reading'), 'There is nothing at this point.');
    // By keys: the cross stands in the middle.
    await page.keyboard.press('Escape');
    await page.focus('#view');
    await page.keyboard.press('m');
    await page.keyboard.press('Enter');
    assert.match(await textOf(page, '#reading'), /^From 15, 0, 5:/);
    await page.done();
  },

  async 'The view turns, moves and zooms by mouse, touch and keys'() {
    const page = await openPage(view('turn', file('brick.stl', boxStl([0, 0, 0], [10, 8, 6]))));
    const box = await (await page.$('#view')).boundingBox(), [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
    const look = () => page.$eval('#view', e => e.toDataURL());
    const changes = async (what, action) => {
      const before = await look();
      await action();
      await settle(page);
      assert.notEqual(await look(), before, what);
    };
    const drag = async button => { await page.mouse.move(x, y); await page.mouse.down({button}); await page.mouse.move(x + 60, y + 20); await page.mouse.up({button}); };
    await changes('turn', () => drag('left'));
    await changes('move', () => drag('right'));
    await changes('wheel', () => page.mouse.wheel({deltaY: -300}));
    await changes('touch', async () => { await page.touchscreen.touchStart(x, y); await page.touchscreen.touchMove(x + 50, y); await page.touchscreen.touchEnd(); });
    await page.focus('#view');
    for (const key of ['ArrowLeft', '+', '-', '1', '4', '5', '0', 'f']) {
      if (key === 'f') { await page.keyboard.press('+'); await settle(page); }  // or the look before could be the fitted one
      await changes(key, () => page.keyboard.press(key));
    }
    await page.done();
  },

  async 'Overhangs, hanging edges, support solids and open edges are shown'() {
    // A table: a plate on a leg, which needs support around the leg; the plate has no top.
    const table = boxStl([0, 0, 0], [4, 20, 10]).replace('endsolid box\n', '') + boxStl([0, 0, 10], [20, 20, 12], 'box', [2, 3]).replace('solid box\n', '');
    varnet('view', file('table.stl', table), '--support', '-o', 'table.html');
    const page = await openPage(join(WORK, 'table.html'));
    await page.click('[data-view=bottom]');
    await page.click('[data-show=solids]');
    let c = await canvasOf(page, 20, 20);
    const lit = f => [.85, .20, .14].map(v => v * f * 255);
    // Light on a face that looks at the eye below: key = (0, 0, -1) - right / 2 + (0, 0, 0.9).
    near(c.at(5.5, 4), lit(.40 + .52 * .1 / Math.sqrt(.26)), 4, 'the overhang');
    await page.click('[data-show=overhangs]');
    c = await canvasOf(page, 20, 20);
    near(c.at(5.5, 4), times(STEEL, .40 + .52 * .1 / Math.sqrt(.26)), 4, 'the overhang in plain colour');
    await page.click('[data-view=top]');
    c = await canvasOf(page, 20, 20);
    assert.ok(c.count(p => near1(p, [217, 13, 13], 30)) > 2 * 20 * c.scale, 'open edges are red');
    assert.ok(await page.$eval('[data-show=open]', e => e.checked));
    await page.done();
  },

  async 'Names and headers are text, whatever they hold'() {
    const evil = '</script><script>window.pwned=1</script><img src=x onerror="window.pwned=2">';
    const name = '<script>window.pwned=3<img src=x onerror=window.pwned=4>\'"&.stl';
    const part = file(name, boxStl([0, 0, 0], [1, 1, 1], evil));
    const slices = file(`${name}.cli`, cli([[1, [outer(rectangle(0, 0, 1, 1))]]], `$$USERDATA/${evil}\n$$LABEL/1,${evil}\n`));
    varnet('view', part, slices, '--title', evil, '-o', 'evil.html');
    const page = await openPage(join(WORK, 'evil.html'));
    assert.equal(await page.evaluate(() => window.pwned), undefined);
    assert.equal(await textOf(page, '#title'), evil);
    assert.equal(await textOf(page, '#parts h3'), name);
    assert.equal(await textOf(page, '#parts .soft'), evil);
    assert.equal(await page.title(), evil);
    // A script that comes in all the same does not run, and the network is shut.
    const refused = await page.evaluate(async () => {
      const script = document.createElement('script');
      script.textContent = 'window.pwned=5';
      document.body.append(script);
      const net = await fetch('data:,x').then(() => 'open', () => 'shut');
      return [window.pwned === undefined, net];
    });
    assert.deepEqual(refused, [true, 'shut']);
    assert.ok(page.complaints.length > 0 && page.complaints.every(c => /Content Security Policy/.test(c)), String(page.complaints));
    await page.close();
  },

  async 'Without WebGL there are pictures, and the reason'() {
    const path = view('plain', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10])), plate());
    const by = await launch(['--disable-gpu', '--disable-3d-apis']);
    try {
      const page = await openPage(path, {by, state: 'failed'});
      assert.match(await textOf(page, '#why'), /WebGL/);
      await page.evaluate(() => document.querySelectorAll('#pictures img').forEach(e => { e.loading = 'eager'; }));
      await page.waitForFunction(() => [...document.images].length === 2 && [...document.images].every(e => e.complete && e.naturalWidth > 100 && e.alt));
      await page.done();
    } finally { await by.close(); }
  },

  async 'A narrow window, a dark system and paper are served'() {
    const path = view('sizes', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10])), plate());
    let page = await openPage(path, {width: 400, height: 800});
    assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= 400), 'wider than 400 pixels');
    const small = await page.$$eval('button, input, select, label', list => list.filter(e => e.offsetWidth && e.getBoundingClientRect().right > 400).length);
    assert.equal(small, 0, 'controls beyond the edge');
    await page.done();
    page = await openPage(path, {dark: true});
    near((await canvasOf(page, 22, 20)).at(-15, 0), times([.106, .133, .161], 1), 1, 'dark ground');
    await page.emulateMediaType('print');
    await settle(page);
    near((await canvasOf(page, 22, 20)).data.slice(0, 3), WHITE, 0, 'paper');
    assert.equal(await page.$eval('#tools', e => getComputedStyle(e).display), 'none');
    await page.emulateMediaType('screen');
    const paper = await page.pdf({format: 'A4'});
    assert.ok(paper.length > 10000, `${paper.length} bytes on paper`);
    await page.done();
  },

  async 'All can be reached by the tab key, has a name and shows its focus'() {
    const page = await openPage(view('tab', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10])), plate()));
    const all = await page.$$eval('button, input, select, canvas, summary', list => list.filter(e => e.offsetWidth).length);
    const seen = new Set();
    for (let i = 0; i < all; i++) {
      await page.keyboard.press('Tab');
      const [id, outline, label] = await page.evaluate(() => {
        const e = document.activeElement;
        e.mark = e.mark || Math.random();
        return [e.mark, parseFloat(getComputedStyle(e).outlineWidth), e.ariaLabel || e.textContent.trim() || [...(e.labels || [])].map(l => l.textContent).join('')];
      });
      seen.add(id);
      assert.ok(outline >= 2, 'focus is not seen');
      assert.ok(label, 'a control without a name');
    }
    assert.equal(seen.size, all);
    await page.done();
  },

  async 'What cannot be shown is an error, and leaves no page'() {
    const cube = boxStl([0, 0, 0], [1, 1, 1]), good = cli([[1, [outer(rectangle(0, 0, 1, 1))]]]);
    for (const [name, text] of [['empty.stl', ''], ['cut.cli', good.slice(0, 40)], ['none.cli', cli([])], ['noise.stl', 'a'.repeat(500)]]) {
      const run = spawnSync(VARNET, ['view', file(name, text), '-o', 'never.html'], {cwd: WORK, encoding: 'utf8'});
      assert.equal(run.status, 1, name);
      assert.match(run.stderr, new RegExp(`^varnet: .*${name}`), name);
      assert.ok(!existsSync(join(WORK, 'never.html')), name);
    }
    // A page that was cut off on its way says so.
    const whole = readFileSync(view('whole', file('cube.stl', cube)), 'utf8');
    const page = await openPage(file('cut.html', whole.slice(0, whole.length - 200)), {state: 'failed'});
    assert.match(await textOf(page, '#why'), /cut off|damaged/);
    await page.done();
  },

  async 'The script has at most 40 KB'() {
    const script = /<script>([^]*?)<\/script>/.exec(readFileSync(view('small', plate()), 'utf8'))[1];
    assert.ok(script.length <= 40 * 1024, `${script.length} bytes`);
  },

  async 'Slicing writes a page too'() {
    varnet('slice', file('cube.stl', boxStl([0, 0, 0], [10, 10, 10])), '-o', 'cube.cli', '--page', 'sliced.html');
    const page = await openPage(join(WORK, 'sliced.html'));
    assert.equal(await page.$eval('#layer', e => e.max), '50');
    assert.equal(await page.$$eval('#parts h3', list => list.length), 1);
    await page.done();
  },
};
const near1 = (p, q, within) => p.every((v, i) => Math.abs(v - q[i]) <= within);

// Pictures for the documentation, of the page of the demo, where a folder for them is named.
if (VARNET_PICTURES) tests['Pictures are taken'] = async () => {
  varnet('demo', join(WORK, 'demo'));
  const path = join(WORK, 'demo', 'bracket.html');
  const take = async (name, settings, ...steps) => {
    const page = await openPage(path, {width: 1360, height: 860, ...settings});
    for (const step of steps) await step(page);
    await new Promise(done => setTimeout(done, 1500));
    await page.screenshot({path: join(VARNET_PICTURES, name)});
    await page.done();
  };
  const click = selector => page => page.$eval(selector, e => e.click());
  await take('page_part.png', {}, page => page.select('#color', 'surface'));
  await take('page_stack.png', {dark: true}, click('[data-part]'), click('[data-show=solids]'), click('[data-show=stack]'), click('[data-kind="3"]'), page => setLayer(page, 222),
    page => page.waitForFunction(() => document.documentElement.dataset.stack === 'ready'));
  await take('page_layer.png', {}, click('#mode-2d'), click('[data-kind="4"]'), page => setLayer(page, 16), page => page.select('#path-color', 'order'), page => set(page, '#path', 700));
  await take('page_narrow.png', {width: 400, height: 860}, click('[data-show=cut]'), page => setLayer(page, 150));
};

const only = process.argv[2];
let failed = 0;
browser = await launch(software);
for (const [name, test] of Object.entries(tests)) {
  if (only && !name.includes(only)) continue;
  try {
    await test();
    console.log(`ok      ${name}`);
  } catch (error) {
    failed++;
    console.log(`FAILED  ${name}\n${error.stack}`);
  }
}
await browser.close();
process.exit(failed ? 1 : 0);
