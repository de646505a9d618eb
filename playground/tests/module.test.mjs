// The module under Node.js, in both builds: the results of vekcam, and what it answers to nonsense.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { brotliCompressSync, gzipSync } from 'node:zlib';
import { guessRaw, isGrayFile, readPnm, writePnm } from '../page/files.js';
import { Module } from '../page/module.js';
import { chains, nativeDigest, page, saved } from './chains.mjs';

for (const [name, level] of [['vek-simd128.wasm', 'simd128'], ['vek.wasm', 'portable']]) {
  const bytes = readFileSync(join(page, name));
  const module = await Module.start(await WebAssembly.compile(bytes));

  test(`${name} is small and has its level`, (t) => {
    const gzip = gzipSync(bytes, { level: 9 }).length;
    t.diagnostic(`${bytes.length} bytes, ${gzip} by gzip, ${brotliCompressSync(bytes).length} by Brotli`);
    assert.ok(gzip < 700_000);
    assert.equal(module.level(), level);
  });

  test(`${name} gives what vekcam gives`, () => {
    module.simulatePicture('in', 640, 360, 0);
    const file = saved(level, module.describePicture('in'), module.pixels('in'));
    for (const chain of chains) {
      module.run(chain);
      assert.equal(module.describeResult().digest, nativeDigest(file, chain), chain);
    }
    const known = module.operations().map((operation) => operation.name);
    const tried = new Set(chains.flatMap((chain) => module.parse(chain).map((step) => step.name)));
    assert.deepEqual(known.filter((operation) => !tried.has(operation)), []);
  });

  test(`${name} refuses nonsense and goes on`, () => {
    for (const [chain, position] of /** @type {[string, number][]} */ ([['box', 0], ['not | boxx 3', 6], ['add 1 | to-hsv | gray | to-hsv', 24]])) {
      assert.throws(() => module.run(chain), (/** @type {any} */ error) => error.position === position, chain);
    }
    assert.throws(() => module.run('add @nobody'), /no picture @nobody/);
    assert.throws(() => module.setPixels('in', new Uint8ClampedArray(4), 0, 1, false), /cannot be made/);
    assert.throws(() => module.develop('in', new Uint8Array(100),
      { width: 4, height: 4, step: 5, format: 2, bits: 10, order: 0, black: 0 }), /Isp/);
    module.run('not');
  });

  test(`${name} develops a packed raw frame`, () => {
    const raw = { width: 640, height: 360, step: 800, format: 2, bits: 10, order: 0, black: 0 };
    module.develop('in', module.simulateRaw(640, 360, 0), raw);
    const pixels = module.pixels('in');
    const mean = [0, 1, 2].map((c) => pixels.reduce((sum, v, i) => (i % 4 === c ? sum + v : sum), 0) / (640 * 360));
    assert.ok(mean.every((v) => v > 60 && v < 160 && Math.abs(v - mean[1]) < 15), `${mean}`);
  });
}

test('files are what they are', () => {
  const rgba = new Uint8ClampedArray([1, 2, 3, 255, 4, 5, 6, 255]);
  const file = writePnm({ rgba, width: 2, height: 1, isGray: false });
  assert.deepEqual(readPnm(file), { rgba, width: 2, height: 1, isGray: false });
  assert.equal(readPnm(file.subarray(0, file.length - 1)), undefined);
  assert.equal(isGrayFile(new Uint8Array([255, 216, 255, 224, 0, 2, 255, 194, 0, 11, 8, 0, 1, 0, 1, 1])), true);
  assert.deepEqual(guessRaw((1920 * 1080 * 5) / 4), { index: 5, width: 1920, height: 1080 });
});
