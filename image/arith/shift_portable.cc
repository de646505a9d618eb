#include "image/arith/shift_body.h"
#include "image/arith/shift_kernels.h"
