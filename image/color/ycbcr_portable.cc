#include "core/kernel/convert_planes_body.h"
#include "image/color/ycbcr_body.h"
#include "image/color/ycbcr_row_tables.h"
