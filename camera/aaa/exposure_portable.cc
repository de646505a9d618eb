#include "camera/aaa/exposure_body.h"
#include "camera/aaa/exposure_rows.h"

namespace vek::portable {

constexpr ExposureRows exposureRows = {_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::portable
