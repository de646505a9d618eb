#include "camera/aaa/exposure_body.h"
#include "camera/aaa/exposure_rows.h"

namespace vek::portable {

/// Each green of a group has bins of its own: neighbours are often equal, and an increment must not
/// wait for the one before it.
void _vekiAEHist_10RGGB(const Vek16u* pSrc, int srcStep, int width, int height, Vek32u* pHist) {
  constexpr Vek16u sampleBits = histogramBins - 1;
  Vek32u more[3][histogramBins] = {};
  const ptrdiff_t rowSamples = srcStep / 2;
  for (ptrdiff_t y = 0; y < height; y += 2) {
    const Vek16u* top = pSrc + y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    for (ptrdiff_t x = 0; x < width; x += 4) {
      ++pHist[top[x + 1] & sampleBits];
      ++more[0][top[x + 3] & sampleBits];
      ++more[1][bottom[x] & sampleBits];
      ++more[2][bottom[x + 2] & sampleBits];
    }
  }
  for (int i = 0; i < histogramBins; ++i) pHist[i] += more[0][i] + more[1][i] + more[2][i];
}

constexpr ExposureRows exposureRows = {_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::portable
