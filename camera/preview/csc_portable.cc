#include "core/color/convert_planes_portable.h"
// The table needs the kernels.
#include "camera/preview/csc_table.h"
