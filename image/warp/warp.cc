#include "image/warp/warp.h"

#include "vek/image.h"

#include <math.h>
#include <string.h>

#include "core/check.h"
#include "image/warp/interpolate.h"
#include "image/warp/warp_kernels.h"

namespace vek {
namespace {

using portable::cubic, portable::linear;

/// The samples around a position that interpolation reads: `count` in each direction, the first one
/// `before` the position's whole pixel.
struct Taps {
  int count, before;
};
constexpr Taps tapsOf[] = {{1, 0}, {2, 0}, {4, 1}};

/// A call's walk over its destination.
class Walk {
 public:
  Walk(const WarpArguments& a, int channels, const WarpKernels& kernels);

  /// Writes n pixels at these positions, which have these bounds.
  void write(const WarpPositions& positions, const WarpBox& bounds, int n, Vek8u* dst) const;

  const int channels, fractionBits;

 private:
  void sample(const WarpPositions& positions, int first, int n, Vek8u* dst) const {
    sampler_.sample({a_.pSrc, a_.srcStep}, positions.columns + first, positions.rows + first, n,
                    dst);
  }
  bool isEdge(Vek32s column, Vek32s row) const {
    const WarpBox position = {column, row, column, row};
    return touched_.contains(position) && !inside_.contains(position);
  }
  void writeOutside(int n, Vek8u* dst) const;
  void writeEdge(Vek32s column, Vek32s row, Vek8u* dst) const;
  const Vek8u* pixelAt(int i, int j) const;
  WarpBox positionsOfPixels(int left, int top, int right, int bottom) const;

  const WarpArguments& a_;
  const WarpKernels& kernels_;
  const Taps taps_;
  WarpSampler sampler_;
  WarpBox inside_;   ///< positions that the sampler may have
  WarpBox touched_;  ///< positions at which the source has a part in the result
};

Walk::Walk(const WarpArguments& a, int pixelChannels, const WarpKernels& kernels)
    : channels(pixelChannels),
      fractionBits(a.interpolation == vekiWarpNearest ? 0 : 7),
      a_(a),
      kernels_(kernels),
      taps_(tapsOf[a.interpolation]) {
  const WarpSamplers& samplers = channels == 1 ? kernels.c1 : kernels.c3;
  sampler_ = a.interpolation == vekiWarpNearest  ? samplers.nearest
             : a.interpolation == vekiWarpLinear ? samplers.linear
                                                 : samplers.cubic;
  const auto [width, height] = a.srcSize;
  const int pixels = (static_cast<int>(sampler_.bytes) + channels - 1) / channels;
  inside_ = positionsOfPixels(taps_.before, taps_.before, width - pixels + taps_.before,
                              height - taps_.count + taps_.before);
  if (a.border == vekiBorderConstant) {
    const int beyond = taps_.count - 1 - taps_.before;
    touched_ =
        positionsOfPixels(-beyond, -beyond, width - 1 + taps_.before, height - 1 + taps_.before);
  } else if (a.border == vekiBorderTransparent) {
    touched_ = {0, 0, (width - 1) << fractionBits, (height - 1) << fractionBits};
  } else {
    touched_ = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};
  }
}

/// The positions whose whole pixels have these bounds.
WarpBox Walk::positionsOfPixels(int left, int top, int right, int bottom) const {
  const int unit = 1 << fractionBits;
  return {left * unit, top * unit, right * unit + unit - 1, bottom * unit + unit - 1};
}

void Walk::write(const WarpPositions& positions, const WarpBox& bounds, int n, Vek8u* dst) const {
  if (inside_.contains(bounds)) return sample(positions, 0, n, dst);
  if (!touched_.meets(bounds)) return writeOutside(n, dst);
  for (int k = 0; k < n;) {
    const int inside = kernels_.run(positions, k, n, inside_, true);
    if (inside > 0) sample(positions, k, inside, dst + k * channels);
    k += inside;
    const int outside = k < n ? kernels_.run(positions, k, n, touched_, false) : 0;
    writeOutside(outside, dst + k * channels);
    k += outside;
    while (k < n && isEdge(positions.columns[k], positions.rows[k])) {
      writeEdge(positions.columns[k], positions.rows[k], dst + k * channels);
      ++k;
    }
  }
}

void Walk::writeOutside(int n, Vek8u* dst) const {
  if (a_.border != vekiBorderConstant) return;
  if (channels == 1) {
    memset(dst, *a_.borderValue, static_cast<size_t>(n));
  } else {
    for (int k = 0; k < n; ++k, dst += 3) memcpy(dst, a_.borderValue, 3);
  }
}

/// The pixel of column i and row j, or what the border has in its place.
const Vek8u* Walk::pixelAt(int i, int j) const {
  const auto clamped = [](int v, int side) { return v < 0 ? 0 : v < side ? v : side - 1; };
  const int column = clamped(i, a_.srcSize.width), row = clamped(j, a_.srcSize.height);
  if (a_.border == vekiBorderConstant && (column != i || row != j)) return a_.borderValue;
  return a_.pSrc + ptrdiff_t{row} * a_.srcStep + ptrdiff_t{column} * channels;
}

void Walk::writeEdge(Vek32s column, Vek32s row, Vek8u* dst) const {
  const int i = (column >> fractionBits) - taps_.before, j = (row >> fractionBits) - taps_.before;
  const Vek8u* pixels[4][4];
  for (int b = 0; b < taps_.count; ++b) {
    for (int a = 0; a < taps_.count; ++a) pixels[b][a] = pixelAt(i + a, j + b);
  }
  for (int c = 0; c < channels; ++c) {
    const auto at = [&](int a, int b) { return pixels[b][a][c]; };
    dst[c] = a_.interpolation == vekiWarpNearest  ? at(0, 0)
             : a_.interpolation == vekiWarpLinear ? linear(at, column & 127, row & 127)
                                                  : cubic(at, column & 127, row & 127);
  }
}

/// Whether `first` .. `first` + `count` - 1 lie within -32768 .. 32767 and count is at least 1.
bool isDrawable(int first, int count) {
  return count >= 1 && first >= -32768 && Vek64s{first} + count <= 32768;
}

bool isSide(int side) {
  return side >= 1 && side <= 32767;
}

bool isSelector(int value) {
  return value >= 0 && value <= 2;
}

}  // namespace

VekStatus checkWarp(const WarpArguments& a, int channels) {
  if (anyNull({a.pSrc, a.pDst, a.pCoeffs})) return vekStsNullPtrErr;
  if (!isSide(a.srcSize.width) || !isSide(a.srcSize.height)) return vekStsSizeErr;
  if (!isDrawable(a.dstRect.x, a.dstRect.width) || !isDrawable(a.dstRect.y, a.dstRect.height)) {
    return vekStsSizeErr;
  }
  if (anyBelowOne({a.srcStep, a.dstStep})) return vekStsStepErr;
  if (a.srcStep < a.srcSize.width * channels || a.dstStep < a.dstRect.width * channels) {
    return vekStsStrideErr;
  }
  if (a.direction != vekiWarpForward && a.direction != vekiWarpInverse) {
    return vekStsNotSupportedModeErr;
  }
  if (!isSelector(a.interpolation) || !isSelector(a.border)) return vekStsNotSupportedModeErr;
  if (a.border == vekiBorderConstant && a.borderValue == nullptr) return vekStsNullPtrErr;
  return vekStsNoErr;
}

Vek64s scaledInteger(Vek64f v, int power) {
  uint64_t bits;
  memcpy(&bits, &v, sizeof bits);
  const int exponent = static_cast<int>(bits >> 52 & 2047);
  const uint64_t implied = exponent > 0 ? uint64_t{1} << 52 : 0;
  const uint64_t significand = (bits & ((uint64_t{1} << 52) - 1)) | implied;
  const int shift = (exponent > 0 ? exponent : 1) - 1075 + power;
  uint64_t magnitude = 0;
  if (shift >= 0) {
    magnitude = significand << shift;
  } else if (shift >= -53) {
    const uint64_t half = uint64_t{1} << (-shift - 1);
    magnitude = significand >> -shift;
    magnitude = (significand + half - 1 + (magnitude & 1)) >> -shift;
  }
  const auto result = static_cast<Vek64s>(magnitude);
  return bits >> 63 != 0 ? -result : result;
}

Vek64f mostNumerator(const Vek64f* row) {
  return (fabs(row[0]) + fabs(row[1])) * 32768 + fabs(row[2]);
}

void warp(const WarpArguments& a, int channels, const Vek64s (&map)[9], bool perspective) {
  const Vek64s lastRow = Vek64s{a.srcSize.height - 1} * a.srcStep;
  // Levels above portable count in 32 bits; a source as large as this has a step of gigabytes.
  const bool fits = lastRow <= INT32_MAX - a.srcSize.width * channels;
  const WarpKernels& kernels = fits ? select(warpKernels) : portable::warpKernels;
  const FindPositions find = perspective ? kernels.perspective : kernels.affine;
  const Walk walk(a, channels, kernels);
  WarpPositions positions;
  for (int y = 0; y < a.dstRect.height; ++y) {
    Vek8u* const dst = a.pDst + ptrdiff_t{y} * a.dstStep;
    for (int x = 0; x < a.dstRect.width; x += WarpPositions::most) {
      const int left = a.dstRect.width - x,
                n = left < WarpPositions::most ? left : WarpPositions::most;
      WarpLine line;
      for (int i = 0; i < 3; ++i) {
        const Vek64s* const row = map + 3 * i;
        line.step[i] = row[0];
        line.at[i] = row[0] * (a.dstRect.x + x) + row[1] * (a.dstRect.y + y) + row[2];
      }
      const WarpBox bounds = find(line, walk.fractionBits, n, positions);
      walk.write(positions, bounds, n, dst + ptrdiff_t{x} * channels);
    }
  }
}

}  // namespace vek
