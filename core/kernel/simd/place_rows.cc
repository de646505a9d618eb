#include "core/kernel/place_body.h"
