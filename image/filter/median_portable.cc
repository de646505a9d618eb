#include "image/filter/median_histogram.h"
#include "image/filter/median_network.h"

namespace vek::portable {

constexpr MedianRows medianRows = {
    medianNetwork<Sample, 3>,     medianNetwork<Sample, 5>, {}, Sample::size, nullptr,
    columnHistograms<PlainCount>, runningHistogram};

}  // namespace vek::portable
