#include "camera/preview/csc_body.h"
#include "camera/preview/csc_table.h"
