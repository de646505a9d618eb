#include "image/filter/median/median_histogram.h"
#include "image/filter/median/median_network.h"

namespace vek::portable {

constexpr MedianKernels medianKernels = {
    medianNetwork<Sample, 3>,     medianNetwork5<Sample>, {}, Sample::size, nullptr,
    columnHistograms<PlainCount>, runningHistogram};

}  // namespace vek::portable
