// The reductions in what NEON has: sums of neighbours in lanes of twice the width, and loads that separate
// samples. Empty elsewhere.
#pragma once

#include "camera/preview/reduce_body.h"
#include "camera/preview/reduce_kernels.h"
#include "camera/preview/simd/neon_pick.h"
#include "core/kernel/neon_memory.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// (sum + 4) >> 2 modulo 256.
inline V8u quarters(uint16x8_t lower, uint16x8_t upper) {
  const uint8x16_t floors = vcombine_u8(vshrn_n_u16(lower, 2), vshrn_n_u16(upper, 2));
  return V8u{vaddq_u8(floors, vdupq_n_u8(1))};
}

#if VEK_NEON_BY_NAME

/// The block sums of 16 samples; all pointers move on.
inline void sumSixteen(const Vek8u*& top, const Vek8u*& bottom, Vek8u*& dst) {
  asm("vld1.8 {d0-d3}, [%[top]]!\n\t"
      "vld1.8 {d4-d7}, [%[bottom]]!\n\t"
      "vpaddl.u8 q0, q0\n\t"
      "vpaddl.u8 q1, q1\n\t"
      "vpadal.u8 q0, q2\n\t"
      "vpadal.u8 q1, q3\n\t"
      "vshrn.i16 d0, q0, #2\n\t"
      "vshrn.i16 d1, q1, #2\n\t"
      "vadd.i8 q0, q0, %q[one]\n\t"
      "vst1.8 {d0, d1}, [%[dst]]!"
      : [top] "+r"(top), [bottom] "+r"(bottom), [dst] "+r"(dst), VEK_NEON_WRITES(16)
      : [one] "w"(vdupq_n_u8(1)), "m"(*reinterpret_cast<const Vek8u(*)[32]>(top)),
        "m"(*reinterpret_cast<const Vek8u(*)[32]>(bottom))
      : "q0", "q1", "q2", "q3");
}

#else

inline void sumSixteen(const Vek8u*& top, const Vek8u*& bottom, Vek8u*& dst) {
  uint16x8_t lower = vpaddlq_u8(loadSixteen(top));
  uint16x8_t upper = vpaddlq_u8(loadSixteen(top));
  lower = vpadalq_u8(lower, loadSixteen(bottom));
  upper = vpadalq_u8(upper, loadSixteen(bottom));
  storeSixteen(quarters(lower, upper).raw, dst);
}

#endif

/// The policy of overlapping blocks, by a loop whose loads move their pointers on.
inline void sumNeighbours(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* dst) {
  if (n < vectorBytes) return sumBlocks<2>(top, bottom, n, dst);
  ptrdiff_t rest = n;
  for (; rest >= 2 * vectorBytes; rest -= 2 * vectorBytes) {
    sumSixteen(top, bottom, dst);
    sumSixteen(top, bottom, dst);
  }
  if (rest >= vectorBytes) {
    sumSixteen(top, bottom, dst);
    rest -= vectorBytes;
  }
  if (rest == 0) return;
  const ptrdiff_t back = vectorBytes - rest;
  top -= 2 * back;
  bottom -= 2 * back;
  dst -= back;
  sumSixteen(top, bottom, dst);
}

/// The first two of four samples. As in neon_pick.h the last vectors end with the last sample that
/// counts, which is the last of its four then.
inline void sumMiddles(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
                       Vek8u* __restrict dst) {
  if (n <= vectorBytes) return sumBlocks<4>(top, bottom, n, dst);
  const auto sums = [](uint8x16_t a, uint8x16_t b, uint8x16_t c, uint8x16_t d) {
    const auto half = [](uint8x8_t a8, uint8x8_t b8, uint8x8_t c8, uint8x8_t d8) {
      return vaddw_u8(vaddw_u8(vaddl_u8(a8, b8), c8), d8);
    };
    return quarters(half(vget_low_u8(a), vget_low_u8(b), vget_low_u8(c), vget_low_u8(d)),
                    half(vget_high_u8(a), vget_high_u8(b), vget_high_u8(c), vget_high_u8(d)));
  };
  ptrdiff_t i = 0;
  for (; i + vectorBytes < n; i += vectorBytes) {
    uint8x16x4_t a = vld4q_u8(top + 4 * i), b = vld4q_u8(bottom + 4 * i);
    hn::StoreU(sums(a.val[0], a.val[1], b.val[0], b.val[1]), u8, dst + i);
  }
  i = n - vectorBytes;
  uint8x16x4_t a = vld4q_u8(top + 4 * i - 2), b = vld4q_u8(bottom + 4 * i - 2);
  hn::StoreU(sums(a.val[2], a.val[3], b.val[2], b.val[3]), u8, dst + i);
}

/// A pixel in each lane, with the chroma of its own block alone.
struct Pixels {
  uint8x16_t y, cb, cr;
};

/// The averages of two vectors' neighbours, those of `lower` first.
inline uint8x16_t averageNeighbours(uint8x16_t lower, uint8x16_t upper) {
  uint8x16x2_t pairs = vuzpq_u8(lower, upper);
  return vrhaddq_u8(pairs.val[0], pairs.val[1]);
}

/// The groups of one row, reduced until `width` of them have become one.
template <int width>
Pixels averageGroups(const Vek8u* src) {
  if constexpr (width == 1) {
    uint8x16x4_t v = vld4q_u8(src);  // Cb, Y0, Cr, Y1
    return {vrhaddq_u8(v.val[1], v.val[3]), v.val[0], v.val[2]};
  } else {
    Pixels lower = averageGroups<width / 2>(src);
    Pixels upper = averageGroups<width / 2>(src + width / 2 * 4 * vectorBytes);
    return {averageNeighbours(lower.y, upper.y), averageNeighbours(lower.cb, upper.cb),
            averageNeighbours(lower.cr, upper.cr)};
  }
}

/// A pixel in each lane of y; the chroma of a pair in each lane, Cb before Cr.
struct PairedPixels {
  uint8x16_t y, chroma;
};

template <int factor, int rows>
PairedPixels averageRows(const Vek8u* src, ptrdiff_t step) {
  if constexpr (rows == 1) {
    Pixels p = averageGroups<factor / 2>(src);
    return {p.y, averageNeighbours(p.cb, p.cr)};
  } else {
    auto upper = averageRows<factor, rows / 2>(src, step);
    auto lower = averageRows<factor, rows / 2>(src + rows / 2 * step, step);
    return {vrhaddq_u8(upper.y, lower.y), vrhaddq_u8(upper.chroma, lower.chroma)};
  }
}

/// The pixels of as many groups as a vector has bytes.
template <int factor>
void averageVector(const Vek8u* src, ptrdiff_t step, Vek8u* y, Vek8u* cb, Vek8u* cr) {
  PairedPixels pixels = averageRows<factor, factor>(src, step);
  vst1q_u8(y, pixels.y);
  vst1_u8(cb, vget_low_u8(pixels.chroma));
  vst1_u8(cr, vget_high_u8(pixels.chroma));
}

constexpr ptrdiff_t pixelsPerVector = vectorBytes;

template <int stride>
void pickUpToFour(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  if (n <= vectorBytes) return pick<stride>(src, n, dst);
  pickSeparated<stride>(src, n, dst);
}

constexpr auto pickPairs = pickUpToFour<2>;
constexpr auto pickGroups = pickUpToFour<4>;
constexpr auto pickPairsOfGroups = pick<8>;

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
