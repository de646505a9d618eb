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

/// Samples firstSample .. end - 1 look into the window at column `first`.
void fillPairs(const Columns& c, ptrdiff_t firstSample, ptrdiff_t end, ptrdiff_t first,
               Vek16u* __restrict pairs) {
  const Vek32u base = c.phase + static_cast<Vek32u>(firstSample) * c.step;
  const Vek32u origin = static_cast<Vek32u>(first), last = static_cast<Vek32u>(c.last);
  const Vek32u step = c.step;
  for (Vek32u i = 0; i < static_cast<Vek32u>(end - firstSample); ++i) {
    const Vek32u left = (base + i * step) >> 16;
    const Vek32u right = left < last ? left + 1 : left;
    pairs[firstSample + static_cast<ptrdiff_t>(i)] =
        static_cast<Vek16u>((left - origin) | (right - origin) << 8);
  }
}

void fillFractions(Columns& c) {
  const Vek32u phase = c.phase, step = c.step;
  for (Vek32u i = 0; i < static_cast<Vek32u>(c.n); ++i) {
    c.fractions[i] = static_cast<Vek16u>(phase + i * step);
  }
}

ptrdiff_t columnOf(const Columns& c, ptrdiff_t sample) {
  return (c.phase + static_cast<Vek32u>(sample) * c.step) >> 16;
}

#if defined(__AVX512VBMI__)

constexpr ptrdiff_t window = 128;

/// As many samples at a time as lie within two vectors.
void prepare(Columns& c, bool neighbours) {
  c.block = 0;
  if (c.n == 0) return;
  const ptrdiff_t lastLeft = columnOf(c, c.n - 1);
  c.last = neighbours && lastLeft < c.lastColumn ? lastLeft + 1 : lastLeft;
  c.block = lanes;
  const auto reach = [&] { return ((Vek64s{c.step} * (c.block - 1)) >> 16) + 2; };
  while (reach() > window - 1) c.block /= 2;
  c.passes = reach() > window / 2 - 1 ? 2 : 1;
  for (ptrdiff_t i = 0, k = 0; i < c.n; i += c.block, ++k) {
    c.first[k] = static_cast<Vek32s>(columnOf(c, i));
    fillPairs(c, i, i + c.block < c.n ? i + c.block : c.n, c.first[k], c.pairs);
  }
  c.blended = ((c.phase | c.step) & 0xFFFF) != 0;
  if (neighbours) fillFractions(c);
}

/// Bytes `at` .. at + 63 of a row; what lies behind `end` is not read.
__m512i loadUpTo(const Vek8u* at, ptrdiff_t count) {
  if (count >= 64) return _mm512_loadu_si512(at);
  if (count <= 0) return _mm512_setzero_si512();
  return _mm512_maskz_loadu_epi8(~__mmask64{0} >> (64 - count), at);
}

struct Look {
  const Columns& c;

  explicit Look(const Columns& columns) : c(columns) {}

  UWords at(const Vek8u* row, ptrdiff_t i, ptrdiff_t k) const {
    const ptrdiff_t first = c.first[k], rest = c.last + 1 - first;
    const __m512i places = _mm512_loadu_si512(c.pairs + i);
    const __m512i low = loadUpTo(row + first, rest);
    if (c.passes == 1) return UWords{_mm512_permutexvar_epi8(places, low)};
    const __m512i high = loadUpTo(row + first + 64, rest - 64);
    return UWords{_mm512_permutex2var_epi8(low, places, high)};
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
  const ptrdiff_t lastLeft = columnOf(c, c.n - 1);
  c.last = neighbours && lastLeft < c.lastColumn ? lastLeft + 1 : lastLeft;
  c.blended = ((c.phase | c.step) & 0xFFFF) != 0;
  c.passes = c.step <= 2 << 16 ? 1 : c.step <= 4 << 16 ? 2 : 4;
  if (c.step > 8 << 16 || c.last < window - 1) return;
  c.block = lanes;
  const ptrdiff_t each = 8 / c.passes;
  if (c.passes > 1) {
    for (Vek16u& pair : c.pairs) pair = nothing;
  }
  for (ptrdiff_t i = 0, k = 0; i < c.n; i += each, ++k) {
    const ptrdiff_t left = columnOf(c, i);
    const ptrdiff_t first = left + window <= c.last + 1 ? left : c.last + 1 - window;
    c.first[k] = static_cast<Vek32s>(first);
    fillPairs(c, i, i + each < c.n ? i + each : c.n, first, c.pairs + k % c.passes * Columns::most);
  }
  // The last block is looked up whole.
  const ptrdiff_t windows = (c.n + each - 1) / each, perBlock = lanes / each;
  for (ptrdiff_t k = windows; k % perBlock != 0; ++k) c.first[k] = c.first[windows - 1];
  if (neighbours) fillFractions(c);
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

struct Look {
  const Columns& c;

  explicit Look(const Columns& columns) : c(columns) {}

  UWords at(const Vek8u* row, ptrdiff_t i, ptrdiff_t k) const {
    const Vek32s* const first = c.first + k * (lanes / 8) * c.passes;
    UWords result = hn::Zero(uwords);
    for (int pass = 0; pass < c.passes; ++pass) {
      const auto samples = loadWindows(bytes, row, first + pass, c.passes);
      const auto places = hn::LoadU(uwords, c.pairs + pass * Columns::most + i);
      result =
          hn::Or(result,
                 hn::BitCast(uwords, hn::TableLookupBytesOr0(samples, hn::BitCast(bytes, places))));
    }
    return result;
  }
};

#endif

/// Calls blockOf(i, k) for blocks k of samples i .. i + block - 1 and stores their lanes as bytes.
template <class BlockOf>
void forEachLookUp(const Columns& c, Vek8u* dst, BlockOf blockOf) {
  for (ptrdiff_t i = 0, k = 0; i < c.n; i += c.block, ++k) {
    const auto samples = hn::DemoteTo(narrowBytes, hn::BitCast(words, blockOf(i, k)));
    if (c.n - i >= lanes) {  // what is too much is overwritten by the next block
      hn::StoreU(samples, narrowBytes, dst + i);
    } else {
      alignas(64) Vek8u rest[lanes];
      hn::Store(samples, narrowBytes, rest);
      memcpy(dst + i, rest, static_cast<size_t>(c.n - i < c.block ? c.n - i : c.block));
    }
  }
}

UWords leftOf(UWords pairs) {
  return hn::And(pairs, hn::Set(uwords, 0xFF));
}

void nearestVectors(const Vek8u* row, const Columns& c, Vek8u* dst) {
  if (c.block == 0) return nearest(row, c, dst);
  const Look look(c);
  forEachLookUp(c, dst, [&](ptrdiff_t i, ptrdiff_t k) { return leftOf(look.at(row, i, k)); });
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
  const Words rowFraction = hn::Set(words, static_cast<Vek16s>(fy));
  forEachLookUp(c, dst, [&](ptrdiff_t i, ptrdiff_t k) {
    const auto sampled = [&](const Vek8u* row) {
      const UWords pairs = look.at(row, i, k);
      const Words left = hn::BitCast(words, leftOf(pairs));
      if constexpr (!across) return left;
      const Words right = hn::BitCast(words, hn::ShiftRight<8>(pairs));
      return blendWords(left, right, hn::BitCast(words, hn::LoadU(uwords, c.fractions + i)));
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
