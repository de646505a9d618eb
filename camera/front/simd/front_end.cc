#include "camera/front/front_end_kernels.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Samples are moved to the top of 16-bit lanes, S = s << (16 - bits), and so are the black levels.
// With D = max(S - B, 0) and h the high half of the 32-bit product D * gain,
//
//   (d * gain + 2^(bits + 1)) >> (bits + 2) = (D * gain + 2^17) >> 18 = (h + 2) >> 2,
//
// since the low half is less than 1 in units of h. h is at most 65534, and 4090 already gives 1023, so
// that it is limited to 4092 before anything can overflow.

constexpr int blockSamples = 32;
constexpr int laneSamples = static_cast<int>(hn::MaxLanes(u16));

/// The black levels and gains of a row in lanes, from a sample of the first colour on.
struct CorrectionLanes {
  V16u black, gain;
  int shift;

  /// `swapped` where the first lane belongs to the second colour.
  CorrectionLanes(const RawCorrection& c, bool swapped)
      : black(alternating(atTop(c.black[swapped], c.bits), atTop(c.black[!swapped], c.bits))),
        gain(alternating(c.gain[swapped], c.gain[!swapped])),
        shift(16 - c.bits) {}

  V16u apply(V16u sample) const {
    const V16u high = hn::MulHigh(hn::SaturatedSub(sample, black), gain);
    return hn::ShiftRight<2>(hn::Add(hn::Min(high, hn::Set(u16, 4092)), hn::Set(u16, 2)));
  }

 private:
  /// A level that no sample exceeds stays one.
  static Vek32u atTop(Vek32u black, int bits) {
    const Vek32u level = black << (16 - bits);
    return level < 65535 ? level : 65535;
  }
  static V16u alternating(Vek32u even, Vek32u odd) {
    return hn::BitCast(u16, hn::Set(u32, even | odd << 16));
  }
};

// ---- Packed formats: eight samples at a time, in 128 bits. One shuffle puts the upper eight bits of
// each sample in the high byte of a lane, another one the bytes with its lower bits in a lane w such
// that (w * factor) >> 16 has them at its bits 7 and below.

constexpr Vek8u none = 0x80;

struct Unpacking {
  Vek8u lowBytes[16];  ///< where the two bytes of w are, of each of eight samples
  Vek16u factors[8];
  Vek16u lowMask;
};

constexpr Unpacking unpackings[] = {
    // 10 bits: byte 4 of a group has the two bits of sample k at 2 k.
    {{none, 4, none, 4, none, 4, none, 4, none, 9, none, 9, none, 9, none, 9},
     {1 << 14, 1 << 12, 1 << 10, 1 << 8, 1 << 14, 1 << 12, 1 << 10, 1 << 8},
     0xC0},
    // 12 bits: byte 2 has the four bits of sample k at 4 k.
    {{none, 2, none, 2, none, 5, none, 5, none, 8, none, 8, none, 11, none, 11},
     {1 << 12, 1 << 8, 1 << 12, 1 << 8, 1 << 12, 1 << 8, 1 << 12, 1 << 8},
     0xF0},
    // 14 bits: bytes 4 to 6 have the six bits of sample k at 6 k.
    {{none, 4, 4, 5, 5, 6, none, 6, none, 11, 11, 12, 12, 13, none, 13},
     {1 << 10, 1 << 12, 1 << 14, 1 << 8, 1 << 10, 1 << 12, 1 << 14, 1 << 8},
     0xFC},
};

/// The tables of the four times eight samples of a block. The bytes are loaded 16 at a time; those of
/// the last eight samples end where the block ends, so that nothing beyond it is read.
template <int format>
struct UnpackingOfBlock {
  static constexpr RawGroups groups = rawGroups[format];
  static constexpr int stride = 8 / groups.samples * groups.bytes;
  static constexpr int lastShift = 16 - stride;

  alignas(64) Vek8u highBytes[64], lowBytes[64];
  alignas(64) Vek16u factors[blockSamples];

  constexpr UnpackingOfBlock() : highBytes(), lowBytes(), factors() {
    const Unpacking& unpacking = unpackings[format - vekiRawCsi2_10];
    for (int i = 0; i < blockSamples; ++i) {
      const int shift = i < 24 ? 0 : lastShift, k = i % 8;
      highBytes[2 * i] = none;
      highBytes[2 * i + 1] =
          static_cast<Vek8u>(shift + k / groups.samples * groups.bytes + k % groups.samples);
      for (int b : {0, 1}) {
        const Vek8u at = unpacking.lowBytes[2 * k + b];
        lowBytes[2 * i + b] = at == none ? none : static_cast<Vek8u>(shift + at);
      }
      factors[i] = unpacking.factors[k];
    }
  }

  static constexpr ptrdiff_t offset(int eighth) {
    return eighth < 3 ? stride * eighth : stride * 3 - lastShift;
  }
};

template <int format>
constexpr UnpackingOfBlock<format> unpackingOfBlock;

/// The 16 bytes that samples 8 * eighth, 8 * eighth + 1 ... of a block are unpacked from, in each 128
/// bits of a vector.
template <int format, int eighth, class D>
hn::Vec<D> loadEighths(D d, const Vek8u* src) {
  if constexpr (hn::MaxLanes(d) == 16) {
    return hn::LoadU(d, src + UnpackingOfBlock<format>::offset(eighth));
  } else {
    const hn::Half<D> half;
    constexpr int more = static_cast<int>(hn::MaxLanes(half)) / 16;
    return hn::Combine(d, loadEighths<format, eighth + more>(half, src),
                       loadEighths<format, eighth>(half, src));
  }
}

/// The samples i, i + 1 ... of a block at the top of 16-bit lanes.
template <int format, int i>
V16u samplesAtTop(const Vek8u* src, int shift) {
  if constexpr (format == vekiRaw8) {
    return hn::ShiftLeft<8>(hn::PromoteTo(u16, hn::LoadU(halfU8, src + i)));
  } else if constexpr (format == vekiRawPlain16) {
    return hn::ShiftLeftSame(hn::BitCast(u16, hn::LoadU(u8, src + 2 * i)), shift);
  } else {
    const auto& tables = unpackingOfBlock<format>;
    const V8u bytes = loadEighths<format, i / 8>(u8, src);
    const V8u high = hn::TableLookupBytesOr0(bytes, hn::Load(u8, tables.highBytes + 2 * i));
    const V8u low = hn::TableLookupBytesOr0(bytes, hn::Load(u8, tables.lowBytes + 2 * i));
    const V16u lowBits = hn::MulHigh(hn::BitCast(u16, low), hn::Load(u16, tables.factors + i));
    const V16u mask = hn::Set(u16, unpackings[format - vekiRawCsi2_10].lowMask);
    return hn::Or(hn::BitCast(u16, high), hn::And(lowBits, mask));
  }
}

template <int format, int i>
void convertBlock(const Vek8u* src, const CorrectionLanes& correction, Vek8u* dst) {
  const V16u samples = samplesAtTop<format, i>(src, correction.shift);
  hn::StoreU(hn::BitCast(u8, correction.apply(samples)), u8, dst + 2 * i);
  if constexpr (i + laneSamples < blockSamples) {
    convertBlock<format, i + laneSamples>(src, correction, dst);
  }
}

template <int format>
void convertRow(const Vek8u* src, int first, ptrdiff_t n, const RawCorrection& correction,
                Vek16u* dst) {
  constexpr RawGroups groups = rawGroups[format];
  VEK_ASSERT(0 <= first && first < groups.samples && n >= 1);
  using Source = In<groups.bytes, groups.samples>;
  const CorrectionLanes lanes(correction, first % 2 != 0);
  const auto body = [&](const Vek8u* from, Vek8u* to) { convertBlock<format, 0>(from, lanes, to); };
  if (first != 0) {
    // The row begins inside a group: what it has of it is copied from that group's samples.
    Vek16u group[groups.samples];
    copiedBlocks<blockSamples>(groups.samples, body, Source{src},
                               Out<2>{reinterpret_cast<Vek8u*>(group)});
    const ptrdiff_t count = groups.samples - first < n ? groups.samples - first : n;
    memcpy(dst, group + first, 2 * static_cast<size_t>(count));
    src += groups.bytes, dst += count, n -= count;
  }
  copiedBlocks<blockSamples>(n, body, Source{src}, Out<2>{reinterpret_cast<Vek8u*>(dst)});
}

}  // namespace

constexpr FrontEndKernels frontEndKernels = {
    .rows = {convertRow<vekiRaw8>, convertRow<vekiRawPlain16>, convertRow<vekiRawCsi2_10>,
             convertRow<vekiRawCsi2_12>, convertRow<vekiRawCsi2_14>}};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
