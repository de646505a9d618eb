// The page with pictures: an input, a chain of operations with sliders, and what comes out.
import { ask, drawHistogram, element, made, show, start } from './client.js';
import { guessRaw, isGrayFile, rawFormats, readPnm, writePnm } from './files.js';
import { ChainError } from './module.js';

/** @typedef {import('./module.js').Operation} Operation */
/** @typedef {import('./module.js').Parameter} Parameter */
/** @typedef {import('./module.js').Step} Step */
/** @typedef {import('./worker.js').Shown} Shown */
/** @typedef {import('./worker.js').Applied} Applied */

const examples = {
  'Pencil': 'box 9x9 | sub @in | mul 6 | not',
  'Black and white': 'gray | box 5x5 | median 3 | threshold 100',
  'Newspaper': 'gray | dither-bits 1',
  'Sharper': 'filter 0,-1,0/-1,8,-1/0,-1,0 4',
  'Outlines': 'gray | high-pass 40 | threshold 140',
  'Sepia': 'twist 6439,12599,3097,0/5718,11239,2753,0/4456,8749,2146,0',
  'Less noise': 'median 5x5',
  'From the side': 'perspective 60,40 900,120 840,500 120,440 project cubic',
  'Turned': 'affine 12 0.8 outside=constant',
  'Six coefficients of 64': 'dct-keep 6',
  'Spectrum': 'gray | spectrum',
  'As 4:2:0': 'subsample 420 | sub @in | mul 8',
  'Centre of gravity': 'gray | threshold 128 | moments central',
};

/** What is given to parameters that have no default. @type {Record<string, string>} */
const firstValues = {
  'add.value': '32', 'sub.value': '32', 'mul.value': '2', 'mul-scale.value': '128', 'and.value': '240',
  'or.value': '15', 'xor.value': '255', 'shift-left.bits': '1', 'shift-right.bits': '1', 'twist.matrix':
  '0,16384,0,0/0,0,16384,0/16384,0,0,0', 'order.order': '2,1,0', 'dither.levels': '4',
  'filter.kernel': '1,2,1/2,4,2/1,2,1', 'row.kernel': '1,2,3,2,1', 'column.kernel': '1,2,3,2,1',
  'pad.margins': '32', 'channel.channel': '0', 'low-pass.periods': '24', 'high-pass.periods': '24',
  'dct-keep.count': '6', 'replace-outside.low': '64', 'replace-outside.low-value': '0',
  'replace-outside.high': '192', 'replace-outside.high-value': '255', 'replace-above.value': '255',
  'replace-below.value': '0', 'perspective.top-left': '60,40', 'perspective.top-right': '900,80',
  'perspective.bottom-right': '860,500', 'perspective.bottom-left': '100,460',
};

/** Where sliders end if the limits are far away. @type {Record<string, [number, number]>} */
const usualRanges = {
  'filter.divisor': [0, 64], 'row.divisor': [0, 64], 'column.divisor': [0, 64], 'erode.times': [1, 20],
  'dilate.times': [1, 20], 'affine.angle': [-180, 180], 'affine.scale': [0.1, 4], 'affine.shear': [-2, 2],
  'low-pass.periods': [0, 200], 'high-pass.periods': [0, 200],
};

/** @type {Operation[]} */
let operations = [];
/** @type {Step[]} */
let steps = [];
let input = { width: 0, height: 0, channels: 3 };
/** @type {Uint8ClampedArray} */
let inputPixels;
/** @type {Applied | undefined} */
let applied;
let language = 0;
/** @type {string[]} */
let programs = [];
/** @type {{name: string, bytes: Uint8Array} | undefined} */
let rawFile;
/** @type {MediaStream | undefined} */
let webcam;
/** How often an input was chosen: what is slow to start may come too late. */
let choices = 0;
let inputFileName = 'in.png';

const chainText = element('chain', HTMLInputElement);
const fault = element('fault', HTMLElement);
const stepList = element('steps', HTMLOListElement);
const inputCanvas = element('input', HTMLCanvasElement);
const outputCanvas = element('output', HTMLCanvasElement);

// ---- Chains as text ----

/** @param {string} name */
function operationNamed(name) {
  const found = operations.find((operation) => operation.name === name);
  if (found === undefined) throw new Error(`there is no operation ${name}`);
  return found;
}

/** @param {Step} step */
function textOf(step) {
  const { parameters } = operationNamed(step.name);
  let isInOrder = true;
  let text = step.name;
  parameters.forEach((parameter, i) => {
    const value = step.arguments[i];
    if (value === parameter.default) isInOrder = false;
    else text += isInOrder ? ` ${value}` : ` ${parameter.name}=${value}`;
  });
  return text;
}

/** @param {string} operation @param {Parameter} parameter */
function firstValue(operation, parameter) {
  if (parameter.default !== undefined) return parameter.default;
  if (parameter.kind === 'word') return (parameter.words ?? '').split('|')[0];
  if (parameter.kind === 'mask') return '5x5';
  if (parameter.kind === 'size') return `${Math.max(1, input.width >> 1)}x${Math.max(1, input.height >> 1)}`;
  if (parameter.kind === 'picture') return '@in';
  return firstValues[`${operation}.${parameter.name}`] ?? '128';
}

// ---- Running ----

let isRunning = false;
let isWanted = false;

/** Runs the chain as it is now; while it runs, only the last change waits. */
async function run() {
  isWanted = true;
  if (isRunning) return;
  isRunning = true;
  while (isWanted) {
    isWanted = false;
    const text = chainText.value.trim();
    try {
      if (webcam === undefined) {
        showApplied(await ask('apply', text));
      }
      programs = await ask('code', text || 'copy');
      showFault();
      showCode();
      history.replaceState(null, '', `#${encodeURIComponent(text)}`);
    } catch (error) {
      showFault(/** @type {Error} */ (error));
    }
  }
  isRunning = false;
}

/** @param {Applied} now */
function showApplied(now) {
  applied = now;
  const { ms, digest, figures, result } = now;
  show(outputCanvas, result.rgba, result.width, result.height);
  drawHistogram(element('histogram', HTMLCanvasElement), result.histogram, result.channels === 1);
  element('output-size', HTMLElement).textContent = sizeText(result);
  element('time', HTMLElement).textContent = ms < 0.05 ? '< 0.1 ms' : `${ms.toFixed(ms < 10 ? 2 : 1)} ms`;
  element('digest', HTMLElement).textContent = digest;
  element('figures', HTMLElement).replaceChildren(...figures.map((one) => {
    const rows = one.labels.map((label, i) => made('tr', {}, made('th', { scope: 'row' }, label),
      ...one.channels.map((channel) => made('td', {}, String(Number(channel[i].toPrecision(8)))))));
    return made('table', {}, made('caption', {}, `Step ${one.step + 1}: ${one.operation}`), made('tbody', {}, ...rows));
  }));
}

/** @param {{width: number, height: number, channels: number}} picture */
function sizeText({ width, height, channels }) {
  return `${width} × ${height}, ${channels === 1 ? 'grey' : 'color'}`;
}

/** @param {Error} [error] */
function showFault(error) {
  fault.textContent = error?.message ?? '';
  chainText.setAttribute('aria-invalid', String(error !== undefined));
  if (error instanceof ChainError && error.position !== undefined && document.activeElement !== chainText) {
    chainText.setSelectionRange(error.position, error.position + (error.length ?? 0));
  }
}

/** Takes the steps from the text. */
async function takeText() {
  try {
    steps = chainText.value.trim() === '' ? [] : await ask('parse', chainText.value);
    showSteps();
    await run();
  } catch (error) {
    showFault(/** @type {Error} */ (error));
  }
}

/** Takes the text from the steps. */
function takeSteps() {
  chainText.value = steps.map(textOf).join(' | ');
  return run();
}

// ---- Steps and their sliders ----

function showSteps() {
  stepList.replaceChildren(...steps.map((step, index) => {
    const operation = operationNamed(step.name);
    const button = (/** @type {string} */ label, /** @type {string} */ title, /** @type {() => void} */ act, isOff = false) => {
      const node = made('button', { type: 'button', title, 'aria-label': `${title}: ${step.name}` }, label);
      node.disabled = isOff;
      node.onclick = () => { act(); showSteps(); void takeSteps(); };
      return node;
    };
    const move = (/** @type {number} */ by) => () => {
      steps.splice(index, 1);
      steps.splice(index + by, 0, step);
    };
    return made('li', {},
      made('div', { class: 'head' }, made('b', { title: operation.usage }, step.name), made('span', {}, operation.help),
        button('↑', 'Earlier', move(-1), index === 0), button('↓', 'Later', move(1), index === steps.length - 1),
        button('×', 'Remove', () => steps.splice(index, 1))),
      made('div', { class: 'controls' },
        ...operation.parameters.map((parameter, i) => control(step, i, parameter))));
  }));
}

/** @param {Step} step @param {number} index @param {Parameter} parameter @returns {HTMLElement} */
function control(step, index, parameter) {
  const set = (/** @type {string} */ value) => {
    step.arguments[index] = value;
    void takeSteps();
  };
  const value = step.arguments[index];
  const label = made('span', { class: 'name' }, parameter.name);
  const key = `${step.name}.${parameter.name}`;
  const range = usualRanges[key] ?? [parameter.low, parameter.high];
  const choice = (/** @type {[string, string][]} */ options, /** @type {string} */ chosen, /** @type {(to: string) => void} */ act) => {
    const select = made('select', { 'aria-label': `${step.name}: ${parameter.name}` },
      ...options.map(([to, text]) => made('option', { value: to }, text)));
    select.value = chosen;
    select.onchange = () => act(select.value);
    return select;
  };
  /** Sliders for numbers that `separator` joins. @param {string[]} names @param {string} separator */
  const sliders = (names, separator, by = parameter.kind === 'number' ? 0.01 : 1, ends = range) => {
    const numbers = step.arguments[index].split(separator);
    while (numbers.length < names.length) numbers.push(numbers[0]);  // a mask of equal sides
    return names.map((name, i) => slider(`${step.name}: ${parameter.name} ${name}`, Number(numbers[i]), ends, by,
      (number) => {
        numbers[i] = String(number);
        set(numbers.join(separator));
      }));
  };
  switch (parameter.kind) {
    case 'word':
      return made('label', {}, label,
        choice((parameter.words ?? '').split('|').map((word) => [word, word]), value, set));
    case 'integer':
      return made('div', {}, label, ...sliders([''], ' '));
    case 'number':
      return made('div', {}, label, ...sliders([''], ' ', parameter.name === 'angle' ? 0.5 : 0.01));
    case 'mask': {
      const by = step.name === 'median' ? 2 : 1;
      return made('div', {}, label, ...sliders(['width', 'height'], 'x', by, [Math.max(parameter.low, by), 41]));
    }
    case 'size':
      return made('div', {}, label, ...sliders(['width', 'height'], 'x', 1, [1, 2 * Math.max(input.width, input.height)]));
    case 'point':
      return made('div', {}, label, ...sliders(['column', 'row'], ',', 1, [-input.width >> 1, (3 * input.width) >> 1]));
    case 'color':
    case 'operand':
    case 'picture': {
      const isPicture = value.startsWith('@');
      const count = value.split(',').length;
      /** @type {[string, string][]} */
      const options = parameter.kind === 'picture' ? [] : [['1', 'all channels'], ['3', 'each channel']];
      if (parameter.kind !== 'color') options.push(['@in', '@in'], ['@other', '@other']);
      const select = choice(options, isPicture ? value : String(count), (to) => {
        const first = isPicture ? '128' : value.split(',')[0];
        set(to.startsWith('@') ? to : Array(Number(to)).fill(first).join(','));
        showSteps();
      });
      const names = count === 3 ? ['red', 'green', 'blue'] : [''];
      return made('div', {}, label, select, ...(isPicture ? [] : sliders(names, ',')));
    }
    default: {
      const text = made('input', { type: 'text', value, spellcheck: 'false', 'aria-label': `${step.name}: ${parameter.name}` });
      text.oninput = () => set(text.value.replaceAll(' ', ''));
      return made('label', {}, label, text);
    }
  }
}

/** @param {string} name @param {number} value @param {number[]} range @param {number} by
 *  @param {(value: number) => void} act */
function slider(name, value, [low, high], by, act) {
  const limits = { min: String(low), max: String(high), step: String(by), 'aria-label': name };
  const bar = made('input', { type: 'range', ...limits });
  const box = made('input', { type: 'number', step: String(by), 'aria-label': `${name}, as a number` });
  bar.value = box.value = String(value);
  bar.oninput = () => { box.value = bar.value; act(Number(bar.value)); };
  box.oninput = () => {
    if (box.value === '') return;
    bar.value = box.value;
    act(Number(box.value));
  };
  return made('span', { class: 'slider' }, bar, box);
}

// ---- Inputs ----

/** @param {Shown} picture */
function showInput(picture) {
  input = picture;
  inputPixels = picture.rgba;
  show(inputCanvas, picture.rgba, picture.width, picture.height);
  element('input-size', HTMLElement).textContent = sizeText(picture);
}

/** @param {string | undefined} kind */
function markSource(kind) {
  ++choices;
  for (const button of document.querySelectorAll('#sources button')) {
    button.setAttribute('aria-pressed', String(/** @type {HTMLElement} */ (button).dataset.kind === kind));
  }
  if (kind !== 'webcam') stopWebcam();
  element('raw', HTMLFormElement).hidden = kind !== 'raw';
}

/** @param {string} kind */
async function takeSource(kind) {
  markSource(kind);
  try {
    if (kind === 'webcam') {
      await startWebcam();
    } else if (kind === 'raw') {
      await takeRaw('simulated.raw', await ask('simulateRaw', 1280, 720));
    } else {
      const choice = choices;
      const picture = await ask('makePicture', 'in', kind);
      if (choice !== choices) return;
      showInput(picture);
      inputFileName = `${kind}.${input.channels === 1 ? 'pgm' : 'ppm'}`;
      await takeText();
    }
  } catch (error) {
    showFault(/** @type {Error} */ (error));
  }
}

/** A picture's file, or a raw frame's. @param {File} file @param {string} name */
async function takeFile(file, name) {
  const bytes = new Uint8Array(await file.arrayBuffer());
  const pnm = readPnm(bytes);
  let picture;
  if (pnm !== undefined) {
    picture = await ask('takePixels', name, pnm.rgba, pnm.width, pnm.height, pnm.isGray);
  } else {
    let bitmap;
    try {
      bitmap = await createImageBitmap(file,
        { colorSpaceConversion: 'none', premultiplyAlpha: 'none', imageOrientation: 'from-image' });
    } catch {
      if (name !== 'in') throw new Error(`${file.name} is not a picture`);
      markSource('raw');
      await takeRaw(file.name, bytes);
      return;
    }
    picture = await ask('takeBitmap', name, bitmap, isGrayFile(bytes));
  }
  if (name === 'in') {
    inputFileName = file.name;
    markSource(undefined);
    showInput(picture);
  }
  await takeText();
}

/** @param {string} name @param {Uint8Array} bytes */
async function takeRaw(name, bytes) {
  rawFile = { name, bytes };
  const guess = guessRaw(bytes.length);
  if (guess !== undefined) {
    element('raw-format', HTMLSelectElement).selectedIndex = guess.index;
    element('raw-width', HTMLInputElement).value = String(guess.width);
    element('raw-height', HTMLInputElement).value = String(guess.height);
    element('raw-step', HTMLInputElement).value = '0';
  }
  await developRaw();
}

async function developRaw() {
  if (rawFile === undefined) return;
  const number = (/** @type {string} */ id) => Math.trunc(Number(element(id, HTMLInputElement).value));
  const { format, bits, samples, bytes } = rawFormats[element('raw-format', HTMLSelectElement).selectedIndex];
  const [width, height, black] = [number('raw-width'), number('raw-height'), number('raw-black')];
  const step = number('raw-step') || Math.ceil(width / samples) * bytes;
  const needed = step * (height - 1) + Math.ceil(width / samples) * bytes;
  try {
    if (rawFile.bytes.length < needed) {
      throw new Error(`${rawFile.name} has ${rawFile.bytes.length} bytes; such a frame takes ${needed}`);
    }
    const order = element('raw-order', HTMLSelectElement).selectedIndex;
    showInput(await ask('develop', 'in', rawFile.bytes, { width, height, step, format, bits, order, black }));
    inputFileName = rawFile.name.replace(/\.\w+$/, '') + '.ppm';
    await takeText();
  } catch (error) {
    showFault(/** @type {Error} */ (error));
  }
}

async function startWebcam() {
  if (navigator.mediaDevices === undefined) throw new Error('there is no camera');
  const choice = choices;
  const stream = await navigator.mediaDevices.getUserMedia({ video: { width: 640, height: 480 } });
  const video = made('video', { playsinline: '', muted: '' });
  video.srcObject = stream;
  await video.play();
  webcam = stream;
  if (choice !== choices) stopWebcam();
  else inputFileName = 'webcam.ppm';
  while (webcam === stream) {
    try {
      const bitmap = await createImageBitmap(video);
      if (webcam !== stream) break;  // or the frame would take the place of another input
      const now = await ask('applyLive', bitmap, chainText.value.trim());
      if (webcam !== stream) break;
      showInput(now.input);
      showApplied(now);
      showFault();
    } catch (error) {
      showFault(/** @type {Error} */ (error));
      await new Promise((done) => setTimeout(done, 200));
    }
    await new Promise(requestAnimationFrame);
  }
}

function stopWebcam() {
  for (const track of webcam?.getTracks() ?? []) track.stop();
  webcam = undefined;
}

// ---- Code ----

function showCode() {
  const text = chainText.value.trim();
  const output = inputFileName.replace(/\.\w+$/, '') + '-out.png';
  const quoted = (/** @type {string} */ name) => (/^[\w.@-]+$/.test(name) ? name : `'${name.replaceAll("'", "'\\''")}'`);
  const command = `vekcam apply --digest ${quoted(inputFileName)} '${text || 'copy'}' ${quoted(output)}`;
  const code = element('code', HTMLPreElement);
  code.classList.toggle('wrapped', language === 0);
  code.firstElementChild?.replaceChildren(language === 0 ? command : programs[language - 1] ?? '');
  code.scrollTop = code.scrollHeight;  // the steps are behind the functions that they need
}

/** @param {string} name @param {Uint8ClampedArray} rgba @param {{width: number, height: number, channels: number}} size */
function save(name, rgba, { width, height, channels }) {
  const isGray = channels === 1;
  const file = writePnm({ rgba, width, height, isGray });
  const url = URL.createObjectURL(new Blob([file]));
  made('a', { href: url, download: `${name.replace(/\.\w+$/, '')}.${isGray ? 'pgm' : 'ppm'}` }).click();
  setTimeout(() => URL.revokeObjectURL(url), 1000);
}

// ---- The page ----

function fillLists() {
  const add = element('add', HTMLSelectElement);
  add.append(made('option', { value: '' }, 'an operation'));
  for (const group of new Set(operations.map((operation) => operation.group))) {
    add.append(made('optgroup', { label: group }, ...operations.filter((operation) => operation.group === group)
      .map(({ name, help }) => made('option', { value: name }, `${name} – ${help}`))));
  }
  add.onchange = () => {
    const { name, parameters } = operationNamed(add.value);
    steps.push({ name, arguments: parameters.map((parameter) => firstValue(name, parameter)) });
    add.value = '';
    showSteps();
    void takeSteps();
  };
  const list = element('examples', HTMLSelectElement);
  list.append(made('option', { value: '' }, 'a chain'),
    ...Object.entries(examples).map(([name, text]) => made('option', { value: text }, name)));
  list.onchange = () => {
    chainText.value = list.value;
    list.value = '';
    void takeText();
  };
  element('raw-format', HTMLSelectElement).append(...rawFormats.map(({ name }) => made('option', {}, name)));
}

function listen() {
  chainText.oninput = () => void takeText();
  for (const node of document.querySelectorAll('#sources button')) {
    const button = /** @type {HTMLButtonElement} */ (node);
    button.onclick = () => void takeSource(button.dataset.kind ?? 'scene');
  }
  const openFile = element('file', HTMLInputElement);
  const other = element('other', HTMLSelectElement);
  const take = (/** @type {FileList | null | undefined} */ files, /** @type {string} */ name) => {
    const file = files?.[0];
    if (file !== undefined) takeFile(file, name).catch(showFault);
  };
  openFile.onchange = () => {
    take(openFile.files, 'in');
    openFile.value = '';
  };
  other.onchange = async () => {
    if (other.value === 'file') {
      const picker = made('input', { type: 'file', accept: 'image/*,.pgm,.ppm' });
      picker.onchange = () => take(picker.files, 'other');
      picker.click();
    } else {
      await (other.value === '' ? ask('removePicture', 'other') : ask('makePicture', 'other', other.value));
      await takeText();
    }
  };
  const frame = element('drop', HTMLElement);
  addEventListener('dragover', (event) => {
    event.preventDefault();
    frame.classList.add('over');
  });
  addEventListener('dragleave', () => frame.classList.remove('over'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    frame.classList.remove('over');
    take(event.dataTransfer?.files, 'in');
  });
  element('raw', HTMLFormElement).oninput = () => void developRaw();
  element('raw', HTMLFormElement).onsubmit = (event) => event.preventDefault();

  const languages = [...document.querySelectorAll('#languages button[aria-pressed], #languages button:not([id])')];
  languages.forEach((button, i) => button.addEventListener('click', () => {
    language = i;
    languages.forEach((one, j) => one.setAttribute('aria-pressed', String(i === j)));
    showCode();
  }));
  const copy = element('copy', HTMLButtonElement);
  copy.onclick = async () => {
    await navigator.clipboard.writeText(element('code', HTMLPreElement).textContent ?? '');
    copy.textContent = 'Copied';
    setTimeout(() => (copy.textContent = 'Copy'), 1200);
  };
  element('save-input', HTMLButtonElement).onclick = () => save(inputFileName, inputPixels, input);
  element('save-output', HTMLButtonElement).onclick = () => {
    if (applied !== undefined) save(inputFileName.replace(/\.\w+$/, '') + '-out', applied.result.rgba, applied.result);
  };
}

try {
  const { level, version, operations: all } = await start();
  operations = all;
  element('engine', HTMLElement).textContent = `${version}, ${level}`;
  fillLists();
  listen();
  chainText.value = decodeURIComponent(location.hash.slice(1)) || examples.Pencil;
  await takeSource('scene');
  document.body.dataset.ready = 'true';
} catch (error) {
  element('engine', HTMLElement).textContent = /** @type {Error} */ (error).message;
}
