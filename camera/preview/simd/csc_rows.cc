#include "camera/preview/csc_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "camera/preview/csc_matrix.h"
#include "core/kernel/interleave.h"
#include "core/kernel/pixel_format.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::ScalableTag<Vek8u>;
using Words = hn::ScalableTag<Vek16u>;
using VWords = hn::Vec<Words>;
constexpr Bytes bytes;
constexpr Words words;
constexpr hn::Rebind<Vek8u, Words> halfBytes;

// Unsigned 16-bit lanes with 7 fractional bits. The luma coefficient is 149 in that scale and whole,
// so the fractions that the other coefficients leave can be cut off before the sum:
// floor((149 y << s) + c) / 2^n) = floor((149 y + floor(c / 2^s)) / 2^(n - s)). Sums are kept
// 32768 too high while the chroma is added: a saturating addition then clamps them to 32767, which
// is the top of every field, and a saturating subtraction of 32768 clamps them to 0.
//
// Blue needs one bit more (149 * 239 + 258 * 127 = 68377), so it has 6 fractional bits and is kept
// 49152 too high. With 10 fractional bits the halves that luma and chroma lose there can make a
// whole one.
constexpr int lumaFactor = 149;
constexpr Vek32s black = 16 * lumaFactor;
constexpr int bits = 15;  // of red and green
constexpr int blueBits = 14;
constexpr Vek32s offset = 65536 - (1 << bits), blueOffset = 65536 - (1 << blueBits);

template <class Matrix>
constexpr int cut = Matrix::fractionBits - 7;

/// Bit 0 of floor(blueCb Cb / 2^cut) can be set.
template <class Matrix>
constexpr bool blueCarries = Matrix::blueCb % (2 << cut<Matrix>) != 0;

VWords constant(Vek32s value) {
  return hn::Set(words, static_cast<Vek16u>(value));
}

/// floor(factor * v / 256), of v << 8.
template <Vek32s factor>
VWords times(VWords v8) {
  static_assert(factor >= 0 && factor < 65536);
  return hn::MulHigh(v8, constant(factor));
}

/// What chroma adds to red, green and blue, offsets and black level included.
struct Chroma {
  VWords red, green, blue;
  VWords blueCarry;
};

/// Of Cb << 8 and Cr << 8.
template <class Matrix>
Chroma chromaOf(VWords cb8, VWords cr8) {
  constexpr int s = cut<Matrix>;
  static_assert(Matrix::luma == lumaFactor << s);
  constexpr Vek32s redCentre = 128 * Matrix::redCr >> s, blueCentre = 64 * Matrix::blueCb >> s,
                   greenCentre = -128 * (Matrix::greenCb + Matrix::greenCr) >> s;
  constexpr Vek32s greenCb = -Matrix::greenCb >> s, greenCr = -Matrix::greenCr >> s;
  Chroma c;
  c.blueCarry = hn::Zero(words);
  c.red = hn::Add(times<(Matrix::redCr << (8 - s))>(cr8), constant(offset - black - redCentre));
  c.green = hn::Sub(constant(offset - black + greenCentre),
                    hn::Add(times<(greenCb << 8)>(cb8), times<(greenCr << 8)>(cr8)));
  if constexpr (Matrix::greenCb % (1 << s) != 0) {
    static_assert(-Matrix::greenCb - (greenCb << s) == 1 && -Matrix::greenCr - (greenCr << s) == 1);
    const VWords ones = hn::Add(hn::ShiftRight<8>(cb8), hn::ShiftRight<8>(cr8));
    c.green = hn::Sub(c.green, hn::ShiftRight<s>(hn::Add(ones, constant((1 << s) - 1))));
  }
  c.blue = hn::Add(times<(Matrix::blueCb << (7 - s))>(cb8),
                   constant(blueOffset - black / 2 - blueCentre));
  if constexpr (blueCarries<Matrix>) {
    static_assert(Matrix::blueCb == (258 << s) + 1);  // bit 0 of 258 Cb + (Cb >> s)
    c.blueCarry = hn::And(hn::ShiftRight<s>(cb8), constant(256));
  }
  return c;
}

/// Red and green have `bits` bits, blue `blueBits`, all clamped.
struct Pixels {
  VWords red, green, blue;
};

/// Of Y << 8.
template <class Matrix>
Pixels pixelsOf(VWords y8, const Chroma& chroma) {
  const VWords luma = times<(lumaFactor << 8)>(y8);
  VWords lumaHalf = times<(lumaFactor << 7)>(y8);
  if constexpr (blueCarries<Matrix>) {
    lumaHalf = hn::Add(lumaHalf, hn::ShiftRight<8>(hn::And(y8, chroma.blueCarry)));
  }
  const auto sum = [](VWords a, VWords b, Vek32s tooHigh) {
    return hn::SaturatedSub(hn::SaturatedAdd(a, b), constant(tooHigh));
  };
  return {sum(luma, chroma.red, offset), sum(luma, chroma.green, offset),
          sum(lumaHalf, chroma.blue, blueOffset)};
}

/// Moves the top of `have` bits to the top of the `want` bits at `position`; what a field does not
/// hold stays beneath it.
template <int have, int want, int position>
VWords moved(VWords v) {
  constexpr int down = have - want - position;
  if constexpr (down >= 0) {
    return hn::ShiftRight<down>(v);
  } else {
    return hn::ShiftLeft<-down>(v);
  }
}

template <class Format>
VWords packWord(const Pixels& p) {
  static_assert(Format::bPos == 0);
  const VWords red = moved<bits, Format::rBits, Format::rPos>(p.red);
  const VWords green = moved<bits, Format::gBits, Format::gPos>(p.green);
  const VWords blue = moved<blueBits, Format::bBits, Format::bPos>(p.blue);
  const auto field = [](int width, int position) {
    return constant(((1 << width) - 1) << position);
  };
  return hn::OrAnd(hn::OrAnd(blue, green, field(Format::gBits, Format::gPos)), red,
                   field(Format::rBits, Format::rPos));
}

/// The top bytes of `have` bits, even and odd pixels in turn.
template <int have>
hn::Vec<Bytes> packBytes(VWords even, VWords odd) {
  return hn::BitCast(bytes,
                     hn::OrAnd(moved<have, 8, 0>(even), moved<have, 8, 8>(odd), constant(0xFF00)));
}

VWords evenBytes(hn::Vec<Bytes> v) {
  return hn::ShiftLeft<8>(hn::BitCast(words, v));
}

VWords oddBytes(hn::Vec<Bytes> v) {
  return hn::And(hn::BitCast(words, v), constant(0xFF00));
}

/// Even words and odd words in turn.
void storeInTurn(VWords even, VWords odd, Vek8u* out) {
#if defined(__AVX512F__)
  alignas(64) static constexpr Vek64s low[8] = {0, 1, 8, 9, 2, 3, 10, 11};
  alignas(64) static constexpr Vek64s high[8] = {4, 5, 12, 13, 6, 7, 14, 15};
  const __m512i lower = _mm512_unpacklo_epi16(even.raw, odd.raw);
  const __m512i upper = _mm512_unpackhi_epi16(even.raw, odd.raw);
  _mm512_storeu_si512(out, _mm512_permutex2var_epi64(lower, _mm512_load_si512(low), upper));
  _mm512_storeu_si512(out + 64, _mm512_permutex2var_epi64(lower, _mm512_load_si512(high), upper));
#else
  hn::StoreInterleaved2(even, odd, words, reinterpret_cast<Vek16u*>(out));
#endif
}

/// Even and odd pixels of a block lie in vectors of their own, so that both line up with the chroma
/// that a pair shares.
template <class Matrix, class Format>
void convertBlock(const Vek8u* y, const Chroma& evenChroma, const Chroma& oddChroma, Vek8u* out) {
  const auto y8 = hn::LoadU(bytes, y);
  const Pixels even = pixelsOf<Matrix>(evenBytes(y8), evenChroma);
  const Pixels odd = pixelsOf<Matrix>(oddBytes(y8), oddChroma);
  if constexpr (Format::bytes == 2) {
    storeInTurn(packWord<Format>(even), packWord<Format>(odd), out);
  } else {
    static_assert(Format::bPos == 0 && Format::rPos == 2);
    storeChannels({packBytes<blueBits>(even.blue, odd.blue), packBytes<bits>(even.green, odd.green),
                   packBytes<bits>(even.red, odd.red)},
                  out);
  }
}

/// Calls convert(chroma of the even pixels, chroma of the odd pixels).
template <int pixels, class Matrix, class Convert>
void withChroma(const Vek8u* cb, const Vek8u* cr, Convert convert) {
  if constexpr (pixels == 2) {
    const auto shared = [](const Vek8u* at) {
      return hn::ShiftLeft<8>(hn::PromoteTo(words, hn::LoadU(halfBytes, at)));
    };
    const Chroma chroma = chromaOf<Matrix>(shared(cb), shared(cr));
    convert(chroma, chroma);
  } else {
    const auto cb8 = hn::LoadU(bytes, cb), cr8 = hn::LoadU(bytes, cr);
    convert(chromaOf<Matrix>(evenBytes(cb8), evenBytes(cr8)),
            chromaOf<Matrix>(oddBytes(cb8), oddBytes(cr8)));
  }
}

/// A last, shorter block of a row that has a whole one overlaps it, pairs of pixels kept together.
template <class Body, class... Streams>
void forEachPixelBlock(ptrdiff_t n, Body body, Streams... streams) {
  constexpr int block = static_cast<int>(hn::MaxLanes(bytes));
  const ptrdiff_t rest = n % block;
  if (n < block || rest % 2 != 0) return forEachBlock<block>(n, body, streams...);
  forEachBlock<block>(n - rest, body, streams...);
  if (rest != 0) forEachBlock<block>(block, body, Streams{streams.at(n - block)}...);
}

template <int pixels, class Matrix, class Format>
void csc(const Samples& samples, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst, ptrdiff_t dstStep) {
  using Pixel = Out<Format::bytes>;
  using ChromaIn = In<1, pixels>;
  ptrdiff_t y = 0;
  if (samples.chromaShift == 1) {
    const auto body = [](Vek8u* upper, Vek8u* lower, const Vek8u* upperLuma, const Vek8u* lowerLuma,
                         const Vek8u* cb, const Vek8u* cr) {
      withChroma<pixels, Matrix>(cb, cr, [=](const Chroma& even, const Chroma& odd) {
        convertBlock<Matrix, Format>(upperLuma, even, odd, upper);
        convertBlock<Matrix, Format>(lowerLuma, even, odd, lower);
      });
    };
    for (; y + 2 <= rows; y += 2, dst += 2 * dstStep) {
      forEachPixelBlock(n, body, Pixel{dst}, Pixel{dst + dstStep}, In<1>{samples.y.row(y)},
                        In<1>{samples.y.row(y + 1)}, ChromaIn{samples.cb.row(y / 2)},
                        ChromaIn{samples.cr.row(y / 2)});
    }
  }
  const auto body = [](Vek8u* out, const Vek8u* luma, const Vek8u* cb, const Vek8u* cr) {
    withChroma<pixels, Matrix>(cb, cr, [=](const Chroma& even, const Chroma& odd) {
      convertBlock<Matrix, Format>(luma, even, odd, out);
    });
  };
  for (; y < rows; ++y, dst += dstStep) {
    const ptrdiff_t chroma = y >> samples.chromaShift;
    forEachPixelBlock(n, body, Pixel{dst}, In<1>{samples.y.row(y)},
                      ChromaIn{samples.cb.row(chroma)}, ChromaIn{samples.cr.row(chroma)});
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "camera/preview/csc_body.h"

#endif

#include "camera/preview/csc_table.h"
