// The threshold kernels of a level, from its row driver and its operators on samples.
#pragma once

#include "image/arith/threshold_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

void gtRow(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample t) { return lesser(v, t); }, dst, Samples{src},
      Repeated{constants[0].bytes});
}

void ltRow(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample t) { return greater(v, t); }, dst, Samples{src},
      Repeated{constants[0].bytes});
}

void gtValRow(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample t, Sample value) { return ifAbove(v, t, value, v); }, dst,
      Samples{src}, Repeated{constants[0].bytes}, Repeated{constants[1].bytes});
}

void ltValRow(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample t, Sample value) { return ifAbove(t, v, value, v); }, dst,
      Samples{src}, Repeated{constants[0].bytes}, Repeated{constants[1].bytes});
}

void ltValGtValRow(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
  const auto op = [](Sample v, Sample low, Sample valueLow, Sample high, Sample valueHigh) {
    return ifAbove(low, v, valueLow, ifAbove(v, high, valueHigh, v));
  };
  mapRow(n, op, dst, Samples{src}, Repeated{constants[0].bytes}, Repeated{constants[1].bytes},
         Repeated{constants[2].bytes}, Repeated{constants[3].bytes});
}

}  // namespace

constexpr ThresholdKernels thresholdKernels = {gtRow, ltRow, gtValRow, ltValRow, ltValGtValRow};

}  // namespace vek::VEK_LEVEL
