// The same work by libyuv.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

struct Planes420 {
  Image y, u, v;

  explicit Planes420(VekiSize size)
      : y(size.width, size.height),
        u((size.width + 1) / 2, (size.height + 1) / 2),
        v((size.width + 1) / 2, (size.height + 1) / 2) {}
};

/// Registers a conversion of three planes to `dstBytes` bytes a pixel.
template <class Convert>
void addFrom420(const char* name, int dstBytes, Convert convert) {
  addPeer(name, "libyuv", [=](VekiSize size) -> Call {
    const Planes420 src(size);
    const Image dst(dstBytes * size.width, size.height);
    return [=] {
      convert(src.y.data(), src.y.step(), src.u.data(), src.u.step(), src.v.data(), src.v.step(),
              dst.data(), dst.step(), size.width, size.height);
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  addFrom420("vekiYCbCr420ToRGB565_8u16u_P3C3R", 2, libyuv::I420ToRGB565);
  addFrom420("vekiYUV420ToRGB_8u_P3C3R", 3, libyuv::I420ToRAW);
  addPeer("vekiRGBToYUV420_8u_C3P3R", "libyuv", [](VekiSize size) -> Call {
    const Image src(3 * size.width, size.height);
    const Planes420 dst(size);
    return [=] {
      libyuv::RAWToI420(src.data(), src.step(), dst.y.data(), dst.y.step(), dst.u.data(),
                        dst.u.step(), dst.v.data(), dst.v.step(), size.width, size.height);
    };
  });
  return true;
}();

}  // namespace
}  // namespace vek::bench
