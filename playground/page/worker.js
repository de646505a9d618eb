// Runs the module where it cannot block the page. A request is {id, what, values}; the answer has its id and
// either a value or an error.
import { ChainError, Module, hasVectors } from './module.js';

/** @typedef {import('./module.js').Operation} Operation */
/** @typedef {import('./module.js').Figures} Figures */
/**
 * @typedef {{width: number, height: number, channels: number, rgba: Uint8ClampedArray, histogram: Uint32Array}} Shown
 * @typedef {{ms: number, digest: string, figures: Figures[], result: Shown}} Applied
 */

/** @type {Module} */
let module;

/** @param {string} name @returns {Shown} */
function shown(name) {
  return { ...module.describePicture(name), rgba: module.pixels(name), histogram: module.histogram(name) };
}

/**
 * Pictures that are made here, in whole numbers: the same on every machine.
 * @type {Record<string, {width: number, height: number, isGray: boolean, at: (x: number, y: number) => number[]}>}
 */
const drawings = {
  rings: {
    width: 512,
    height: 512,
    isGray: true,
    at: (x, y) => {
      const phase = (((x - 256) ** 2 + (y - 256) ** 2) >> 3) & 255;
      const value = phase < 128 ? 2 * phase : 510 - 2 * phase;
      return [value, value, value];
    },
  },
  ramps: {
    width: 512,
    height: 512,
    isGray: false,
    at: (x, y) => [x >> 1, y >> 1, ((1022 - x - y) * 64) >> 8],
  },
};

/** @param {number} width @param {number} height */
function canvasContext(width, height) {
  const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  if (context === null) throw new Error('there is no canvas');
  return context;
}

/** @type {OffscreenCanvasRenderingContext2D | undefined} */
let liveContext;

const handlers = {
  /** @param {boolean} isPlain */
  async start(isPlain) {
    const response = fetch(isPlain || !hasVectors() ? 'vek.wasm' : 'vek-simd128.wasm').then((r) => {
      if (!r.ok) throw new Error(`${r.url}: ${r.status}`);
      return r;
    });
    let compiled;
    try {
      compiled = await WebAssembly.compileStreaming(response);
    } catch {
      // The server does not say what kind of file it is.
      compiled = await WebAssembly.compile(await (await fetch((await response).url)).arrayBuffer());
    }
    module = await Module.start(compiled);
    return {
      level: module.level(),
      version: module.version(),
      operations: module.operations(),
      lights: module.lights(),
    };
  },

  /** Makes a picture that needs no file. @param {string} name @param {string} kind */
  makePicture(name, kind) {
    if (kind === 'scene') module.simulatePicture(name, 960, 540, 0);
    else if (kind === 'night') module.simulatePicture(name, 960, 540, 1);
    else {
      const { width, height, isGray, at } = drawings[kind];
      const rgba = new Uint8ClampedArray(width * height * 4);
      for (let y = 0, i = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x, i += 4) rgba.set([...at(x, y), 255], i);
      }
      module.setPixels(name, rgba, width, height, isGray);
    }
    return shown(name);
  },
  /** @param {string} name @param {ImageBitmap} bitmap @param {boolean} isGray */
  takeBitmap(name, bitmap, isGray) {
    const context = canvasContext(bitmap.width, bitmap.height);
    context.drawImage(bitmap, 0, 0);
    const { data, width, height } = context.getImageData(0, 0, bitmap.width, bitmap.height);
    bitmap.close();
    module.setPixels(name, data, width, height, isGray);
    return shown(name);
  },
  /** @param {string} name @param {Uint8ClampedArray} rgba @param {number} width @param {number} height
   *  @param {boolean} isGray */
  takePixels(name, rgba, width, height, isGray) {
    module.setPixels(name, rgba, width, height, isGray);
    return shown(name);
  },
  /** @param {string} name @param {Uint8Array} bytes @param {import('./module.js').RawFormat} raw */
  develop(name, bytes, raw) {
    module.develop(name, bytes, raw);
    return shown(name);
  },
  /** @param {number} width @param {number} height */
  simulateRaw(width, height) {
    return module.simulateRaw(width, height, 0);
  },
  /** @param {string} name */
  removePicture(name) {
    module.removePicture(name);
  },

  /** @param {string} chain */
  parse(chain) {
    return module.parse(chain);
  },
  /** @param {string} chain @returns {Applied} */
  apply(chain) {
    let ms = module.run(chain);
    // The least of a few runs, if they are quick: the first one makes memory and compiles.
    for (let left = 40 - ms, i = 0; i < 4 && left > ms; ++i) {
      const time = module.run(chain);
      left -= time;
      ms = Math.min(ms, time);
    }
    const { digest, figures } = module.describeResult();
    return { ms, digest, figures, result: shown('out') };
  },
  /** A frame of the webcam. @param {ImageBitmap} bitmap @param {string} chain */
  applyLive(bitmap, chain) {
    const { width, height } = bitmap;
    if (liveContext?.canvas.width !== width || liveContext.canvas.height !== height) {
      liveContext = canvasContext(width, height);
    }
    liveContext.drawImage(bitmap, 0, 0);
    bitmap.close();
    module.setPixels('in', liveContext.getImageData(0, 0, width, height).data, width, height, false);
    const ms = module.run(chain);
    const { digest, figures } = module.describeResult();
    return { ms, digest, figures, result: shown('out'), input: shown('in') };
  },
  /** @param {string} chain */
  code(chain) {
    return [0, 1, 2].map((language) => module.code(chain, language));
  },

  /** @param {number} width @param {number} height @param {number} scale @param {number} rotation */
  startCamera(width, height, scale, rotation) {
    return module.startCamera(width, height, scale, rotation);
  },
  /**
   * Settings that are given, and one frame into `rgba`.
   * @param {Uint8ClampedArray} rgba @param {number} width @param {number} height
   * @param {{light?: number, curve?: number, balance?: [boolean, number, number], controls?: [number, number]}} changed
   * @param {boolean} isExposed automatically
   */
  takeFrame(rgba, width, height, changed, isExposed) {
    if (changed.light !== undefined) module.setLight(changed.light);
    if (changed.curve !== undefined) module.setCurve(changed.curve);
    if (changed.balance !== undefined) module.setBalance(...changed.balance);
    if (changed.controls !== undefined) module.setControls(...changed.controls);
    const start = performance.now();
    module.expose();
    const exposed = performance.now();
    module.process(isExposed);
    const processed = performance.now();
    module.copyCameraPixels(rgba, width, height);
    return { rgba, sensorMs: exposed - start, ispMs: processed - exposed, ...module.cameraState() };
  },
};

/** What else can be told apart without knowing types: pixels travel without a copy. @param {any} value */
function transferred(value) {
  /** @type {Transferable[]} */
  const list = [];
  for (const part of [value, value?.result, value?.input]) {
    if (part?.rgba instanceof Uint8ClampedArray) list.push(part.rgba.buffer);
  }
  return list;
}

const scope = /** @type {any} */ (self);
scope.onmessage = async (/** @type {MessageEvent} */ event) => {
  const { id, what, values } = event.data;
  try {
    const value = await /** @type {any} */ (handlers)[what](...values);
    scope.postMessage({ id, value }, transferred(value));
  } catch (error) {
    const { message, position, length } = /** @type {ChainError} */ (error);
    scope.postMessage({ id, error: message, position, length });
  }
};

/** @typedef {typeof handlers} Handlers */
