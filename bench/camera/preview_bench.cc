#include "vek/camera.h"

#include "bench/camera/preview_cases.h"

namespace vek::bench {
namespace {

/// A sampling step that fits `to` samples into `from`.
int samplingStep(int from, int to) {
  return static_cast<int>(int64_t{from - 1} * 65536 / (to - 1) < int64_t{from} * 65536 / to
                              ? int64_t{from - 1} * 65536 / (to - 1)
                              : int64_t{from} * 65536 / to);
}

Call planar(const PreviewCase& c, VekiSize size) {
  const VekiSize scaled = c.scaled(size);
  const Planes src(c, size), dst(c, c.out(size));
  const auto resize = c.chromaRows == 2 ? vekiYCbCr420RszRot_8u_P3R : vekiYCbCr422RszRot_8u_P3R;
  return [=] {
    const Vek8u* const planes[3] = {src.y.data(), src.cb.data(), src.cr.data()};
    const int steps[3] = {src.y.step(), src.cb.step(), src.cr.step()};
    Vek8u* const dstPlanes[3] = {dst.y.data(), dst.cb.data(), dst.cr.data()};
    const int dstSteps[3] = {dst.y.step(), dst.cb.step(), dst.cr.step()};
    resize(planes, steps, size.width, size.height, dstPlanes, dstSteps, scaled.width, scaled.height,
           c.interpolation, c.rotation, samplingStep(size.width, scaled.width),
           samplingStep(size.height, scaled.height));
  };
}

/// The 4:2:2 function takes the destination's own size in the 24-bit format, the 4:2:0 one the size
/// before the turn.
Call rgb(const PreviewCase& c, VekiSize size) {
  const VekiSize scaled = c.scaled(size), out = c.out(size);
  const VekiSize given = c.chromaRows == 1 ? out : scaled;
  const int format = (c.pixels == Pixels::bgr24 ? 3 : 0) + (c.chromaRows == 1 ? 0 : 4);
  const Planes src(c, size);
  const Image dst = c.image(out.width * c.pixelBytes(), out.height);
  const auto resize =
      c.chromaRows == 2 ? vekiYCbCr420RszCscRotRGB_8u_P3C3R : vekiYCbCr422RszCscRotRGB_8u_P3C3R;
  return [=] {
    const Vek8u* const planes[3] = {src.y.data(), src.cb.data(), src.cr.data()};
    const int steps[3] = {src.y.step(), src.cb.step(), src.cr.step()};
    resize(planes, steps, size.width, size.height, dst.data(), dst.step(), given.width,
           given.height, format, c.interpolation, c.rotation,
           samplingStep(size.width, scaled.width), samplingStep(size.height, scaled.height));
  };
}

Call reduce(const PreviewCase& c, VekiSize size) {
  const VekiSize out = c.out(size);
  const Image src = c.image(2 * size.width, size.height), dst = c.image(2 * out.width, out.height);
  return [=] {
    vekiResizeCscRotate_8u_C2R(src.data(), src.step(), dst.data<Vek16u>(), dst.step(), size.width,
                               size.height, c.down, c.interpolation, 0, c.rotation);
  };
}

[[maybe_unused]] const bool registered = [] {
  for (const PreviewCase& c : previewCases) {
    const double source = 1 + 1.0 / c.chromaRows;
    const double area = static_cast<double>(c.up * c.up) / (c.down * c.down);
    const double made = c.pixels == Pixels::planar ? source : c.pixelBytes();
    add(c.name(), source + made * area, [c](VekiSize size) {
      return c.interleaved                ? reduce(c, size)
             : c.pixels == Pixels::planar ? planar(c, size)
                                          : rgb(c, size);
    });
  }
  return true;
}();

}  // namespace
}  // namespace vek::bench
