#include "camera/preview/resample_body.h"
#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#if defined(__AVX512VBMI__)
#include <immintrin.h>
#endif

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// A sample and its right neighbour are looked up as the two bytes of a word, in windows of the row:
// one permutation of a window gives a block of them. Their places within the windows do not depend
// on the row.

constexpr hn::ScalableTag<Vek16u> uwords;
constexpr hn::ScalableTag<Vek16s> words;
constexpr hn::Rebind<Vek8u, decltype(words)> narrowBytes;
using UWords = hn::Vec<decltype(uwords)>;
using Words = hn::Vec<decltype(words)>;
constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(words));

ptrdiff_t columnOf(const Columns& c, ptrdiff_t sample) {
  return (c.phase + static_cast<Vek32u>(sample) * c.step) >> 16;
}

/// `n` samples from `sample` on look into the window at column `first`.
void fillPairs(const Columns& c, ptrdiff_t sample, ptrdiff_t n, ptrdiff_t first,
               Vek16u* __restrict pairs) {
  const Vek32u base = c.phase + static_cast<Vek32u>(sample) * c.step, step = c.step;
  const Vek32u origin = static_cast<Vek32u>(first), last = static_cast<Vek32u>(c.last);
  for (Vek32u i = 0; i < static_cast<Vek32u>(n); ++i) {
    const Vek32u left = (base + i * step) >> 16;
    const Vek32u right = left < last ? left + 1 : left;
    pairs[i] = static_cast<Vek16u>((left - origin) | (right - origin) << 8);
  }
}

void fillFractions(Columns& c) {
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const Vek32u base = c.phase + static_cast<Vek32u>(c.start(k)) * c.step, step = c.step;
    Vek16u* __restrict const fractions = c.fractions + k * c.block;
    for (Vek32u i = 0; i < static_cast<Vek32u>(c.block); ++i) {
      fractions[i] = static_cast<Vek16u>(base + i * step);
    }
  }
}

/// Sets all but the tables, for blocks of `block` samples.
void describe(Columns& c, bool neighbours) {
  const ptrdiff_t lastLeft = columnOf(c, c.n - 1);
  c.last = neighbours && lastLeft < c.lastColumn ? lastLeft + 1 : lastLeft;
  c.blended = neighbours && ((c.phase | c.step) & 0xFFFF) != 0;
  c.everyOther = c.step == 2 << 16;
}

void setBlock(Columns& c, ptrdiff_t block) {
  c.block = block;
  c.blocks = (c.n + block - 1) / block;
}

#if defined(__AVX512VBMI__)

constexpr ptrdiff_t window = 128;

/// As many samples at a time as lie within two vectors.
void prepare(Columns& c, bool neighbours) {
  c.block = 0;
  if (c.n == 0) return;
  describe(c, neighbours);
  ptrdiff_t block = lanes;
  const auto reach = [&] { return ((Vek64s{c.step} * (block - 1)) >> 16) + 2; };
  while (reach() > window - 1) block /= 2;
  setBlock(c, block);
  c.passes = reach() > window / 2 - 1 ? 2 : 1;
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const ptrdiff_t sample = c.start(k);
    c.first[k] = static_cast<Vek32s>(columnOf(c, sample));
    if (c.everyOther && k + 1 < c.blocks) continue;
    fillPairs(c, sample, c.n < block ? c.n : block, c.first[k], c.pairs + k * block);
  }
  if (c.blended) fillFractions(c);
}

/// `count` bytes, 64 at most.
__m512i loadUpTo(const Vek8u* at, ptrdiff_t count) {
  if (HWY_LIKELY(count >= 64)) return _mm512_loadu_si512(at);
  if (count <= 0) return _mm512_setzero_si512();
  return _mm512_maskz_loadu_epi8(~__mmask64{0} >> (64 - count), at);
}

/// Block k of samples and their neighbours. It keeps what it needs of the columns: a destination of
/// bytes might be part of them, for all that the compiler knows.
struct Look {
  const Vek32s* const first;
  const Vek16u* const pairs;
  const ptrdiff_t block, plain, end;
  const bool twoVectors;

  explicit Look(const Columns& c)
      : first(c.first),
        pairs(c.pairs),
        block(c.block),
        plain(c.everyOther ? c.blocks - 1 : 0),
        end(c.last + 1),
        twoVectors(c.passes == 2) {}

  UWords at(const Vek8u* row, ptrdiff_t k) const {
    const Vek8u* const from = row + first[k];
    if (k < plain) return UWords{_mm512_loadu_si512(from)};
    const __m512i places = _mm512_loadu_si512(pairs + k * block);
    const ptrdiff_t rest = end - first[k];
    if (!twoVectors) return UWords{_mm512_permutexvar_epi8(places, loadUpTo(from, rest))};
    return UWords{
        _mm512_permutex2var_epi8(loadUpTo(from, rest), places, loadUpTo(from + 64, rest - 64))};
  }
};

#else

constexpr hn::Repartition<Vek8u, decltype(words)> bytes;
constexpr ptrdiff_t window = 16;  // of each 128-bit block
constexpr Vek16u nothing = 0x8080;

/// The samples of a 128-bit block lie in as many windows as there are passes.
void prepare(Columns& c, bool neighbours) {
  c.block = 0;
  if (c.n == 0) return;
  describe(c, neighbours);
  if (c.step > 8 << 16 || c.last < window - 1) return;
  setBlock(c, lanes);
  c.passes = c.step <= 2 << 16 ? 1 : c.step <= 4 << 16 ? 2 : 4;
  const ptrdiff_t each = 8 / c.passes, windows = lanes / each;
  if (c.passes > 1) {
    for (Vek16u& pair : c.pairs) pair = nothing;
  }
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    for (ptrdiff_t w = 0; w < windows; ++w) {
      // What a row shorter than a block lacks is looked up, too, in its last window.
      const ptrdiff_t sample = c.start(k) + w * each, rest = c.n - sample;
      const ptrdiff_t left = columnOf(c, rest > 0 ? sample : c.n - 1);
      const ptrdiff_t first = left + window <= c.last + 1 ? left : c.last + 1 - window;
      c.first[k * windows + w] = static_cast<Vek32s>(first);
      if (rest > 0 && !(c.everyOther && k + 1 < c.blocks)) {
        fillPairs(c, sample, rest < each ? rest : each, first,
                  c.pairs + w % c.passes * Columns::most + k * lanes + w * each);
      }
    }
  }
  if (c.blended) fillFractions(c);
}

/// One window for each 128-bit block, `distance` entries apart.
template <class Tag>
hn::Vec<Tag> loadWindows(Tag tag, const Vek8u* row, const Vek32s* first, ptrdiff_t distance) {
  if constexpr (hn::MaxLanes(Tag()) == window) {
    return hn::LoadU(tag, row + *first);
  } else {
    constexpr hn::Half<Tag> half;
    constexpr ptrdiff_t blocks = static_cast<ptrdiff_t>(hn::MaxLanes(half)) / window;
    return hn::Combine(tag, loadWindows(half, row, first + blocks * distance, distance),
                       loadWindows(half, row, first, distance));
  }
}

/// Block k of samples and their neighbours. It keeps what it needs of the columns: a destination of
/// bytes might be part of them, for all that the compiler knows.
struct Look {
  const Vek32s* const first;
  const Vek16u* const pairs;
  const ptrdiff_t passes, plain;

  explicit Look(const Columns& c)
      : first(c.first), pairs(c.pairs), passes(c.passes), plain(c.everyOther ? c.blocks - 1 : 0) {}

  UWords at(const Vek8u* row, ptrdiff_t k) const {
    const Vek32s* const windows = first + k * (lanes / 8) * passes;
    if (k < plain) return hn::BitCast(uwords, hn::LoadU(bytes, row + *windows));
    const auto lookUp = [&](ptrdiff_t pass) {
      const auto samples = loadWindows(bytes, row, windows + pass, passes);
      const auto places = hn::LoadU(uwords, pairs + pass * Columns::most + k * lanes);
      return hn::BitCast(uwords, hn::TableLookupBytesOr0(samples, hn::BitCast(bytes, places)));
    };
    UWords result = lookUp(0);
    for (ptrdiff_t pass = 1; pass < passes; ++pass) result = hn::Or(result, lookUp(pass));
    return result;
  }
};

#endif

/// Stores the lanes of blockOf(k) as bytes, for all blocks k.
template <class BlockOf>
void forEachLookUp(const Columns& c, Vek8u* dst, BlockOf blockOf) {
  const ptrdiff_t n = c.n, block = c.block, blocks = c.blocks;
  const auto samplesOf = [&](ptrdiff_t k) {
    return hn::DemoteTo(narrowBytes, hn::BitCast(words, blockOf(k)));
  };
  // What is stored too much the next block overwrites.
  ptrdiff_t k = 0;
  for (; k * block + lanes <= n; ++k) hn::StoreU(samplesOf(k), narrowBytes, dst + k * block);
  for (; k < blocks; ++k) {
    const ptrdiff_t i = c.start(k);
    if (i + lanes <= n) {
      hn::StoreU(samplesOf(k), narrowBytes, dst + i);
    } else {
      alignas(64) Vek8u rest[lanes];
      hn::Store(samplesOf(k), narrowBytes, rest);
      memcpy(dst + i, rest, static_cast<size_t>(n < block ? n : block));
    }
  }
}

UWords leftOf(UWords pairs) {
  return hn::And(pairs, hn::Set(uwords, 0xFF));
}

void nearestVectors(const Vek8u* row, const Columns& c, Vek8u* dst) {
  if (c.block == 0) return nearest(row, c, dst);
  const Look look(c);
  forEachLookUp(c, dst, [&](ptrdiff_t k) { return leftOf(look.at(row, k)); });
}

/// a + (((b - a) * fraction) >> 16). The high product takes the fraction as signed; where that made
/// it 65536 too small, b - a is added.
Words blendWords(Words a, Words b, Words fraction) {
  const Words difference = hn::Sub(b, a);
  const Words missing = hn::And(difference, hn::BroadcastSignBit(fraction));
  return hn::Add(hn::Add(a, missing), hn::MulHigh(difference, fraction));
}

template <bool across, bool down>
void blendRows(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c, Vek8u* dst) {
  const Look look(c);
  const Vek16u* const fractions = c.fractions;
  const ptrdiff_t block = c.block;
  const Words rowFraction = hn::Set(words, static_cast<Vek16s>(fy));
  forEachLookUp(c, dst, [&](ptrdiff_t k) {
    const auto sampled = [&](const Vek8u* row) {
      const UWords pairs = look.at(row, k);
      const Words left = hn::BitCast(words, leftOf(pairs));
      if constexpr (!across) return left;
      const Words right = hn::BitCast(words, hn::ShiftRight<8>(pairs));
      return blendWords(left, right, hn::BitCast(words, hn::LoadU(uwords, fractions + k * block)));
    };
    if constexpr (!down) return hn::BitCast(uwords, sampled(top));
    return hn::BitCast(uwords, blendWords(sampled(top), sampled(bottom), rowFraction));
  });
}

void bilinearVectors(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c,
                     Vek8u* dst) {
  if (c.block == 0) return bilinear(top, bottom, fy, c, dst);
  constexpr decltype(&bilinearVectors) kernels[2][2] = {
      {blendRows<false, false>, blendRows<false, true>},
      {blendRows<true, false>, blendRows<true, true>}};
  kernels[c.blended][fy != 0](top, bottom, fy, c, dst);
}

}  // namespace

constexpr ResampleRows resampleRows = {prepare, nearestVectors, bilinearVectors};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {

void prepare(Columns& /*columns*/, bool /*neighbours*/) {}

}  // namespace

constexpr ResampleRows resampleRows = {prepare, nearest, bilinear};

}  // namespace vek::VEK_LEVEL

#endif
