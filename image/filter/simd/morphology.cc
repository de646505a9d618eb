#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "image/filter/morphology_kernels.h"
#include "image/filter/neighbours.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct Least {
  static constexpr MorphologyRows MorphologyKernels::*rows = &MorphologyKernels::erode;

  static V8u of(V8u a, V8u b) { return hn::Min(a, b); }
};
struct Greatest {
  static constexpr MorphologyRows MorphologyKernels::*rows = &MorphologyKernels::dilate;

  static V8u of(V8u a, V8u b) { return hn::Max(a, b); }
};

/// The three rows of the neighbourhoods of a destination row; `upper` begins with the first
/// neighbourhood.
template <class Extreme>
struct ThreeRows {
  const Vek8u* upper;
  ptrdiff_t step;
  Vek8u* dst;

  V8u columns(ptrdiff_t x) const {
    const auto row = [&](ptrdiff_t y) { return hn::LoadU(u8, upper + y * step + x); };
    return Extreme::of(Extreme::of(row(0), row(1)), row(2));
  }
  void store(V8u first, V8u second, V8u third, ptrdiff_t x) const {
    hn::StoreU(Extreme::of(Extreme::of(first, second), third), u8, dst + x);
  }
};

template <class Extreme, int pixelBytes>
void extreme3x3(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t n) {
  VEK_ASSERT(n >= 1);
  if (n < vectorBytes) {
    const MorphologyRows& rows = portable::morphologyKernels.*Extreme::rows;
    return (pixelBytes == 1 ? rows.c1 : rows.c3)(src, srcStep, dst, n);
  }
  const ThreeRows<Extreme> rows = {src - srcStep - pixelBytes, srcStep, dst};
  forWindowsOf3<pixelBytes>(rows, n);
}

}  // namespace

constexpr MorphologyKernels morphologyKernels = {
    .erode = {.c1 = extreme3x3<Least, 1>, .c3 = extreme3x3<Least, 3>},
    .dilate = {.c1 = extreme3x3<Greatest, 1>, .c3 = extreme3x3<Greatest, 3>},
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
