#include "image/filter/median_color_body.h"
