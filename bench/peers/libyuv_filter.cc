// The same mirroring by libyuv: a negative height reverses the rows.
#include <libyuv.h>

#include "bench/support.h"

namespace vek::bench {
namespace {

/// Registers mirror(source, its step, destination, its step, width, height), where rows are
/// `channels` bytes a pixel and `reverse` turns the rows.
template <class Mirror>
void addMirror(const char* name, int channels, bool reverse, Mirror mirror) {
  addPeer(name, "libyuv", [=](VekiSize size) -> Call {
    const Image src(channels * size.width, size.height), dst(channels * size.width, size.height);
    const int height = reverse ? -size.height : size.height;
    return [=] { mirror(src.data(), src.step(), dst.data(), dst.step(), size.width, height); };
  });
}

[[maybe_unused]] const bool registered = [] {
  addMirror("vekiMirror_8u_C1R/rows", 1, true, libyuv::CopyPlane);
  addMirror("vekiMirror_8u_C3R/rows", 3, true,
            [](auto src, int srcStep, auto dst, int dstStep, int width, int height) {
              libyuv::CopyPlane(src, srcStep, dst, dstStep, 3 * width, height);
            });
  addMirror("vekiMirror_8u_C1R/columns", 1, false, libyuv::MirrorPlane);
  addMirror("vekiMirror_8u_C3R/columns", 3, false, libyuv::RGB24Mirror);
  addMirror("vekiMirror_8u_C1R/both", 1, true, libyuv::MirrorPlane);
  addMirror("vekiMirror_8u_C3R/both", 3, true, libyuv::RGB24Mirror);
  return true;
}();

}  // namespace
}  // namespace vek::bench
