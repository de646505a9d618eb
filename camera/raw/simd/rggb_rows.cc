#include "camera/raw/rggb_rows.h"

#include "camera/raw/map_body.h"
#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::ScalableTag<Vek8u>;
using VBytes = hn::Vec<Bytes>;
constexpr Bytes bytes;
constexpr hn::Repartition<Vek16s, Bytes> words;
constexpr hn::Repartition<Vek16u, Bytes> uwords;
constexpr hn::Repartition<Vek32s, Bytes> longs;
using VWords = hn::Vec<decltype(words)>;
using VLongs = hn::Vec<decltype(longs)>;

/// Blocks that are converted at once.
constexpr int lanes = static_cast<int>(hn::MaxLanes(bytes));
static_assert(lanes <= readAhead);

constexpr hn::Full128<Vek8u> sixteen;
using VSixteen = hn::Vec<decltype(sixteen)>;

/// Lanes i .. 15 of a group of look-ups. They meet in registers, as stores of single bytes would
/// take longer than the look-ups; the two samples of a pair come with one load.
template <size_t i>
void lookUp(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, VSixteen& first,
            VSixteen& second) {
  if constexpr (i < 16) {
    constexpr Vek32u mask = rawCodeMask << 16 | rawCodeMask;
    Vek32u pair;
    memcpy(&pair, src + static_cast<ptrdiff_t>(i) * period, sizeof(pair));
    pair &= mask;
    first = hn::InsertLane(first, i, gamma[pair & 0xFFFF]);
    second = hn::InsertLane(second, i, gamma[pair >> 16]);
    lookUp<i + 1>(src, period, gamma, first, second);
  }
}

void mapRow(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, ptrdiff_t n, Vek8u* first,
            Vek8u* second) {
  ptrdiff_t k = 0;
  for (; k + 16 <= n; k += 16) {
    VSixteen a = hn::Zero(sixteen), b = a;
    lookUp<0>(src + k * period, period, gamma, a, b);
    hn::StoreU(a, sixteen, first + k);
    hn::StoreU(b, sixteen, second + k);
  }
  mapSamples(src + k * period, period, gamma, n - k, first + k, second + k);
}

VBytes average4(VBytes a, VBytes b, VBytes c, VBytes d) {
  const VBytes ab = hn::AverageRound(a, b);
  const VBytes cd = hn::AverageRound(c, d);
  // Rounding an odd ab + cd up is one too much if ab or cd was itself rounded up.
  const VBytes rounded = hn::Or(hn::Xor(a, b), hn::Xor(c, d));
  const VBytes excess = hn::And(hn::And(rounded, hn::Xor(ab, cd)), hn::Set(bytes, 1));
  return hn::Sub(hn::AverageRound(ab, cd), excess);
}

/// One pixel each of `lanes` blocks.
struct Pixels {
  VBytes r, g, b;
};

Pixels average(const Pixels& p, const Pixels& q) {
  return {hn::AverageRound(p.r, q.r), hn::AverageRound(p.g, q.g), hn::AverageRound(p.b, q.b)};
}

Pixels average(const Pixels& p, const Pixels& q, const Pixels& s, const Pixels& t) {
  return {average4(p.r, q.r, s.r, t.r), average4(p.g, q.g, s.g, t.g), average4(p.b, q.b, s.b, t.b)};
}

/// A row of the matrix for sums of two products: R and G with their coefficients, B with its own
/// and 128 with the part of the offset.
struct Coefficients {
  VWords rg, b1;

  Coefficients(const Vek16s* row, Vek16s offset)
      : rg(pair(row[0], row[1])), b1(pair(row[2], offset)) {}

  static VWords pair(Vek16s even, Vek16s odd) {
    const Vek32u both = static_cast<Vek16u>(even) | static_cast<Vek32u>(static_cast<Vek16u>(odd))
                                                        << 16;
    return hn::BitCast(words, hn::Set(longs, static_cast<Vek32s>(both)));
  }
};

struct Matrix {
  Coefficients y, cb, cr;

  /// 128 * 256 is the chroma offset.
  explicit Matrix(const Vek16s* matrix) : y(matrix, 0), cb(matrix + 3, 256), cr(matrix + 6, 256) {}
};

VLongs addedProducts(VWords a, VWords b) {
  VLongs upper = hn::Zero(longs);
  const VLongs sums = hn::ReorderWidenMulAccumulate(longs, a, b, hn::Zero(longs), upper);
  return hn::RearrangeToOddPlusEven(sums, upper);
}

/// The even or the odd ones of `lanes` pixels as words: R beside G, B beside 128, in two halves.
struct Terms {
  VWords rg[2], b1[2];

  Terms(VWords r, VWords g, VWords b)
      : rg{hn::InterleaveLower(words, r, g), hn::InterleaveUpper(words, r, g)},
        b1{hn::InterleaveLower(words, b, hn::Set(words, 128)),
           hn::InterleaveUpper(words, b, hn::Set(words, 128))} {}

  /// Exact in 32 bits for any coefficients, then clamped to 0..255.
  VWords component(const Coefficients& c) const {
    const auto half = [&](int i) {
      return hn::ShiftRight<8>(hn::Add(addedProducts(rg[i], c.rg), addedProducts(b1[i], c.b1)));
    };
    const VWords v = hn::ReorderDemote2To(words, half(0), half(1));
    return hn::Min(hn::Max(v, hn::Zero(words)), hn::Set(words, 255));
  }
};

class Convertible {
 public:
  explicit Convertible(const Pixels& p)
      : even_(even(p.r), even(p.g), even(p.b)), odd_(odd(p.r), odd(p.g), odd(p.b)) {}

  VBytes component(const Coefficients& c) const {
    return hn::BitCast(bytes, hn::Or(even_.component(c), hn::ShiftLeft<8>(odd_.component(c))));
  }

 private:
  static VWords even(VBytes v) { return hn::And(hn::BitCast(words, v), hn::Set(words, 255)); }
  static VWords odd(VBytes v) {
    return hn::BitCast(words, hn::ShiftRight<8>(hn::BitCast(uwords, v)));
  }

  Terms even_, odd_;
};

/// The pixels of `lanes` blocks: upper left, upper right, lower left, lower right.
struct Block {
  Pixels p00, p01, p10, p11;
};

template <ChromaShare share>
void storeBlock(const Block& p, const Matrix& m, ptrdiff_t k, const BlockRow& out) {
  const auto luma = [&](const Pixels& left, const Pixels& right, Vek8u* dst) {
    hn::StoreInterleaved2(Convertible(left).component(m.y), Convertible(right).component(m.y),
                          bytes, dst);
  };
  luma(p.p00, p.p01, out.luma[0] + 2 * k);
  luma(p.p10, p.p11, out.luma[1] + 2 * k);
  const auto chroma = [&](const Pixels& pixels, int row) {
    const Convertible c(pixels);
    hn::StoreU(c.component(m.cb), bytes, out.cb[row] + k);
    hn::StoreU(c.component(m.cr), bytes, out.cr[row] + k);
  };
  if constexpr (share == ChromaShare::row) {
    chroma(average(p.p00, p.p01), 0);
    chroma(average(p.p10, p.p11), 1);
  } else if constexpr (share == ChromaShare::column) {
    const Convertible left(average(p.p00, p.p10)), right(average(p.p01, p.p11));
    hn::StoreInterleaved2(left.component(m.cb), right.component(m.cb), bytes, out.cb[0] + 2 * k);
    hn::StoreInterleaved2(left.component(m.cr), right.component(m.cr), bytes, out.cr[0] + 2 * k);
  } else {
    chroma(average(p.p00, p.p01, p.p10, p.p11), 0);
  }
}

/// storeBlock for the last, incomplete block of a row: only the `rest` first ones are written.
template <ChromaShare share>
void storeRest(const Block& p, const Matrix& m, ptrdiff_t k, ptrdiff_t rest, const BlockRow& out) {
  alignas(64) Vek8u buffer[6][2 * lanes];
  storeBlock<share>(p, m, 0,
                    {{buffer[0], buffer[1]}, {buffer[2], buffer[3]}, {buffer[4], buffer[5]}});
  const auto copy = [&](Vek8u* dst, int from, ptrdiff_t n) {
    memcpy(dst, buffer[from], static_cast<size_t>(n));
  };
  constexpr int across = share == ChromaShare::column ? 2 : 1;
  for (int i = 0; i < 2; ++i) copy(out.luma[i] + 2 * k, i, 2 * rest);
  for (int i = 0; i < (share == ChromaShare::row ? 2 : 1); ++i) {
    copy(out.cb[i] + across * k, 2 + i, across * rest);
    copy(out.cr[i] + across * k, 4 + i, across * rest);
  }
}

/// Converts n blocks; blockAt(k) gives those of blocks k .. k + lanes - 1.
template <ChromaShare share, class BlockAt>
void convertRow(ptrdiff_t n, const Vek16s* matrix, const BlockRow& out, BlockAt blockAt) {
  const Matrix m(matrix);
  ptrdiff_t k = 0;
  for (; k + lanes <= n; k += lanes) storeBlock<share>(blockAt(k), m, k, out);
  if (k < n) storeRest<share>(blockAt(k), m, k, n - k, out);
}

template <ChromaShare share>
void _veki10RGGBToYCbCrRot_8u_P3R_Margin(const SplitRow rows[4], ptrdiff_t n, const Vek16s* matrix,
                                         const BlockRow& out) {
  const SplitRow a = rows[0], b = rows[1], c = rows[2], d = rows[3];
  convertRow<share>(n, matrix, out, [=](ptrdiff_t k) -> Block {
    const auto at = [k](const Vek8u* row, int i = 0) { return hn::LoadU(bytes, row + k + i); };
    const VBytes red = at(b.even), redRight = at(b.even, 1), redBelow = at(d.even);
    const VBytes redAcross = at(d.even, 1);
    const VBytes greenR = at(b.odd), greenB = at(c.even);
    const VBytes blue = at(c.odd), blueLeft = at(c.odd, -1), blueAbove = at(a.odd);
    const VBytes blueAcross = at(a.odd, -1);
    return {{red, average4(at(a.even), at(b.odd, -1), greenR, greenB),
             average4(blueAcross, blueAbove, blueLeft, blue)},
            {hn::AverageRound(red, redRight), greenR, hn::AverageRound(blueAbove, blue)},
            {hn::AverageRound(red, redBelow), greenB, hn::AverageRound(blueLeft, blue)},
            {average4(red, redRight, redBelow, redAcross),
             average4(greenR, greenB, at(c.even, 1), at(d.odd)), blue}};
  });
}

template <ChromaShare share>
void quadRow(const QuadRow pixels[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  convertRow<share>(n, matrix, out, [=](ptrdiff_t k) -> Block {
    const auto pixel = [k](const QuadRow& quad) -> Pixels {
      return {hn::LoadU(bytes, quad.red + k),
              hn::AverageRound(hn::LoadU(bytes, quad.green[0] + k),
                               hn::LoadU(bytes, quad.green[1] + k)),
              hn::LoadU(bytes, quad.blue + k)};
    };
    return {pixel(pixels[0]), pixel(pixels[1]), pixel(pixels[2]), pixel(pixels[3])};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "camera/raw/rggb_body.h"

namespace vek::VEK_LEVEL {
namespace {
constexpr auto mapRow = mapSamples;
}  // namespace
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr RggbRows rggbRows = {
    mapRow,
    {_veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::row>,
     _veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::column>,
     _veki10RGGBToYCbCrRot_8u_P3R_Margin<ChromaShare::block>},
    {quadRow<ChromaShare::row>, quadRow<ChromaShare::column>, quadRow<ChromaShare::block>}};

}  // namespace vek::VEK_LEVEL
