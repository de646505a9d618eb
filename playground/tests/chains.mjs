// Twenty chains with operations of every family, and vekcam to compare with.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { writePnm } from '../page/files.js';

export const root = new URL('../../', import.meta.url).pathname;
export const page = join(root, 'out/playground');
export const examples = mkdtempSync(join(tmpdir(), 'vek-playground-'));
process.on('exit', () => rmSync(examples, { recursive: true, force: true }));

export const chains = [
  'add 20 1 | sub @in | mul 3,2,1 1 | mul-scale @in | sqr 5',
  'and 240 | or 5,6,7 | xor @in | not | shift-left 1 | shift-right 1,2,3',
  'set 1,2,3 | copy | add @in 1 | threshold 77',
  'clamp-above 200 | clamp-below 20,30,40 | replace-above 190 255 | replace-below 30 9 | replace-outside 40 0 180 255',
  'gray | box 5x5 | median 3 | threshold 100',
  'twist 6439,12599,3097,0/5718,11239,2753,0/4456,8749,2146,1000000 | order 2,0,1 | gamma | linear-light',
  'to-ycbcr | from-ycbcr | to-yuv | from-yuv | to-xyz | from-xyz | to-ycc | from-ycc',
  'to-luv | from-luv | to-hls | from-hls | to-hsv | from-hsv | gray 5000,5000,6384 | color | channel 2',
  'subsample 444 | subsample 422 | subsample 420 | subsample nv12 | subsample yuy2 | subsample ycbcr422',
  'dither 5 diffusion | dither 9 | pixels16 rgb565 | pixels16 rgb555 diffusion | pixels16 rgb444 none',
  'gray | dither-bits 2 diffusion | pad 9 mirror',
  'box 7x4 mirror | median 15x9 | median-color 5x5 | filter 0,-1,0/-1,8,-1/0,-1,0 4',
  'row 1,4,6,4,1 | column 1,2,3 border=none | erode 2 | dilate 3 | pad 1,2,3,4 constant 9,8,7',
  'crop 301x203 | mirror both | rotate 90 | rotate 180 | transpose | rotate 270',
  'resize 333x190 cubic | resize 700x500 | resize 100x100 nearest',
  'affine 12.5 0.8 0.1 cubic replicate | affine -77.7 1.3 value=1,2,3 | affine 90',
  'perspective 40,20 600,60 560,340 80,300 project cubic | perspective 40,20 600,60 560,340 80,300',
  'crop 500x300 | low-pass 30 | high-pass 3 | gray | spectrum',
  'dct-keep 6 | dct',
  'norm | norm-diff @in l1 | add 3 | norm-rel @in inf | moments hu | median 31x31',
];

/** The digest that vekcam prints of a chain's result. @param {string} file @param {string} chain */
export function nativeDigest(file, chain) {
  const printed = execFileSync(join(root, 'build/release/apps/vekcam'), ['apply', '--digest', file, chain],
    { encoding: 'utf8' });
  return /digest ([0-9a-f]{16})/.exec(printed)?.[1];
}

/** @param {string} name @param {{width: number, height: number, channels: number}} size @param {Uint8ClampedArray} rgba */
export function saved(name, { width, height, channels }, rgba) {
  const isGray = channels === 1;
  const file = join(examples, `${name}.${isGray ? 'pgm' : 'ppm'}`);
  writeFileSync(file, writePnm({ rgba, width, height, isGray }));
  return file;
}
