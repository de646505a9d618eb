#include "image/arith/threshold_body.h"
#include "image/arith/threshold_kernels.h"
