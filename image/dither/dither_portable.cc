#include <algorithm>
#include <string.h>

#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "core/color/pixel_format.h"
#include "core/kernel/words.h"
#include "image/dither/dither_kernels.h"
#include "image/dither/thresholds.h"

namespace vek::portable {
namespace {

/// The grey values that `count` levels stand for: 255 k / (count - 1), halves up.
struct GreyLevels {
  int count;
  Vek8u values[256];
};

constexpr GreyLevels greyLevels(int count) {
  GreyLevels levels = {.count = count, .values = {}};
  for (int k = 0; k < count; ++k) {
    levels.values[k] = static_cast<Vek8u>((510 * k + count - 1) / (2 * (count - 1)));
  }
  return levels;
}

// Destinations: levels(channel), and store(row, x, k) for the index k of each channel of pixel x. Pixels
// of the source have `samples` samples; those that are taken begin with `first`.

struct Bytes {
  static constexpr int channels = 1, samples = 1, first = 0;
  GreyLevels grey;

  explicit Bytes(int levels) : grey(greyLevels(levels)) {}
  const GreyLevels& levels(int) const { return grey; }
  void store(Vek8u* row, int x, const int* k) const { row[x] = grey.values[*k]; }
};

template <int bits>
struct Bits {
  static constexpr int channels = 1, samples = 1, first = 0;
  static constexpr GreyLevels grey = greyLevels(1 << bits);

  explicit Bits(int) {}
  static const GreyLevels& levels(int) { return grey; }
  /// Pixels are stored from left to right, from the highest bits of a byte to its lowest.
  static void store(Vek8u* row, int x, const int* k) {
    constexpr int perByte = 8 / bits;
    Vek8u& byte = row[x / perByte];
    const int place = x % perByte, shift = 8 - bits * (place + 1);
    byte = static_cast<Vek8u>((place == 0 ? 0 : byte) | *k << shift);
  }
};

template <class Format>
struct Pixels16 {
  static constexpr int channels = 3, samples = 3, first = 0;
  static constexpr GreyLevels grey[] = {greyLevels(1 << Format::rBits),
                                        greyLevels(1 << Format::gBits),
                                        greyLevels(1 << Format::bBits)};

  explicit Pixels16(int) {}
  static const GreyLevels& levels(int channel) { return grey[channel]; }
  static void store(Vek8u* row, int x, const int* k) {
    Format::store(row + ptrdiff_t{x} * Format::bytes, k[0], k[1], k[2]);
  }
};

/// One field of 16-bit pixels, those of the first channel before the others.
struct Field {
  static constexpr int channels = 1, samples = 3;
  const GreyLevels& grey;
  int first, shift;

  const GreyLevels& levels(int) const { return grey; }
  void store(Vek8u* row, int x, const int* k) const {
    Vek8u* const pixel = row + 2 * ptrdiff_t{x};
    const int others = first == 0 ? 0 : pixel[0] | pixel[1] << 8, word = others | *k << shift;
    pixel[0] = static_cast<Vek8u>(word & 0xFF);
    pixel[1] = static_cast<Vek8u>(word >> 8);
  }
};

/// k[i] = (samples[i] * steps + threshold[i]) / 255, whose numerator is at most 65278. For such numbers
/// v / 255 is (v + 1 + (v >> 8)) >> 8.
[[gnu::noinline, maybe_unused]] void orderSamples(const Vek8u* __restrict samples,
                                                  const Vek8u* __restrict threshold, Vek16u steps,
                                                  ptrdiff_t n, Vek8u* __restrict k) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek16u v = static_cast<Vek16u>(samples[i] * steps + threshold[i]);
    k[i] = static_cast<Vek8u>((v + 1 + (v >> 8)) >> 8);
  }
}

// storeBlock() stores the n indices k from column x on.

/// In words, since single bytes are stored one at a time.
[[maybe_unused]] void storeBlock(const Bytes& destination, const PixelBlock& k, ptrdiff_t n,
                                 Vek8u* __restrict row, int x) {
  const Vek8u* const index = k.channel[0];
  const auto value = [&](ptrdiff_t i) { return destination.grey.values[index[i]]; };
  ptrdiff_t i = 0;
  for (; i + 8 <= n; i += 8) {
    uint64_t eight = 0;
    for (int j = 0; j < 8; ++j) eight |= uint64_t{value(i + j)} << 8 * j;
    storeWord(eight, row + x + i);
  }
  for (; i < n; ++i) row[x + i] = value(i);
}

/// Whole bytes: blocks begin at the first bit of one.
template <int bits>
void storeBlock(const Bits<bits>& destination, const PixelBlock& k, ptrdiff_t n,
                Vek8u* __restrict row, int x) {
  constexpr int perByte = 8 / bits;
  static_assert(blockPixels % perByte == 0);
  ptrdiff_t i = 0;
  for (; i + perByte <= n; i += perByte) {
    int byte = 0;
    for (int j = 0; j < perByte; ++j) byte = byte << bits | k.channel[0][i + j];
    row[(x + i) / perByte] = static_cast<Vek8u>(byte);
  }
  for (; i < n; ++i) {
    const int index = k.channel[0][i];
    destination.store(row, x + static_cast<int>(i), &index);
  }
}

/// In vectors, which store 16 bits at a time.
template <class Format>
void storeBlock(const Pixels16<Format>&, const PixelBlock& k, ptrdiff_t n, Vek8u* __restrict row,
                int x) {
  Vek8u* const to = row + ptrdiff_t{x} * Format::bytes;
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek16u red = k.channel[0][i], green = k.channel[1][i], blue = k.channel[2][i];
    const int word = red << Format::rPos | green << Format::gPos | blue << Format::bPos;
    storeWord(static_cast<Vek16u>(word), to + 2 * i);
  }
}

/// A row in vectors.
template <class Destination>
void orderInBlocks(const Destination& destination, const Vek8u* src, int width,
                   const Vek8u* thresholdRow, int originX, Vek8u* dst) {
  constexpr int channels = Destination::channels;
  Vek8u threshold[blockPixels];
  for (int x = 0; x < blockPixels; ++x) threshold[x] = thresholdRow[(x + originX) & 7];
  forEachBlock(width, [&](ptrdiff_t x, ptrdiff_t n) {
    PixelBlock in, k;
    if constexpr (channels == 3) separate(src + 3 * x, n, in);
    for (int c = 0; c < channels; ++c) {
      orderSamples(channels == 3 ? in.channel[c] : src + x, threshold,
                   static_cast<Vek16u>(destination.levels(c).count - 1), n, k.channel[c]);
    }
    storeBlock(destination, k, n, dst, static_cast<int>(x));
  });
}

#if defined(__SSE2__)

// Pixels of 16 bits, without arrays between the steps: a third of the time.

/// A field of a pixel, in lanes that have a sample in their high halves. With b = 256 t / steps + 1 the
/// index (v steps + t) / 255 is (256 v + b) a >> (16 + shift), where a is steps 2^(8 + shift) / 255 rounded
/// up and the sum is limited to 16 bits: tried for every v and every t.
template <int bits, int position>
class FieldLanes {
 public:
  /// For rows that begin at a column of the matrix.
  explicit FieldLanes(int column) {
    for (int y = 0; y < matrixSize; ++y) {
      for (int x = 0; x < vectorPixels; ++x) {
        const int t = thresholds.at[y][(x + column) & 7];
        offsets_[y][x & 1][x / 2] = static_cast<Vek16u>(256 * t / steps + 1);
      }
    }
  }
  /// The field of the even (0) or the odd (1) ones of sixteen pixels in a row of the matrix.
  __m128i of(__m128i samples, int y, int odd) const {
    const __m128i offset = _mm_load_si128(reinterpret_cast<const __m128i*>(offsets_[y][odd]));
    __m128i v = _mm_mulhi_epu16(_mm_adds_epu16(samples, offset), _mm_set1_epi16(factor));
    v = _mm_srli_epi16(v, shift - position);
    return position == 0 ? v : _mm_and_si128(v, _mm_set1_epi16(mask));
  }

 private:
  static constexpr int steps = (1 << bits) - 1, shift = std::max(position, 8);
  static constexpr auto factor = static_cast<Vek16s>(((steps << (8 + shift)) + 254) / 255);
  static constexpr auto mask = static_cast<Vek16s>(steps << position);

  alignas(16) Vek16u offsets_[matrixSize][2][vectorPixels / 2];
};

template <class Format>
struct PixelLanes {
  FieldLanes<Format::rBits, Format::rPos> first;
  FieldLanes<Format::gBits, Format::gPos> second;
  FieldLanes<Format::bBits, Format::bPos> third;

  explicit PixelLanes(int column) : first(column), second(column), third(column) {}

  /// Writes the first of n pixels, and returns how many.
  int order(const Vek8u* src, int n, int y, Vek8u* dst) const {
    const __m128i zero = _mm_setzero_si128();
    int x = 0;
    for (; x <= n - vectorPixels; x += vectorPixels) {
      const auto load = [&](int i) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 3 * x + 16 * i));
      };
      __m128i a = load(0), b = load(1), c = load(2);
      shufflePixels<3>(a, b, c);  // the last round would put even and odd pixels together
      const __m128i even = _mm_or_si128(first.of(_mm_unpacklo_epi8(zero, a), y, 0),
                                        _mm_or_si128(second.of(_mm_unpackhi_epi8(zero, a), y, 0),
                                                     third.of(_mm_unpacklo_epi8(zero, b), y, 0)));
      const __m128i odd = _mm_or_si128(first.of(_mm_unpackhi_epi8(zero, b), y, 1),
                                       _mm_or_si128(second.of(_mm_unpacklo_epi8(zero, c), y, 1),
                                                    third.of(_mm_unpackhi_epi8(zero, c), y, 1)));
      const auto to = reinterpret_cast<__m128i*>(dst + 2 * x);
      _mm_storeu_si128(to, _mm_unpacklo_epi16(even, odd));
      _mm_storeu_si128(to + 1, _mm_unpackhi_epi16(even, odd));
    }
    return x;
  }
};

#endif

/// Pixels that vectors take without arrays: for most destinations none.
template <class Destination>
struct WholeVectors {
  explicit WholeVectors(int) {}
  static int order(const Vek8u*, int, int, Vek8u*) { return 0; }
};
#if defined(__SSE2__)
template <class Format>
struct WholeVectors<Pixels16<Format>> : PixelLanes<Format> {
  using PixelLanes<Format>::PixelLanes;
};
#endif

template <class Destination>
void order(const Picture& picture, int levels, VekiPoint origin) {
  VEK_ASSERT(picture.width >= 1 && picture.height >= 1 && levels >= 2 && levels <= 256);
  constexpr int channels = Destination::channels;
  const Destination destination(levels);
  const int originX = origin.x & 7;
  const WholeVectors<Destination> vectors(originX);
  for (int y = 0; y < picture.height; ++y) {
    const Vek8u* const src = picture.src + y * picture.srcStep;
    Vek8u* const dst = picture.dst + y * picture.dstStep;
    const int matrixRow = (y + (origin.y & 7)) & 7;
    const Vek8u* const row = thresholds.at[matrixRow];
    if constexpr (hasWords) {
      // Vectors are whole periods of the matrix.
      const int done = vectors.order(src, picture.width, matrixRow, dst);
      if (done < picture.width) {
        orderInBlocks(destination, src + ptrdiff_t{channels} * done, picture.width - done, row,
                      originX, dst + ptrdiff_t{2} * done);
      }
      continue;
    }
    for (int x = 0; x < picture.width; ++x) {
      const int threshold = row[(x + originX) & 7];
      int k[channels];
      for (int c = 0; c < channels; ++c) {
        const int steps = destination.levels(c).count - 1;
        k[c] = (src[ptrdiff_t{x} * channels + c] * steps + threshold) / 255;
      }
      destination.store(dst, x, k);
    }
  }
}

/// Errors are in 1/16 of a grey value, and at most 2040: a sample is at most half the distance of two
/// levels away from one (16 * 127 at two levels, and 8 from rounding). What is beyond black or white
/// is passed on as it is. A sum of 16 errors is thus at most 32640.
template <class Destination>
[[gnu::noinline]] void diffuseTo(const Destination& destination, const Picture& picture) {
  constexpr int channels = Destination::channels, samples = Destination::samples;
  VEK_ASSERT(picture.width >= 1 && picture.height >= 1);
  VEK_ASSERT(picture.width * channels <= mostErrors<channels>);
  // Those of the row above, which the row's own replace from left to right, and of nothing behind it.
  Vek16s errors[mostErrors<channels> + channels];
  memset(errors, 0, sizeof(Vek16s) * static_cast<size_t>((picture.width + 1) * channels));
  for (int y = 0; y < picture.height; ++y) {
    const Vek8u* const src = picture.src + y * picture.srcStep;
    Vek8u* const dst = picture.dst + y * picture.dstStep;
    int left[channels] = {}, aboveLeft[channels] = {};
    for (int x = 0; x < picture.width; ++x) {
      int k[channels];
      for (int c = 0; c < channels; ++c) {
        const GreyLevels& grey = destination.levels(c);
        const int at = x * channels + c, above = errors[at], aboveRight = errors[at + channels];
        const int passed = 7 * left[c] + aboveLeft[c] + 5 * above + 3 * aboveRight;
        const int sample = src[ptrdiff_t{x} * samples + destination.first + c];
        const int wanted = 16 * sample + ((passed + 8) >> 4);
        const int rounded = (wanted + 8) >> 4;
        const int clamped = rounded < 0 ? 0 : rounded > 255 ? 255 : rounded;
        k[c] = (clamped * (grey.count - 1) + 127) / 255;
        left[c] = wanted - 16 * grey.values[k[c]];
        aboveLeft[c] = above;
        errors[at] = static_cast<Vek16s>(left[c]);
      }
      destination.store(dst, x, k);
    }
  }
}

template <class Destination>
void diffuse(const Picture& picture, int levels, VekiPoint) {
  VEK_ASSERT(levels >= 2 && levels <= 256);
  diffuseTo(Destination(levels), picture);
}

template <class Format>
void diffusePixels(const Picture& picture, int levels, VekiPoint) {
  using Pixels = Pixels16<Format>;
  if (picture.width <= mostWidthTogether) return diffuseTo(Pixels(levels), picture);
  constexpr int shifts[] = {Format::rPos, Format::gPos, Format::bPos};
  for (int c = 0; c < 3; ++c) diffuseTo(Field{Pixels::grey[c], c, shifts[c]}, picture);
}

}  // namespace

constexpr DitherKernels orderKernels = {.bytes = order<Bytes>,
                                        .oneBit = order<Bits<1>>,
                                        .twoBits = order<Bits<2>>,
                                        .fourBits = order<Bits<4>>,
                                        .rgb565 = order<Pixels16<Rgb565>>,
                                        .rgb555 = order<Pixels16<Rgb555>>,
                                        .rgb444 = order<Pixels16<Rgb444>>};

constexpr DitherKernels diffuseKernels = {.bytes = diffuse<Bytes>,
                                          .oneBit = diffuse<Bits<1>>,
                                          .twoBits = diffuse<Bits<2>>,
                                          .fourBits = diffuse<Bits<4>>,
                                          .rgb565 = diffusePixels<Rgb565>,
                                          .rgb555 = diffusePixels<Rgb555>,
                                          .rgb444 = diffusePixels<Rgb444>};

}  // namespace vek::portable
