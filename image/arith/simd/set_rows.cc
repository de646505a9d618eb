#include "image/arith/set_rows.h"

#include "image/arith/simd/pointwise.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
#include "image/arith/set_kernels.h"
HWY_AFTER_NAMESPACE();

#else

#include "image/arith/pointwise_body.h"
// The kernels need the row driver.
#include "image/arith/set_kernels.h"

#endif
