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

[[maybe_unused]] const bool registered = [] {
  addPeer("vekiYCbCr420RszCscRotRGB_8u_P3C3R/565", "libyuv", [](VekiSize size) -> Call {
    const Planes420 src(size);
    const Image dst(2 * size.width, size.height);
    return [=] {
      libyuv::I420ToRGB565(src.y.data(), src.y.step(), src.u.data(), src.u.step(), src.v.data(),
                           src.v.step(), dst.data(), dst.step(), size.width, size.height);
    };
  });
  addPeer("vekiYCbCr420RszCscRotRGB_8u_P3C3R/888", "libyuv", [](VekiSize size) -> Call {
    const Planes420 src(size);
    const Image dst(3 * size.width, size.height);
    return [=] {
      libyuv::I420ToRGB24(src.y.data(), src.y.step(), src.u.data(), src.u.step(), src.v.data(),
                          src.v.step(), dst.data(), dst.step(), size.width, size.height);
    };
  });
  return true;
}();

}  // namespace
}  // namespace vek::bench
