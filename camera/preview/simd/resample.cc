// Sampled rows by look-ups in registers. A window is a stretch of the row that one load brings, and one
// permutation of it gives a block of samples. The offsets of the samples within their windows are the
// same for all rows of a tile, so they are computed once, by prepare(). Nearest samples are looked up
// as bytes, blended ones together with their right neighbours as pairs of bytes; Entry, Vek8u or
// Vek16u, is the type of an offset or of a pair of offsets.
#include <string.h>

#include "camera/preview/resample_kernels.h"
#include "camera/preview/simd/neon_pick.h"
#include "camera/preview/simd/neon_resample.h"
#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <class Entry>
constexpr ptrdiff_t entriesPerVector = vectorBytes / static_cast<ptrdiff_t>(sizeof(Entry));

template <class Entry>
constexpr bool isPair = sizeof(Entry) == 2;

ptrdiff_t columnOf(const Columns& c, ptrdiff_t sample) {
  return (c.phase + static_cast<Vek32u>(sample) * c.step) >> 16;
}

/// The sample that block k of n samples begins with.
ptrdiff_t startOf(ptrdiff_t n, ptrdiff_t blockSize, ptrdiff_t k) {
  return k == 0 || (k + 1) * blockSize <= n ? k * blockSize : n - blockSize;
}
ptrdiff_t startOf(const Columns& c, ptrdiff_t k) {
  return startOf(c.n, c.blockSize, k);
}

/// The furthest that the last of `n` samples, or its right neighbour, can lie from the first one.
template <class Entry>
ptrdiff_t reach(const Columns& c, ptrdiff_t n) {
  return static_cast<ptrdiff_t>((Vek64s{c.step} * (n - 1) + 0xFFFF) >> 16) + isPair<Entry>;
}

/// The offsets of `n` samples, from `sample` on, in the window that begins at column `window`.
template <class Entry>
void fillOffsets(const Columns& c, ptrdiff_t sample, ptrdiff_t n, ptrdiff_t window,
                 Entry* __restrict offsets) {
  const Vek32u base = c.phase + static_cast<Vek32u>(sample) * c.step, step = c.step;
  const Vek32u origin = static_cast<Vek32u>(window), last = static_cast<Vek32u>(c.lastTouched);
  for (Vek32u i = 0; i < static_cast<Vek32u>(n); ++i) {
    const Vek32u left = (base + i * step) >> 16;
    const Vek32u right = left < last ? left + 1 : left;
    offsets[i] =
        static_cast<Entry>(isPair<Entry> ? (left - origin) | (right - origin) << 8 : left - origin);
  }
}

#if HWY_ARCH_ARM

/// The same of bytes, by whole vectors: what lies behind the last ones is not used. A loop that the
/// compiler makes of fillOffsets() takes twice as long for a few samples.
void fillOffsetVectors(const Columns& c, ptrdiff_t sample, ptrdiff_t n, ptrdiff_t window,
                       Vek8u* offsets) {
  constexpr hn::Rebind<Vek8u, decltype(u32)> entries;
  constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(u32));
  const V32u steps = hn::Mul(hn::Iota(u32, 0), hn::Set(u32, c.step));
  const V32u origin = hn::Set(u32, static_cast<Vek32u>(window));
  for (ptrdiff_t i = 0; i < n; i += lanes) {
    const Vek32u base = c.phase + static_cast<Vek32u>(sample + i) * c.step;
    const V32u column = hn::ShiftRight<16>(hn::Add(hn::Set(u32, base), steps));
    hn::StoreU(hn::TruncateTo(entries, hn::Sub(column, origin)), entries, offsets + i);
  }
}

void fillFractions(Columns& c) {
  const auto step = static_cast<Vek16u>(c.step);
  const V16u steps = hn::Mul(hn::Iota(u16, 0), hn::Set(u16, step));
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const auto base = static_cast<Vek16u>(c.phase + static_cast<Vek32u>(startOf(c, k)) * c.step);
    hn::Store(hn::Add(hn::Set(u16, base), steps), u16, c.fractions + k * c.blockSize);
  }
}

#else

void fillFractions(Columns& c) {
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const Vek32u base = c.phase + static_cast<Vek32u>(startOf(c, k)) * c.step, step = c.step;
    Vek16u* __restrict const fractions = c.fractions + k * c.blockSize;
    for (Vek32u i = 0; i < static_cast<Vek32u>(c.blockSize); ++i) {
      fractions[i] = static_cast<Vek16u>(base + i * step);
    }
  }
}

#endif

void setBlockSize(Columns& c, ptrdiff_t blockSize) {
  c.blockSize = blockSize;
  c.blocks = (c.n + blockSize - 1) / blockSize;
}

/// How many blocks, from the first one on, take every other sample of a stretch of the row: they need
/// no look-up. The last block does, since the stretch could reach beyond the row.
ptrdiff_t everyOtherBlocks(const Columns& c) {
  return c.everyOther ? c.blocks - 1 : 0;
}

#if defined(__AVX512VBMI__)

constexpr ptrdiff_t maxWindow = 2 * vectorBytes;  // what a permutation of two vectors reaches

/// A block is as many samples as lie within two vectors, which is its window.
template <class Entry>
void fillTables(Columns& c) {
  ptrdiff_t blockSize = entriesPerVector<Entry>;
  while (reach<Entry>(c, blockSize) >= maxWindow) blockSize /= 2;
  setBlockSize(c, blockSize);
  c.passes = reach<Entry>(c, blockSize) >= vectorBytes ? 2 : 1;
  Entry* const offsets = reinterpret_cast<Entry*>(c.offsets);
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const ptrdiff_t sample = startOf(c, k);
    c.windows()[k] = static_cast<Vek32s>(columnOf(c, sample));
    if (k < everyOtherBlocks(c)) continue;
    fillOffsets(c, sample, c.n < blockSize ? c.n : blockSize, c.windows()[k],
                offsets + k * blockSize);
  }
}

/// `count` bytes, 64 at most; nothing behind them is read.
__m512i loadUpTo(const Vek8u* src, ptrdiff_t count) {
  if (HWY_LIKELY(count >= 64)) return _mm512_loadu_si512(src);
  if (count <= 0) return _mm512_setzero_si512();
  return _mm512_maskz_loadu_epi8(~__mmask64{0} >> (64 - count), src);
}

/// The look-up of blocks. It has copies of what it needs of the columns: a destination of bytes might
/// be part of them, for all that the compiler knows.
template <class Entry>
struct LookUp {
  const Vek32s* const windows;
  const Entry* const offsets;
  const ptrdiff_t blockSize, everyOther, end;
  const bool twoVectors;

  explicit LookUp(const Columns& c)
      : windows(c.windows()),
        offsets(reinterpret_cast<const Entry*>(c.offsets)),
        blockSize(c.blockSize),
        everyOther(everyOtherBlocks(c)),
        end(c.lastTouched + 1),
        twoVectors(c.passes == 2) {}

  const Vek8u* start(const Vek8u* row, ptrdiff_t k) const { return row + windows[k]; }

  V8u block(const Vek8u* row, ptrdiff_t k) const {
    const Vek8u* const from = start(row, k);
    const __m512i order = _mm512_loadu_si512(offsets + k * blockSize);
    const ptrdiff_t rest = end - windows[k];
    if (!twoVectors) return V8u{_mm512_permutexvar_epi8(order, loadUpTo(from, rest))};
    return V8u{
        _mm512_permutex2var_epi8(loadUpTo(from, rest), order, loadUpTo(from + 64, rest - 64))};
  }
};

#else

constexpr ptrdiff_t lookUpBytes = 16;  // each 128 bits of a vector are permuted by themselves
constexpr Vek8u noByte = 0x80;         // an offset that gives 0

/// NEON looks single bytes up in two vectors. For pairs, of which a vector takes half as many, one is
/// better.
template <class Entry>
constexpr int windowBytes = HWY_ARCH_ARM && !isPair<Entry> ? 32 : 16;

/// A block is a vector of samples. Those of 128 bits of it lie in as many windows as there are passes,
/// each of which looks up its share of the samples.
template <class Entry>
void fillTables(Columns& c) {
  constexpr ptrdiff_t samples = lookUpBytes / static_cast<ptrdiff_t>(sizeof(Entry));
  constexpr ptrdiff_t fewest = 2;  // samples of a window that is worth while
  ptrdiff_t share = samples;
  while (share >= fewest && reach<Entry>(c, share) >= windowBytes<Entry>) share /= 2;
#if HWY_ARCH_ARM_V7
  if (!isPair<Entry> && share < samples / 2) return;  // more than two passes are not worth while
#endif
  if (share < fewest || c.lastTouched < windowBytes<Entry> - 1) return;
  setBlockSize(c, entriesPerVector<Entry>);
  c.passes = static_cast<int>(samples / share);
  const ptrdiff_t windowsPerBlock = c.blockSize / share;
  Entry* const offsets = reinterpret_cast<Entry*>(c.offsets);
  if (c.passes > 1) {
    memset(offsets, noByte, static_cast<size_t>(c.passes * c.blocks * c.blockSize) * sizeof(Entry));
  }
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    for (ptrdiff_t w = 0; w < windowsPerBlock; ++w) {
      // What a row shorter than a block lacks is looked up, too, in its last window.
      const ptrdiff_t sample = startOf(c, k) + w * share, rest = c.n - sample;
      const ptrdiff_t left = columnOf(c, rest > 0 ? sample : c.n - 1);
      const ptrdiff_t end = c.lastTouched + 1;
      const ptrdiff_t window = left + windowBytes<Entry> <= end ? left : end - windowBytes<Entry>;
      c.windows()[k * windowsPerBlock + w] = static_cast<Vek32s>(window);
      if (rest <= 0 || k < everyOtherBlocks(c)) continue;
      Entry* const to = offsets + (k * c.passes + w % c.passes) * c.blockSize + w * share;
#if HWY_ARCH_ARM
      if constexpr (!isPair<Entry>) {
        if (share % 4 == 0) {
          fillOffsetVectors(c, sample, rest < share ? rest : share, window, to);
          continue;
        }
      }
#endif
      fillOffsets(c, sample, rest < share ? rest : share, window, to);
    }
  }
}

#if !HWY_ARCH_ARM

/// One window for each 128 bits; their first columns are `distance` entries apart.
template <class D>
hn::Vec<D> loadWindows(D d, const Vek8u* row, const Vek32s* windows, ptrdiff_t distance) {
  if constexpr (hn::MaxLanes(D()) == lookUpBytes) {
    return hn::LoadU(d, row + *windows);
  } else {
    constexpr hn::Half<D> half;
    constexpr ptrdiff_t count = static_cast<ptrdiff_t>(hn::MaxLanes(half)) / lookUpBytes;
    return hn::Combine(d, loadWindows(half, row, windows + count * distance, distance),
                       loadWindows(half, row, windows, distance));
  }
}

#endif

/// The bytes of the windows that `order` names, 0 for noByte.
template <class Entry>
V8u lookUpWindows(const Vek8u* row, const Vek32s* windows, ptrdiff_t distance, V8u order) {
#if HWY_ARCH_ARM
  static_cast<void>(distance);  // a vector is one window
  return lookUpWindow<windowBytes<Entry>>(row + *windows, order);
#else
  return hn::TableLookupBytesOr0(loadWindows(u8, row, windows, distance), order);
#endif
}

/// The look-up of blocks. It has copies of what it needs of the columns: a destination of bytes might
/// be part of them, for all that the compiler knows.
template <class Entry>
struct LookUp {
  const Vek32s* const windows;
  const Entry* const offsets;
  const ptrdiff_t blockSize = entriesPerVector<Entry>, passes, everyOther;

  explicit LookUp(const Columns& c)
      : windows(c.windows()),
        offsets(reinterpret_cast<const Entry*>(c.offsets)),
        passes(c.passes),
        everyOther(everyOtherBlocks(c)) {}

  const Vek32s* windowsOf(ptrdiff_t k) const {
    return windows + k * (vectorBytes / lookUpBytes) * passes;
  }
  const Vek8u* start(const Vek8u* row, ptrdiff_t k) const { return row + *windowsOf(k); }

  V8u block(const Vek8u* row, ptrdiff_t k) const {
    const Vek32s* const first = windowsOf(k);
    const Entry* const orders = offsets + k * passes * blockSize;
    const auto lookUp = [&](ptrdiff_t pass) {
      const auto* const order = reinterpret_cast<const Vek8u*>(orders + pass * blockSize);
      return lookUpWindows<Entry>(row, first + pass, passes, hn::Load(u8, order));
    };
    V8u result = lookUp(0);
    for (ptrdiff_t pass = 1; pass < passes; ++pass) result = hn::Or(result, lookUp(pass));
    return result;
  }
};

#endif

#if HWY_ARCH_ARM

/// Whether pickColumns() serves nearest samples.
bool picksColumns(const Columns& c) {
  return (c.step & 0xFFFF) == 0 && c.step >= 2 << 16 && c.step <= 4 << 16 && c.n > vectorBytes;
}

/// Samples at a stride of two, three or four columns need no look-up.
void pickColumns(const Vek8u* row, const Columns& c, Vek8u* dst) {
  static constexpr decltype(&pickSeparated<2>) kernels[] = {pickSeparated<2>, pickSeparated<3>,
                                                            pickSeparated<4>};
  kernels[(c.step >> 16) - 2](row + columnOf(c, 0), c.n, dst);
}

#else

constexpr bool picksColumns(const Columns&) {
  return false;
}
void pickColumns(const Vek8u*, const Columns&, Vek8u*) {}

#endif

void prepare(Columns& c, bool blended) {
  VEK_ASSERT(c.n >= 0 && c.n <= c.room);
  c.blockSize = 0;
  c.hasFractions = blended && ((c.phase | c.step) & 0xFFFF) != 0;
  if (c.n == 0 || (!c.hasFractions && picksColumns(c))) return;
  const ptrdiff_t lastLeft = columnOf(c, c.n - 1);
  c.lastTouched = blended && lastLeft < c.lastColumn ? lastLeft + 1 : lastLeft;
  c.everyOther = c.step == 2 << 16;
  if (!blended) return fillTables<Vek8u>(c);
  fillTables<Vek16u>(c);
  if (c.hasFractions && c.blockSize != 0) fillFractions(c);
}

/// Stores the first `count` bytes.
template <class D>
void storeFirst(D d, hn::Vec<D> v, ptrdiff_t count, Vek8u* dst) {
#if defined(__AVX512VBMI__)
  static_cast<void>(d);
  const __mmask64 mask = ~__mmask64{0} >> (64 - count);
  if constexpr (hn::MaxLanes(D()) == 64) {
    _mm512_mask_storeu_epi8(dst, mask, v.raw);
  } else {
    _mm256_mask_storeu_epi8(dst, static_cast<__mmask32>(mask), v.raw);
  }
#else
  alignas(64) Vek8u all[hn::MaxLanes(D())];
  hn::Store(v, d, all);
  memcpy(dst, all, static_cast<size_t>(count));
#endif
}

/// Stores block(k) for all blocks k from `first` on. This is the policy of overlapping blocks, by a loop
/// of its own because a block can be shorter than the vector that is stored: the next block overwrites
/// what is too much. The last ones, which have none behind them, are stored in part.
template <class D, class Block>
void forEachBlock(D d, const Columns& c, ptrdiff_t blockSize, ptrdiff_t first, Vek8u* dst,
                  Block block) {
  constexpr ptrdiff_t stored = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
  const ptrdiff_t n = c.n, blocks = c.blocks;
  ptrdiff_t k = first;
  for (; k * blockSize + stored <= n; ++k) hn::StoreU(block(k), d, dst + k * blockSize);
  for (; k < blocks; ++k) {
    const ptrdiff_t i = startOf(n, blockSize, k);
    if (i + stored <= n) {
      hn::StoreU(block(k), d, dst + i);
    } else {
      storeFirst(d, block(k), n < blockSize ? n : blockSize, dst + i);
    }
  }
}

/// Stores the blocks that are every other sample of a stretch of the row, if they fill a vector; returns
/// how many those are. A call would cost narrow rows more than the rest of their work.
[[gnu::always_inline]] inline ptrdiff_t pickEveryOther(const Vek8u* row, const Columns& c,
                                                       Vek8u* dst) {
  const ptrdiff_t blocks = everyOtherBlocks(c), n = blocks * c.blockSize;
  if (n < vectorBytes) return 0;
  const Vek8u* const from = row + c.windows()[0];
  overlappingBlocks(n, vectorBytes, [&](ptrdiff_t i) {
    const V8u lower = hn::LoadU(u8, from + 2 * i),
              upper = hn::LoadU(u8, from + 2 * i + vectorBytes);
    hn::StoreU(hn::ConcatEven(u8, upper, lower), u8, dst + i);
  });
  return blocks;
}

[[gnu::noinline]] void lookUpNearest(const Vek8u* row, const Columns& c, Vek8u* dst) {
  const LookUp<Vek8u> samples(c);
  forEachBlock(u8, c, samples.blockSize, pickEveryOther(row, c, dst), dst,
               [&](ptrdiff_t k) { return samples.block(row, k); });
}

void nearest(const Vek8u* row, const Columns& c, Vek8u* dst) {
  if (picksColumns(c)) return pickColumns(row, c, dst);
  if (c.blockSize == 0) return portable::resampleKernels.nearest(row, c, dst);
  lookUpNearest(row, c, dst);
}

#if !HWY_ARCH_ARM

/// a + (((b - a) * fraction) >> 16) for fractions of 0..65535. The high product takes a fraction as
/// signed; where that makes it 65536 too small, b - a is added. With a = 10, b = 20 and the fraction
/// 49152 (3/4), for example, the product is 10 * (49152 - 65536) >> 16 = -3, and 10 + 10 - 3 = 17.
V16s blend(V16s a, V16s b, V16s fraction) {
  const V16s difference = hn::Sub(b, a);
  const V16s missing = hn::And(difference, hn::BroadcastSignBit(fraction));
  return hn::Add(hn::Add(a, missing), hn::MulHigh(difference, fraction));
}

#endif

template <bool across, bool down>
void blendRows(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c, Vek8u* dst) {
  const LookUp<Vek16u> samples(c);
  const Vek16u* const fractions = c.fractions;
  const V16s rowFraction = hn::Set(s16, static_cast<Vek16s>(fy));
  const ptrdiff_t picked = across || down ? 0 : pickEveryOther(top, c, dst);
  forEachBlock(halfU8, c, samples.blockSize, picked, dst, [&](ptrdiff_t k) {
    const auto sampled = [&](const Vek8u* row) {
      const V8u pairs =
          k < samples.everyOther ? hn::LoadU(u8, samples.start(row, k)) : samples.block(row, k);
      const V16s left = evenBytes(s16, pairs);
      if constexpr (!across) return left;
      const V16s fraction = hn::BitCast(s16, hn::LoadU(u16, fractions + k * samples.blockSize));
      return blend(left, oddBytes(s16, pairs), fraction);
    };
    const V16s upper = sampled(top);
    if constexpr (!down) return hn::DemoteTo(halfU8, upper);
    return hn::DemoteTo(halfU8, blend(upper, sampled(bottom), rowFraction));
  });
}

/// Blends two rows of whole columns that need no look-up.
void blendPicked(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c, Vek8u* dst) {
  pickColumns(top, c, dst);
  if (fy == 0) return;
  Vek8u lower[Columns::maxCount];
  pickColumns(bottom, c, lower);
  const V16s fraction = hn::Set(s16, static_cast<Vek16s>(fy));
  constexpr int size = vectorBytes / 2;
  const auto body = [=](Vek8u* to, const Vek8u* a, const Vek8u* b) {
    const V16s upper = hn::PromoteTo(s16, hn::LoadU(halfU8, a));
    hn::StoreU(
        hn::DemoteTo(halfU8, blend(upper, hn::PromoteTo(s16, hn::LoadU(halfU8, b)), fraction)),
        halfU8, to);
  };
  copiedBlocks<size>(c.n, body, Out<1>{dst}, In<1>{dst}, In<1>{lower});
}

void bilinear(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c, Vek8u* dst) {
  VEK_ASSERT(fy >= 0 && fy <= 0xFFFF);
  if (!c.hasFractions && picksColumns(c)) return blendPicked(top, bottom, fy, c, dst);
  if (c.blockSize == 0) return portable::resampleKernels.bilinear(top, bottom, fy, c, dst);
  static constexpr decltype(&bilinear) kernels[2][2] = {
      {blendRows<false, false>, blendRows<false, true>},
      {blendRows<true, false>, blendRows<true, true>}};
  kernels[c.hasFractions][fy != 0](top, bottom, fy, c, dst);
}

}  // namespace

constexpr ResampleKernels resampleKernels = {
    .prepare = prepare, .nearest = nearest, .bilinear = bilinear};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
