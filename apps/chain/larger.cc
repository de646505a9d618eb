#include "chain/larger.h"

namespace chain {

Gray channel(const Color& picture, int index) {
  std::array<Vek32s, 3> weights = {0, 0, 0};
  weights[static_cast<size_t>(index)] = 16384;
  Gray result = made<Gray>(picture.size());
  vek::colorToGray(picture, result, weights);
  return result;
}

Color merged(const std::array<const Gray*, 3>& channels) {
  Color result = made<Color>(channels[0]->size());
  for (int y = 0; y < result.height(); ++y) {
    Vek8u* to = result.row(y);
    for (int x = 0; x < result.width(); ++x) {
      for (const Gray* channel : channels) *to++ = channel->row(y)[x];
    }
  }
  return result;
}

}  // namespace chain
