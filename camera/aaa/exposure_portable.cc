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
      const int bins[4] = {top[x + 1] & sampleBits, top[x + 3] & sampleBits, bottom[x] & sampleBits,
                           bottom[x + 2] & sampleBits};
      ++pHist[bins[0]];
      ++more[0][bins[1]];
      ++more[1][bins[2]];
      ++more[2][bins[3]];
    }
  }
  for (int i = 0; i < histogramBins; ++i) pHist[i] += more[0][i] + more[1][i] + more[2][i];
}

constexpr ExposureRows exposureRows = {_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::portable
