// Semi-planar 4:2:0 by libyuv.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

/// The planes of both forms.
struct SemiPlanar {
  Image y, u, v, uv, otherY;

  explicit SemiPlanar(VekiSize s)
      : y(s.width, s.height),
        u((s.width + 1) / 2, (s.height + 1) / 2),
        v((s.width + 1) / 2, (s.height + 1) / 2),
        uv((s.width + 1) / 2 * 2, (s.height + 1) / 2),
        otherY(s.width, s.height) {}
};

[[maybe_unused]] const bool registered = [] {
  addPeer("vekiYCbCr420ToNV12_8u_P3P2R", "libyuv", [](VekiSize size) -> Call {
    return [=, p = SemiPlanar(size)] {
      libyuv::I420ToNV12(p.y.data(), p.y.step(), p.u.data(), p.u.step(), p.v.data(), p.v.step(),
                         p.otherY.data(), p.otherY.step(), p.uv.data(), p.uv.step(), size.width,
                         size.height);
    };
  });
  addPeer("vekiNV12ToYCbCr420_8u_P2P3R", "libyuv", [](VekiSize size) -> Call {
    return [=, p = SemiPlanar(size)] {
      libyuv::NV12ToI420(p.y.data(), p.y.step(), p.uv.data(), p.uv.step(), p.otherY.data(),
                         p.otherY.step(), p.u.data(), p.u.step(), p.v.data(), p.v.step(),
                         size.width, size.height);
    };
  });
  return true;
}();

}  // namespace
}  // namespace vek::bench
