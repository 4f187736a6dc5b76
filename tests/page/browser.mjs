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
