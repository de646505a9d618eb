#include "core/color/convert_planes_lanes.h"
// The table needs the kernels.
#include "camera/preview/csc_table.h"
