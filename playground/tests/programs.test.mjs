// The programs that chains become: compiled, run and compared with vekcam.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { chains, examples, nativeDigest, root, saved } from './chains.mjs';

const size = { width: 640, height: 360, channels: 3 };
const ramps = new Uint8ClampedArray(size.width * size.height * 4).map((_, i) => (i * 7 + (i >> 9) * 3) >> (i % 4));
const color = saved('color', size, ramps);
const grey = saved('grey', { ...size, channels: 1 }, ramps);
const build = join(root, 'build/release');
const environment = { ...process.env, LD_LIBRARY_PATH: build, PYTHONPATH: join(build, 'python') };
const flags = ['-Wall', '-Wextra', '-Werror', '-I', join(root, 'include'), '-L', build, '-lvek'];

/** @type {Record<string, (source: string, program: string) => string[]>} */
const languages = {
  c: (source, program) => {
    execFileSync('cc', ['-xc', '-std=c11', source, '-xnone', '-o', program, ...flags]);
    return [program];
  },
  'c++': (source, program) => {
    execFileSync('c++', ['-xc++', '-std=c++20', source, '-xnone', '-o', program, ...flags]);
    return [program];
  },
  python: (source) => ['/usr/bin/python3', source],
};

/** @param {string} language @param {string} input @param {string} chain */
function check(language, input, chain) {
  const text = execFileSync(join(build, 'apps/vekcam'), ['apply', '--code', language, input, chain]);
  const source = join(examples, 'source');
  writeFileSync(source, text);
  const output = join(examples, 'output');
  const [program, ...values] = languages[language](source, join(examples, 'program'));
  execFileSync(program, [...values, input, output], { env: environment });
  assert.equal(nativeDigest(output, 'copy'), nativeDigest(input, chain), `${language}: ${chain}`);
}

for (const language of ['c', 'python']) {
  test(`programs in ${language}`, () => {
    for (const chain of chains) check(language, color, chain);
    // What is done otherwise with grey pictures.
    for (const chain of ['add 5 | sub @in -2 | gamma | linear-light | dither 3 | box 5', 'gray | spectrum | color',
      'affine 10 value=7 | pad 3 constant 9 | replace-outside 40 0 180 255 | dct-keep 9']) {
      check(language, grey, chain);
    }
  });
}

test('programs in c++', () => {
  // It takes long to compile: few programs, each for many chains.
  const joined = (/** @type {number[]} */ ...numbers) => numbers.map((i) => chains[i]).join(' | ');
  check('c++', color, joined(0, 1, 3, 5, 6, 8, 9, 11, 19, 2));
  check('c++', color, joined(13, 14, 15, 16, 18, 12));
  check('c++', color, joined(7, 10, 4, 17));
});
