// 4:2:2 to 4:2:0 with rotation by libyuv, in two passes where it rotates.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

struct Planes {
  Image y, u, v;

  Planes(VekiSize luma, int chromaRows)
      : y(luma.width, luma.height),
        u(luma.width / 2, luma.height / chromaRows),
        v(luma.width / 2, luma.height / chromaRows) {}
};

void rotate(const Planes& from, const Planes& to, VekiSize size, libyuv::RotationMode mode) {
  libyuv::I420Rotate(from.y.data(), from.y.step(), from.u.data(), from.u.step(), from.v.data(),
                     from.v.step(), to.y.data(), to.y.step(), to.u.data(), to.u.step(), to.v.data(),
                     to.v.step(), size.width, size.height, mode);
}

void add(const std::string& variant, libyuv::RotationMode mode) {
  const bool turned = mode == libyuv::kRotate90;
  const auto outSize = [=](VekiSize s) { return turned ? VekiSize{s.height, s.width} : s; };
  addPeer("vekiYCbCr422ToYCbCr420Rotate_8u_P3R" + variant, "libyuv", [=](VekiSize size) -> Call {
    return [=, src = Planes(size, 1), halved = Planes(size, 2), dst = Planes(outSize(size), 2)] {
      libyuv::I422ToI420(src.y.data(), src.y.step(), src.u.data(), src.u.step(), src.v.data(),
                         src.v.step(), halved.y.data(), halved.y.step(), halved.u.data(),
                         halved.u.step(), halved.v.data(), halved.v.step(), size.width,
                         size.height);
      if (mode != libyuv::kRotate0) rotate(halved, dst, size, mode);
    };
  });
  addPeer("vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R" + variant, "libyuv", [=](VekiSize size) -> Call {
    return [=, src = Image(2 * size.width, size.height), halved = Planes(size, 2),
            dst = Planes(outSize(size), 2)] {
      libyuv::UYVYToI420(src.data(), src.step(), halved.y.data(), halved.y.step(), halved.u.data(),
                         halved.u.step(), halved.v.data(), halved.v.step(), size.width,
                         size.height);
      if (mode != libyuv::kRotate0) rotate(halved, dst, size, mode);
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  add("", libyuv::kRotate0);
  add("/quarter-turn", libyuv::kRotate90);
  add("/half-turn", libyuv::kRotate180);
  return true;
}();

}  // namespace
}  // namespace vek::bench
