// The plain row loop of the pointwise kernels. Its operators take samples and return samples.
#pragma once

#include <stddef.h>

#include "image/arith/pattern.h"

namespace vek::VEK_LEVEL {
namespace {

using Sample = Vek8u;

/// What an operator reads: a row, or a repeating Pattern. from(x) is where the run that begins at
/// sample x of the row lies; x is a multiple of the pattern's period.
struct Samples {
  const Vek8u* data;
  const Vek8u* from(ptrdiff_t x) const { return data + x; }
};
struct Repeated {
  const Vek8u* pattern;
  const Vek8u* from(ptrdiff_t) const { return pattern; }
};

// In place is fine: sample i of the sources is read before sample i of the destination is written,
// and nothing else depends on the order.
template <class Operator, class... Bytes>
void mapRun(ptrdiff_t n, Operator op, Vek8u* dst, Bytes... src) {
#if defined(__clang__)
#pragma clang loop vectorize(assume_safety)
#else
#pragma GCC ivdep
#endif
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = op(src[i]...);
}

/// dst[i] = op(sources at i...) for the n samples of a row.
template <class Operator, class... Source>
void mapRow(ptrdiff_t n, Operator op, Vek8u* dst, Source... source) {
  for (ptrdiff_t x = 0; x < n; x += Pattern::period) {
    const ptrdiff_t rest = n - x;
    mapRun(rest < Pattern::period ? rest : Pattern::period, op, dst + x, source.from(x)...);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
