// The conversion of planes to pixels as its definition reads: the portable kernels of the families
// that have such conversions.
#pragma once

#include "core/assert.h"
#include "core/color/color_matrix.h"
#include "core/color/convert_planes.h"
#include "core/color/pixel_block.h"
#include "core/color/weighted_bytes.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

/// What output k is before it is clamped, without centres.
template <const Matrix& m, int k>
constexpr ByteWeights weightsOf = {.weight = {m.factor[k][0], m.factor[k][1], m.factor[k][2]},
                                   .offset = m.offset[k] - m.factor[k][0] * m.centre[0] -
                                             m.factor[k][1] * m.centre[1] -
                                             m.factor[k][2] * m.centre[2]};

/// Output k of the matrix for n pixels.
template <const Matrix& m, int k>
[[gnu::noinline]] void convertComponent(const Vek8u* __restrict a, const Vek8u* __restrict b,
                                        const Vek8u* __restrict c, ptrdiff_t n,
                                        Vek8u* __restrict dst) {
  ptrdiff_t i = weighVectors<m.fractionBits, 1>(a, b, c, n, {weightsOf<m, k>}, {dst});
  for (; i < n; ++i) dst[i] = static_cast<Vek8u>(component<m, k>(a[i], b[i], c[i]));
}

/// All outputs of the matrix for n pixels.
template <const Matrix& m>
[[gnu::noinline]] void convertComponents(const Vek8u* a, const Vek8u* b, const Vek8u* c,
                                         ptrdiff_t n, Vek8u* dst0, Vek8u* dst1, Vek8u* dst2) {
  const ptrdiff_t i = weighVectors<m.fractionBits, 3>(
      a, b, c, n, {weightsOf<m, 0>, weightsOf<m, 1>, weightsOf<m, 2>}, {dst0, dst1, dst2});
  if (i == n) return;
  convertComponent<m, 0>(a + i, b + i, c + i, n - i, dst0 + i);
  convertComponent<m, 1>(a + i, b + i, c + i, n - i, dst1 + i);
  convertComponent<m, 2>(a + i, b + i, c + i, n - i, dst2 + i);
}

/// `Format` is a packed format, or Rgb24 for the three outputs in order, whatever they are.
template <const Matrix& m, class Format>
[[gnu::noinline]] void convertBlock(const Vek8u* __restrict a, const Vek8u* __restrict b,
                                    const Vek8u* __restrict c, ptrdiff_t n, Vek8u* __restrict dst) {
  if constexpr (Format::bytes == 3) {
    PixelBlock out;
    convertComponents<m>(a, b, c, n, out.channel[Format::rPos], out.channel[Format::gPos],
                         out.channel[Format::bPos]);
    join(out, n, dst);
  } else if constexpr (weighsVectors) {
    PixelBlock out;
    convertComponents<m>(a, b, c, n, out.channel[0], out.channel[1], out.channel[2]);
    for (ptrdiff_t i = 0; i < n; ++i) {
      const auto field = [i](const Vek8u* bytes, int bits, int position) {
        return static_cast<Vek16u>(bytes[i] >> (8 - bits) << position);
      };
      const int word = field(out.channel[0], Format::rBits, Format::rPos) |
                       field(out.channel[1], Format::gBits, Format::gPos) |
                       field(out.channel[2], Format::bBits, Format::bPos);
      storeWord(static_cast<Vek16u>(word), dst + 2 * i);
    }
  } else {
    for (ptrdiff_t i = 0; i < n; ++i) {
      Format::store(dst + 2 * i, component<m, 0, Format::rBits>(a[i], b[i], c[i]),
                    component<m, 1, Format::gBits>(a[i], b[i], c[i]),
                    component<m, 2, Format::bBits>(a[i], b[i], c[i]));
    }
  }
}

// Without vectors, pixel by pixel from where they lie.

/// Whether luma has the same factor in all outputs.
template <const Matrix& m>
constexpr bool hasCommonLuma = m.factor[0][0] == m.factor[1][0] && m.factor[0][0] == m.factor[2][0];

/// Luma samples are `lumaStep` bytes apart and chroma samples `chromaStep`; each of these serves
/// `pixels` (1 or 2) pixels, whose products with chroma are made once.
template <int pixels, int lumaStep, int chromaStep, const Matrix& m, class Format>
void convertPixels(const Vek8u* __restrict y, const Vek8u* __restrict cb,
                   const Vek8u* __restrict cr, ptrdiff_t n, Vek8u* __restrict dst) {
  static_assert(hasCommonLuma<m>);
  for (ptrdiff_t i = 0; i < n; i += pixels, cb += chromaStep, cr += chromaStep) {
    if constexpr (pixels == 1) {
      Format::store(dst, component<m, 0, Format::rBits>(*y, *cb, *cr),
                    component<m, 1, Format::gBits>(*y, *cb, *cr),
                    component<m, 2, Format::bBits>(*y, *cb, *cr));
      y += lumaStep;
      dst += Format::bytes;
      continue;
    }
    const auto part = [&]<int k>() {
      constexpr ByteWeights w = weightsOf<m, k>;
      return w.weight[1] * *cb + w.weight[2] * *cr + w.offset;
    };
    const Vek32s red = part.template operator()<0>(), green = part.template operator()<1>(),
                 blue = part.template operator()<2>();
    const auto store = [&] {
      const Vek32s luma = m.factor[0][0] * *y;
      const auto field = [luma]<int bits>(Vek32s chroma) {
        return clampToBits<bits>((luma + chroma) >> (m.fractionBits + 8 - bits));
      };
      Format::store(dst, field.template operator()<Format::rBits>(red),
                    field.template operator()<Format::gBits>(green),
                    field.template operator()<Format::bBits>(blue));
      y += lumaStep;
      dst += Format::bytes;
    };
    store();
    if (pixels == 2 && i + 1 < n) store();
  }
}

/// Output k of n pixels of three bytes, whose samples become `dstStep` bytes apart.
template <const Matrix& m, int k>
void convertTriples(const Vek8u* pixels, ptrdiff_t n, Vek8u* dst, ptrdiff_t dstStep) {
  constexpr ByteWeights w = weightsOf<m, k>;
  weighTriples<m.fractionBits, !staysInBytes<m.fractionBits>(w)>(pixels, n, w, dst, dstStep);
}

/// Each chroma sample of a row serves `pixels` (1 or 2) pixels.
template <int pixels, const Matrix& m, class Format>
void convertRow(const Vek8u* y, const Vek8u* cb, const Vek8u* cr, ptrdiff_t n, Vek8u* dst) {
  if constexpr (!hasWords && (pixels == 2 || Format::bytes == 3)) {
    return convertPixels<pixels, 1, 1, m, Format>(y, cb, cr, n, dst);
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    Vek8u* const to = dst + x * Format::bytes;
    if constexpr (pixels == 1) {
      convertBlock<m, Format>(y + x, cb + x, cr + x, count, to);
    } else {
      alignas(16) Vek8u b[blockPixels], r[blockPixels];
      repeat(cb + x / 2, count, b);
      repeat(cr + x / 2, count, r);
      convertBlock<m, Format>(y + x, b, r, count, to);
    }
  });
}

/// The kernel of convert_planes.h.
template <int pixels, const Matrix& m, class Format>
void convertPlanes(const YccPlanes& planes, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                   ptrdiff_t dstStep) {
  VEK_ASSERT(planes.chromaShift == 0 || planes.chromaShift == 1);
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const ptrdiff_t chroma = y >> planes.chromaShift;
    convertRow<pixels, m, Format>(planes.y.row(y), planes.cb.row(chroma), planes.cr.row(chroma), n,
                                  dst + y * dstStep);
  }
}

}  // namespace
}  // namespace vek::portable
