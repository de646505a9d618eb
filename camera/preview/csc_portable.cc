#include "camera/preview/csc_body.h"
#include "camera/preview/csc_rows.h"

namespace vek::portable {

constexpr CscRows cscRows = {cscRow<MatrixQ8, Rgb565>,  cscRow<MatrixQ8, Rgb555>,
                             cscRow<MatrixQ8, Rgb444>,  cscRow<MatrixQ8, Bgr24>,
                             cscRow<MatrixQ10, Rgb565>, cscRow<MatrixQ10, Rgb555>};

}  // namespace vek::portable
