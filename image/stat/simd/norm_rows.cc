#include "image/stat/norm_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
constexpr hn::Repartition<Vek16s, decltype(bytes)> swords;
constexpr hn::Repartition<Vek32u, decltype(bytes)> dwords;
constexpr hn::Repartition<Vek32s, decltype(bytes)> sdwords;
constexpr hn::Repartition<uint64_t, decltype(bytes)> qwords;
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;
constexpr int lanes = static_cast<int>(hn::MaxLanes(bytes));

VWords evenSamples(VBytes v) {
  return hn::And(hn::BitCast(words, v), hn::Set(words, 0xFF));
}
VWords oddSamples(VBytes v) {
  return hn::ShiftRight<8>(hn::BitCast(words, v));
}

// Accumulators. A measure adds vectors of values into the lanes of its planes, at most `limit` of
// them, or a lane could overflow. With k planes lane i of plane p holds what came from byte k * i +
// p of each vector, so that the channels of C3 stay apart; the sums for C1 need not care, and are
// cheaper. joined() takes planes together, join() lanes of sums(), widened to `Wide`.

constexpr ptrdiff_t unlimited = PTRDIFF_MAX;

struct JoinLargest {
  template <class T>
  static void join(T& total, T v) {
    total = v > total ? v : total;
  }
  template <class V>
  static V joined(V a, V b) {
    return hn::Max(a, b);
  }
};
struct JoinSum {
  template <class T>
  static void join(T& total, T v) {
    total = static_cast<T>(total + v);
  }
  template <class V>
  static V joined(V a, V b) {
    return hn::Add(a, b);
  }
};

template <class D, int count>
struct Planes {
  static constexpr D lane = {};
  static constexpr int planes = count;
  hn::Vec<D> plane[planes];

  Planes() {
    for (auto& p : plane) p = hn::Zero(lane);
  }
  hn::Vec<D> sums(int p) const { return plane[p]; }
};

template <int channels>
struct Largest : JoinLargest, Planes<decltype(bytes), 1> {
  static constexpr ptrdiff_t limit = unlimited;
  using Wide = Vek8u;

  void add(VBytes v) { plane[0] = hn::Max(plane[0], v); }
};

template <int channels>
struct Sum;

template <>
struct Sum<1> : JoinSum, Planes<decltype(qwords), 1> {
  static constexpr ptrdiff_t limit = unlimited;
  using Wide = uint64_t;

  void add(VBytes v) { plane[0] = hn::Add(plane[0], hn::SumsOf8(v)); }
};

template <>
struct Sum<3> : JoinSum, Planes<decltype(words), 2> {
  static constexpr ptrdiff_t limit = 257;  // 257 * 255 = 65535
  using Wide = Vek32u;

  void add(VBytes v) {
    plane[0] = hn::Add(plane[0], evenSamples(v));
    plane[1] = hn::Add(plane[1], oddSamples(v));
  }
};

template <int channels>
struct SumOfSquares;

template <>
struct SumOfSquares<1> : JoinSum, Planes<decltype(dwords), 2> {
  static constexpr ptrdiff_t limit = 16512;  // 16512 * 4 * 255 * 255 < 2^32: four bytes a lane
  using Wide = uint64_t;

  /// The second plane stays 0 where a lane takes both products of a pair.
  void add(VBytes v) {
    const auto even = hn::BitCast(swords, evenSamples(v));
    const auto odd = hn::BitCast(swords, oddSamples(v));
    auto low = hn::BitCast(sdwords, plane[0]), high = hn::BitCast(sdwords, plane[1]);
    low = hn::ReorderWidenMulAccumulate(sdwords, even, even, low, high);
    low = hn::ReorderWidenMulAccumulate(sdwords, odd, odd, low, high);
    plane[0] = hn::BitCast(dwords, low);
    plane[1] = hn::BitCast(dwords, high);
  }
};

template <>
struct SumOfSquares<3> : JoinSum, Planes<decltype(dwords), 4> {
  static constexpr ptrdiff_t limit = 66051;  // 66051 * 255 * 255 < 2^32
  using Wide = uint64_t;

  /// Squares fit 16 bits, two in a lane: planes 2 and 3 take the upper ones, planes 0 and 1 both,
  /// modulo 2^32.
  void add(VBytes v) {
    const VWords even = evenSamples(v), odd = oddSamples(v);
    addPairs(hn::BitCast(dwords, hn::Mul(even, even)), plane[0], plane[2]);
    addPairs(hn::BitCast(dwords, hn::Mul(odd, odd)), plane[1], plane[3]);
  }
  static void addPairs(VDwords squares, VDwords& both, VDwords& upper) {
    both = hn::Add(both, squares);
    upper = hn::Add(upper, hn::ShiftRight<16>(squares));
  }
  VDwords sums(int p) const {
    return p < 2 ? hn::Sub(plane[p], hn::ShiftLeft<16>(plane[p + 2])) : plane[p];
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

/// Three accumulators take the vectors of a row in turn: three vectors are a whole number of
/// pixels, so each lane of each accumulator sees one channel.
template <class Accumulator>
struct Accumulators {
  static constexpr ptrdiff_t block = 3 * lanes;
  Accumulator first, second, third;

  template <class Values>
  void addBlocks(const Values& values, ptrdiff_t x, ptrdiff_t end) {
    Accumulator a, b, c;  // registers, as the members would not be
    for (; x < end; x += block) {
      a.add(values.at(x));
      b.add(values.at(x + lanes));
      c.add(values.at(x + 2 * lanes));
    }
    for (int p = 0; p < Accumulator::planes; ++p) {
      first.plane[p] = Accumulator::joined(first.plane[p], a.plane[p]);
      second.plane[p] = Accumulator::joined(second.plane[p], b.plane[p]);
      third.plane[p] = Accumulator::joined(third.plane[p], c.plane[p]);
    }
  }

  /// What is left of a row of n bytes at x, where a block would begin: one addition at most each.
  template <class Values>
  void addRest(const Values& values, ptrdiff_t x, ptrdiff_t n) {
    if (n < lanes) {
      first.add(values.padded(n));
      return;
    }
    if (n - x >= lanes) first.add(values.at(x));
    if (n - x >= 2 * lanes) second.add(values.at(x + lanes));
    // A row of whole pixels ends where a third vector does, as far as the channels go.
    const ptrdiff_t rest = (n - x) % lanes;
    if (rest > 0) third.add(lastBytes(values.at(n - lanes), rest));
  }

  /// Hands what was added to the totals and starts anew. Out of line, so that the loops keep their
  /// accumulators in registers.
  template <int channels>
  HWY_NOINLINE void take(uint64_t* totals) {
    for (int p = 0; p < Accumulator::planes; ++p) takePlane<channels>(p, totals);
    *this = Accumulators();
  }

  template <int channels>
  void takePlane(int p, uint64_t* totals) const {
    constexpr auto d = Accumulator::lane;
    constexpr size_t count = hn::MaxLanes(d);
    alignas(64) hn::TFromD<decltype(Accumulator::lane)> stored[3 * count];
    hn::Store(first.sums(p), d, stored);
    hn::Store(second.sums(p), d, stored + count);
    hn::Store(third.sums(p), d, stored + 2 * count);
    typename Accumulator::Wide values[3 * count];
    for (size_t i = 0; i < 3 * count; ++i) values[i] = stored[i];
    joinHalves<static_cast<int>(3 * count / 2)>(values);
    for (int i = 0; i < 3; ++i) {
      Accumulator::join(totals[(i * Accumulator::planes + p) % channels], uint64_t{values[i]});
    }
  }

  /// 3 * 2^k values down to 3. Values a multiple of 3 apart are of the same channel.
  template <int half>
  static void joinHalves(typename Accumulator::Wide* values) {
    for (int i = 0; i < half; ++i) Accumulator::join(values[i], values[half + i]);
    if constexpr (half > 3) joinHalves<half / 2>(values);
  }
};

template <template <int> class Measure, class Values, int channels>
void accumulate(const NormRegion& region, uint64_t* totals) {
  Accumulators<Measure<channels>> sums;
  constexpr ptrdiff_t block = sums.block;
  const ptrdiff_t n = region.rowBytes;
  ptrdiff_t room = Measure<channels>::limit;  // additions that each accumulator has left
  const auto spend = [&](ptrdiff_t additions) {
    room -= additions;
    if (room > 0) return;
    sums.template take<channels>(totals);
    room = Measure<channels>::limit;
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
  sums.template take<channels>(totals);
}

}  // namespace
}  // namespace vek::VEK_LEVEL

#include "image/stat/norm_kernels.h"

HWY_AFTER_NAMESPACE();

#else

#include "image/stat/norm_body.h"
// The kernels need the accumulation.
#include "image/stat/norm_kernels.h"

#endif
