#include <string.h>

#include "core/assert.h"
#include "image/warp/interpolate.h"
#include "image/warp/warp_kernels.h"

namespace vek::portable {
namespace {

Vek32s least(Vek32s a, Vek32s b) {
  return a < b ? a : b;
}
Vek32s greatest(Vek32s a, Vek32s b) {
  return a < b ? b : a;
}

Vek32s limited(Vek64s position) {
  return static_cast<Vek32s>(position < noPosition    ? noPosition
                             : position > -noPosition ? -noPosition
                                                      : position);
}

WarpBox affine(const WarpLine& line, int fractionBits, int n, Vek32s* columns, Vek32s* rows) {
  VEK_ASSERT(n >= 1 && (fractionBits == 0 || fractionBits == 7));
  const int shift = 32 - fractionBits;
  const Vek64s half = Vek64s{1} << (shift - 1);
  Vek64s x = line.at[0] + half, y = line.at[1] + half;
  for (int k = 0; k < n; ++k, x += line.step[0], y += line.step[1]) {
    columns[k] = limited(x >> shift);
    rows[k] = limited(y >> shift);
  }
  // Neither changes its direction, so that the ends bound them.
  return {.left = least(columns[0], columns[n - 1]),
          .top = least(rows[0], rows[n - 1]),
          .right = greatest(columns[0], columns[n - 1]),
          .bottom = greatest(rows[0], rows[n - 1])};
}

/// floor(numerator / denominator), limited. Both are integers below 2^53 in magnitude, so that a
/// quotient that is no integer is at least 1 / denominator away from one: rounding it to a double does
/// not make it one.
Vek32s quotient(Vek64s numerator, Vek64s denominator) {
  double q = static_cast<double>(numerator) / static_cast<double>(denominator);
  q = q < noPosition ? noPosition : q > -noPosition ? -noPosition : q;
  const auto truncated = static_cast<Vek32s>(q);
  return truncated - (truncated > q ? 1 : 0);
}

WarpBox perspective(const WarpLine& line, int fractionBits, int n, Vek32s* columns, Vek32s* rows) {
  VEK_ASSERT(n >= 1 && (fractionBits == 0 || fractionBits == 7));
  Vek64s x = line.at[0], y = line.at[1], z = line.at[2];
  WarpBox box = {-noPosition, -noPosition, noPosition, noPosition};
  for (int k = 0; k < n; ++k, x += line.step[0], y += line.step[1], z += line.step[2]) {
    const Vek64s depth = z >> 8, scale = 2 << fractionBits;
    columns[k] = depth == 0 ? noPosition : quotient(scale * (x >> 8) + depth, 2 * depth);
    rows[k] = depth == 0 ? noPosition : quotient(scale * (y >> 8) + depth, 2 * depth);
    box = {least(box.left, columns[k]), least(box.top, rows[k]), greatest(box.right, columns[k]),
           greatest(box.bottom, rows[k])};
  }
  return box;
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

constexpr WarpKernels warpKernels = {
    .affine = affine, .perspective = perspective, .c1 = samplers<1>, .c3 = samplers<3>};

}  // namespace vek::portable
