// The site in a browser: links, anchors, pictures, errors, requests, search, width of a phone, accessibility.
// usage: node browser.mjs SITE [SCREENSHOTS]        beside node_modules with package.json's packages
import assert from 'node:assert/strict';
import {createServer} from 'node:http';
import {mkdtempSync, readFileSync, readdirSync, rmSync} from 'node:fs';
import {createRequire} from 'node:module';
import {tmpdir} from 'node:os';
import {dirname, extname, join, normalize, posix} from 'node:path';

const require = createRequire(join(process.cwd(), 'node_modules/'));
const {chromium} = require('playwright-core');
const axe = readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const [site, screenshots] = process.argv.slice(2);
const wrong = [];
const search = {
  vekiRGBToGray_8u_C3C1R: 'models.html', 'white balance': 'control.html', Bayer: 'raw.html',
  median: 'neighbourhood.html', NV12: 'channels.html', dithering: 'dither.html', 'Hu moments': 'moments.html', OpenCV: 'porting.html',
  'step formula': 'resize.html', vekStsStrideErr: 'warps.html'};

const files = readdirSync(site, {recursive: true}).map(f => f.replaceAll('\\', '/'));
// The playground is tested by its own tests.
const pages = files.filter(f => f.endsWith('.html') && !f.startsWith('playground/'));

// Links and anchors, without a browser.
const text = Object.fromEntries(pages.map(p => [p, readFileSync(join(site, p), 'utf8')]));
const anchors = Object.fromEntries(pages.map(
    p => [p, new Set([...text[p].matchAll(/\s(?:id|name)="([^"]+)"/g)].map(m => m[1]))]));
let links = 0;
for (const page of pages) {
  for (const [, link] of text[page].matchAll(/\s(?:href|src)="([^"]*)"/g)) {
    if (/^(https?:|mailto:|data:|#$|$)/.test(link)) continue;
    ++links;
    const [path, anchor] = decodeURIComponent(link.replaceAll('&amp;', '&')).split('#');
    const file = path === '' ? page : posix.normalize(posix.join(dirname(page), path.split('?')[0]));
    if (!files.includes(file)) wrong.push(`${page}: there is no ${link}`);
    else if (anchor && anchors[file] && !anchors[file].has(anchor)) wrong.push(`${page}: ${file} has no #${anchor}`);
  }
}

const types = {'.html': 'text/html', '.css': 'text/css', '.js': 'text/javascript', '.webp': 'image/webp',
               '.png': 'image/png', '.jpg': 'image/jpeg', '.svg': 'image/svg+xml'};
const server = createServer((request, response) => {
  const path = normalize(decodeURIComponent(new URL(request.url, 'http://site').pathname));
  try {
    const body = readFileSync(join(site, path));
    response.writeHead(200, {'content-type': types[extname(path)] ?? 'application/octet-stream'}).end(body);
  } catch {
    response.writeHead(path === '/favicon.ico' ? 204 : 404).end();
  }
});
await new Promise(resolve => server.listen(0, '127.0.0.1', resolve));
const base = `http://127.0.0.1:${server.address().port}/`;

const profile = mkdtempSync(join(tmpdir(), 'site-'));
const context = await chromium.launchPersistentContext(profile, {
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', headless: true, viewport: {width: 1280, height: 900},
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
         '--disable-component-update', '--disable-sync']});
const tab = await context.newPage();
let now = '';
tab.on('console', m => m.type() === 'error' && wrong.push(`${now}: console: ${m.text()}`));
tab.on('pageerror', e => wrong.push(`${now}: ${e}`));
tab.on('request', r => [base, 'data:'].some(own => r.url().startsWith(own)) || wrong.push(`${now}: asks for ${r.url()}`));
tab.on('response', r => r.status() < 400 || wrong.push(`${now}: ${r.status()} for ${r.url()}`));

async function examine(page, dark) {
  await tab.evaluate(axe);
  const found = await tab.evaluate(() => axe.run(document, {resultTypes: ['violations']}));
  for (const v of found.violations.filter(v => ['serious', 'critical'].includes(v.impact))) {
    const where = v.nodes.slice(0, 3).map(n => n.target.join(' ')).join('; ');
    wrong.push(`${page}${dark ? ' (dark)' : ''}: ${v.id}: ${v.help}: ${where}`);
  }
}

try {
  for (const page of pages) {
    now = page;
    await tab.setViewportSize({width: 1280, height: 900});
    await tab.goto(base + page);
    const broken = await tab.evaluate(async () => {
      const images = [...document.images];
      for (const image of images) image.loading = 'eager';
      await Promise.all(images.map(i => i.decode().catch(() => {})));
      return images.filter(i => i.naturalWidth === 0).map(i => i.src);
    });
    for (const src of broken) wrong.push(`${page}: no picture ${src}`);
    await examine(page, false);
    await tab.setViewportSize({width: 360, height: 740});
    const wide = await tab.evaluate(() => document.documentElement.scrollWidth);
    if (wide > 360) wrong.push(`${page}: ${wide} pixels wide on a phone of 360`);
  }
  await tab.emulateMedia({colorScheme: 'dark'});
  await tab.setViewportSize({width: 1280, height: 900});
  for (const page of ['index.html', 'reference/arithmetic.html', 'guide/cookbook.html', 'docs/colour.html']) {
    now = page;
    await tab.goto(base + page);
    await examine(page, true);
    if (screenshots) await tab.screenshot({path: join(screenshots, `${page.replaceAll('/', '-')}-dark.png`)});
  }
  for (const [term, expected] of Object.entries(search)) {
    now = `search for ${term}`;
    await tab.goto(`${base}search.html?q=${encodeURIComponent(term)}`);
    const found = tab.waitForSelector(`#search-results a[href*="${expected}"]`, {timeout: 20000});
    if (await found.catch(() => null) === null) wrong.push(`${now}: ${expected} is not found`);
  }
} finally {
  await context.close();
  server.close();
  rmSync(profile, {recursive: true, force: true});
}
for (const line of new Set(wrong)) console.log(line);
console.log(`${pages.length} pages, ${links} links, ${Object.keys(search).length} searches`);
assert.equal(wrong.length, 0, `${new Set(wrong).size} faults`);
