#include "image/filter/median/median_color_body.h"
#include "image/filter/median/median_color_kernels.h"

namespace vek::portable {

constexpr ColorMedianKernels colorMedianKernels = {
    .square3 = colorMedian<3, PlainSteps>,
    .square5 = colorMedian<5, PlainSteps>,
};

}  // namespace vek::portable
