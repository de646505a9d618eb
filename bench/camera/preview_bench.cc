#include "vek/camera.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

struct Source420 {
  Image y, cb, cr;

  explicit Source420(VekiSize size)
      : y(size.width, size.height),
        cb(size.width / 2, size.height / 2),
        cr(size.width / 2, size.height / 2) {}
};

void addYcc420Rgb(const char* variant, int format, int interpolation, int rotation) {
  const int pixelBytes = format == 7 ? 3 : 2;
  add(std::string("vekiYCbCr420RszCscRotRGB_8u_P3C3R/") + variant, 1.5 + pixelBytes,
      [=](VekiSize size) -> Call {
        const Source420 src(size);
        const int across = rotation == 1 ? size.height : size.width;
        const Image dst(across * pixelBytes, rotation == 1 ? size.width : size.height);
        return [=] {
          const Vek8u* const planes[3] = {src.y.data(), src.cb.data(), src.cr.data()};
          const int steps[3] = {src.y.step(), src.cb.step(), src.cr.step()};
          vekiYCbCr420RszCscRotRGB_8u_P3C3R(planes, steps, size.width, size.height, dst.data(),
                                            dst.step(), size.width, size.height, format,
                                            interpolation, rotation, 65536, 65536);
        };
      });
}

[[maybe_unused]] const bool registered = [] {
  addYcc420Rgb("565", 4, 0, 0);
  addYcc420Rgb("888", 7, 0, 0);
  addYcc420Rgb("565-turned", 4, 0, 1);
  return true;
}();

}  // namespace
}  // namespace vek::bench
