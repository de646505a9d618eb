#include "image/filter/gamma_body.h"

namespace vek::portable {

constexpr GammaRows gammaRows = {ownGamma_8u_};

}  // namespace vek::portable
