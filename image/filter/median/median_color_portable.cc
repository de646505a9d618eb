#include "image/filter/median/median_color_body.h"

namespace vek::portable {

constexpr ColorMedianKernels colorMedianKernels = {colorMedian<3, PlainSteps>,
                                                   colorMedian<5, PlainSteps>};

}  // namespace vek::portable
