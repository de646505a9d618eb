#include "image/filter/morphology_body.h"
