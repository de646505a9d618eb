#include "core/kernel/words.h"
#include "image/filter/median/median_histogram.h"
#include "image/filter/median/median_kernels.h"
#include "image/filter/median/median_network.h"

namespace vek::portable {
namespace {

struct PlainCount {
  static int notAbove(const Totals<Vek16u>& totals, Vek16u rank) {
    int count = 0;
    for (int step = 8; step > 0; step /= 2) {
      count += totals.upTo[count + step - 1] <= rank ? step : 0;
    }
    return count;
  }
};

}  // namespace

constexpr MedianKernels medianKernels = {
    .square3 = medianNetwork<Sample, 3>,
    .square5 = medianNetwork5<Sample>,
    // Compilers make vectors of it for processors of 64 bits: a quarter of the time of histograms.
    .square7 = hasWords ? medianNetwork<Sample, 7> : nullptr,
    .square9 = nullptr,
    .square11 = nullptr,
    .leastBytes = Sample::size,
    .byCounting = nullptr,
    .columnHistograms = columnHistograms<PlainCount>,
    .runningHistogram = runningHistogram,
};

}  // namespace vek::portable
