#include "image/stat/norm_body.h"
#include "image/stat/norm_table.h"
