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

struct TakeLargest {
  void operator()(uint64_t& total, uint64_t v) const { total = v > total ? v : total; }
};
struct TakeSum {
  void operator()(uint64_t& total, uint64_t v) const { total += v; }
};

/// Takes the lanes of `v` into the totals of their channels. Lane i holds what came from the byte
/// at `position` + i * `stride` of a row, so every third lane is of the same channel.
template <int channels, class D, class Take>
void takeLanes(D d, hn::Vec<D> v, int position, int stride, uint64_t* totals, Take take) {
  constexpr int count = static_cast<int>(hn::MaxLanes(D()));
  alignas(64) hn::TFromD<D> lane[count];
  hn::Store(v, d, lane);
  uint64_t part[channels] = {};
  for (int i = 0; i < count; ++i) take(part[i % channels], lane[i]);
  for (int k = 0; k < channels; ++k) take(totals[(position + k * stride) % channels], part[k]);
}

// Accumulators: add() takes a vector of values, take() hands what was added to the totals and
// starts anew. Nothing overflows within `limit` additions. All of them keep the channels of C3
// apart by lane; those of the sums for C1 need not, and are cheaper.

constexpr ptrdiff_t unlimited = PTRDIFF_MAX;

template <int channels>
struct Largest {
  static constexpr ptrdiff_t limit = unlimited;
  VBytes most = hn::Zero(bytes);

  void add(VBytes v) { most = hn::Max(most, v); }
  void take(int position, uint64_t* totals) {
    takeLanes<channels>(bytes, most, position, 1, totals, TakeLargest{});
    most = hn::Zero(bytes);
  }
};

template <int channels>
struct Sum;

template <>
struct Sum<1> {
  static constexpr ptrdiff_t limit = unlimited;
  hn::Vec<decltype(qwords)> sum = hn::Zero(qwords);

  void add(VBytes v) { sum = hn::Add(sum, hn::SumsOf8(v)); }
  void take(int, uint64_t* totals) {
    takeLanes<1>(qwords, sum, 0, 0, totals, TakeSum{});
    sum = hn::Zero(qwords);
  }
};

template <>
struct Sum<3> {
  static constexpr ptrdiff_t limit = 257;  // 257 * 255 = 65535
  VWords even = hn::Zero(words);
  VWords odd = hn::Zero(words);

  void add(VBytes v) {
    even = hn::Add(even, evenSamples(v));
    odd = hn::Add(odd, oddSamples(v));
  }
  void take(int position, uint64_t* totals) {
    takeLanes<3>(words, even, position, 2, totals, TakeSum{});
    takeLanes<3>(words, odd, position + 1, 2, totals, TakeSum{});
    even = odd = hn::Zero(words);
  }
};

template <int channels>
struct SumOfSquares;

template <>
struct SumOfSquares<1> {
  static constexpr ptrdiff_t limit = 16512;  // 16512 * 4 * 255 * 255 < 2^32: four bytes a lane
  hn::Vec<decltype(sdwords)> sum = hn::Zero(sdwords);
  hn::Vec<decltype(sdwords)> other = hn::Zero(sdwords);  // unused where a lane takes whole pairs

  void add(VBytes v) {
    const auto even = hn::BitCast(swords, evenSamples(v));
    const auto odd = hn::BitCast(swords, oddSamples(v));
    sum = hn::ReorderWidenMulAccumulate(sdwords, even, even, sum, other);
    sum = hn::ReorderWidenMulAccumulate(sdwords, odd, odd, sum, other);
  }
  void take(int, uint64_t* totals) {
    takeLanes<1>(dwords, hn::BitCast(dwords, sum), 0, 0, totals, TakeSum{});
    takeLanes<1>(dwords, hn::BitCast(dwords, other), 0, 0, totals, TakeSum{});
    sum = other = hn::Zero(sdwords);
  }
};

template <>
struct SumOfSquares<3> {
  static constexpr ptrdiff_t limit = 66051;  // 66051 * 255 * 255 < 2^32
  VDwords sum[4] = {hn::Zero(dwords), hn::Zero(dwords), hn::Zero(dwords), hn::Zero(dwords)};

  /// Squares fit 16 bits; the low and the high ones of each pair go to their own sums.
  void add(VBytes v) {
    const VWords even = evenSamples(v), odd = oddSamples(v);
    addPairs(hn::BitCast(dwords, hn::Mul(even, even)), sum[0], sum[2]);
    addPairs(hn::BitCast(dwords, hn::Mul(odd, odd)), sum[1], sum[3]);
  }
  static void addPairs(VDwords squares, VDwords& low, VDwords& high) {
    low = hn::Add(low, hn::And(squares, hn::Set(dwords, 0xFFFF)));
    high = hn::Add(high, hn::ShiftRight<16>(squares));
  }
  void take(int position, uint64_t* totals) {
    for (int i = 0; i < 4; ++i) {
      takeLanes<3>(dwords, sum[i], position + i, 4, totals, TakeSum{});
      sum[i] = hn::Zero(dwords);
    }
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
    Accumulators sums = *this;  // registers for the loop
    for (; x < end; x += block) {
      sums.first.add(values.at(x));
      sums.second.add(values.at(x + lanes));
      sums.third.add(values.at(x + 2 * lanes));
    }
    *this = sums;
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

  void take(uint64_t* totals) {
    first.take(0, totals);
    second.take(lanes, totals);
    third.take(2 * lanes, totals);
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
    sums.take(totals);
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
  sums.take(totals);
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
