#include "camera/preview/reduce_body.h"
