#include "camera/preview/resample_body.h"
