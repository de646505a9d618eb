#include "image/filter/median_histogram.h"
#include "image/filter/median_network.h"

namespace vek::portable {

constexpr MedianRows medianRows = {
    medianNetwork<Sample, 3>,     medianNetwork5<Sample>, {}, Sample::size, nullptr,
    columnHistograms<PlainCount>, runningHistogram};

}  // namespace vek::portable
