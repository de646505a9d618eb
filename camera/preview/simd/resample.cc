#include "camera/preview/resample_body.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Samples are looked up as bytes, or together with their right neighbours as words, in windows of
// the row: one permutation of a window gives a block of them. Their places within the windows do not
// depend on the row. Entries of the tables are of type Entry, Vek8u or Vek16u.

constexpr hn::ScalableTag<Vek16u> uwords;
constexpr hn::ScalableTag<Vek16s> words;
constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Rebind<Vek8u, decltype(words)> narrowBytes;
using UWords = hn::Vec<decltype(uwords)>;
using Words = hn::Vec<decltype(words)>;
using Bytes = hn::Vec<decltype(bytes)>;
constexpr ptrdiff_t length = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

template <class Entry>
constexpr ptrdiff_t entries = length / static_cast<ptrdiff_t>(sizeof(Entry));

template <class Entry>
constexpr bool neighbours = sizeof(Entry) == 2;

ptrdiff_t columnOf(const Columns& c, ptrdiff_t sample) {
  return (c.phase + static_cast<Vek32u>(sample) * c.step) >> 16;
}

/// The furthest that the last of `n` samples, or its neighbour, lies from the first one.
template <class Entry>
ptrdiff_t reach(const Columns& c, ptrdiff_t n) {
  return static_cast<ptrdiff_t>((Vek64s{c.step} * (n - 1) + 0xFFFF) >> 16) + neighbours<Entry>;
}

/// `n` samples from `sample` on look into the window at column `first`.
template <class Entry>
void fillPlaces(const Columns& c, ptrdiff_t sample, ptrdiff_t n, ptrdiff_t first,
                Entry* __restrict places) {
  const Vek32u base = c.phase + static_cast<Vek32u>(sample) * c.step, step = c.step;
  const Vek32u origin = static_cast<Vek32u>(first), last = static_cast<Vek32u>(c.last);
  for (Vek32u i = 0; i < static_cast<Vek32u>(n); ++i) {
    const Vek32u left = (base + i * step) >> 16;
    const Vek32u right = left < last ? left + 1 : left;
    places[i] = static_cast<Entry>(neighbours<Entry> ? (left - origin) | (right - origin) << 8
                                                     : left - origin);
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

void setBlock(Columns& c, ptrdiff_t block) {
  c.block = block;
  c.blocks = (c.n + block - 1) / block;
}

/// Whether block k is all of a stretch of the row, or every other sample of one, with more to come.
bool isPlain(const Columns& c, ptrdiff_t k) {
  return c.everyOther && k + 1 < c.blocks;
}

#if defined(__AVX512VBMI__)

constexpr ptrdiff_t window = 2 * length;

/// As many samples at a time as lie within two vectors.
template <class Entry>
void fillTables(Columns& c) {
  ptrdiff_t block = entries<Entry>;
  while (reach<Entry>(c, block) >= window) block /= 2;
  setBlock(c, block);
  c.passes = reach<Entry>(c, block) >= length ? 2 : 1;
  Entry* const places = reinterpret_cast<Entry*>(c.places);
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    const ptrdiff_t sample = c.start(k);
    c.first[k] = static_cast<Vek32s>(columnOf(c, sample));
    if (isPlain(c, k)) continue;
    fillPlaces(c, sample, c.n < block ? c.n : block, c.first[k], places + k * block);
  }
}

/// `count` bytes, 64 at most.
__m512i loadUpTo(const Vek8u* at, ptrdiff_t count) {
  if (HWY_LIKELY(count >= 64)) return _mm512_loadu_si512(at);
  if (count <= 0) return _mm512_setzero_si512();
  return _mm512_maskz_loadu_epi8(~__mmask64{0} >> (64 - count), at);
}

/// Block k of samples. It keeps what it needs of the columns: a destination of bytes might be part
/// of them, for all that the compiler knows.
template <class Entry>
struct Look {
  const Vek32s* const first;
  const Entry* const places;
  const ptrdiff_t block, plain, end;
  const bool twoVectors;

  explicit Look(const Columns& c)
      : first(c.first),
        places(reinterpret_cast<const Entry*>(c.places)),
        block(c.block),
        plain(c.everyOther ? c.blocks - 1 : 0),
        end(c.last + 1),
        twoVectors(c.passes == 2) {}

  const Vek8u* start(const Vek8u* row, ptrdiff_t k) const { return row + first[k]; }

  Bytes at(const Vek8u* row, ptrdiff_t k) const {
    const Vek8u* const from = start(row, k);
    const __m512i order = _mm512_loadu_si512(places + k * block);
    const ptrdiff_t rest = end - first[k];
    if (!twoVectors) return Bytes{_mm512_permutexvar_epi8(order, loadUpTo(from, rest))};
    return Bytes{
        _mm512_permutex2var_epi8(loadUpTo(from, rest), order, loadUpTo(from + 64, rest - 64))};
  }
};

#else

constexpr ptrdiff_t window = 16;  // of each 128-bit block
constexpr Vek8u nothing = 0x80;

/// The samples of a 128-bit block lie in as many windows as there are passes.
template <class Entry>
void fillTables(Columns& c) {
  constexpr ptrdiff_t perBlock = window / static_cast<ptrdiff_t>(sizeof(Entry));
  constexpr ptrdiff_t fewest = 2;  // samples of a window that is worth while
  ptrdiff_t each = perBlock;
  while (each >= fewest && reach<Entry>(c, each) >= window) each /= 2;
  if (each < fewest || c.last < window - 1) return;
  setBlock(c, entries<Entry>);
  c.passes = static_cast<int>(perBlock / each);
  const ptrdiff_t windows = c.block / each;
  Entry* const places = reinterpret_cast<Entry*>(c.places);
  if (c.passes > 1)
    memset(c.places, nothing, static_cast<size_t>(c.passes) * Columns::most * sizeof(Entry));
  for (ptrdiff_t k = 0; k < c.blocks; ++k) {
    for (ptrdiff_t w = 0; w < windows; ++w) {
      // What a row shorter than a block lacks is looked up, too, in its last window.
      const ptrdiff_t sample = c.start(k) + w * each, rest = c.n - sample;
      const ptrdiff_t left = columnOf(c, rest > 0 ? sample : c.n - 1);
      const ptrdiff_t first = left + window <= c.last + 1 ? left : c.last + 1 - window;
      c.first[k * windows + w] = static_cast<Vek32s>(first);
      if (rest > 0 && !isPlain(c, k)) {
        fillPlaces(c, sample, rest < each ? rest : each, first,
                   places + w % c.passes * Columns::most + k * c.block + w * each);
      }
    }
  }
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

/// Block k of samples. It keeps what it needs of the columns: a destination of bytes might be part
/// of them, for all that the compiler knows.
template <class Entry>
struct Look {
  const Vek32s* const first;
  const Entry* const places;
  const ptrdiff_t passes, plain;

  explicit Look(const Columns& c)
      : first(c.first),
        places(reinterpret_cast<const Entry*>(c.places)),
        passes(c.passes),
        plain(c.everyOther ? c.blocks - 1 : 0) {}

  const Vek32s* windows(ptrdiff_t k) const { return first + k * (length / window) * passes; }
  const Vek8u* start(const Vek8u* row, ptrdiff_t k) const { return row + *windows(k); }

  Bytes at(const Vek8u* row, ptrdiff_t k) const {
    const auto lookUp = [&](ptrdiff_t pass) {
      const Entry* const order = places + pass * Columns::most + k * entries<Entry>;
      return hn::TableLookupBytesOr0(loadWindows(bytes, row, windows(k) + pass, passes),
                                     hn::LoadU(bytes, reinterpret_cast<const Vek8u*>(order)));
    };
    Bytes result = lookUp(0);
    for (ptrdiff_t pass = 1; pass < passes; ++pass) result = hn::Or(result, lookUp(pass));
    return result;
  }
};

#endif

void prepare(Columns& c, bool blend) {
  c.block = 0;
  if (c.n == 0) return;
  const ptrdiff_t lastLeft = columnOf(c, c.n - 1);
  c.last = blend && lastLeft < c.lastColumn ? lastLeft + 1 : lastLeft;
  c.everyOther = c.step == 2 << 16;
  c.blended = blend && ((c.phase | c.step) & 0xFFFF) != 0;
  if (!blend) return fillTables<Vek8u>(c);
  fillTables<Vek16u>(c);
  if (c.blended && c.block != 0) fillFractions(c);
}

/// Stores the first `count` bytes.
template <class Tag>
void storeFirst(Tag /*tag*/, hn::Vec<Tag> v, ptrdiff_t count, Vek8u* dst) {
#if defined(__AVX512VBMI__)
  const __mmask64 mask = ~__mmask64{0} >> (64 - count);
  if constexpr (hn::MaxLanes(Tag()) == 64) {
    _mm512_mask_storeu_epi8(dst, mask, v.raw);
  } else {
    _mm256_mask_storeu_epi8(dst, static_cast<__mmask32>(mask), v.raw);
  }
#else
  alignas(64) Vek8u all[hn::MaxLanes(Tag())];
  hn::Store(v, Tag(), all);
  memcpy(dst, all, static_cast<size_t>(count));
#endif
}

/// Stores blockOf(k) for all blocks k.
template <class Tag, class BlockOf>
void forEachLookUp(Tag tag, const Columns& c, Vek8u* dst, BlockOf blockOf) {
  constexpr ptrdiff_t stored = static_cast<ptrdiff_t>(hn::MaxLanes(Tag()));
  const ptrdiff_t n = c.n, block = c.block, blocks = c.blocks;
  // What is stored too much the next block overwrites.
  ptrdiff_t k = 0;
  for (; k * block + stored <= n; ++k) hn::StoreU(blockOf(k), tag, dst + k * block);
  for (; k < blocks; ++k) {
    const ptrdiff_t i = c.start(k);
    if (i + stored <= n) {
      hn::StoreU(blockOf(k), tag, dst + i);
    } else {
      storeFirst(tag, blockOf(k), n < block ? n : block, dst + i);
    }
  }
}

void nearestVectors(const Vek8u* row, const Columns& c, Vek8u* dst) {
  if (c.block == 0) return nearest(row, c, dst);
  const Look<Vek8u> look(c);
  forEachLookUp(bytes, c, dst, [&](ptrdiff_t k) {
    if (k >= look.plain) return look.at(row, k);
    const Vek8u* const from = look.start(row, k);
    return hn::ConcatEven(bytes, hn::LoadU(bytes, from + length), hn::LoadU(bytes, from));
  });
}

UWords leftOf(UWords pairs) {
  return hn::And(pairs, hn::Set(uwords, 0xFF));
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
  const Look<Vek16u> look(c);
  const Vek16u* const fractions = c.fractions;
  const ptrdiff_t block = c.block;
  const Words rowFraction = hn::Set(words, static_cast<Vek16s>(fy));
  forEachLookUp(narrowBytes, c, dst, [&](ptrdiff_t k) {
    const auto sampled = [&](const Vek8u* row) {
      const Bytes samples = k < look.plain ? hn::LoadU(bytes, look.start(row, k)) : look.at(row, k);
      const UWords pairs = hn::BitCast(uwords, samples);
      const Words left = hn::BitCast(words, leftOf(pairs));
      if constexpr (!across) return left;
      const Words right = hn::BitCast(words, hn::ShiftRight<8>(pairs));
      return blendWords(left, right, hn::BitCast(words, hn::LoadU(uwords, fractions + k * block)));
    };
    const Words upper = sampled(top);
    if constexpr (!down) return hn::DemoteTo(narrowBytes, upper);
    return hn::DemoteTo(narrowBytes, blendWords(upper, sampled(bottom), rowFraction));
  });
}

void bilinearVectors(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& c,
                     Vek8u* dst) {
  if (c.block == 0) return bilinear(top, bottom, fy, c, dst);
  static constexpr decltype(&bilinearVectors) kernels[2][2] = {
      {blendRows<false, false>, blendRows<false, true>},
      {blendRows<true, false>, blendRows<true, true>}};
  kernels[c.blended][fy != 0](top, bottom, fy, c, dst);
}

}  // namespace

constexpr ResampleKernels resampleKernels = {prepare, nearestVectors, bilinearVectors};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
