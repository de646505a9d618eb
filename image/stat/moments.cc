// Moments up to the third order.
#include "vek/image.h"

#include <string.h>

#include "core/check.h"
#include "core/int128.h"
#include "core/tagged.h"
#include "image/stat/moments_kernels.h"
#include "image/stat/moments_shifted.h"

namespace vek {
namespace {

constexpr int mostSide = 16384;
constexpr int mostOrigin = 1 << 30;

// ---- The state: words, of which all but the tag, the count of channels and their sums are 0.

/// The sums of a channel. Those up to the second order stay below 2^63 in every image.
struct StoredSums {
  Vek64s upToSecond[6];
  Int128 third[4];
};

constexpr int countWord = 1, sumsWord = 2;
constexpr int wordsOfChannel = sizeof(StoredSums) / 4;
constexpr int stateWords = fewestTaggedWords;
static_assert(sumsWord + 3 * wordsOfChannel <= momentTag.word);

using Sums = MomentsOf<Int128>;

void store(Vek32u* state, int channel, const Sums& m) {
  const auto narrow = [](Int128 v) { return static_cast<Vek64s>(v.low); };
  const StoredSums stored = {.upToSecond = {narrow(m.m00), narrow(m.m10), narrow(m.m01),
                                            narrow(m.m20), narrow(m.m11), narrow(m.m02)},
                             .third = {m.m30, m.m21, m.m12, m.m03}};
  memcpy(state + sumsWord + channel * wordsOfChannel, &stored, sizeof stored);
}

Sums load(const Vek32u* state, int channel) {
  StoredSums stored;
  memcpy(&stored, state + sumsWord + channel * wordsOfChannel, sizeof stored);
  const auto [m00, m10, m01, m20, m11, m02] = stored.upToSecond;
  const auto [m30, m21, m12, m03] = stored.third;
  return {m00, m10, m01, m20, m11, m02, m30, m21, m12, m03};
}

// ---- Exact sums.

Sums operator+(const Sums& a, const Sums& b) {
  return {a.m00 + b.m00, a.m10 + b.m10, a.m01 + b.m01, a.m20 + b.m20, a.m11 + b.m11,
          a.m02 + b.m02, a.m30 + b.m30, a.m21 + b.m21, a.m12 + b.m12, a.m03 + b.m03};
}

template <int channels>
void sum(const Vek8u* src, ptrdiff_t srcStep, VekiSize roi, Vek32u* state) {
  constexpr SumMoments MomentKernels::*kernel =
      channels == 1 ? &MomentKernels::c1 : &MomentKernels::c3;
  const SumMoments sumTile = select(momentKernels).*kernel;
  Sums total[channels] = {};
  for (int y = 0; y < roi.height; y += momentTile) {
    for (int x = 0; x < roi.width; x += momentTile) {
      const int width = roi.width - x < momentTile ? roi.width - x : momentTile;
      const int height = roi.height - y < momentTile ? roi.height - y : momentTile;
      MomentsOf<Vek64s> tile[channels];
      sumTile(src + y * srcStep + ptrdiff_t{x} * channels, srcStep, width, height, tile);
      for (int c = 0; c < channels; ++c) {
        const auto& [m00, m10, m01, m20, m11, m02, m30, m21, m12, m03] = tile[c];
        const Sums sums = {m00, m10, m01, m20, m11, m02, m30, m21, m12, m03};
        total[c] = total[c] + shifted(sums, x, y);
      }
    }
  }
  for (int c = 0; c < channels; ++c) store(state, c, total[c]);
  state[countWord] = channels;
}

// ---- Moments as doubles. Every operation rounds once, in the order in which it stands.

using Moments = MomentsOf<Vek64f>;

Moments toDoubles(const Sums& m) {
  return {toDouble(m.m00), toDouble(m.m10), toDouble(m.m01), toDouble(m.m20), toDouble(m.m11),
          toDouble(m.m02), toDouble(m.m30), toDouble(m.m21), toDouble(m.m12), toDouble(m.m03)};
}

/// v / m rounded to the nearest integer, halves up.
Vek64s nearest(Int128 v, Int128 m) {
  return static_cast<Vek64s>((2 * v.low + m.low) / (2 * m.low));
}

/// About the centroid. Exact sums about the pixel next to it come first, so that hardly anything
/// cancels in what is rounded.
Moments central(const Sums& sums) {
  if (sums.m00.low == 0) return {};
  const Moments m =
      toDoubles(shifted(sums, -nearest(sums.m10, sums.m00), -nearest(sums.m01, sums.m00)));
  const Vek64f dx = m.m10 / m.m00, dy = m.m01 / m.m00;
  Moments mu = {};
  mu.m00 = m.m00;
  mu.m20 = m.m20 - dx * m.m10;
  mu.m11 = m.m11 - dx * m.m01;
  mu.m02 = m.m02 - dy * m.m01;
  mu.m30 = m.m30 - dx * (3 * mu.m20 + dx * m.m10);
  mu.m21 = (m.m21 - dx * (2 * mu.m11 + dx * m.m01)) - dy * mu.m20;
  mu.m12 = (m.m12 - dy * (2 * mu.m11 + dy * m.m10)) - dx * mu.m02;
  mu.m03 = m.m03 - dy * (3 * mu.m02 + dy * m.m01);
  return mu;
}

/// The square root of 1 <= v < 2^36, rounded to nearest, digit by digit: no processor and no library
/// has a say in it.
Vek64f squareRoot(Vek64s v) {
  const auto square = static_cast<uint64_t>(v);
  uint64_t root = 0, rest = 0;
  const auto next = [&](uint64_t digit) {  // to the base of 4
    rest = 4 * rest + digit;
    const uint64_t step = 4 * root + 1;
    root *= 2;
    if (rest >= step) rest -= step, ++root;
  };
  for (int shift = 34; shift >= 0; shift -= 2) next(square >> shift & 3);
  // 55 bits are two more than a double has; the last one also tells whether anything is left.
  int fraction = 0;
  while (root >> 54 == 0) {
    next(0);
    ++fraction;
  }
  const Vek64f scaled = static_cast<Vek64f>(root | (rest != 0 ? 1 : 0));
  return scaled / static_cast<Vek64f>(uint64_t{1} << fraction);
}

Moments normalized(const Sums& sums) {
  if (sums.m00.low == 0) return {};
  const Moments mu = central(sums);
  const Vek64f n2 = mu.m00 * mu.m00;
  const Vek64f n3 = n2 * squareRoot(static_cast<Vek64s>(sums.m00.low));
  return {1,           0,           0,           mu.m20 / n2, mu.m11 / n2,
          mu.m02 / n2, mu.m30 / n3, mu.m21 / n3, mu.m12 / n3, mu.m03 / n3};
}

struct HuMoments {
  Vek64f h1, h2, h3, h4, h5, h6, h7;
};

HuMoments huMoments(const Sums& sums) {
  const auto [unit, nu10, nu01, a, b, c, d, e, f, g] = normalized(sums);
  const Vek64f t0 = d + f, t1 = e + g, q0 = t0 * t0, q1 = t1 * t1;
  const Vek64f n4 = 4 * b, s = a + c, r = a - c;
  const Vek64f u0 = t0 * (q0 - 3 * q1), u1 = t1 * (3 * q0 - q1);
  const Vek64f p0 = d - 3 * f, p1 = 3 * e - g;
  return {.h1 = s,
          .h2 = r * r + n4 * b,
          .h3 = p0 * p0 + p1 * p1,
          .h4 = q0 + q1,
          .h5 = p0 * u0 + p1 * u1,
          .h6 = r * (q0 - q1) + (n4 * t0) * t1,
          .h7 = p1 * u0 - p0 * u1};
}

// ---- The exported functions' checks.

VekStatus checkReader(const void* pState, int channel, const void* pMoments) {
  if (anyNull({pState, pMoments})) return vekStsNullPtrErr;
  if (!hasTag(pState, momentTag)) return vekStsContextMatchErr;
  const auto count = static_cast<int>(wordsOf(pState)[countWord]);
  return channel < 0 || channel >= count ? vekStsBadArgErr : vekStsNoErr;
}

template <int channels>
VekStatus sumImage(const Vek8u* pSrc, int srcStep, VekiSize roi, void* pState) {
  if (anyNull({pSrc, pState})) return vekStsNullPtrErr;
  if (!hasTag(pState, momentTag)) return vekStsContextMatchErr;
  if (isEmpty(roi) || roi.width > mostSide || roi.height > mostSide) return vekStsSizeErr;
  if (srcStep < 1) return vekStsStepErr;
  if (srcStep < roi.width * channels) return vekStsStrideErr;
  sum<channels>(pSrc, srcStep, roi, wordsOf(pState));
  return vekStsNoErr;
}

/// Writes what `moments` makes of the sums of a channel to where the caller wants it, at any address.
template <class Result>
VekStatus write(Result (*moments)(const Sums&), const void* pState, int channel, Vek64f* pMoments,
                bool dividesBySum) {
  const VekStatus status = checkReader(pState, channel, pMoments);
  if (status != vekStsNoErr) return status;
  const Sums sums = load(wordsOf(pState), channel);
  const Result result = moments(sums);
  memcpy(pMoments, &result, sizeof result);
  return dividesBySum && sums.m00.low == 0 ? vekStsDivByZero : vekStsNoErr;
}

bool isOrigin(int v) {
  return v >= -mostOrigin && v <= mostOrigin;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiGetSpecSize_Moments_8u(int* pSize) {
  if (pSize == nullptr) return vekStsNullPtrErr;
  constexpr int size = vek::taggedBytes(vek::stateWords);
  memcpy(pSize, &size, sizeof size);
  return vekStsNoErr;
}

VekStatus vekiInit_Moments_8u(VekiMomentState* pState) {
  if (pState == nullptr) return vekStsNullPtrErr;
  vek::makeTagged(pState, vek::stateWords, vek::momentTag);
  return vekStsNoErr;
}

VekStatus vekiInitAlloc_Moments_8u(VekiMomentState** ppState) {
  if (ppState == nullptr) return vekStsNullPtrErr;
  void* const memory = vekMalloc(vek::taggedBytes(vek::stateWords));
  if (memory == nullptr) return vekStsMemAllocErr;
  vek::makeTagged(memory, vek::stateWords, vek::momentTag);
  memcpy(ppState, &memory, sizeof memory);
  return vekStsNoErr;
}

VekStatus vekiFree_Moments_8u(VekiMomentState* pState) {
  return vek::freeTagged(pState, vek::momentTag);
}

VekStatus vekiMoments_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                             VekiMomentState* pState) {
  return vek::sumImage<1>(pSrc, srcStep, roiSize, pState);
}

VekStatus vekiMoments_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                             VekiMomentState* pState) {
  return vek::sumImage<3>(pSrc, srcStep, roiSize, pState);
}

VekStatus vekiSpatialMoments_64f(const VekiMomentState* pState, int channel, VekiPoint origin,
                                 Vek64f* pMoments) {
  using namespace vek;
  const VekStatus status = checkReader(pState, channel, pMoments);
  if (status != vekStsNoErr) return status;
  if (!isOrigin(origin.x) || !isOrigin(origin.y)) return vekStsBadArgErr;
  const Moments moments = toDoubles(shifted(load(wordsOf(pState), channel), origin.x, origin.y));
  memcpy(pMoments, &moments, sizeof moments);
  return vekStsNoErr;
}

VekStatus vekiCentralMoments_64f(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  return vek::write(vek::central, pState, channel, pMoments, false);
}

VekStatus vekiNormalizedMoments_64f(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  return vek::write(vek::normalized, pState, channel, pMoments, true);
}

VekStatus vekiHuMoments_64f(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  return vek::write(vek::huMoments, pState, channel, pMoments, true);
}

}  // extern "C"
