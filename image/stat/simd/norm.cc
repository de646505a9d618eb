#include <stddef.h>
#include <stdint.h>

#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "image/stat/norm_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// A measure adds vectors of values to its lanes, at most `limit` of them, since a lane could overflow
// beyond. join() combines two values. A measure that is `late` keeps each byte of a vector apart until
// the end, so three channels need not be separated before.

struct Largest {
  static constexpr ptrdiff_t limit = PTRDIFF_MAX;
  static constexpr bool late = true;
  V8u most = hn::Zero(u8);

  void add(V8u v) { most = hn::Max(most, v); }
  uint64_t total() const {
    return hn::GetLane(hn::MaxOfLanes(u16, hn::Max(evenBytes(u16, most), oddBytes(u16, most))));
  }
  static void join(uint64_t& total, uint64_t v) { total = v > total ? v : total; }
};

struct Sum {
  static constexpr ptrdiff_t limit = PTRDIFF_MAX;
  static constexpr bool late = false;
  V64u sum = hn::Zero(u64);

  void add(V8u v) { sum = hn::Add(sum, hn::SumsOf8(v)); }
  uint64_t total() const { return hn::GetLane(hn::SumOfLanes(u64, sum)); }
  static void join(uint64_t& total, uint64_t v) { total += v; }
};

struct SumOfSquares {
  static constexpr ptrdiff_t limit = 16512;  // 16512 * 4 * 255 * 255 < 2^32: four bytes a lane
  static constexpr bool late = false;
  V32s sum = hn::Zero(s32);
  V32s rest = hn::Zero(s32);  ///< stays 0 where a lane takes both products of a pair

  void add(V8u v) {
    addSquares(evenBytes(s16, v));
    addSquares(oddBytes(s16, v));
  }
  void addSquares(V16s v) {
#if defined(__AVX512VNNI__)
    sum = V32s{_mm512_dpwssd_epi32(sum.raw, v.raw, v.raw)};
#else
    sum = hn::ReorderWidenMulAccumulate(s32, v, v, sum, rest);
#endif
  }
  uint64_t total() const {
    const V64u all = hn::Add(widened(sum), widened(rest));
    return hn::GetLane(hn::SumOfLanes(u64, all));
  }
  static V64u widened(V32s v) {
    const V64u pairs = hn::BitCast(u64, v);
    return hn::Add(hn::And(pairs, hn::Set(u64, 0xFFFFFFFF)), hn::ShiftRight<32>(pairs));
  }
  static void join(uint64_t& total, uint64_t v) {
    total += v;
  }
};

using Block = PaddedBlock<vectorBytes>;

struct Image {
  const Vek8u* a;

  Image(const NormRegion& region, ptrdiff_t y) : a(region.a + y * region.aStep) {}
  V8u at(ptrdiff_t x) const { return hn::LoadU(u8, a + x); }
  V8u padded(ptrdiff_t n) const { return hn::Load(u8, Block(a, n).data); }
};

struct Difference {
  const Vek8u* a;
  const Vek8u* b;

  Difference(const NormRegion& region, ptrdiff_t y)
      : a(region.a + y * region.aStep), b(region.b + y * region.bStep) {}
  static V8u distance(V8u p, V8u q) {
    return hn::Or(hn::SaturatedSub(p, q), hn::SaturatedSub(q, p));
  }
  V8u at(ptrdiff_t x) const { return distance(hn::LoadU(u8, a + x), hn::LoadU(u8, b + x)); }
  V8u padded(ptrdiff_t n) const {
    return distance(hn::Load(u8, Block(a, n).data), hn::Load(u8, Block(b, n).data));
  }
};

/// The last `n` bytes of a vector, n at least 1; the others become 0, which adds nothing to a norm.
V8u lastBytes(V8u v, ptrdiff_t n) {
  const V8u others = hn::Set(u8, static_cast<Vek8u>(vectorBytes - 1 - n));
  return hn::IfThenElseZero(hn::Gt(hn::Iota(u8, 0), others), v);
}

/// Three accumulators: for the vectors of a row in turn, or for its channels.
template <class Measure, int channels>
struct Accumulators {
  static constexpr ptrdiff_t block = 3 * vectorBytes;
  Measure part[3];

  static void add(Measure& a, Measure& b, Measure& c, V8u first, V8u second, V8u third) {
    if constexpr (channels == 3 && !Measure::late) {
      const Channels v = separated(first, second, third);
      a.add(v.c0);
      b.add(v.c1);
      c.add(v.c2);
    } else {
      a.add(first);
      b.add(second);
      c.add(third);
    }
  }

  template <class Values>
  void addBlocks(const Values& values, ptrdiff_t x, ptrdiff_t end) {
    Measure a = part[0], b = part[1], c = part[2];  // registers, as the members would not be
    for (; x < end; x += block) {
      add(a, b, c, values.at(x), values.at(x + vectorBytes), values.at(x + 2 * vectorBytes));
    }
    part[0] = a;
    part[1] = b;
    part[2] = c;
  }

  /// What is left of a row of n bytes at x, where a block would begin.
  template <class Values>
  void addRest(const Values& values, ptrdiff_t x, ptrdiff_t n) {
    const V8u none = hn::Zero(u8);
    V8u first = none, second = none, third = none;
    if (n < vectorBytes) {
      first = values.padded(n);
    } else {
      if (n - x >= vectorBytes) first = values.at(x);
      if (n - x >= 2 * vectorBytes) second = values.at(x + vectorBytes);
      // A row of whole pixels ends where a third vector does, as far as the channels go.
      const ptrdiff_t rest = (n - x) % vectorBytes;
      if (rest > 0) third = lastBytes(values.at(n - vectorBytes), rest);
    }
    add(part[0], part[1], part[2], first, second, third);
  }

  /// Hands what was added to the totals and starts anew. Out of line, so that the loops keep their
  /// accumulators in registers.
  HWY_NOINLINE void take(uint64_t* totals) {
    if constexpr (channels == 3 && Measure::late) {
      const Channels v = separated(part[0].most, part[1].most, part[2].most);
      part[0].most = v.c0;
      part[1].most = v.c1;
      part[2].most = v.c2;
    }
    for (int i = 0; i < 3; ++i) Measure::join(totals[i % channels], part[i].total());
    *this = Accumulators();
  }
};

// The loop owns its tail: what is left of a row goes to the accumulators by a way of its own, since a
// sum, unlike a destination, cannot take in the same sample twice.
template <class Measure, class Values, int channels>
void accumulate(const NormRegion& region, uint64_t* totals) {
  VEK_ASSERT(region.rows >= 1 && region.rowBytes >= channels && region.rowBytes % channels == 0);
  Accumulators<Measure, channels> sums;
  constexpr ptrdiff_t block = sums.block;
  const ptrdiff_t n = region.rowBytes;
  ptrdiff_t room = Measure::limit;  // additions that each accumulator has left
  const auto spend = [&](ptrdiff_t additions) {
    room -= additions;
    if (room > 0) return;
    sums.take(totals);
    room = Measure::limit;
  };
  for (ptrdiff_t y = 0; y < region.rows; ++y) {
    const Values values(region, y);
    ptrdiff_t x = 0;
    while (n - x >= block) {
      const ptrdiff_t wanted = (n - x) / block;
      const ptrdiff_t blocks = wanted < room ? wanted : room;
      sums.addBlocks(values, x, x + blocks * block);
      x += blocks * block;
      spend(blocks);
    }
    if (x < n) {
      sums.addRest(values, x, n);
      spend(1);
    }
  }
  sums.take(totals);
}

template <class Measure, class Values>
constexpr MeasureKernels kernelsOf() {
  return {.c1 = accumulate<Measure, Values, 1>, .c3 = accumulate<Measure, Values, 3>};
}

}  // namespace

constexpr NormKernels normKernels = {.inf = kernelsOf<Largest, Image>(),
                                     .diffInf = kernelsOf<Largest, Difference>(),
                                     .l1 = kernelsOf<Sum, Image>(),
                                     .diffL1 = kernelsOf<Sum, Difference>(),
                                     .l2 = kernelsOf<SumOfSquares, Image>(),
                                     .diffL2 = kernelsOf<SumOfSquares, Difference>()};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
