// Demosaicing at full size.
#include "camera/raw/conversion.h"
#include "camera/raw/mapped_rows.h"
#include "camera/raw/output_planes.h"
#include "core/region.h"

namespace vek {
namespace {

/// A region of quads on its way to luma and chroma, strip by strip.
class Demosaic {
 public:
  Demosaic(const Vek16u* pSrc, const VekiRggbToYCbCrState& state, ChromaShare share, Level level)
      : src_{reinterpret_cast<const Vek8u*>(pSrc), state.srcStep},
        gamma_(state.gammaTable[0]),
        matrix_(state.yccMatrix),
        columns_(state.srcWidth / 2),
        rows_(state.srcHeight / 2),
        hasBorder_(state.srcBorderValid != 0),
        share_(share),
        kernels_(select(rggbKernels, level)) {}

  /// Quads x .. x + n - 1 of quad row y. Row 0 begins a strip; the rows follow in order.
  void operator()(int x, int n, int y, const BlockRow& out) {
    const int top = 2 * y;
    if (y == 0) {
      if (hasBorder_) mapRow(-1, x, n);
      mapRow(0, x, n);
    }
    mapRow(top + 1, x, n);
    if (hasBorder_ || y < rows_ - 1) mapRow(top + 2, x, n);

    if (hasBorder_) return convertInterior(top, 0, n, out);
    if (y == 0 || y == rows_ - 1) return convertEdge(kernels_, top, 0, n, out);
    const int first = x == 0 ? 1 : 0;
    const int last = x + n == columns_ ? n - 1 : n;
    // A single quad is too little for vectors.
    if (first > 0) convertEdge(portable::rggbKernels, top, 0, 1, out);
    if (last > first) convertInterior(top, first, last - first, out);
    if (last < n) convertEdge(portable::rggbKernels, top, n - 1, 1, out);
  }

 private:
  /// Row y of a strip, with the sample on either side that the interior rule needs.
  void mapRow(int y, int x, int n) {
    const Vek16u* const row = reinterpret_cast<const Vek16u*>(src_.row(y)) + 2 * x;
    mapped_.map(kernels_, gamma_, row, n, y, hasBorder_ || x > 0, hasBorder_ || x + n < columns_);
  }

  /// The edge rule: all pixels of a quad are the same.
  void convertEdge(const RggbKernels& kernels, int top, int first, int n,
                   const BlockRow& out) const {
    const SplitRow upper = mapped_.row(top), lower = mapped_.row(top + 1);
    const QuadRow quad = {
        upper.even + first, {upper.odd + first, lower.even + first}, lower.odd + first};
    const QuadRow pixels[4] = {quad, quad, quad, quad};
    kernels.convertQuads[static_cast<int>(share_)](pixels, n, matrix_, advance(out, share_, first));
  }

  void convertInterior(int top, int first, int n, const BlockRow& out) const {
    SplitRow rows[4];
    for (int i = 0; i < 4; ++i) {
      const SplitRow row = mapped_.row(top - 1 + i);
      rows[i] = {row.even + first, row.odd + first};
    }
    kernels_.demosaic[static_cast<int>(share_)](rows, n, matrix_, advance(out, share_, first));
  }

  const Plane<const Vek8u> src_;
  const Vek8u* const gamma_;
  const Vek16s* const matrix_;
  const int columns_, rows_;  ///< of quads
  const bool hasBorder_;      ///< the samples around the region are valid
  const ChromaShare share_;
  const RggbKernels& kernels_;
  MappedRows mapped_;
};

}  // namespace

void convertFullSize(const Vek16u* pSrc, Vek8u* const* pDst, const VekiRggbToYCbCrState& state,
                     Level level) {
  const BlockSize size = {state.srcWidth / 2, state.srcHeight / 2};
  OutputPlanes planes(pDst, state, size, level);
  Demosaic demosaic(pSrc, state, planes.share, level);
  forEachStripRow(planes, size,
                  [&](int x, int n, int y, const BlockRow& out) { demosaic(x, n, y, out); });
}

}  // namespace vek
