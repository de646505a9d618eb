// The page with the camera: frame after frame as fast as they are made, at most one for each of the screen's.
import { ask, element, made, show, start } from './client.js';

const width = 1280;
const height = 720;
const rotations = ['not rotated', '90° counterclockwise', '90° clockwise', '180°', 'mirrored left to right',
  'mirrored top to bottom'];

const canvas = element('picture', HTMLCanvasElement);
const pause = element('pause', HTMLButtonElement);
const checkbox = (/** @type {string} */ id) => element(id, HTMLInputElement);

/** What has changed since the last frame. @type {{light?: number, curve?: number, balance?: [boolean, number, number],
 *  controls?: [number, number]}} */
let changed = {};
/** @type {{width: number, height: number}} */
let size;
/** Buffers that travel to the worker and back. @type {Uint8ClampedArray[]} */
let buffers = [];
let isRestarted = false;
let light = 0;

/** Exposure times of 12 to 2000 rows, on a scale of equal factors. */
const rowsOf = (/** @type {number} */ position) => Math.round(12 * (2000 / 12) ** position);
const positionOf = (/** @type {number} */ rows) => Math.log(rows / 12) / Math.log(2000 / 12);

async function restart() {
  isRestarted = false;
  size = await ask('startCamera', width, height, Number(element('scale', HTMLSelectElement).value),
    element('rotation', HTMLSelectElement).selectedIndex);
  buffers = [0, 1].map(() => new Uint8ClampedArray(size.width * size.height * 4));
  changed = { light, curve: element('curve', HTMLSelectElement).selectedIndex };
  setBalance();
  setControls();
}

function setBalance() {
  changed.balance = [checkbox('auto-balance').checked, Number(checkbox('red').value), Number(checkbox('blue').value)];
}

function setControls() {
  if (checkbox('auto-exposure').checked) return;
  changed.controls = [rowsOf(Number(checkbox('rows').value)), Number(checkbox('analogue').value)];
}

/** @typedef {{rgba: Uint8ClampedArray, sensorMs: number, ispMs: number, time: number, gain: number, red: number,
 *  blue: number, brightness: number}} Frame */

/** The last frames, of which the middle one is shown. @type {Frame[]} */
let recent = [];
/** When the last frames were shown. @type {number[]} */
let times = [];

/** @param {Frame} frame */
function showFacts(frame) {
  const set = (/** @type {string} */ id, /** @type {string} */ text) => (element(id, HTMLElement).textContent = text);
  const middle = (/** @type {(frame: Frame) => number} */ of) => {
    const sorted = recent.map(of).sort((a, b) => a - b);
    return sorted[sorted.length >> 1].toFixed(1);
  };
  const seconds = (times[times.length - 1] - times[0]) / 1000;
  set('rate', times.length < 2 ? '–' : ((times.length - 1) / seconds).toFixed(1));
  set('isp-time', `${middle((one) => one.ispMs)} ms`);
  set('sensor-time', `${middle((one) => one.sensorMs)} ms`);
  set('exposure', `${frame.time} rows`);
  set('gain', `× ${frame.gain.toFixed(2)}`);
  set('balance', `${frame.red.toFixed(2)}, ${frame.blue.toFixed(2)}`);
  set('brightness', frame.brightness.toFixed(0));
  if (checkbox('auto-exposure').checked) {
    checkbox('rows').value = String(positionOf(frame.time));
    checkbox('analogue').value = String(frame.gain * 16);
  }
  if (checkbox('auto-balance').checked) {
    checkbox('red').value = String(frame.red);
    checkbox('blue').value = String(frame.blue);
  }
  set('rows-text', `${rowsOf(Number(checkbox('rows').value))} rows`);
  set('analogue-text', `× ${(Number(checkbox('analogue').value) / 16).toFixed(2)}`);
  set('red-text', `× ${Number(checkbox('red').value).toFixed(2)}`);
  set('blue-text', `× ${Number(checkbox('blue').value).toFixed(2)}`);
}

/** @param {number} now */
function paused(now) {
  return pause.getAttribute('aria-pressed') === 'true' || document.hidden || now < 0;
}

/** The next frame is on its way while the last one is shown. */
async function run() {
  await restart();
  const next = () => {
    const buffer = buffers.pop();
    if (buffer === undefined) throw new Error('there is no buffer');
    const now = changed;
    changed = {};
    return ask('takeFrame', buffer, size.width, size.height, now, checkbox('auto-exposure').checked);
  };
  let coming = next();
  for (let lastFacts = 0; ;) {
    const frame = await coming;
    if (isRestarted) {
      await restart();
      coming = next();
      continue;
    }
    coming = next();
    const now = await new Promise((/** @type {(time: number) => void} */ resolve) => requestAnimationFrame(resolve));
    show(canvas, frame.rgba, size.width, size.height);
    buffers.push(frame.rgba);
    recent = [...recent.slice(-30), frame];
    times = [...times.slice(-60), now];
    if (now - lastFacts > 200) {
      showFacts(frame);
      lastFacts = now;
    }
    if (paused(now)) {
      while (paused(now)) await new Promise((resolve) => setTimeout(resolve, 100));
      times = [];
    }
  }
}

function listen() {
  const auto = (/** @type {string} */ id, /** @type {string[]} */ sliders, /** @type {() => void} */ act) => {
    const box = checkbox(id);
    const set = () => {
      for (const one of sliders) checkbox(one).disabled = box.checked;
      act();
    };
    box.onchange = set;
    for (const one of sliders) checkbox(one).oninput = set;
  };
  auto('auto-exposure', ['rows', 'analogue'], setControls);
  auto('auto-balance', ['red', 'blue'], setBalance);
  element('curve', HTMLSelectElement).onchange = () => (changed.curve = element('curve', HTMLSelectElement).selectedIndex);
  element('rotation', HTMLSelectElement).append(...rotations.map((name) => made('option', {}, name)));
  for (const id of ['scale', 'rotation']) element(id, HTMLSelectElement).onchange = () => (isRestarted = true);
  pause.onclick = () => pause.setAttribute('aria-pressed', String(pause.getAttribute('aria-pressed') !== 'true'));
}

try {
  const { level, version, lights } = await start();
  element('engine', HTMLElement).textContent = `${version}, ${level}`;
  listen();
  element('lights', HTMLElement).append(...lights.map((name, i) => {
    const button = made('button', { type: 'button', 'aria-pressed': String(i === 0) }, name);
    button.onclick = () => {
      changed.light = light = i;
      for (const one of button.parentElement?.children ?? []) one.setAttribute('aria-pressed', String(one === button));
    };
    return button;
  }));
  await run();
} catch (error) {
  element('engine', HTMLElement).textContent = /** @type {Error} */ (error).message;
}
