// Files that are read here: pictures are decoded by the browser but for PGM and PPM, which it does not know.

/** @typedef {{rgba: Uint8ClampedArray, width: number, height: number, isGray: boolean}} Pixels */

/** A binary PGM or PPM with 8 bits, or nothing. @param {Uint8Array} bytes @returns {Pixels | undefined} */
export function readPnm(bytes) {
  const head = new TextDecoder('latin1').decode(bytes.subarray(0, 1024));
  const match = /^P([56])(?:\s+|#[^\n]*\n)+(\d+)(?:\s+|#[^\n]*\n)+(\d+)(?:\s+|#[^\n]*\n)+255\s/.exec(head);
  if (match === null) return undefined;
  const [width, height] = [Number(match[2]), Number(match[3])];
  const isGray = match[1] === '5';
  const channels = isGray ? 1 : 3;
  const from = bytes.subarray(match[0].length);
  if (from.length < width * height * channels) return undefined;
  const rgba = new Uint8ClampedArray(width * height * 4).fill(255);
  for (let i = 0; i < width * height; ++i) {
    for (let c = 0; c < 3; ++c) rgba[4 * i + c] = from[channels * i + (isGray ? 0 : c)];
  }
  return { rgba, width, height, isGray };
}

/** Whether a PNG or a JPEG has one channel, which its pixels do not tell any more. @param {Uint8Array} bytes */
export function isGrayFile(bytes) {
  if (bytes[0] === 0x89 && bytes[1] === 0x50) return bytes[25] === 0 || bytes[25] === 4;
  if (bytes[0] !== 0xff || bytes[1] !== 0xd8) return false;
  // From segment to segment, until the one that describes the frame.
  for (let at = 2; at + 9 < bytes.length && bytes[at] === 0xff; ) {
    const marker = bytes[at + 1];
    const isFrame = marker >= 0xc0 && marker <= 0xcf && marker !== 0xc4 && marker !== 0xc8 && marker !== 0xcc;
    if (isFrame) return bytes[at + 9] === 1;
    at += 2 + (bytes[at + 2] << 8) + bytes[at + 3];
  }
  return false;
}

/** A PGM or PPM file. @param {Pixels} picture */
export function writePnm({ rgba, width, height, isGray }) {
  const head = new TextEncoder().encode(`P${isGray ? 5 : 6}\n${width} ${height}\n255\n`);
  const channels = isGray ? 1 : 3;
  const file = new Uint8Array(head.length + width * height * channels);
  file.set(head);
  for (let i = 0, to = head.length; i < width * height; ++i) {
    for (let c = 0; c < channels; ++c) file[to++] = rgba[4 * i + c];
  }
  return file;
}

/** Formats of raw frames: a number of the library, bits, and samples that so many bytes hold. */
export const rawFormats = [
  { name: '8 bits', format: 0, bits: 8, samples: 1, bytes: 1 },
  { name: '10 bits in 16', format: 1, bits: 10, samples: 1, bytes: 2 },
  { name: '12 bits in 16', format: 1, bits: 12, samples: 1, bytes: 2 },
  { name: '14 bits in 16', format: 1, bits: 14, samples: 1, bytes: 2 },
  { name: '16 bits', format: 1, bits: 16, samples: 1, bytes: 2 },
  { name: 'packed RAW10', format: 2, bits: 10, samples: 4, bytes: 5 },
  { name: 'packed RAW12', format: 3, bits: 12, samples: 2, bytes: 3 },
  { name: 'packed RAW14', format: 4, bits: 14, samples: 4, bytes: 7 },
];

const usualSizes = [
  [640, 480], [1280, 720], [1280, 960], [1280, 1024], [1296, 972], [1456, 1088], [1600, 1200], [1640, 1232],
  [1920, 1080], [1920, 1200], [2028, 1520], [2304, 1296], [2592, 1944], [3264, 2448], [3280, 2464], [3840, 2160],
  [4032, 3024], [4056, 3040], [4608, 2592],
];

/** What a file of so many bytes may be: the index of a format, and a size. @param {number} length */
export function guessRaw(length) {
  for (const index of [5, 1, 6, 0, 7]) {
    const { samples, bytes } = rawFormats[index];
    const size = usualSizes.find(([width, height]) => (width * height * bytes) / samples === length);
    if (size !== undefined) return { index, width: size[0], height: size[1] };
  }
  return undefined;
}
