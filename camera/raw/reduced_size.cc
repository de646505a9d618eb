// Reduction by 2 or 4: every pixel comes from one quad.
#include "camera/raw/conversion.h"
#include "camera/raw/output_planes.h"
#include "core/region.h"

namespace vek {
namespace {

/// Rows of output pixels on their way to luma and chroma, two at a time.
class Reduce {
 public:
  Reduce(const Vek16u* pSrc, const VekiRggbToYCbCrState& state, ChromaShare share, Level level)
      : src_{reinterpret_cast<const Vek8u*>(pSrc), state.srcStep},
        gamma_(state.gammaTable[0]),
        matrix_(state.yccMatrix),
        scale_(state.scale),
        share_(share),
        kernels_(select(rggbKernels, level)) {}

  /// Blocks x .. x + n - 1 of block row y, each 2 x 2 output pixels.
  void operator()(int x, int n, int y, const BlockRow& out) {
    QuadRow pixels[4];
    for (int p = 0; p < 4; ++p) pixels[p] = mapQuads(p, 2 * ptrdiff_t{x} + p % 2, 2 * y + p / 2, n);
    kernels_.convertQuads[static_cast<int>(share_)](pixels, n, matrix_, out);
  }

 private:
  /// The quads of every second pixel of output row y, from column x on. At scale 4 they are the
  /// centres of the 4 x 4 blocks, which start at a blue sample.
  QuadRow mapQuads(int p, ptrdiff_t x, ptrdiff_t y, int n) {
    const bool isCentre = scale_ == 4;
    const ptrdiff_t column = x * scale_ + isCentre;
    const ptrdiff_t row = y * scale_ + isCentre;
    for (int i = 0; i < 2; ++i) {
      const Vek16u* const samples = reinterpret_cast<const Vek16u*>(src_.row(row + i)) + column;
      kernels_.applyGamma(samples, 2 * scale_, gamma_, n, mapped_[p][i][0], mapped_[p][i][1]);
    }
    const auto& quad = mapped_[p];
    const Vek8u* const upperLeft = quad[0][0];
    const Vek8u* const lowerRight = quad[1][1];
    return {isCentre ? lowerRight : upperLeft,
            {quad[0][1], quad[1][0]},
            isCentre ? upperLeft : lowerRight};
  }

  const Plane<const Vek8u> src_;
  const Vek8u* const gamma_;
  const Vek16s* const matrix_;
  const int scale_;
  const ChromaShare share_;
  const RggbKernels& kernels_;

  /// By pixel of the block, then row and column of its quad.
  alignas(64) Vek8u mapped_[4][2][2][OutputPlanes::maxStripBlocks + readAhead];
};

}  // namespace

void convertReducedSize(const Vek16u* pSrc, Vek8u* const* pDst, const VekiRggbToYCbCrState& state,
                        Level level) {
  const BlockSize size = {state.srcWidth / (2 * state.scale), state.srcHeight / (2 * state.scale)};
  OutputPlanes planes(pDst, state, size, level);
  Reduce reduce(pSrc, state, planes.share, level);
  forEachStripRow(planes, size,
                  [&](int x, int n, int y, const BlockRow& out) { reduce(x, n, y, out); });
}

}  // namespace vek
