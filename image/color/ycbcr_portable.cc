#include "core/color/convert_planes_body.h"
#include "image/color/ycbcr_body.h"
#include "image/color/ycbcr_table.h"
