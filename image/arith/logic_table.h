// The logic kernels of a level, from its row driver. Samples and vectors spell the operators alike.
#pragma once

#include "image/arith/logic_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// `Second` is Samples or Repeated.
template <class Second>
void andRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample x, Sample y) { return Sample(x & y); }, dst, Samples{a}, Second{b});
}

template <class Second>
void orRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample x, Sample y) { return Sample(x | y); }, dst, Samples{a}, Second{b});
}

template <class Second>
void xorRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample x, Sample y) { return Sample(x ^ y); }, dst, Samples{a}, Second{b});
}

}  // namespace

constexpr LogicKernels logicKernels = {andRow<Samples>, andRow<Repeated>, orRow<Samples>,
                                       orRow<Repeated>, xorRow<Samples>,  xorRow<Repeated>};

}  // namespace vek::VEK_LEVEL
