#include "camera/aaa/white_balance_body.h"
#include "camera/aaa/white_balance_kernels.h"

namespace vek::portable {

constexpr WhiteBalanceKernels whiteBalanceKernels = {_vekiAWB_accum_10RGGB_WGA,
                                                     _vekiAWB_accum_10RGGB_WPD};

}  // namespace vek::portable
