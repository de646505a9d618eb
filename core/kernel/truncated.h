// Floats to integers.
#pragma once

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// v without its fraction, for values that fit: Highway's conversion sees to those that do not.
inline hn::Vec<hn::ScalableTag<Vek32s>> truncated(hn::Vec<hn::ScalableTag<float>> v) {
#if defined(__AVX512F__)
  return hn::Vec<hn::ScalableTag<Vek32s>>{_mm512_cvttps_epi32(v.raw)};
#elif defined(__AVX2__)
  return hn::Vec<hn::ScalableTag<Vek32s>>{_mm256_cvttps_epi32(v.raw)};
#else
  return hn::ConvertTo(hn::ScalableTag<Vek32s>(), v);
#endif
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
