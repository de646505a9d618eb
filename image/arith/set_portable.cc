#include "image/arith/pointwise_body.h"
// The kernels need the row driver.
#include "image/arith/set_table.h"
