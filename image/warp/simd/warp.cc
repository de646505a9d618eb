#include <string.h>

#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"
#include "image/warp/perspective_body.h"
#include "image/warp/warp_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr int lanes32 = static_cast<int>(hn::MaxLanes(s32));
constexpr int lanes64 = static_cast<int>(hn::MaxLanes(u64));

// ---- Positions.

/// first, first + step and so on.
V64u ramp(Vek64s first, Vek64s step) {
  alignas(64) uint64_t lanes[lanes64];
  for (int i = 0; i < lanes64; ++i) {
    lanes[i] =
        static_cast<uint64_t>(first) + static_cast<uint64_t>(step) * static_cast<uint64_t>(i);
  }
  return hn::Load(u64, lanes);
}

/// One coordinate of affine positions, a vector of 32-bit lanes at a time: those of the pixels 0, 2, ..
/// in one vector and those of 1, 3, .. in another one.
template <int fractionBits>
class AffineRamp {
 public:
  AffineRamp(Vek64s first, Vek64s step)
      : even_(ramp(first + (Vek64s{1} << (31 - fractionBits)), 2 * step)),
        odd_(hn::Add(even_, hn::Set(u64, static_cast<uint64_t>(step)))),
        step_(hn::Set(u64, static_cast<uint64_t>(step) * lanes32)) {}

  /// Bits 32 - fractionBits .. 63 - fractionBits: positions fit these 32 bits. Halfway to the next
  /// integer was added.
  V32s next() {
    const V64u even = hn::ShiftRight<32 - fractionBits>(even_);
    const V64u odd = hn::ShiftLeft<fractionBits>(odd_);
    even_ = hn::Add(even_, step_);
    odd_ = hn::Add(odd_, step_);
    return hn::OddEven(hn::BitCast(s32, odd), hn::BitCast(s32, even));
  }

 private:
  V64u even_, odd_, step_;
};

template <int fractionBits>
void affineOf(const WarpLine& line, int n, WarpPositions& to) {
  AffineRamp<fractionBits> columns(line.at[0], line.step[0]), rows(line.at[1], line.step[1]);
  for (int k = 0; k < n; k += lanes32) {
    hn::Store(columns.next(), s32, to.columns + k);
    hn::Store(rows.next(), s32, to.rows + k);
  }
}

/// Whether a coordinate's numerators stay below 2^55 in magnitude, and so positions below 2^30.
bool isNear(Vek64s first, Vek64s step, int n) {
  constexpr Vek64s limit = Vek64s{1} << 55;
  const Vek64s last = first + step * (n - 1);
  return first > -limit && first < limit && last > -limit && last < limit;
}

WarpBox affine(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  if (fractionBits == 0) {
    affineOf<0>(line, n, to);
  } else if (isNear(line.at[0], line.step[0], n) && isNear(line.at[1], line.step[1], n)) {
    affineOf<7>(line, n, to);
  } else {
    return portable::warpKernels.affine(line, fractionBits, n, to);
  }
  return to.boundsOfLine(n);
}

#if HWY_HAVE_FLOAT64

/// A numerator or the denominator of perspective positions. All are integers below 2^53, which doubles
/// hold exactly, and so are their sums and products here.
class PerspectiveRamp {
 public:
  PerspectiveRamp(Vek64s first, Vek64s step) {
    alignas(64) double lanes[lanes64];
    for (int i = 0; i < lanes64; ++i) {
      lanes[i] = static_cast<double>(first) + static_cast<double>(step) * i;
    }
    value_ = hn::Load(f64, lanes);
    step_ = hn::Set(f64, static_cast<double>(step) * lanes64);
  }

  /// Without the lowest 8 bits.
  V64f next() {
    const V64f value = hn::Floor(hn::Mul(value_, hn::Set(f64, 1.0 / 256)));
    value_ = hn::Add(value_, step_);
    return value;
  }

 private:
  V64f value_, step_;
};

using HalfV32s = hn::Vec<hn::Rebind<Vek32s, decltype(f64)>>;

/// floor((scale * numerator + depth) / (2 * depth)), limited. The dividend stays below 2^53: a quotient
/// that is no integer is at least 1 / divisor away from one, and rounding it to a double does not make
/// it one.
HalfV32s quotients(V64f numerator, V64f depth, V64f scale) {
  const V64f dividend = hn::Add(hn::Mul(numerator, scale), depth);
  const V64f quotient = hn::Floor(hn::Div(dividend, hn::Add(depth, depth)));
  const V64f most = hn::Set(f64, -noPosition);
  const V64f limited = hn::Max(hn::Min(quotient, most), hn::Neg(most));
  const auto hasNone = hn::Eq(depth, hn::Zero(f64));
  return hn::DemoteTo(hn::Rebind<Vek32s, decltype(f64)>(),
                      hn::IfThenElse(hasNone, hn::Set(f64, noPosition), limited));
}

WarpBox perspective(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  PerspectiveRamp x(line.at[0], line.step[0]), y(line.at[1], line.step[1]),
      z(line.at[2], line.step[2]);
  const V64f scale = hn::Set(f64, 2 << fractionBits);
  V32s left = hn::Set(s32, -noPosition), right = hn::Set(s32, noPosition), top = left,
       bottom = right;
  for (int k = 0; k < n; k += lanes32) {
    const V64f z0 = z.next(), z1 = z.next();
    const HalfV32s x0 = quotients(x.next(), z0, scale), x1 = quotients(x.next(), z1, scale);
    const HalfV32s y0 = quotients(y.next(), z0, scale), y1 = quotients(y.next(), z1, scale);
    const V32s column = hn::Combine(s32, x1, x0), row = hn::Combine(s32, y1, y0);
    hn::Store(column, s32, to.columns + k);
    hn::Store(row, s32, to.rows + k);
    left = hn::Min(left, column), right = hn::Max(right, column);
    top = hn::Min(top, row), bottom = hn::Max(bottom, row);
  }
  return {.left = hn::GetLane(hn::MinOfLanes(s32, left)),
          .top = hn::GetLane(hn::MinOfLanes(s32, top)),
          .right = hn::GetLane(hn::MaxOfLanes(s32, right)),
          .bottom = hn::GetLane(hn::MaxOfLanes(s32, bottom))};
}

#else
constexpr auto perspective = positionsOneByOne;
#endif

int run(const WarpPositions& positions, int first, int n, const WarpBox& box, bool within) {
  const V32s left = hn::Set(s32, box.left), top = hn::Set(s32, box.top);
  const V32s right = hn::Set(s32, box.right), bottom = hn::Set(s32, box.bottom);
  VEK_ASSERT(first >= 0 && first < n && n <= WarpPositions::most);
  // Reads on behind the n positions, into what is spare.
  for (int k = first; k < n; k += lanes32) {
    const V32s column = hn::LoadU(s32, positions.columns + k);
    const V32s row = hn::LoadU(s32, positions.rows + k);
    const auto outside = hn::Or(hn::Or(hn::Lt(column, left), hn::Gt(column, right)),
                                hn::Or(hn::Lt(row, top), hn::Gt(row, bottom)));
    const intptr_t end = hn::FindFirstTrue(s32, within ? outside : hn::Not(outside));
    if (end >= 0) return (k + static_cast<int>(end) < n ? k + static_cast<int>(end) : n) - first;
  }
  return n - first;
}

// ---- Samples.

/// The positions of a vector of pixels.
template <int fractionBits>
struct Place {
  V32s column, row;

  Place(const Vek32s* columns, const Vek32s* rows)
      : column(hn::LoadU(s32, columns)), row(hn::LoadU(s32, rows)) {}

  V32s columnFraction() const { return hn::And(column, hn::Set(s32, (1 << fractionBits) - 1)); }
  V32s rowFraction() const { return hn::And(row, hn::Set(s32, (1 << fractionBits) - 1)); }
};

/// Where the whole pixels of `channels` bytes are, counted from the source's first byte.
template <int channels, int fractionBits>
class Offsets {
 public:
  Offsets(const WarpSource& src, const Place<fractionBits>& place) {
    V32s i = hn::ShiftRight<fractionBits>(place.column);
    if (channels == 3) i = hn::Add(hn::Add(i, i), i);
    const V32s step = hn::Set(s32, static_cast<Vek32s>(src.step));
    const V32s j = hn::ShiftRight<fractionBits>(place.row);
    hn::Store(hn::Add(hn::Mul(j, step), i), s32, of_);
  }
  operator const Vek32s*() const { return of_; }

 private:
  alignas(64) Vek32s of_[lanes32];
};

/// A vector of pieces of `size` bytes; the piece from byte 4 i on is load(offsets[i]).
template <int size, class D, class Load>
hn::Vec<D> fetched(D d, const Vek32s* offsets, Load load) {
  constexpr int bytes = static_cast<int>(hn::MaxLanes(D()));
  if constexpr (bytes == size) {
    return load(offsets[0]);
  } else {
    const hn::Half<D> half;
    return hn::Combine(d, fetched<size>(half, offsets + bytes / 8, load),
                       fetched<size>(half, offsets, load));
  }
}

constexpr hn::Rebind<Vek8u, decltype(s32)> quarterU8;
constexpr hn::CappedTag<Vek8u, 16> u8x16;
constexpr hn::CappedTag<Vek8u, 8> u8x8;
constexpr hn::CappedTag<Vek8u, 4> u8x4;
constexpr hn::CappedTag<Vek16u, 2> u16x2;

/// Writes a vector of pixels of three samples. pixels(k, broadcast) returns the k-th pixel of each
/// four in a 128-bit block of its own, its samples in the first three lanes; broadcast(v) has what v has
/// in the lanes of those pixels, in all lanes of their blocks.
template <class Pixels>
void storePixels(Pixels pixels, Vek8u* dst) {
  static constexpr Vek8u three[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 128, 128, 128, 128};
  const V16s lower = packClamped(pixels(0, [](V32s v) { return hn::Broadcast<0>(v); }),
                                 pixels(1, [](V32s v) { return hn::Broadcast<1>(v); }));
  const V16s upper = packClamped(pixels(2, [](V32s v) { return hn::Broadcast<2>(v); }),
                                 pixels(3, [](V32s v) { return hn::Broadcast<3>(v); }));
  const V8u fours = packClamped(lower, upper);
  alignas(64) Vek8u bytes[vectorBytes];
  hn::Store(hn::TableLookupBytesOr0(fours, hn::LoadDup128(u8, three)), u8, bytes);
  for (int b = 0; b < vectorBytes - 16; b += 16) memcpy(dst + b / 4 * 3, bytes + b, 16);
  memcpy(dst + (vectorBytes - 16) / 4 * 3, bytes + vectorBytes - 16, 12);
}

template <int channels>
void nearest(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if (n < lanes32) {
    const WarpSamplers& plain = channels == 1 ? portable::warpKernels.c1 : portable::warpKernels.c3;
    return plain.nearest.sample(src, columns, rows, n, dst);
  }
  overlappingBlocks(n, lanes32, [&](ptrdiff_t k) {
    const Offsets<channels, 0> offsets(src, Place<0>(columns + k, rows + k));
    Vek8u* const to = dst + k * channels;
    for (int i = 0; i < lanes32; ++i) {
      const Vek8u* const from = src.data + offsets[i];
      if (channels == 1) {
        to[i] = *from;
      } else {
        memcpy(to + 3 * i, from, i + 1 < lanes32 ? 4 : 3);
      }
    }
  });
}

/// Weights 128 - f and f for sumOfPairs(), twice in each lane.
V8u linearBytes(V32s f) {
  return hn::BitCast(u8, hn::Add(hn::Mul(f, hn::Set(s32, 0x00FF00FF)), hn::Set(s32, 0x00800080)));
}

/// The same in 16 bits for plusDot(), once in each lane.
V16s linearWords(V32s f) {
  return hn::BitCast(s16, hn::Add(hn::Mul(f, hn::Set(s32, 0xFFFF)), hn::Set(s32, 128)));
}

/// Of four samples in each lane, row after row: ((128 - f) (128 - g) s0 + ... + 8192) >> 14. The samples
/// are taken as signed ones, less by 128, which all in all are 128^3 too little.
V32s linear(V8u samples, V8u f, V16s g) {
  const V16s upperAndLower = sumOfPairs(f, hn::Xor(samples, hn::Set(u8, 128)));
  return hn::ShiftRight<14>(plusDot(hn::Set(s32, 128 * 128 * 128 + 8192), upperAndLower, g));
}

[[gnu::flatten]] void linear1(const WarpSource& src, const Vek32s* columns, const Vek32s* rows,
                              int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if (n < lanes32) return portable::warpKernels.c1.linear.sample(src, columns, rows, n, dst);
  overlappingBlocks(n, lanes32, [&](ptrdiff_t k) {
    const Place<7> place(columns + k, rows + k);
    const Offsets<1, 7> offsets(src, place);
    const V8u samples = fetched<4>(u8, offsets, [&](Vek32s offset) {  // two of each row
      const auto upper = hn::BitCast(u16x2, hn::LoadU(u8x4, src.data + offset));
      const auto lower = hn::BitCast(u16x2, hn::LoadU(u8x4, src.data + offset + src.step));
      return hn::BitCast(u8x4, hn::InterleaveLower(u16x2, upper, lower));
    });
    const V32s result =
        linear(samples, linearBytes(place.columnFraction()), linearWords(place.rowFraction()));
    hn::StoreU(hn::U8FromU32(hn::BitCast(u32, result)), quarterU8, dst + k);
  });
}

[[gnu::flatten]] void linear3(const WarpSource& src, const Vek32s* columns, const Vek32s* rows,
                              int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if (n < lanes32) return portable::warpKernels.c3.linear.sample(src, columns, rows, n, dst);
  // From 8 bytes of each row, which has b g r of two pixels.
  static constexpr Vek8u byChannel[16] = {0, 3, 8,  11, 1,   4,   9,   12,
                                          2, 5, 10, 13, 128, 128, 128, 128};
  const V8u order = hn::LoadDup128(u8, byChannel);
  overlappingBlocks(n, lanes32, [&](ptrdiff_t k) {
    const Place<7> place(columns + k, rows + k);
    const Offsets<3, 7> offsets(src, place);
    const V32s f = hn::BitCast(s32, linearBytes(place.columnFraction()));
    const V32s g = hn::BitCast(s32, linearWords(place.rowFraction()));
    const auto load = [&](Vek32s offset) {
      const Vek8u* const from = src.data + offset;
      return hn::Combine(u8x16, hn::LoadU(u8x8, from + src.step), hn::LoadU(u8x8, from));
    };
    const auto pixels = [&](int first, auto broadcast) {
      const V8u samples = fetched<16>(u8, offsets + first, load);
      return linear(hn::TableLookupBytesOr0(samples, order), hn::BitCast(u8, broadcast(f)),
                    hn::BitCast(s16, broadcast(g)));
    };
    storePixels(pixels, dst + 3 * k);
  });
}

/// The four weights of cubic interpolation, or four rows between which it is: the first and the third
/// one, and the second and the fourth one, in each lane.
struct Pairs {
  V16s firstAndThird, secondAndFourth;
};

/// The low 16 bits of both.
V16s joinWords(V32s even, V32s odd) {
  return hn::OddEven(hn::BitCast(s16, hn::ShiftLeft<16>(odd)), hn::BitCast(s16, even));
}

/// As image/warp/cubic_weights.h defines them.
Pairs cubicWeightsOf(V32s f) {
  const V32s zero = hn::Zero(s32);
  const auto product = [&](V32s a, V32s b) {  // of numbers of 15 bits
    return plusDot(zero, hn::BitCast(s16, a), hn::BitCast(s16, b));
  };
  const V32s square = product(f, f), cube = product(square, f);
  const V32s half = hn::Set(s32, 128);
  // -f^3 + 256 f^2 - 16384 f, 3 f^3 - 640 f^2 + 4194304, -3 f^3 + 512 f^2 + 16384 f, f^3 - 128 f^2.
  const V32s fourth = hn::Sub(cube, hn::ShiftLeft<7>(square));
  const V32s quadratic = hn::Sub(hn::ShiftLeft<7>(square), hn::ShiftLeft<14>(f));
  const V32s n0 = hn::Sub(quadratic, fourth);
  const V32s threeCubes = hn::Add(hn::Add(cube, cube), cube);
  const V32s n2 = hn::Sub(hn::Add(hn::ShiftLeft<9>(square), hn::ShiftLeft<14>(f)), threeCubes);
  const V32s w0 = hn::ShiftRight<8>(hn::Add(n0, half));
  const V32s w2 = hn::ShiftRight<8>(hn::Add(n2, half));
  const V32s w3 = hn::ShiftRight<8>(hn::Add(fourth, half));
  const V32s n1 = hn::Sub(hn::Set(s32, 4194304), hn::Add(hn::Add(n0, n2), fourth));
  const V32s w1 = hn::ShiftRight<8>(hn::Add(n1, half));
  const V32s rest = hn::Sub(hn::Set(s32, 16384), hn::Add(hn::Add(w0, w1), hn::Add(w2, w3)));
  const V32s toThird = hn::And(rest, hn::VecFromMask(s32, hn::Gt(f, hn::Set(s32, 64))));
  return {joinWords(w0, hn::Add(w2, toThird)), joinWords(hn::Add(w1, hn::Sub(rest, toThird)), w3)};
}

V32s cubicSum(Vek32s rounding, const Pairs& a, const Pairs& b) {
  return plusDot(plusDot(hn::Set(s32, rounding), a.firstAndThird, b.firstAndThird),
                 a.secondAndFourth, b.secondAndFourth);
}

/// Between four rows, of which the sums are rounded already.
V32s cubic(const V32s (&sums)[4], const Pairs& weights) {
  const V32s h0 = hn::ShiftRight<8>(sums[0]), h1 = hn::ShiftRight<8>(sums[1]);
  const V32s h2 = hn::ShiftRight<8>(sums[2]), h3 = hn::ShiftRight<8>(sums[3]);
  return hn::ShiftRight<20>(cubicSum(1 << 19, {joinWords(h0, h2), joinWords(h1, h3)}, weights));
}

[[gnu::flatten]] void cubic1(const WarpSource& src, const Vek32s* columns, const Vek32s* rows,
                             int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if (n < lanes32) return portable::warpKernels.c1.cubic.sample(src, columns, rows, n, dst);
  overlappingBlocks(n, lanes32, [&](ptrdiff_t k) {
    const Place<7> place(columns + k, rows + k);
    const Offsets<1, 7> offsets(src, place);
    const Pairs f = cubicWeightsOf(place.columnFraction());
    const auto sumOf = [&](int row) {
      const V8u four = fetched<4>(u8, offsets, [&](Vek32s offset) {
        return hn::LoadU(u8x4, src.data + offset + (row - 1) * src.step - 1);
      });
      return cubicSum(128, {evenBytes(s16, four), oddBytes(s16, four)}, f);
    };
    const V32s sums[4] = {sumOf(0), sumOf(1), sumOf(2), sumOf(3)};
    const V32s result = cubic(sums, cubicWeightsOf(place.rowFraction()));
    hn::StoreU(hn::DemoteTo(quarterU8, result), quarterU8, dst + k);
  });
}

[[gnu::flatten]] void cubic3(const WarpSource& src, const Vek32s* columns, const Vek32s* rows,
                             int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if (n < lanes32) return portable::warpKernels.c3.cubic.sample(src, columns, rows, n, dst);
  static constexpr Vek8u order[2][16] = {
      {0, 128, 6, 128, 1, 128, 7, 128, 2, 128, 8, 128, 128, 128, 128, 128},
      {3, 128, 9, 128, 4, 128, 10, 128, 5, 128, 11, 128, 128, 128, 128, 128}};
  const V8u firstAndThird = hn::LoadDup128(u8, order[0]);
  const V8u secondAndFourth = hn::LoadDup128(u8, order[1]);
  overlappingBlocks(n, lanes32, [&](ptrdiff_t k) {
    const Place<7> place(columns + k, rows + k);
    const Offsets<3, 7> offsets(src, place);
    const Pairs f = cubicWeightsOf(place.columnFraction());
    const Pairs g = cubicWeightsOf(place.rowFraction());
    const auto pixels = [&](int first, auto broadcast) {
      const auto broadcastPairs = [&](const Pairs& p) {
        return Pairs{hn::BitCast(s16, broadcast(hn::BitCast(s32, p.firstAndThird))),
                     hn::BitCast(s16, broadcast(hn::BitCast(s32, p.secondAndFourth)))};
      };
      const Pairs columnWeights = broadcastPairs(f);
      const auto sumOf = [&](int row) {
        const V8u four = fetched<16>(u8, offsets + first, [&](Vek32s offset) {
          return hn::LoadU(u8x16, src.data + offset + (row - 1) * src.step - 3);
        });
        return cubicSum(128,
                        {hn::BitCast(s16, hn::TableLookupBytesOr0(four, firstAndThird)),
                         hn::BitCast(s16, hn::TableLookupBytesOr0(four, secondAndFourth))},
                        columnWeights);
      };
      const V32s sums[4] = {sumOf(0), sumOf(1), sumOf(2), sumOf(3)};
      return cubic(sums, broadcastPairs(g));
    };
    storePixels(pixels, dst + 3 * k);
  });
}

}  // namespace

constexpr WarpKernels warpKernels = {
    .affine = affine,
    .perspective = perspective,
    .run = run,
    .c1 = {.nearest = {nearest<1>, 1}, .linear = {linear1, 4}, .cubic = {cubic1, 4}},
    .c3 = {.nearest = {nearest<3>, 4}, .linear = {linear3, 8}, .cubic = {cubic3, 16}}};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
