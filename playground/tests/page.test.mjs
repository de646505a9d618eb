// The pages in Chromium. VEK_CHROMIUM names another one; VEK_SCREENSHOTS a directory for what was seen.
import assert from 'node:assert/strict';
import { createReadStream, existsSync, readFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { createRequire } from 'node:module';
import { loadavg, cpus } from 'node:os';
import { extname, join } from 'node:path';
import { after, test } from 'node:test';
import { chromium } from 'playwright-core';
import { chains, nativeDigest, page as root, saved } from './chains.mjs';

/** @type {Record<string, string>} */
const types = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm',
  '.svg': 'image/svg+xml' };
const server = createServer((request, response) => {
  const file = join(root, new URL(request.url ?? '', 'http://x').pathname);
  if (!existsSync(file)) return void response.writeHead(404).end();
  response.writeHead(200, { 'content-type': types[extname(file)] });
  createReadStream(file).pipe(response);
});
await new Promise((/** @type {(value?: any) => void} */ done) => server.listen(0, '127.0.0.1', done));
const origin = `http://127.0.0.1:${/** @type {import('node:net').AddressInfo} */ (server.address()).port}`;
const browser = await chromium.launch({
  executablePath: process.env.VEK_CHROMIUM ?? '/usr/bin/chromium',
  args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync',
    '--use-fake-device-for-media-stream', '--use-fake-ui-for-media-stream'],
});
after(async () => {
  await browser.close();
  server.close();
});

/** A page on which nothing goes wrong. @param {string} address @param {import('playwright-core').BrowserContextOptions} [options] */
async function opened(address, options) {
  const context = await browser.newContext(options);
  const page = await context.newPage();
  /** @type {string[]} */
  const faults = [];
  page.on('console', (message) => message.type() === 'error' && faults.push(message.text()));
  page.on('pageerror', (error) => faults.push(error.message));
  page.on('request', (request) => new URL(request.url()).origin === origin || request.url().startsWith('blob:') ||
    faults.push(request.url()));
  await page.goto(`${origin}/${address}`);
  return { page, async close(/** @type {string} */ name) {
    const directory = process.env.VEK_SCREENSHOTS;
    if (directory !== undefined) await page.screenshot({ path: join(directory, `${name}.png`), fullPage: true });
    await context.close();
    assert.deepEqual(faults, []);
  } };
}

/** Waits until a chain's result is shown. @param {import('playwright-core').Page} page @param {string} chain */
async function enter(page, chain) {
  await page.evaluate(() => (/** @type {any} */ (document.getElementById('digest')).textContent = ''));
  await page.fill('#chain', chain);
  await page.waitForFunction((text) => location.hash === `#${encodeURIComponent(text)}` &&
    document.getElementById('digest')?.textContent !== '', chain);
  return page.textContent('#digest');
}

for (const address of ['index.html', 'index.html?plain']) {
  test(`${address} gives what vekcam gives`, { timeout: 300_000 }, async () => {
    const { page, close } = await opened(address);
    await page.waitForSelector('body[data-ready]', { timeout: 60_000 });
    const rgba = await page.evaluate(() => {
      const canvas = /** @type {HTMLCanvasElement} */ (document.getElementById('input'));
      const { data } = /** @type {CanvasRenderingContext2D} */ (canvas.getContext('2d'))
        .getImageData(0, 0, canvas.width, canvas.height);
      return { size: { width: canvas.width, height: canvas.height, channels: 3 }, data: [...data] };
    });
    const file = saved(address.replace('?', '-'), rgba.size, new Uint8ClampedArray(rgba.data));
    for (const chain of chains) assert.equal(await enter(page, chain), nativeDigest(file, chain), chain);
    await close(address.replace(/\W/g, '-'));
  });
}

test('sliders, faults, files, raw frames and the webcam', { timeout: 120_000 }, async () => {
  const { page, close } = await opened('index.html', { viewport: { width: 390, height: 844 }, colorScheme: 'dark' });
  await page.waitForSelector('body[data-ready]', { timeout: 60_000 });
  const shows = (/** @type {string} */ id, /** @type {RegExp} */ text) =>
    page.locator(`#${id}`).filter({ hasText: text }).waitFor({ state: 'attached', timeout: 20_000 });
  await page.selectOption('#add', 'affine');
  await page.getByLabel('affine: angle', { exact: false }).first().fill('30');
  await page.waitForFunction(() => location.hash.includes('affine%2030'));
  await page.fill('#chain', 'box 5x5 | boxx');
  await shows('fault', /is 'box' meant/);

  await page.setInputFiles('#file', { name: 'grey.pgm', mimeType: '', buffer: Buffer.from('P5 2 1 255 \x01\x02', 'latin1') });
  await shows('input-size', /2 × 1, grey/);
  await enter(page, 'copy');
  assert.equal(await page.textContent('#digest'), '54c42fa415f506f0');
  await page.setInputFiles('#file', { name: 'frame.raw', mimeType: '', buffer: Buffer.alloc(1296 * 972 * 2) });
  await shows('input-size', /1296 × 972, color/);
  await page.selectOption('#raw-format', 'packed RAW14');
  await page.fill('#raw-width', '8000');
  await shows('fault', /such a frame takes/);

  await page.click('[data-kind=webcam]');
  await shows('input-size', /640 × 480, color/);
  await enter(page, 'mirror left-right');
  await page.click('[data-kind=rings]');
  await shows('input-size', /512 × 512, grey/);
  for (const [label, text] of [['C', /vekiMirror_8u_C1R/], ['C++', /vek::mirror<1>/], ['Python', /vek\.mirror\(p0/]]) {
    await page.getByRole('button', { name: /** @type {string} */ (label), exact: true }).click();
    await shows('code', /** @type {RegExp} */ (text));
  }
  const scrollWidth = await page.evaluate(() => document.documentElement.scrollWidth);
  assert.ok(scrollWidth <= 390, `${scrollWidth} pixels wide`);
  await close('phone');
});

test('the camera runs', { timeout: 120_000 }, async (t) => {
  const { page, close } = await opened('camera.html', { viewport: { width: 1280, height: 800 } });
  const number = async (/** @type {string} */ id) => parseFloat((await page.textContent(`#${id}`)) ?? '');
  await page.waitForFunction(() => Number(document.getElementById('rate')?.textContent) > 0, undefined, { timeout: 60_000 });
  await page.waitForTimeout(5000);
  const [rate, isp, sensor, load] = [await number('rate'), await number('isp-time'), await number('sensor-time'), loadavg()[0]];
  t.diagnostic(`${rate} frames a second; ${isp} ms for a picture, ${sensor} ms for the sensor; load ${load.toFixed(1)}`);
  // Others that use the processor are no fault of the page.
  if (load < cpus().length + 1) assert.ok(rate >= 30, `${rate}`);
  const rows = await number('exposure');
  await page.getByRole('button', { name: 'lamp at night' }).click();
  await page.waitForFunction((before) => parseFloat(document.getElementById('exposure')?.textContent ?? '') > 5 * before, rows);
  await page.selectOption('#scale', '2');
  await page.selectOption('#rotation', { index: 1 });
  await page.waitForFunction(() => /** @type {HTMLCanvasElement} */ (document.getElementById('picture')).width === 360);
  await page.click('#pause');
  await close('camera');
});

test('the pages are accessible', { timeout: 60_000 }, async () => {
  const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
  for (const address of ['index.html', 'camera.html']) {
    for (const colorScheme of /** @type {('light' | 'dark')[]} */ (['light', 'dark'])) {
      const { page, close } = await opened(address, { colorScheme });
      await page.waitForFunction(() => document.getElementById('engine')?.textContent?.includes(', '));
      await page.waitForTimeout(500);
      await page.evaluate(axe);
      const { violations } = await page.evaluate(() => /** @type {any} */ (globalThis).axe.run());
      assert.deepEqual(violations.map((/** @type {any} */ one) =>
        `${one.id}: ${one.nodes.map((/** @type {any} */ node) => node.html).join(' ')}`), []);
      await close(`${address}-${colorScheme}`);
    }
  }
});
