#include "image/filter/gamma_body.h"

namespace vek::portable {

constexpr GammaKernels gammaKernels = {ownGamma_8u_};

}  // namespace vek::portable
