// The kernels of the real two-dimensional Fourier transform.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// One transform of 2^orderX columns and 2^orderY rows, orders 0 .. 10. Images and spectra may have
/// any address and overlap each other, but not the buffer.
struct RealFft {
  int orderX, orderY;
  const Vek8u* src;
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  Vek64f scale;    ///< a power of two that results are multiplied by before they are rounded
  Vek64f* buffer;  ///< fftBufferDoubles(), aligned to 64 bytes; what it holds is of no matter

  // Always inlined: objects of higher levels, which call these, must not define a symbol.
  [[gnu::always_inline]] ptrdiff_t width() const { return ptrdiff_t{1} << orderX; }
  [[gnu::always_inline]] ptrdiff_t height() const { return ptrdiff_t{1} << orderY; }
  /// Complex numbers in a row of the spectrum.
  [[gnu::always_inline]] ptrdiff_t columns() const { return width() / 2 + 1; }
};

/// The most one-dimensional transforms that a kernel calculates side by side.
inline constexpr int mostFftLanes = 8;

/// A spectrum, in strips of as many columns as there are lanes, and what these transforms need at a
/// time: two arrays of complex numbers for each.
constexpr int fftBufferDoubles(int orderX, int orderY) {
  const int columns = (1 << orderX) / 2 + 1, longer = 1 << (orderX > orderY ? orderX : orderY);
  const int inStrips = (columns + mostFftLanes - 1) / mostFftLanes * mostFftLanes;
  return 2 * (inStrips << orderY) + 2 * 2 * mostFftLanes * longer;
}

/// The whole source is read before the destination is written. Every sum and product is rounded to a
/// double, in the order that real_fft_body.h gives.
struct RealFftKernels {
  void (*forwardBytes)(const RealFft& fft);
  void (*forwardInts)(const RealFft& fft);
  void (*inverseBytes)(const RealFft& fft);
  void (*inverseInts)(const RealFft& fft);
};

VEK_KERNEL_TABLE(RealFftKernels, realFftKernels)

}  // namespace vek
