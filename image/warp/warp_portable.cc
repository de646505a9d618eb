#include <string.h>

#include "core/assert.h"
#include "image/warp/interpolate.h"
#include "image/warp/perspective_body.h"
#include "image/warp/warp_kernels.h"

namespace vek::portable {
namespace {

Vek32s limited(Vek64s position) {
  return static_cast<Vek32s>(position < noPosition    ? noPosition
                             : position > -noPosition ? -noPosition
                                                      : position);
}

WarpBox affine(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  const int shift = 32 - fractionBits;
  const Vek64s half = Vek64s{1} << (shift - 1);
  Vek64s x = line.at[0] + half, y = line.at[1] + half;
  for (int k = 0; k < n; ++k, x += line.step[0], y += line.step[1]) {
    to.columns[k] = limited(x >> shift);
    to.rows[k] = limited(y >> shift);
  }
  return to.boundsOfLine(n);
}

int run(const WarpPositions& positions, int first, int n, const WarpBox& box, bool within) {
  VEK_ASSERT(first >= 0 && first < n && n <= WarpPositions::most);
  for (int k = first; k < n; ++k) {
    const Vek32s column = positions.columns[k], row = positions.rows[k];
    const bool inside =
        column >= box.left && column <= box.right && row >= box.top && row <= box.bottom;
    if (inside != within) return k - first;
  }
  return n - first;
}

/// The first sample of column i and row j.
template <int channels>
const Vek8u* sampleAt(const WarpSource& src, int i, int j) {
  return src.data + j * src.step + ptrdiff_t{channels} * i;
}

template <int channels>
void nearest(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k, dst += channels) {
    memcpy(dst, sampleAt<channels>(src, columns[k], rows[k]), channels);
  }
}

template <int channels>
void linearRow(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n,
               Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k) {
    const Vek8u* const first = sampleAt<channels>(src, columns[k] >> 7, rows[k] >> 7);
    for (int c = 0; c < channels; ++c) {
      const auto at = [&](int a, int b) { return first[b * src.step + a * channels + c]; };
      *dst++ = linear(at, columns[k] & 127, rows[k] & 127);
    }
  }
}

template <int channels>
void cubicRow(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k) {
    const Vek8u* const first = sampleAt<channels>(src, (columns[k] >> 7) - 1, (rows[k] >> 7) - 1);
    for (int c = 0; c < channels; ++c) {
      const auto at = [&](int a, int b) { return first[b * src.step + a * channels + c]; };
      *dst++ = cubic(at, columns[k] & 127, rows[k] & 127);
    }
  }
}

template <int channels>
constexpr WarpSamplers samplers = {.nearest = {nearest<channels>, channels},
                                   .linear = {linearRow<channels>, 2 * channels},
                                   .cubic = {cubicRow<channels>, 4 * channels}};

}  // namespace

constexpr WarpKernels warpKernels = {.affine = affine,
                                     .perspective = positionsOneByOne,
                                     .run = run,
                                     .c1 = samplers<1>,
                                     .c3 = samplers<3>};

}  // namespace vek::portable
