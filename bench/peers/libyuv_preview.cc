// Resize, rotation and conversion by libyuv: only the calls that a case needs, one after the other.
#include "vek/camera.h"

#include <libyuv.h>

#include "bench/peers/preview.h"

namespace vek::bench {
namespace {

using libyuv::FilterMode;
using libyuv::RotationMode;

/// Calls fn with the planes of `from` and of `to`, as libyuv orders them.
template <class Fn, class... Rest>
void planes(Fn fn, const Planes& from, const Planes& to, Rest... rest) {
  fn(from.y.data(), from.y.step(), from.cb.data(), from.cb.step(), from.cr.data(), from.cr.step(),
     to.y.data(), to.y.step(), to.cb.data(), to.cb.step(), to.cr.data(), to.cr.step(), rest...);
}

void scale(const PreviewCase& c, const Planes& from, VekiSize size, const Planes& to, VekiSize s) {
  const auto fn = c.chromaRows == 2 ? libyuv::I420Scale : libyuv::I422Scale;
  const FilterMode filter = c.interpolation == 0 ? FilterMode::kFilterNone
                            : c.interleaved      ? FilterMode::kFilterBox
                                                 : FilterMode::kFilterBilinear;
  fn(from.y.data(), from.y.step(), from.cb.data(), from.cb.step(), from.cr.data(), from.cr.step(),
     size.width, size.height, to.y.data(), to.y.step(), to.cb.data(), to.cb.step(), to.cr.data(),
     to.cr.step(), s.width, s.height, filter);
}

/// A plain copy is a rotation by nothing.
void rotate(const PreviewCase& c, const Planes& from, const Planes& to, VekiSize s) {
  const bool is420 = c.chromaRows == 2;
  if (c.rotation == vekiMirrorLeftRight && is420) {
    planes(libyuv::I420Mirror, from, to, s.width, s.height);
  } else if (c.rotation == vekiMirrorLeftRight) {
    libyuv::MirrorPlane(from.y.data(), from.y.step(), to.y.data(), to.y.step(), s.width, s.height);
    libyuv::MirrorPlane(from.cb.data(), from.cb.step(), to.cb.data(), to.cb.step(), s.width / 2,
                        s.height);
    libyuv::MirrorPlane(from.cr.data(), from.cr.step(), to.cr.data(), to.cr.step(), s.width / 2,
                        s.height);
  } else {
    constexpr RotationMode modes[] = {libyuv::kRotate0, libyuv::kRotate270, libyuv::kRotate90,
                                      libyuv::kRotate180};
    planes(is420 ? libyuv::I420Rotate : libyuv::I422Rotate, from, to, s.width, s.height,
           modes[c.rotation]);
  }
}

void convert(const PreviewCase& c, const Planes& from, const Image& to, VekiSize out) {
  const bool is420 = c.chromaRows == 2, is565 = c.pixels == Pixels::rgb565;
  const auto fn = is420   ? is565 ? libyuv::I420ToRGB565 : libyuv::I420ToRGB24
                  : is565 ? libyuv::I422ToRGB565
                          : libyuv::I422ToRGB24;
  fn(from.y.data(), from.y.step(), from.cb.data(), from.cb.step(), from.cr.data(), from.cr.step(),
     to.data(), to.step(), out.width, out.height);
}

Call chain(const PreviewCase& c, VekiSize size) {
  const VekiSize scaled = c.scaled(size), out = c.out(size);
  const Planes src(c, size), small(c, scaled), turned(c, out);
  const Image interleaved = imageOf(c, c.interleaved ? 2 * size.width : 1, size.height);
  const Image rgb = imageOf(c, out.width * c.pixelBytes(), out.height);
  const bool planar = c.pixels == Pixels::planar;
  return [=] {
    const Planes* last = &src;
    if (c.interleaved) {
      libyuv::UYVYToI422(interleaved.data(), interleaved.step(), src.y.data(), src.y.step(),
                         src.cb.data(), src.cb.step(), src.cr.data(), src.cr.step(), size.width,
                         size.height);
    }
    if (c.down != 1) {
      scale(c, *last, size, small, scaled);
      last = &small;
    }
    if (c.rotation != 0 || (planar && c.down == 1)) {
      rotate(c, *last, turned, scaled);
      last = &turned;
    }
    if (!planar) convert(c, *last, rgb, out);
  };
}

[[maybe_unused]] const bool registered = [] {
  for (const PreviewCase& c : previewCases) {
    addPeer(c.name(), "libyuv", [c](VekiSize size) { return chain(c, size); });
  }
  return true;
}();

}  // namespace
}  // namespace vek::bench
