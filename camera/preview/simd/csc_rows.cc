#include "camera/preview/csc_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

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

/// The coefficients are split as w = 4 h + l, and floor((4 H + L) / 2^n) = (H + (L >> 2)) >> (n -
/// 2): luma 4 * 74 + 2, 409 = 4 * 102 + 1, 100 = 4 * 25, 208 = 4 * 52, 516 = 4 * 129. Only blue can
/// leave 16 bits (74 * 239 + 129 * 127 = 34069); it saturates far above what every field clamps to.
template <int bits, class Chroma>
VWords component(VWords luma74, VWords luma2, Chroma chroma) {
  const VWords high = hn::SaturatedAdd(luma74, chroma.high);
  const VWords low = hn::ShiftRight<2>(hn::Add(luma2, chroma.low));
  const VWords value = hn::ShiftRight<14 - bits>(hn::SaturatedAdd(high, low));
  return hn::Min(hn::Max(value, hn::Zero(words)), hn::Set(words, (1 << bits) - 1));
}

struct ChromaTerm {
  VWords high, low;
};

VWords centred(const Vek8u* samples) {
  return hn::Sub(hn::PromoteTo(words, hn::LoadU(halfBytes, samples)), hn::Set(words, 128));
}

VWords times(VWords v, Vek16s factor) {
  return hn::Mul(v, hn::Set(words, factor));
}

template <class Format>
Pixels convertBlock(const Vek8u* y, const Vek8u* cb, const Vek8u* cr) {
  const VWords b = centred(cb);
  const VWords r = centred(cr);
  const ChromaTerm red = {times(r, 102), r};
  const ChromaTerm green = {hn::Add(times(b, -25), times(r, -52)), hn::Zero(words)};
  const ChromaTerm blue = {times(b, 129), hn::Zero(words)};

  const auto luma = hn::BitCast(uwords, hn::LoadU(bytes, y));
  const auto convert = [&](VWords sample, VWords& redOut, VWords& greenOut, VWords& blueOut) {
    const VWords centredLuma = hn::Sub(sample, hn::Set(words, 16));
    const VWords luma74 = times(centredLuma, 74);
    const VWords luma2 = hn::Add(centredLuma, centredLuma);
    redOut = component<Format::rBits>(luma74, luma2, red);
    greenOut = component<Format::gBits>(luma74, luma2, green);
    blueOut = component<Format::bBits>(luma74, luma2, blue);
  };
  Pixels p;
  convert(hn::BitCast(words, hn::And(luma, hn::Set(uwords, 0xFF))), p.red.even, p.green.even,
          p.blue.even);
  convert(hn::BitCast(words, hn::ShiftRight<8>(luma)), p.red.odd, p.green.odd, p.blue.odd);
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

template <class Format>
void cscRow(const Vek8u* y, const Vek8u* cb, const Vek8u* cr, ptrdiff_t n, Vek8u* dst) {
  constexpr int block = static_cast<int>(hn::MaxLanes(bytes));
  const auto body = [](Vek8u* out, const Vek8u* luma, const Vek8u* blue, const Vek8u* red) {
    const Pixels p = convertBlock<Format>(luma, blue, red);
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

constexpr CscRows cscRows = {cscRow<Rgb565>, cscRow<Rgb555>, cscRow<Rgb444>, cscRow<Bgr24>};

}  // namespace vek::VEK_LEVEL
