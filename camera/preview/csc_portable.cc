#include "camera/preview/csc_body.h"
#include "camera/preview/csc_rows.h"

namespace vek::portable {

constexpr CscRows cscRows = {cscRow<Rgb565>, cscRow<Rgb555>, cscRow<Rgb444>, cscRow<Bgr24>};

}  // namespace vek::portable
