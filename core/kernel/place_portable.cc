#include "core/kernel/place_body.h"

namespace vek::portable {

constexpr PlaceRows placeRows = {placeTile<1>, placeTile<2>, placeTile<3>};

}  // namespace vek::portable
