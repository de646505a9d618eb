#include "image/filter/median_color_body.h"

namespace vek::portable {

constexpr ColorMedianRows colorMedianRows = {colorMedian<3, PlainSteps>,
                                             colorMedian<5, PlainSteps>};

}  // namespace vek::portable
