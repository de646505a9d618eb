#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "image/stat/norm_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
constexpr hn::Repartition<Vek16s, decltype(bytes)> swords;
constexpr hn::Repartition<Vek32s, decltype(bytes)> sdwords;
constexpr hn::Repartition<uint64_t, decltype(bytes)> qwords;
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(sdwords)>;
using VQwords = hn::Vec<decltype(qwords)>;
constexpr int lanes = static_cast<int>(hn::MaxLanes(bytes));

VWords evenSamples(VBytes v) {
  return hn::And(hn::BitCast(words, v), hn::Set(words, 0xFF));
}
VWords oddSamples(VBytes v) {
  return hn::ShiftRight<8>(hn::BitCast(words, v));
}

// Measures add vectors of values into their lanes, at most `limit` of them, or a lane could
// overflow. join() takes values together. Where `late`, lanes stay apart, and so do their channels.

struct Largest {
  static constexpr ptrdiff_t limit = PTRDIFF_MAX;
  static constexpr bool late = true;
  VBytes most = hn::Zero(bytes);

  void add(VBytes v) { most = hn::Max(most, v); }
  uint64_t total() const {
    return hn::GetLane(hn::MaxOfLanes(words, hn::Max(evenSamples(most), oddSamples(most))));
  }
  static void join(uint64_t& total, uint64_t v) { total = v > total ? v : total; }
};

struct Sum {
  static constexpr ptrdiff_t limit = PTRDIFF_MAX;
  static constexpr bool late = false;
  VQwords sum = hn::Zero(qwords);

  void add(VBytes v) { sum = hn::Add(sum, hn::SumsOf8(v)); }
  uint64_t total() const { return hn::GetLane(hn::SumOfLanes(qwords, sum)); }
  static void join(uint64_t& total, uint64_t v) { total += v; }
};

struct SumOfSquares {
  static constexpr ptrdiff_t limit = 16512;  // 16512 * 4 * 255 * 255 < 2^32: four bytes a lane
  static constexpr bool late = false;
  VDwords sum = hn::Zero(sdwords);
  VDwords rest = hn::Zero(sdwords);  ///< stays 0 where a lane takes both products of a pair

  void add(VBytes v) {
    addSquares(hn::BitCast(swords, evenSamples(v)));
    addSquares(hn::BitCast(swords, oddSamples(v)));
  }
  void addSquares(hn::Vec<decltype(swords)> v) {
#if defined(__AVX512VNNI__)
    sum = VDwords{_mm512_dpwssd_epi32(sum.raw, v.raw, v.raw)};
#else
    sum = hn::ReorderWidenMulAccumulate(sdwords, v, v, sum, rest);
#endif
  }
  uint64_t total() const {
    const VQwords all = hn::Add(widened(sum), widened(rest));
    return hn::GetLane(hn::SumOfLanes(qwords, all));
  }
  static VQwords widened(VDwords v) {
    const VQwords pairs = hn::BitCast(qwords, v);
    return hn::Add(hn::And(pairs, hn::Set(qwords, 0xFFFFFFFF)), hn::ShiftRight<32>(pairs));
  }
  static void join(uint64_t& total, uint64_t v) {
    total += v;
  }
};

using Block = PaddedBlock<static_cast<size_t>(lanes)>;

struct Image {
  const Vek8u* a;

  Image(const NormRegion& region, ptrdiff_t y) : a(region.a + y * region.aStep) {}
  VBytes at(ptrdiff_t x) const { return hn::LoadU(bytes, a + x); }
  VBytes padded(ptrdiff_t n) const { return hn::Load(bytes, Block(a, n).data); }
};

struct Difference {
  const Vek8u* a;
  const Vek8u* b;

  Difference(const NormRegion& region, ptrdiff_t y)
      : a(region.a + y * region.aStep), b(region.b + y * region.bStep) {}
  static VBytes distance(VBytes p, VBytes q) {
    return hn::Or(hn::SaturatedSub(p, q), hn::SaturatedSub(q, p));
  }
  VBytes at(ptrdiff_t x) const {
    return distance(hn::LoadU(bytes, a + x), hn::LoadU(bytes, b + x));
  }
  VBytes padded(ptrdiff_t n) const {
    return distance(hn::Load(bytes, Block(a, n).data), hn::Load(bytes, Block(b, n).data));
  }
};

/// The last `n` bytes of a vector, n at least 1; the others become 0, which adds nothing to a norm.
VBytes lastBytes(VBytes v, ptrdiff_t n) {
  const VBytes others = hn::Set(bytes, static_cast<Vek8u>(lanes - 1 - n));
  return hn::IfThenElseZero(hn::Gt(hn::Iota(bytes, 0), others), v);
}

/// Three accumulators: for the vectors of a row in turn, or for its channels.
template <class Measure, int channels>
struct Accumulators {
  static constexpr ptrdiff_t block = 3 * lanes;
  Measure part[3];

  static void add(Measure& a, Measure& b, Measure& c, VBytes first, VBytes second, VBytes third) {
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
      add(a, b, c, values.at(x), values.at(x + lanes), values.at(x + 2 * lanes));
    }
    part[0] = a;
    part[1] = b;
    part[2] = c;
  }

  /// What is left of a row of n bytes at x, where a block would begin.
  template <class Values>
  void addRest(const Values& values, ptrdiff_t x, ptrdiff_t n) {
    const VBytes none = hn::Zero(bytes);
    VBytes first = none, second = none, third = none;
    if (n < lanes) {
      first = values.padded(n);
    } else {
      if (n - x >= lanes) first = values.at(x);
      if (n - x >= 2 * lanes) second = values.at(x + lanes);
      // A row of whole pixels ends where a third vector does, as far as the channels go.
      const ptrdiff_t rest = (n - x) % lanes;
      if (rest > 0) third = lastBytes(values.at(n - lanes), rest);
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

template <class Measure, class Values, int channels>
void accumulate(const NormRegion& region, uint64_t* totals) {
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

}  // namespace
}  // namespace vek::VEK_LEVEL

#include "image/stat/norm_table.h"

HWY_AFTER_NAMESPACE();
