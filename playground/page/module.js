// The WebAssembly module and its memory. It is the same in the browser and under Node.js.

/**
 * @typedef {{name: string, kind: string, default?: string, words?: string, low: number, high: number}} Parameter
 * @typedef {{group: string, name: string, help: string, usage: string, parameters: Parameter[]}} Operation
 * @typedef {{width: number, height: number, channels: number}} Size
 * @typedef {{step: number, operation: string, labels: string[], channels: number[][]}} Figures
 * @typedef {{name: string, arguments: string[]}} Step
 * @typedef {{width: number, height: number, step: number, format: number, bits: number, order: number,
 *            black: number}} RawFormat
 */

/** What is wrong, and where in a chain. */
export class ChainError extends Error {
  /** @param {{error: string, position?: number, length?: number}} answer */
  constructor(answer) {
    super(answer.error);
    this.position = answer.position;
    this.length = answer.length;
  }
}

/** The smallest module with an instruction on vectors: a function that adds two of them. */
const withVectors = new Uint8Array([
  0, 97, 115, 109, 1, 0, 0, 0, 1, 5, 1, 96, 0, 1, 123, 3, 2, 1, 0, 10, 10, 1, 8, 0, 65, 0, 253, 15, 253, 98, 11,
]);

/** Whether vectors can be used here. */
export function hasVectors() {
  return WebAssembly.validate(withVectors);
}

export class Module {
  /** @type {Record<string, (...numbers: number[]) => number>} */
  #call;
  /** @type {WebAssembly.Memory} */
  #memory;

  /** @param {WebAssembly.Exports} exports */
  constructor(exports) {
    this.#memory = /** @type {WebAssembly.Memory} */ (exports.memory);
    this.#call = /** @type {any} */ (exports);
    this.#call._initialize();
  }

  /** @param {WebAssembly.Module} compiled */
  static async start(compiled) {
    const stop = () => {
      throw new Error('out of memory');
    };
    const instance = await WebAssembly.instantiate(compiled, {
      env: { emscripten_notify_memory_growth() {} },
      wasi_snapshot_preview1: { proc_exit: stop },
    });
    return new Module(instance.exports);
  }

  /** @param {number} at @param {number} length */
  #bytes(at, length) {
    return new Uint8Array(this.#memory.buffer, at, length);
  }

  /** @param {number} at */
  #text(at) {
    const memory = new Uint8Array(this.#memory.buffer);
    return new TextDecoder().decode(memory.subarray(at, memory.indexOf(0, at)));
  }

  /**
   * Calls `name` with texts and bytes as addresses of copies, and numbers as they are.
   * @param {string} name
   * @param {(string | number | Uint8Array | Uint8ClampedArray)[]} values
   */
  #with(name, ...values) {
    /** @type {number[]} */
    const taken = [];
    const numbers = values.map((value) => {
      if (typeof value === 'number') return value;
      const bytes = typeof value === 'string' ? new TextEncoder().encode(value + '\0') : value;
      const at = this.#call.malloc(bytes.length);
      if (at === 0) throw new Error('out of memory');
      taken.push(at);
      this.#bytes(at, bytes.length).set(bytes);
      return at;
    });
    try {
      return this.#call[name](...numbers);
    } finally {
      for (const at of taken) this.#call.free(at);
    }
  }

  /**
   * The same of a function that answers in JSON.
   * @param {string} name
   * @param {(string | number | Uint8Array | Uint8ClampedArray)[]} values
   * @returns {any}
   */
  #ask(name, ...values) {
    const answer = JSON.parse(this.#text(this.#with(name, ...values)));
    if (answer.error !== undefined) throw new ChainError(answer);
    return answer;
  }

  level() {
    return this.#text(this.#call.level());
  }
  version() {
    return this.#text(this.#call.version());
  }
  /** @returns {Operation[]} */
  operations() {
    return this.#ask('operations');
  }

  // ---- Pictures ----

  /** @param {string} name @param {Uint8ClampedArray} rgba @param {number} width @param {number} height
   *  @param {boolean} isGray @returns {Size} */
  setPixels(name, rgba, width, height, isGray) {
    return this.#ask('setPixels', name, rgba, width, height, isGray ? 1 : 0);
  }
  /** @param {string} name */
  removePicture(name) {
    this.#with('removePicture', name);
  }
  /** @param {string} name @returns {Size} */
  describePicture(name) {
    return this.#ask('describePicture', name);
  }
  /** @param {string} name @returns {Uint8ClampedArray} RGBA */
  pixels(name) {
    const { width, height } = this.describePicture(name);
    const length = width * height * 4;
    const at = this.#call.malloc(length);
    if (at === 0) throw new Error('out of memory');
    this.#with('getPixels', name, at);
    const copy = new Uint8ClampedArray(this.#bytes(at, length));
    this.#call.free(at);
    return copy;
  }
  /** @param {string} name @returns {Uint32Array} 256 counts of red, of green and of blue */
  histogram(name) {
    const at = this.#with('histogram', name);
    return new Uint32Array(this.#memory.buffer, at, 3 * 256).slice();
  }

  // ---- Chains ----

  /** @param {string} chain @returns {Step[]} */
  parse(chain) {
    return this.#ask('parse', chain).steps;
  }
  /** Runs a chain on the picture "in"; gives the milliseconds that it took.
   *  @param {string} chain */
  run(chain) {
    this.#ask('prepare', chain);
    const start = performance.now();
    this.#ask('run');
    return performance.now() - start;
  }
  /** @returns {Size & {digest: string, figures: Figures[]}} */
  describeResult() {
    return this.#ask('describeResult');
  }
  /** @param {string} chain @param {number} language 0: C, 1: C++, 2: Python @returns {string} */
  code(chain, language) {
    return this.#ask('code', chain, language).code;
  }

  // ---- The camera ----

  /** @returns {string[]} */
  lights() {
    return this.#ask('lights');
  }
  /** @param {string} name @param {number} width @param {number} height @param {number} light */
  simulatePicture(name, width, height, light) {
    this.#ask('simulatePicture', name, width, height, light);
  }
  /** Packed RAW10, RGGB. @param {number} width @param {number} height @param {number} light */
  simulateRaw(width, height, light) {
    const at = this.#call.simulateRaw(width, height, light);
    return this.#bytes(at, (width * height * 5) / 4).slice();
  }
  /** @param {number} format @param {number} width */
  rawRowBytes(format, width) {
    return this.#call.rawRowBytes(format, width);
  }
  /** @param {string} name @param {Uint8Array} bytes @param {RawFormat} raw */
  develop(name, bytes, raw) {
    const { width, height, step, format, bits, order, black } = raw;
    this.#ask('develop', name, bytes, width, height, step, format, bits, order, black);
  }
  /** @param {number} width @param {number} height @param {number} scale @param {number} rotation
   *  @returns {{width: number, height: number}} */
  startCamera(width, height, scale, rotation) {
    return this.#ask('startCamera', width, height, scale, rotation);
  }
  stopCamera() {
    this.#call.stopCamera();
  }
  /** @param {number} light */
  setLight(light) {
    this.#call.setLight(light);
  }
  /** @param {number} curve 0: sRGB, 1: BT.709, 2: linear */
  setCurve(curve) {
    this.#call.setCurve(curve);
  }
  /** @param {boolean} isAutomatic @param {number} red @param {number} blue */
  setBalance(isAutomatic, red, blue) {
    this.#call.setBalance(isAutomatic ? 1 : 0, red, blue);
  }
  /** @param {number} rows @param {number} sixteenths */
  setControls(rows, sixteenths) {
    this.#call.setControls(rows, sixteenths);
  }
  expose() {
    this.#call.expose();
  }
  /** @param {boolean} isAutomatic whether the exposure control decides about the next frame */
  process(isAutomatic) {
    this.#call.process(isAutomatic ? 1 : 0);
  }
  /** Copies the picture. @param {Uint8ClampedArray} rgba @param {number} width @param {number} height */
  copyCameraPixels(rgba, width, height) {
    const at = this.#call.cameraPixels();
    const step = this.#call.cameraStep();
    for (let y = 0; y < height; ++y) {
      rgba.set(this.#bytes(at + y * step, width * 4), y * width * 4);
    }
  }
  cameraState() {
    const at = this.#call.cameraState();
    const [time, gain, red, blue, brightness] = new Float64Array(this.#memory.buffer, at, 5);
    return { time, gain, red, blue, brightness };
  }
}
