#include "camera/preview/resample_body.h"
#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Up to this step eight samples and the right neighbour of the last one lie within 16 bytes:
// 7 * 2 + 1 columns at most from the first.
constexpr Vek32u largestStep = 2 << 16;
constexpr ptrdiff_t block = 16;
constexpr ptrdiff_t window = 16;

constexpr hn::FixedTag<Vek8u, 16> bytes;
constexpr hn::FixedTag<Vek16u, 8> uwords;
constexpr hn::FixedTag<Vek16s, 8> words;
constexpr hn::FixedTag<Vek32u, 4> longs;
using Bytes = hn::Vec<decltype(bytes)>;
using UWords = hn::Vec<decltype(uwords)>;
using Words = hn::Vec<decltype(words)>;

/// Eight columns: where in the row the 16 bytes begin that hold them, their places in these, and
/// the fractions of their phases.
struct Columns {
  ptrdiff_t first;
  UWords offset, fraction;
};

/// `last` is the last column that may be read, 15 at least.
Columns columnsFrom(Vek32u phase, Vek32u step, ptrdiff_t last) {
  const auto low =
      hn::Add(hn::Set(longs, phase), hn::Mul(hn::Iota(longs, 0), hn::Set(longs, step)));
  const auto high = hn::Add(low, hn::Set(longs, 4 * step));
  const ptrdiff_t left = phase >> 16;
  const ptrdiff_t first = left + window <= last + 1 ? left : last + 1 - window;
  const UWords whole = hn::ConcatOdd(uwords, hn::BitCast(uwords, high), hn::BitCast(uwords, low));
  return {first, hn::Sub(whole, hn::Set(uwords, static_cast<Vek16u>(first))),
          hn::ConcatEven(uwords, hn::BitCast(uwords, high), hn::BitCast(uwords, low))};
}

/// Lanes whose low bytes are the samples at the offsets.
UWords lookUp(Bytes samples, UWords offset) {
  return hn::BitCast(uwords, hn::TableLookupBytes(samples, hn::BitCast(bytes, offset)));
}

void store(UWords low, UWords high, Vek8u* dst) {
  hn::StoreU(hn::ConcatEven(bytes, hn::BitCast(bytes, high), hn::BitCast(bytes, low)), bytes, dst);
}

void nearestVectors(const Vek8u* __restrict row, Vek32u phase, Vek32u step, ptrdiff_t n,
                    Vek8u* __restrict dst) {
  const ptrdiff_t last = (phase + static_cast<Vek32u>(n - 1) * step) >> 16;
  if (step > largestStep || n < block || last < window - 1) {
    return nearest(row, phase, step, n, dst);
  }
  const auto eight = [&](ptrdiff_t i) {
    const Columns at = columnsFrom(phase + static_cast<Vek32u>(i) * step, step, last);
    return lookUp(hn::LoadU(bytes, row + at.first), at.offset);
  };
  forEachOverlappingBlock(n, block,
                          [&](ptrdiff_t i) { store(eight(i), eight(i + block / 2), dst + i); });
}

/// a + (((b - a) * fraction) >> 16). The high product takes the fraction as signed; where that made
/// it 65536 too small, b - a is added.
Words blendWords(Words a, Words b, Words fraction) {
  const Words difference = hn::Sub(b, a);
  const Words missing = hn::And(difference, hn::BroadcastSignBit(fraction));
  return hn::Add(hn::Add(a, missing), hn::MulHigh(difference, fraction));
}

void bilinearVectors(const Vek8u* __restrict top, const Vek8u* __restrict bottom, Vek32s fy,
                     ptrdiff_t lastColumn, Vek32u phase, Vek32u step, ptrdiff_t n,
                     Vek8u* __restrict dst) {
  const ptrdiff_t lastRight = ((phase + static_cast<Vek32u>(n - 1) * step) >> 16) + 1;
  const ptrdiff_t last = lastRight < lastColumn ? lastRight : lastColumn;
  if (step > largestStep || n < block || last < window - 1) {
    return bilinear(top, bottom, fy, lastColumn, phase, step, n, dst);
  }
  const UWords lowByte = hn::Set(uwords, 0xFF);
  const Words rowFraction = hn::Set(words, static_cast<Vek16s>(fy));
  const auto eight = [&](ptrdiff_t i) {
    const Columns at = columnsFrom(phase + static_cast<Vek32u>(i) * step, step, last);
    const UWords right = hn::Min(hn::Add(at.offset, hn::Set(uwords, 1)),
                                 hn::Set(uwords, static_cast<Vek16u>(last - at.first)));
    const Words fraction = hn::BitCast(words, at.fraction);
    const auto across = [&](const Vek8u* row) {
      const Bytes samples = hn::LoadU(bytes, row + at.first);
      return blendWords(hn::BitCast(words, hn::And(lookUp(samples, at.offset), lowByte)),
                        hn::BitCast(words, hn::And(lookUp(samples, right), lowByte)), fraction);
    };
    return hn::BitCast(uwords, blendWords(across(top), across(bottom), rowFraction));
  };
  forEachOverlappingBlock(n, block,
                          [&](ptrdiff_t i) { store(eight(i), eight(i + block / 2), dst + i); });
}

}  // namespace

constexpr ResampleRows resampleRows = {nearestVectors, bilinearVectors, interleave};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {

constexpr ResampleRows resampleRows = {nearest, bilinear, interleave};

}  // namespace vek::VEK_LEVEL

#endif
