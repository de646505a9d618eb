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

/// How many of a row's `taps` samples, 1, 2 or 4, are before the position's whole pixel.
constexpr int tapsBefore(int taps) {
  return taps == 4 ? 1 : 0;
}

/// Clamped to 0 .. side - 1.
int clamped(int v, int side) {
  return v < 0 ? 0 : v < side ? v : side - 1;
}

/// Writes the pixel at a position at which the border has a part in the result.
template <int channels, int taps>
void writeEdge(const WarpArguments& call, Vek32s column, Vek32s row, Vek8u* dst) {
  constexpr int fractionBits = taps == 1 ? 0 : 7;
  const bool constant = call.border == vekiBorderConstant;
  const int i = (column >> fractionBits) - tapsBefore(taps);
  const int j = (row >> fractionBits) - tapsBefore(taps);
  int offsets[taps];
  bool beside[taps];
  for (int a = 0; a < taps; ++a) {
    const int inside = clamped(i + a, call.srcSize.width);
    offsets[a] = inside * channels;
    beside[a] = constant && inside != i + a;
  }
  const Vek8u* pixels[taps][taps];
  for (int b = 0; b < taps; ++b) {
    const int inside = clamped(j + b, call.srcSize.height);
    const Vek8u* const samples = call.pSrc + ptrdiff_t{inside} * call.srcStep;
    const bool above = constant && inside != j + b;
    for (int a = 0; a < taps; ++a) {
      pixels[b][a] = above || beside[a] ? call.borderValue : samples + offsets[a];
    }
  }
  for (int c = 0; c < channels; ++c) {
    const auto at = [&](int a, int b) { return pixels[b][a][c]; };
    if constexpr (taps == 1) {
      dst[c] = at(0, 0);
    } else {
      dst[c] = taps == 2 ? linear(at, column & 127, row & 127) : cubic(at, column & 127, row & 127);
    }
  }
}

using WriteEdges = void (*)(const WarpArguments& call, const Vek32s* columns, const Vek32s* rows,
                            int n, Vek8u* dst);

template <int channels, int taps>
void writeEdges(const WarpArguments& call, const Vek32s* columns, const Vek32s* rows, int n,
                Vek8u* dst) {
  for (int k = 0; k < n; ++k) {
    writeEdge<channels, taps>(call, columns[k], rows[k], dst + k * channels);
  }
}

/// What an interpolation does, for the numbers of its selector.
struct Interpolation {
  int taps;
  WarpSampler WarpSamplers::*sampler;
  WriteEdges edgesC1, edgesC3;
};
constexpr Interpolation interpolations[] = {
    {1, &WarpSamplers::nearest, writeEdges<1, 1>, writeEdges<3, 1>},
    {2, &WarpSamplers::linear, writeEdges<1, 2>, writeEdges<3, 2>},
    {4, &WarpSamplers::cubic, writeEdges<1, 4>, writeEdges<3, 4>}};

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
  WarpBox positionsOfPixels(int left, int top, int right, int bottom) const;

  const WarpArguments& a_;
  const WarpKernels& kernels_;
  WarpSampler sampler_;
  WriteEdges writeEdges_;
  WarpBox inside_;   ///< positions that the sampler may have
  WarpBox touched_;  ///< positions at which the source has a part in the result
};

Walk::Walk(const WarpArguments& a, int pixelChannels, const WarpKernels& kernels)
    : channels(pixelChannels),
      fractionBits(a.interpolation == vekiWarpNearest ? 0 : 7),
      a_(a),
      kernels_(kernels) {
  const Interpolation& interpolation = interpolations[a.interpolation];
  sampler_ = (channels == 1 ? kernels.c1 : kernels.c3).*interpolation.sampler;
  writeEdges_ = channels == 1 ? interpolation.edgesC1 : interpolation.edgesC3;
  const auto [width, height] = a.srcSize;
  const int taps = interpolation.taps, before = tapsBefore(taps);
  const int pixels = (static_cast<int>(sampler_.bytes) + channels - 1) / channels;
  inside_ = positionsOfPixels(before, before, width - pixels + before, height - taps + before);
  if (a.border == vekiBorderConstant) {
    const int after = taps - 1 - before;
    touched_ = positionsOfPixels(-after, -after, width - 1 + before, height - 1 + before);
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
    const int first = k;
    while (k < n && isEdge(positions.columns[k], positions.rows[k])) ++k;
    writeEdges_(a_, positions.columns + first, positions.rows + first, k - first,
                dst + first * channels);
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
