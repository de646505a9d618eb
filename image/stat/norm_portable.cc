// The accumulation of norms sample by sample.
#include <stddef.h>
#include <stdint.h>
#include <type_traits>

#include "core/assert.h"
#include "core/kernel/words.h"
#include "image/stat/norm_kernels.h"

namespace vek::portable {
namespace {

// Bytes and their squares in types that suit vectors, or registers.
using Sample = std::conditional_t<hasWords, Vek8u, Vek32u>;
using Square = std::conditional_t<hasWords, Vek16u, Vek32u>;

struct Image {
  static Sample at(const Vek8u* a, const Vek8u*, ptrdiff_t i) { return a[i]; }
};
struct Difference {
  static Sample at(const Vek8u* a, const Vek8u* b, ptrdiff_t i) {
    if constexpr (hasWords) {
      return static_cast<Sample>((a[i] > b[i] ? a[i] : b[i]) - (a[i] > b[i] ? b[i] : a[i]));
    }
    return static_cast<Sample>(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
  }
};

/// A total of type `Narrow` takes `most` values.
struct Largest {
  using Narrow = Vek8u;
  [[maybe_unused]] static constexpr ptrdiff_t most = PTRDIFF_MAX;
  template <class Total>
  static void take(Total& total, Total v) {
    total = v > total ? v : total;
  }
  static Sample of(Sample v) { return v; }
};
struct Sum {
  using Narrow = Vek16u;
  [[maybe_unused]] static constexpr ptrdiff_t most = 257;  // 257 * 255 < 2^16
  template <class Total>
  static void take(Total& total, Total v) {
    total = static_cast<Total>(total + v);
  }
  static Sample of(Sample v) { return v; }
};
struct SumOfSquares : Sum {
  using Narrow = Vek32u;
  [[maybe_unused]] static constexpr ptrdiff_t most = 65536;  // 65536 * 255 * 255 < 2^32
  static Square of(Sample v) { return static_cast<Square>(v * v); }
};

/// The totals of the channels, in registers. A row comes in blocks of `bytes` bytes at most, and after
/// `blocks` of them the totals are full.
template <class Measure, int channels>
class ChannelTotals {
 public:
  static constexpr ptrdiff_t bytes = SumOfSquares::most * channels, blocks = 1;

  template <class Values>
  void take(const Vek8u* a, const Vek8u* b, ptrdiff_t n) {
    Vek32u totals[channels] = {};
    for (ptrdiff_t i = 0; i < n; i += channels) {
      for (int c = 0; c < channels; ++c) {
        Measure::take(totals[c], Vek32u{Measure::of(Values::at(a, b, i + c))});
      }
    }
    for (int c = 0; c < channels; ++c) totals_[c] = totals[c];
  }
  void moveTo(uint64_t* totals) {
    for (int c = 0; c < channels; ++c) {
      Measure::take(totals[c], uint64_t{totals_[c]});
      totals_[c] = 0;
    }
  }

 private:
  Vek32u totals_[channels] = {};
};

/// A total for each byte of a block. Vectors take them in narrow lanes, whatever the channels are.
template <class Measure, int channels>
class ByteTotals {
 public:
  static constexpr ptrdiff_t bytes = 384, blocks = Measure::most;  // whole pixels and vectors

  template <class Values>
  void take(const Vek8u* a, const Vek8u* b, ptrdiff_t n) {
    if (n == bytes) return takeBlock<Values>(a, b);
    for (ptrdiff_t i = 0; i < n; ++i) {
      Measure::take(totals_[i],
                    static_cast<typename Measure::Narrow>(Measure::of(Values::at(a, b, i))));
    }
  }
  /// Unrolled: up to a quarter less time, and its speed depends less on where it is placed.
  template <class Values>
  void takeBlock(const Vek8u* __restrict a, const Vek8u* __restrict b) {
#pragma GCC unroll 4
    for (ptrdiff_t i = 0; i < bytes; ++i) {
      Measure::take(totals_[i],
                    static_cast<typename Measure::Narrow>(Measure::of(Values::at(a, b, i))));
    }
  }
  void moveTo(uint64_t* totals) {
    for (ptrdiff_t i = 0; i < bytes; ++i) {
      Measure::take(totals[i % channels], uint64_t{totals_[i]});
      totals_[i] = 0;
    }
  }

 private:
  typename Measure::Narrow totals_[bytes] = {};
};

/// Squares need lanes of 32 bits either way, and compilers add them up in registers, too, but for those
/// of differences in three channels.
template <class Measure, class Values, int channels>
constexpr bool fitRegisters = std::is_same_v<Measure, SumOfSquares> &&
                              (channels == 1 || std::is_same_v<Values, Image>);

template <class Measure, class Values, int channels>
using Totals = std::conditional_t<!hasWords || fitRegisters<Measure, Values, channels>,
                                  ChannelTotals<Measure, channels>, ByteTotals<Measure, channels>>;

template <class Measure, class Values, int channels>
void accumulate(const NormRegion& region, uint64_t* totals) {
  VEK_ASSERT(region.rows >= 1 && region.rowBytes >= channels && region.rowBytes % channels == 0);
  using Block = Totals<Measure, Values, channels>;
  Block block;
  ptrdiff_t room = Block::blocks;
  for (ptrdiff_t y = 0; y < region.rows; ++y) {
    const Vek8u* a = region.a + y * region.aStep;
    const Vek8u* b = region.b + y * region.bStep;
    for (ptrdiff_t x = 0; x < region.rowBytes; x += Block::bytes) {
      const ptrdiff_t rest = region.rowBytes - x;
      block.template take<Values>(a + x, b + x, rest < Block::bytes ? rest : Block::bytes);
      if (--room > 0) continue;
      block.moveTo(totals);
      room = Block::blocks;
    }
  }
  block.moveTo(totals);
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

}  // namespace vek::portable
