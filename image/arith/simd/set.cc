#include "image/arith/set_kernels.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
#include "image/arith/set_table.h"
HWY_AFTER_NAMESPACE();
