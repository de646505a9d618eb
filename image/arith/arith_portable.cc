#include "image/arith/arith_body.h"
#include "image/arith/arith_table.h"
