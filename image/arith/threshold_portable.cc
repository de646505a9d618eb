#include "image/arith/threshold_body.h"
#include "image/arith/threshold_table.h"
