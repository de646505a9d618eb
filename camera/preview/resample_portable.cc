#include "camera/preview/resample_body.h"

namespace vek::portable {

namespace {

/// The loops take each phase as it comes.
void prepare(Columns& /*columns*/, bool /*neighbours*/) {}

}  // namespace

constexpr ResampleKernels resampleKernels = {prepare, nearest, bilinear};

}  // namespace vek::portable
