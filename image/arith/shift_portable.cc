#include "image/arith/shift_body.h"
#include "image/arith/shift_table.h"
