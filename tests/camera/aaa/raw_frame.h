// Raw frames for the tests of exposure and white balance.
#pragma once

#include "vek/vek.h"

#include <algorithm>

#include "tests/support/buffer.h"

namespace vek::test {

/// The samples of a frame's quads, give or take `noise`, clamped to 0..`limit`.
struct Light {
  int red, green, blue;
  int noise = 0;
  int limit = 1023;
};

/// A frame in guarded memory.
class RawFrame {
 public:
  RawFrame(const Area& area, Random& random, const Light& light)
      : rowSamples_(area.step / 2),
        buffer_(area, 8, random.chance(70) ? Buffer::Guard::after : Buffer::Guard::before) {
    const int levels[2][2] = {{light.red, light.green}, {light.green, light.blue}};
    for (ptrdiff_t y = 0; y < area.rows; ++y) {
      for (ptrdiff_t x = 0; x < area.bytes / 2; ++x) {
        const int value = levels[y % 2][x % 2] + random.in(-light.noise, light.noise);
        buffer_.as<Vek16u>()[y * rowSamples_ + x] =
            static_cast<Vek16u>(std::clamp(value, 0, light.limit));
      }
    }
  }

  const Vek16u* data() { return buffer_.as<Vek16u>(); }
  Vek32u at(ptrdiff_t x, ptrdiff_t y) { return data()[y * rowSamples_ + x]; }

 private:
  ptrdiff_t rowSamples_;
  Buffer buffer_;
};

}  // namespace vek::test
