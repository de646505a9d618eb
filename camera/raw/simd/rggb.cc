#include <string.h>

#include "camera/raw/rggb_kernels.h"
#include "camera/raw/simd/alternate_pixels.h"
#include "core/assert.h"
#include "core/kernel/byte_table.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

static_assert(vectorBytes <= readAhead);

// ---- Gamma ------------------------------------------------------------------------------------

#if VEK_HAVE_BYTE_TABLE

/// The first `n` of the pairs src[k * 2 * stride], src[k * 2 * stride + 1], at most 16, in 32-bit
/// lanes. What lies between the pairs is not read.
template <int stride>
__m512i loadPairs(const Vek16u* src, ptrdiff_t n) {
  constexpr int each = 16 / stride;
  constexpr Vek32u wanted = stride == 1 ? 0xFFFF : stride == 2 ? 0x5555 : 0x1111;
  __m512i pairs[stride];
  for (int i = 0; i < stride; ++i) {
    const ptrdiff_t rest = n - i * each;
    const Vek32u valid = rest >= each ? 0xFFFF : rest <= 0 ? 0 : (1u << (rest * stride)) - 1;
    pairs[i] = _mm512_maskz_loadu_epi32(static_cast<__mmask16>(wanted & valid), src + 32 * i);
  }
  const __m512i alternate =
      _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  for (int count = stride; count > 1; count /= 2) {
    for (int i = 0; i < count / 2; ++i) {
      pairs[i] = _mm512_permutex2var_epi32(pairs[2 * i], alternate, pairs[2 * i + 1]);
    }
  }
  return pairs[0];
}

/// Positions 2j + odd of the first and the second samples of 32 pairs.
__m512i sampleBytes(int odd) {
  alignas(64) Vek8u index[64];
  for (int i = 0; i < 64; ++i) index[i] = static_cast<Vek8u>(i % 32 * 4 + i / 32 * 2 + odd);
  return _mm512_load_si512(index);
}

/// 1024 entries, four tables of 256.
class RawTable {
 public:
  explicit RawTable(const Vek8u* gamma)
      : tables_{ByteTable(gamma), ByteTable(gamma + 256), ByteTable(gamma + 512),
                ByteTable(gamma + 768)},
        low_(sampleBytes(0)),
        high_(sampleBytes(1)) {}

  /// The entries of the first samples of 32 pairs, then those of the second ones.
  __m512i at(__m512i pairs, __m512i morePairs) const {
    const __m512i low = _mm512_permutex2var_epi8(pairs, low_, morePairs);
    const __m512i high = _mm512_permutex2var_epi8(pairs, high_, morePairs);
    const __mmask64 bit7 = _mm512_movepi8_mask(low);
    const __mmask64 bit8 = _mm512_movepi8_mask(_mm512_slli_epi16(high, 7));
    const __mmask64 bit9 = _mm512_movepi8_mask(_mm512_slli_epi16(high, 6));
    return _mm512_mask_blend_epi8(
        bit9, _mm512_mask_blend_epi8(bit8, tables_[0].at(low, bit7), tables_[1].at(low, bit7)),
        _mm512_mask_blend_epi8(bit8, tables_[2].at(low, bit7), tables_[3].at(low, bit7)));
  }

 private:
  ByteTable tables_[4];
  __m512i low_, high_;
};

/// Pairs that are `stride` pairs apart. AVX-512 masks what is loaded and stored, so the last block needs
/// no copies.
template <int stride>
void applyGammaTo(const Vek16u* src, const Vek8u* gamma, ptrdiff_t n, Vek8u* first, Vek8u* second) {
  const RawTable table(gamma);
  const auto block = [&](ptrdiff_t k, ptrdiff_t rest) {
    const Vek16u* const from = src + 2 * stride * k;
    const __m512i mapped =
        table.at(loadPairs<stride>(from, rest), loadPairs<stride>(from + 32 * stride, rest - 16));
    const Vek32u valid = rest >= 32 ? ~0u : (1u << rest) - 1;
    _mm256_mask_storeu_epi8(first + k, valid, _mm512_castsi512_si256(mapped));
    _mm256_mask_storeu_epi8(second + k, valid, _mm512_extracti64x4_epi64(mapped, 1));
  };
  ptrdiff_t k = 0;
  for (; k + 32 <= n; k += 32) block(k, 32);
  if (k < n) block(k, n - k);
}

void applyGamma(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, ptrdiff_t n, Vek8u* first,
                Vek8u* second) {
  VEK_ASSERT(period == 2 || period == 4 || period == 8);
  const auto apply = period == 2   ? applyGammaTo<1>
                     : period == 4 ? applyGammaTo<2>
                                   : applyGammaTo<4>;
  apply(src, gamma, n, first, second);
}

#else

constexpr hn::Full128<Vek8u> u8x16;
using V8ux16 = hn::Vec<decltype(u8x16)>;

/// Lanes i .. 15 of a group of look-ups. They are collected in registers, since storing single bytes
/// would take longer than the look-ups. The two samples of a pair are loaded together.
template <size_t i>
void lookUp(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, V8ux16& first,
            V8ux16& second) {
  if constexpr (i < 16) {
    constexpr Vek32u mask = rawCodeMask << 16 | rawCodeMask;
    Vek32u pair;
    memcpy(&pair, src + static_cast<ptrdiff_t>(i) * period, sizeof(pair));
    pair &= mask;
    first = hn::InsertLane(first, i, gamma[pair & 0xFFFF]);
    second = hn::InsertLane(second, i, gamma[pair >> 16]);
    lookUp<i + 1>(src, period, gamma, first, second);
  }
}

/// Look-ups are scalar, so the last ones are simply made one by one.
void applyGamma(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, ptrdiff_t n, Vek8u* first,
                Vek8u* second) {
  VEK_ASSERT(period == 2 || period == 4 || period == 8);
  ptrdiff_t k = 0;
  for (; k + 16 <= n; k += 16) {
    V8ux16 a = hn::Zero(u8x16), b = a;
    lookUp<0>(src + k * period, period, gamma, a, b);
    hn::StoreU(a, u8x16, first + k);
    hn::StoreU(b, u8x16, second + k);
  }
  if (k < n) {
    portable::rggbKernels.applyGamma(src + k * period, period, gamma, n - k, first + k, second + k);
  }
}

#endif

// ---- Averages ---------------------------------------------------------------------------------

/// (a + b + c + d + 2) >> 2 from averages that round up. Their average is one too much where it rounds up
/// although ab or cd was rounded up already: 0, 1, 2, 2 give 1 and 2, then 2, but their sum of 5 makes 1.
V8u average4(V8u a, V8u b, V8u c, V8u d) {
  const V8u ab = hn::AverageRound(a, b);
  const V8u cd = hn::AverageRound(c, d);
  const V8u rounded = hn::Or(hn::Xor(a, b), hn::Xor(c, d));
  const V8u excess = hn::And(hn::And(rounded, hn::Xor(ab, cd)), hn::Set(u8, 1));
  return hn::Sub(hn::AverageRound(ab, cd), excess);
}

/// One pixel each of `vectorBytes` blocks.
struct Pixels {
  V8u r, g, b;
};

Pixels average(const Pixels& p, const Pixels& q) {
  return {hn::AverageRound(p.r, q.r), hn::AverageRound(p.g, q.g), hn::AverageRound(p.b, q.b)};
}

Pixels average(const Pixels& p, const Pixels& q, const Pixels& s, const Pixels& t) {
  return {average4(p.r, q.r, s.r, t.r), average4(p.g, q.g, s.g, t.g), average4(p.b, q.b, s.b, t.b)};
}

// ---- The matrix -------------------------------------------------------------------------------

/// A row of the matrix in signed bytes: each coefficient is 64 * high + low with low in -32 .. 31. For
/// example, 143 is 64 * 2 + 15 and -107 is 64 * -2 + 21. The factors of R and G lie beside each other,
/// and so do those of B and of a constant 128, which carries the offset of chroma: 128 * 4 * 64 is
/// 32768.
struct Coefficients {
  V8u highRG, highB1, lowRG, lowB0;

  Coefficients(const Vek16s* row, int offset)
      : highRG(pair(high(row[0]), high(row[1]))),
        highB1(pair(high(row[2]), offset)),
        lowRG(pair(low(row[0]), low(row[1]))),
        lowB0(pair(low(row[2]), 0)) {}

  /// Whether the sums stay within 16 bits: that of the high parts is then at most 124 * 255 + 512 in
  /// magnitude, that of the low ones 3 * 32 * 255, which adds 3 * 32 * 255 / 64 to the former.
  static bool fits(const Vek16s* row) {
    return magnitude(high(row[0])) + magnitude(high(row[1])) + magnitude(high(row[2])) <= 124;
  }

 private:
  static int high(int c) { return (c + 32) >> 6; }
  static int low(int c) { return c - 64 * high(c); }
  static int magnitude(int v) { return v < 0 ? -v : v; }
  static V8u pair(int even, int odd) {
    return hn::BitCast(u8, hn::Set(s16, static_cast<Vek16s>((even & 255) | odd * 256)));
  }
};

struct Matrix {
  Coefficients y, cb, cr;

  explicit Matrix(const Vek16s* matrix) : y(matrix, 0), cb(matrix + 3, 4), cr(matrix + 6, 4) {}

  static bool fits(const Vek16s* matrix) {
    return Coefficients::fits(matrix) && Coefficients::fits(matrix + 3) &&
           Coefficients::fits(matrix + 6);
  }
};

/// `vectorBytes` pixels, ready to be multiplied: R beside G and B beside 128, in two halves.
class PairedPixels {
 public:
  explicit PairedPixels(const Pixels& p)
      : rg_{hn::InterleaveLower(u8, p.r, p.g), hn::InterleaveUpper(u8, p.r, p.g)},
        b1_{hn::InterleaveLower(u8, p.b, hn::Set(u8, 128)),
            hn::InterleaveUpper(u8, p.b, hn::Set(u8, 128))} {}

  V8u component(const Coefficients& c) const {
    return packClamped(halfComponent(c, 0), halfComponent(c, 1));
  }

 private:
  /// floor((64 * high + low) / 256) = floor((high + floor(low / 64)) / 4).
  V16s halfComponent(const Coefficients& c, int i) const {
    const V16s high = hn::Add(sumOfPairs(rg_[i], c.highRG), sumOfPairs(b1_[i], c.highB1));
    const V16s low = hn::Add(sumOfPairs(rg_[i], c.lowRG), sumOfPairs(b1_[i], c.lowB0));
    return hn::ShiftRight<2>(hn::Add(high, hn::ShiftRight<6>(low)));
  }

  V8u rg_[2], b1_[2];
};

/// The pixels of `vectorBytes` blocks: upper left, upper right, lower left, lower right.
struct Block {
  Pixels p00, p01, p10, p11;
};

template <ChromaShare share>
void storeBlock(const Block& p, const Matrix& m, ptrdiff_t k, const BlockRow& out) {
  const auto luma = [&](const Pixels& left, const Pixels& right, Vek8u* dst) {
    hn::StoreInterleaved2(PairedPixels(left).component(m.y), PairedPixels(right).component(m.y), u8,
                          dst);
  };
  luma(p.p00, p.p01, out.luma[0] + 2 * k);
  luma(p.p10, p.p11, out.luma[1] + 2 * k);
  const auto chroma = [&](const Pixels& pixels, int row) {
    const PairedPixels c(pixels);
    hn::StoreU(c.component(m.cb), u8, out.cb[row] + k);
    hn::StoreU(c.component(m.cr), u8, out.cr[row] + k);
  };
  if constexpr (share == ChromaShare::row) {
    chroma(average(p.p00, p.p01), 0);
    chroma(average(p.p10, p.p11), 1);
  } else if constexpr (share == ChromaShare::column) {
    const PairedPixels left(average(p.p00, p.p10)), right(average(p.p01, p.p11));
    hn::StoreInterleaved2(left.component(m.cb), right.component(m.cb), u8, out.cb[0] + 2 * k);
    hn::StoreInterleaved2(left.component(m.cr), right.component(m.cr), u8, out.cr[0] + 2 * k);
  } else {
    chroma(average(p.p00, p.p01, p.p10, p.p11), 0);
  }
}

/// storeBlock for the last, incomplete block of a row: only the `rest` first ones are written. This
/// copies results alone, unlike copiedBlocks(), since the byte planes that they are made from may be
/// read ahead.
template <ChromaShare share>
void storeRest(const Block& p, const Matrix& m, ptrdiff_t k, ptrdiff_t rest, const BlockRow& out) {
  alignas(64) Vek8u buffer[6][2 * vectorBytes];
  storeBlock<share>(p, m, 0,
                    {{buffer[0], buffer[1]}, {buffer[2], buffer[3]}, {buffer[4], buffer[5]}});
  const auto copy = [&](Vek8u* dst, int from, ptrdiff_t n) {
    memcpy(dst, buffer[from], static_cast<size_t>(n));
  };
  constexpr int across = share == ChromaShare::column ? 2 : 1;
  for (int i = 0; i < 2; ++i) copy(out.luma[i] + 2 * k, i, 2 * rest);
  for (int i = 0; i < (share == ChromaShare::row ? 2 : 1); ++i) {
    copy(out.cb[i] + across * k, 2 + i, across * rest);
    copy(out.cr[i] + across * k, 4 + i, across * rest);
  }
}

/// Converts n blocks; blockAt(k) gives those of blocks k .. k + vectorBytes - 1.
template <ChromaShare share, class BlockAt>
void convertRow(ptrdiff_t n, const Vek16s* matrix, const BlockRow& out, BlockAt blockAt) {
  const Matrix m(matrix);
  ptrdiff_t k = 0;
  for (; k + vectorBytes <= n; k += vectorBytes) storeBlock<share>(blockAt(k), m, k, out);
  if (k < n) storeRest<share>(blockAt(k), m, k, n - k, out);
}

/// The interior rule for quads k .. k + vectorBytes - 1.
HWY_INLINE Block interiorBlock(const SplitRow rows[4], ptrdiff_t k) {
  const SplitRow a = rows[0], b = rows[1], c = rows[2], d = rows[3];
  const auto at = [k](const Vek8u* row, int i = 0) { return hn::LoadU(u8, row + k + i); };
  const V8u red = at(b.even), redRight = at(b.even, 1), redBelow = at(d.even);
  const V8u redAcross = at(d.even, 1);
  const V8u greenR = at(b.odd), greenB = at(c.even);
  const V8u blue = at(c.odd), blueLeft = at(c.odd, -1), blueAbove = at(a.odd);
  const V8u blueAcross = at(a.odd, -1);
  return {{red, average4(at(a.even), at(b.odd, -1), greenR, greenB),
           average4(blueAcross, blueAbove, blueLeft, blue)},
          {hn::AverageRound(red, redRight), greenR, hn::AverageRound(blueAbove, blue)},
          {hn::AverageRound(red, redBelow), greenB, hn::AverageRound(blueLeft, blue)},
          {average4(red, redRight, redBelow, redAcross),
           average4(greenR, greenB, at(c.even, 1), at(d.odd)), blue}};
}

template <ChromaShare share>
void demosaic(const SplitRow rows[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  if (!Matrix::fits(matrix)) {
    return portable::rggbKernels.demosaic[static_cast<int>(share)](rows, n, matrix, out);
  }
  const SplitRow copies[4] = {rows[0], rows[1], rows[2], rows[3]};
  convertRow<share>(n, matrix, out, [=](ptrdiff_t k) { return interiorBlock(copies, k); });
}

template <bool isBgr>
void demosaicPixels(const SplitRow rows[4], ptrdiff_t n, Vek8u* upper, Vek8u* lower) {
  VEK_ASSERT(n >= 1);
  const SplitRow copies[4] = {rows[0], rows[1], rows[2], rows[3]};
  const auto channels = [](const Pixels& p) {
    return isBgr ? Channels{p.b, p.g, p.r} : Channels{p.r, p.g, p.b};
  };
  const auto store = [&](ptrdiff_t k, Vek8u* upperPixels, Vek8u* lowerPixels) {
    const Block p = interiorBlock(copies, k);
    storeAlternatePixels(channels(p.p00), channels(p.p01), upperPixels);
    storeAlternatePixels(channels(p.p10), channels(p.p11), lowerPixels);
  };
  ptrdiff_t k = 0;
  for (; k + vectorBytes <= n; k += vectorBytes) store(k, upper + 6 * k, lower + 6 * k);
  if (k == n) return;
  // As in storeRest(), results alone are copied.
  alignas(64) Vek8u buffer[2][6 * vectorBytes];
  store(k, buffer[0], buffer[1]);
  memcpy(upper + 6 * k, buffer[0], static_cast<size_t>(6 * (n - k)));
  memcpy(lower + 6 * k, buffer[1], static_cast<size_t>(6 * (n - k)));
}

template <ChromaShare share>
void convertQuads(const QuadRow pixels[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  if (!Matrix::fits(matrix)) {
    return portable::rggbKernels.convertQuads[static_cast<int>(share)](pixels, n, matrix, out);
  }
  convertRow<share>(n, matrix, out, [=](ptrdiff_t k) -> Block {
    const auto pixel = [k](const QuadRow& quad) -> Pixels {
      return {hn::LoadU(u8, quad.red + k),
              hn::AverageRound(hn::LoadU(u8, quad.green[0] + k), hn::LoadU(u8, quad.green[1] + k)),
              hn::LoadU(u8, quad.blue + k)};
    };
    return {pixel(pixels[0]), pixel(pixels[1]), pixel(pixels[2]), pixel(pixels[3])};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr RggbKernels rggbKernels = {
    .applyGamma = applyGamma,
    .demosaic = {demosaic<ChromaShare::row>, demosaic<ChromaShare::column>,
                 demosaic<ChromaShare::block>},
    .demosaicPixels = {demosaicPixels<false>, demosaicPixels<true>},
    .convertQuads = {convertQuads<ChromaShare::row>, convertQuads<ChromaShare::column>,
                     convertQuads<ChromaShare::block>}};

}  // namespace vek::VEK_LEVEL
