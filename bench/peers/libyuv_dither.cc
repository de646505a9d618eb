// Ordered dithering by libyuv: of pixels of four bytes, with a matrix of 4 x 4.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

[[maybe_unused]] const bool registered = [] {
  addPeer("vekiDitherRGB565_8u16u_C3R", "libyuv", [](VekiSize size) -> Call {
    const Image src(4 * size.width, size.height), dst(2 * size.width, size.height);
    return [=] {
      libyuv::ARGBToRGB565Dither(src.data(), src.step(), dst.data(), dst.step(), nullptr,
                                 size.width, size.height);
    };
  });
  return true;
}();

}  // namespace
}  // namespace vek::bench
