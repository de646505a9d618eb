#include "camera/preview/csc_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "camera/preview/csc_matrix.h"
#include "core/kernel/pixel_format.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::ScalableTag<Vek8u>;
using Words = hn::ScalableTag<Vek16s>;
using VWords = hn::Vec<Words>;
constexpr Bytes bytes;
constexpr Words words;
constexpr hn::Rebind<Vek8u, Words> halfBytes;
constexpr hn::RebindToUnsigned<Words> uwords;

/// Even and odd pixels of a block, one per 16-bit lane, so that both line up with their chroma.
struct Pairs {
  VWords even, odd;
};

/// Three components of `Pairs`, each clamped to its field.
struct Pixels {
  Pairs red, green, blue;
};

/// A product in two parts, (high << splitBits) + low.
struct Split {
  VWords high, low;
};

/// factor * v, of v << 8. A high product takes one instruction where the compiler would make a
/// multiplication by a constant into four shifts and additions.
template <int factor>
VWords times(VWords v8) {
  if constexpr (factor == 0) {
    return hn::Zero(words);
  } else if constexpr (factor == 1) {
    return hn::ShiftRight<8>(v8);
  } else if constexpr (factor >= -128 && factor < 128) {
    return hn::MulHigh(v8, hn::Set(words, factor * 256));
  } else {
    return hn::Mul(hn::ShiftRight<8>(v8), hn::Set(words, factor));
  }
}

template <class Matrix, Vek32s coefficient>
Split product(VWords v8) {
  return {times<(coefficient >> Matrix::splitBits)>(v8),
          times<coefficient&((1 << Matrix::splitBits) - 1)>(v8)};
}

/// The luma product of Y - 16, of the unsigned Y << 8. What 16 amounts to is a multiple of
/// 1 << splitBits, so the high part takes it all.
template <class Matrix>
Split lumaProduct(hn::Vec<decltype(uwords)> y8) {
  constexpr Vek32s high = Matrix::luma >> Matrix::splitBits;
  constexpr Vek32s low = Matrix::luma - (high << Matrix::splitBits);
  constexpr Vek32s black = 16 * Matrix::luma >> Matrix::splitBits;
  static_assert(black << Matrix::splitBits == 16 * Matrix::luma);
  return {hn::Sub(hn::BitCast(words, hn::MulHigh(y8, hn::Set(uwords, high * 256))),
                  hn::Set(words, black)),
          hn::BitCast(words, hn::MulHigh(y8, hn::Set(uwords, low * 256)))};
}

/// Neither part leaves 16 bits, for either matrix.
Split sum(Split a, Split b) {
  return {hn::Add(a.high, b.high), hn::Add(a.low, b.low)};
}

/// floor((high << s) + low) / 2^n) = (high + (low >> s)) >> (n - s). Only blue can leave 16 bits
/// (74 * 239 + 129 * 127 = 34069); it saturates far above what every field clamps to.
template <class Matrix, int bits>
VWords component(Split luma, Split chroma) {
  const VWords high = hn::SaturatedAdd(luma.high, chroma.high);
  const VWords low = hn::ShiftRight<Matrix::splitBits>(hn::Add(luma.low, chroma.low));
  constexpr int shift = shiftToField<Matrix>(bits) - Matrix::splitBits;
  const VWords value = hn::ShiftRight<shift>(hn::SaturatedAdd(high, low));
  return hn::Min(hn::Max(value, hn::Zero(words)), hn::Set(words, (1 << bits) - 1));
}

/// (sample - 128) << 8
VWords centred(const Vek8u* samples) {
  const auto v8 = hn::ShiftLeft<8>(hn::PromoteTo(uwords, hn::LoadU(halfBytes, samples)));
  return hn::BitCast(words, hn::Xor(v8, hn::Set(uwords, 0x8000)));
}

template <class Matrix, class Format>
Pixels convertBlock(const Vek8u* y, const Vek8u* cb, const Vek8u* cr) {
  const VWords b8 = centred(cb);
  const VWords r8 = centred(cr);
  const Split red = product<Matrix, Matrix::redCr>(r8);
  const Split green =
      sum(product<Matrix, Matrix::greenCb>(b8), product<Matrix, Matrix::greenCr>(r8));
  const Split blue = product<Matrix, Matrix::blueCb>(b8);

  const auto luma = hn::BitCast(uwords, hn::LoadU(bytes, y));
  const auto convert = [&](auto y8, VWords& redOut, VWords& greenOut, VWords& blueOut) {
    const Split product = lumaProduct<Matrix>(y8);
    redOut = component<Matrix, Format::rBits>(product, red);
    greenOut = component<Matrix, Format::gBits>(product, green);
    blueOut = component<Matrix, Format::bBits>(product, blue);
  };
  Pixels p;
  convert(hn::ShiftLeft<8>(luma), p.red.even, p.green.even, p.blue.even);
  convert(hn::And(luma, hn::Set(uwords, 0xFF00)), p.red.odd, p.green.odd, p.blue.odd);
  return p;
}

template <class Format>
VWords packWord(VWords red, VWords green, VWords blue) {
  return hn::Or(hn::Or(hn::ShiftLeft<Format::rPos>(red), hn::ShiftLeft<Format::gPos>(green)),
                hn::ShiftLeft<Format::bPos>(blue));
}

hn::Vec<Bytes> packBytes(Pairs pairs) {
  return hn::BitCast(bytes, hn::Or(pairs.even, hn::ShiftLeft<8>(pairs.odd)));
}

template <class Matrix, class Format>
void cscRow(const Vek8u* y, const Vek8u* cb, const Vek8u* cr, ptrdiff_t n, Vek8u* dst) {
  constexpr int block = static_cast<int>(hn::MaxLanes(bytes));
  const auto body = [](Vek8u* out, const Vek8u* luma, const Vek8u* blue, const Vek8u* red) {
    const Pixels p = convertBlock<Matrix, Format>(luma, blue, red);
    if constexpr (Format::bytes == 2) {
      hn::StoreInterleaved2(packWord<Format>(p.red.even, p.green.even, p.blue.even),
                            packWord<Format>(p.red.odd, p.green.odd, p.blue.odd), words,
                            reinterpret_cast<Vek16s*>(out));
    } else {
      const hn::Vec<Bytes> components[3] = {packBytes(p.red), packBytes(p.green),
                                            packBytes(p.blue)};
      constexpr int order[3] = {Format::rPos == 0 ? 0 : 2, 1, Format::rPos == 0 ? 2 : 0};
      hn::StoreInterleaved3(components[order[0]], components[order[1]], components[order[2]], bytes,
                            out);
    }
  };
  forEachBlock<block>(n, body, Out<Format::bytes>{dst}, In<1>{y}, In<1, 2>{cb}, In<1, 2>{cr});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "camera/preview/csc_body.h"

#endif

namespace vek::VEK_LEVEL {

constexpr CscRows cscRows = {cscRow<MatrixQ8, Rgb565>,  cscRow<MatrixQ8, Rgb555>,
                             cscRow<MatrixQ8, Rgb444>,  cscRow<MatrixQ8, Bgr24>,
                             cscRow<MatrixQ10, Rgb565>, cscRow<MatrixQ10, Rgb555>};

}  // namespace vek::VEK_LEVEL
