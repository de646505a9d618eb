// The worker as asynchronous functions.
import { ChainError } from './module.js';

/** @typedef {import('./worker.js').Handlers} Handlers */

/** @type {Worker | undefined} */
let worker;
/** @type {Map<number, {resolve: (value: any) => void, reject: (error: Error) => void}>} */
const waiting = new Map();
let lastId = 0;

/**
 * Calls a function of the worker, which starts with the first call. Pixels and bitmaps are handed over.
 * @template {keyof Handlers} What
 * @param {What} what
 * @param {Parameters<Handlers[What]>} values
 * @returns {Promise<Awaited<ReturnType<Handlers[What]>>>}
 */
export function ask(what, ...values) {
  if (worker === undefined) {
    worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });
    worker.onmessage = ({ data }) => {
      const request = waiting.get(data.id);
      waiting.delete(data.id);
      if (data.error === undefined) request?.resolve(data.value);
      else request?.reject(new ChainError(data));
    };
    worker.onerror = (event) => {
      for (const { reject } of waiting.values()) reject(new Error(event.message ?? 'the worker did not start'));
      waiting.clear();
    };
  }
  const id = ++lastId;
  /** @type {Transferable[]} */
  const handed = [];
  for (const value of values) {
    if (value instanceof ImageBitmap) handed.push(value);
    if (value instanceof Uint8ClampedArray) handed.push(/** @type {ArrayBuffer} */ (value.buffer));
  }
  worker.postMessage({ id, what, values }, handed);
  return new Promise((resolve, reject) => waiting.set(id, { resolve, reject }));
}

/** Starts the module that suits the browser; "?plain" in the page's address asks for the one without vectors. */
export function start() {
  return ask('start', new URLSearchParams(location.search).has('plain'));
}

/** @template {HTMLElement} Kind @param {string} id @param {new () => Kind} kind @returns {Kind} */
export function element(id, kind) {
  const found = document.getElementById(id);
  if (!(found instanceof kind)) throw new Error(`there is no ${kind.name} ${id}`);
  return found;
}

/**
 * A new element with attributes and children.
 * @template {keyof HTMLElementTagNameMap} Tag
 * @param {Tag} tag
 * @param {Record<string, string>} attributes
 * @param {(Node | string)[]} children
 * @returns {HTMLElementTagNameMap[Tag]}
 */
export function made(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) node.setAttribute(name, value);
  node.append(...children);
  return node;
}

/** @param {HTMLCanvasElement} canvas @param {Uint8ClampedArray} rgba @param {number} width @param {number} height */
export function show(canvas, rgba, width, height) {
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
  }
  canvas.getContext('2d')?.putImageData(new ImageData(/** @type {any} */ (rgba), width, height), 0, 0);
}

/** Red, green and blue on top of each other, or grey alone. @param {HTMLCanvasElement} canvas
 *  @param {Uint32Array} counts @param {boolean} isGray */
export function drawHistogram(canvas, counts, isGray) {
  const context = canvas.getContext('2d');
  if (context === null) return;
  const { width, height } = canvas;
  const style = getComputedStyle(canvas);
  context.clearRect(0, 0, width, height);
  // Some large areas of one value would make all others invisible.
  const sorted = [...counts].sort((a, b) => b - a);
  const most = Math.max(1, sorted[Math.min(6, sorted.length - 1)] * 1.15);
  const names = isGray ? ['--ink-2'] : ['--red', '--green', '--blue'];
  context.globalAlpha = isGray ? 0.8 : 0.55;
  names.forEach((name, channel) => {
    context.fillStyle = style.getPropertyValue(name);
    for (let i = 0; i < 256; ++i) {
      const bar = Math.min(1, counts[channel * 256 + i] / most) * height;
      context.fillRect((i * width) / 256, height - bar, width / 256, bar);
    }
  });
}
