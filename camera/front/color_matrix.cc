// A colour matrix on the samples of a raw frame.
#include "vek/camera.h"

#include "camera/front/color_matrix_kernels.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

constexpr int mostWeight = 16383;  // twice of which is a 16-bit number

bool isTooLarge(const Vek16s* matrix) {
  for (int i = 0; i < 9; ++i) {
    if (matrix[i] < -mostWeight || matrix[i] > mostWeight) return true;
  }
  return false;
}

/// The weights of the rows with red samples or of those with blue ones. Their first samples are green, or
/// of the row's other colour.
ColorMatrixWeights weightsOf(const Vek16s* matrix, bool isBlueRow, bool beginsGreen) {
  const int color = isBlueRow ? 2 : 0, other = 2 - color, green = 1;
  const auto at = [&](int row, int column) { return matrix[3 * row + column]; };
  const auto twice = [&](int row, int column) { return static_cast<Vek16s>(2 * at(row, column)); };
  ColorMatrixWeights weights;
  const int c = beginsGreen ? 1 : 0;
  weights.own[c] = at(color, color);
  weights.beside[c] = weights.vertical[c] = at(color, green);
  weights.diagonal[c] = at(color, other);
  weights.own[1 - c] = at(green, green);
  weights.beside[1 - c] = twice(green, color);
  weights.vertical[1 - c] = twice(green, other);
  weights.diagonal[1 - c] = 0;
  return weights;
}

/// One sample of a row, from its neighbour on the only side that has one.
void endOfRow(const Vek16u* const rows[3], Vek16u* dst, ptrdiff_t i, ptrdiff_t neighbour,
              const ColorMatrixWeights& weights) {
  Vek16u mirrored[3][3];
  for (int k = 0; k < 3; ++k) {
    mirrored[k][0] = mirrored[k][2] = rows[k][neighbour];
    mirrored[k][1] = rows[k][i];
  }
  portable::colorMatrixKernels.row(mirrored[0] + 1, mirrored[1] + 1, mirrored[2] + 1, dst + i, 1,
                                   weights);
}

/// A row, n >= 2, whose samples -1 and n do not exist.
void mirroredRow(const ColorMatrixKernels& kernels, const Vek16u* const rows[3], Vek16u* dst,
                 ptrdiff_t n, const ColorMatrixWeights& weights) {
  const ColorMatrixWeights shifted = {{weights.own[1], weights.own[0]},
                                      {weights.beside[1], weights.beside[0]},
                                      {weights.vertical[1], weights.vertical[0]},
                                      {weights.diagonal[1], weights.diagonal[0]}};
  endOfRow(rows, dst, 0, 1, weights);
  if (n > 2) kernels.row(rows[0] + 1, rows[1] + 1, rows[2] + 1, dst + 1, n - 2, shifted);
  endOfRow(rows, dst, n - 1, n - 2, n % 2 == 0 ? shifted : weights);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiColorMatrix_10Bayer_16u_C1R(const Vek16u* pSrc, int srcStep, Vek16u* pDst,
                                                     int dstStep, VekiSize roiSize,
                                                     const Vek16s pMatrix[9], int order,
                                                     int srcBorderValid) {
  using namespace vek;
  if (anyNull({pSrc, pDst, pMatrix}) || roiSize.width < 2 || roiSize.height < 2 ||
      isTooLarge(pMatrix) || order < vekiBayerRGGB || order > vekiBayerBGGR || isOdd(srcStep) ||
      srcStep < 2 * Vek64s{roiSize.width} || isOdd(dstStep) ||
      dstStep < 2 * Vek64s{roiSize.width} || isMisaligned(pSrc, 2) || isMisaligned(pDst, 2)) {
    return vekStsBadArgErr;
  }
  const ColorMatrixKernels& kernels = select(colorMatrixKernels);
  const bool redColumn = (order & 1) != 0, redRow = (order >> 1) != 0;
  const ColorMatrixWeights weights[2] = {weightsOf(pMatrix, redRow, redColumn != redRow),
                                         weightsOf(pMatrix, !redRow, redColumn == redRow)};
  const Plane src{reinterpret_cast<const Vek8u*>(pSrc), srcStep};
  const Plane dst{reinterpret_cast<Vek8u*>(pDst), dstStep};
  const auto row = [&](int y) { return reinterpret_cast<const Vek16u*>(src.row(y)); };
  const bool isMirrored = srcBorderValid == 0;
  const int last = roiSize.height - 1;
  for (int y = 0; y <= last; ++y) {
    const Vek16u* const rows[3] = {row(isMirrored && y == 0 ? 1 : y - 1), row(y),
                                   row(isMirrored && y == last ? last - 1 : y + 1)};
    auto* const to = reinterpret_cast<Vek16u*>(dst.row(y));
    const ColorMatrixWeights& w = weights[y & 1];
    if (isMirrored) {
      mirroredRow(kernels, rows, to, roiSize.width, w);
    } else {
      kernels.row(rows[0], rows[1], rows[2], to, roiSize.width, w);
    }
  }
  return vekStsNoErr;
}
