// Plain lanes of the pointwise kernels: an operator takes single samples and returns a sample.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <type_traits>

#include "image/arith/pattern.h"

namespace vek::portable {
namespace {

struct PlainLanes {
  using Sample = Vek8u;

  /// A row of an image. from(x) is what an operator reads from sample x of the row on.
  struct Samples {
    const Vek8u* data;
    const Vek8u* from(ptrdiff_t x) const { return data + x; }
  };
  /// The bytes of a Pattern, which begin anew wherever x is a multiple of its period.
  struct Repeated {
    const Vek8u* pattern;
    const Vek8u* from(ptrdiff_t) const { return pattern; }
  };

  /// dst[i] = op(sources at i...) for the n samples of a row. A source may be the destination: sample
  /// i of the sources is read before sample i of the destination is written.
  template <class Operator, class... Source>
  static void mapRow(ptrdiff_t n, Operator op, Vek8u* dst, Source... source) {
    if constexpr ((std::is_same_v<Source, Samples> && ...)) {
      mapRun(n, op, dst, source.data...);
    } else {
      // Whole periods have a loop of a known length.
      ptrdiff_t x = 0;
      for (; x <= n - Pattern::period; x += Pattern::period) {
        mapRun(Pattern::period, op, dst + x, source.from(x)...);
      }
      if (x < n) mapRun(n - x, op, dst + x, source.from(x)...);
    }
  }

 private:
  // The compiler may reorder the samples of a run, since none depends on another.
  template <class Operator, class... Bytes>
  [[gnu::always_inline]] static inline void mapRun(ptrdiff_t n, Operator op, Vek8u* dst,
                                                   Bytes... src) {
#if defined(__clang__)
#pragma clang loop vectorize(assume_safety)
#else
#pragma GCC ivdep
#endif
    for (ptrdiff_t i = 0; i < n; ++i) dst[i] = op(src[i]...);
  }
};

}  // namespace
}  // namespace vek::portable
