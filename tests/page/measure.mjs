// Measures pages: node measure.mjs PAGE.html... (beside an installed puppeteer-core; BROWSER names the browser).
// Time from the navigation to the first picture, of steps of the layer slider until the picture is drawn, and memory.
import {statSync} from 'node:fs';
import {pathToFileURL} from 'node:url';
import puppeteer from 'puppeteer-core';

const browser = await puppeteer.launch({executablePath: process.env.BROWSER || '/usr/bin/chromium', headless: true, args: [
  '--no-sandbox', '--disable-dev-shm-usage', '--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader']});
const median = list => list.sort((a, b) => a - b)[list.length >> 1];
for (const path of process.argv.slice(2)) {
  const page = await browser.newPage();
  await page.setViewport({width: 1360, height: 860});
  await page.goto(pathToFileURL(path).href);
  await page.waitForFunction(() => document.documentElement.dataset.state === 'ready', {timeout: 60000});
  const result = await page.evaluate(async () => {
    const gl = document.getElementById('view').getContext('webgl2'), pixel = new Uint8Array(4), slider = document.getElementById('layer');
    // Reading a pixel waits for the picture.
    const drawn = async () => {
      await new Promise(done => requestAnimationFrame(() => setTimeout(done, 0)));
      gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, pixel);
    };
    await drawn();
    const out = {first: performance.now(), stack: [], layer: [], turn: []};
    if (+slider.max > 1) while (document.getElementById('modes').offsetWidth && document.querySelector('[data-show=stack]').checked && document.documentElement.dataset.stack !== 'ready') await new Promise(done => setTimeout(done, 20));
    for (const mode of ['stack', 'layer']) {
      if (+slider.max < 2) break;
      if (mode === 'layer') document.getElementById('mode-2d').click();
      for (let i = 1; i < 12; i++) {
        const start = performance.now(), number = 1 + Math.floor(i * (+slider.max - 2) / 12) + (mode === 'layer' ? 1 : 0);
        slider.value = number;
        slider.dispatchEvent(new Event('input'));
        while (document.documentElement.dataset.layer !== slider.value) await new Promise(done => setTimeout(done, 0));
        await drawn();
        out[mode].push(performance.now() - start);
      }
    }
    for (const view of ['front', 'left', 'top', 'iso', 'right']) {
      const start = performance.now();
      document.querySelector(`[data-view=${view}]`).click();
      await drawn();
      out.turn.push(performance.now() - start);
    }
    return out;
  });
  const heap = await (await page.createCDPSession()).send('Runtime.getHeapUsage');
  const mega = bytes => Math.round(bytes / 1e6);
  const ms = list => list.length ? `${Math.round(median(list))} ms (least ${Math.round(Math.min(...list))})` : '-';
  console.log(`${path}: ${mega(statSync(path).size)} MB; first picture ${(result.first / 1000).toFixed(2)} s; step in 3D ${ms(result.stack)}, ` +
    `in the layer ${ms(result.layer)}; view ${ms(result.turn)}; heap ${mega(heap.usedSize)} MB, buffers ${mega(heap.backingStorageSize || 0)} MB`);
  await page.close();
}
await browser.close();
