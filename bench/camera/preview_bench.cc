#include "vek/camera.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

/// Y, Cb and Cr; chroma has half the columns.
struct Planes {
  Image y, cb, cr;

  Planes(VekiSize size, int chromaHeight)
      : y(size.width, size.height),
        cb(size.width / 2, chromaHeight),
        cr(size.width / 2, chromaHeight) {}
};

VekiSize turned(VekiSize size, int rotation) {
  return rotation == 1 || rotation == 2 ? VekiSize{size.height, size.width} : size;
}

using ResizePlanes = decltype(&vekiYCbCr420RszRot_8u_P3R);

/// `chromaRows` luma rows share a chroma row; reductions are by `reduction` in both directions.
void addPlanar(const std::string& name, ResizePlanes resize, int chromaRows, int reduction,
               int interpolation, int rotation) {
  const double samples = 1 + 1.0 / chromaRows;
  add(name, samples + samples / reduction / reduction, [=](VekiSize size) -> Call {
    const VekiSize scaled = {size.width / reduction, size.height / reduction};
    const VekiSize out = turned(scaled, rotation);
    const Planes src(size, size.height / chromaRows), dst(out, out.height / chromaRows);
    return [=] {
      const Vek8u* const planes[3] = {src.y.data(), src.cb.data(), src.cr.data()};
      const int steps[3] = {src.y.step(), src.cb.step(), src.cr.step()};
      Vek8u* const dstPlanes[3] = {dst.y.data(), dst.cb.data(), dst.cr.data()};
      const int dstSteps[3] = {dst.y.step(), dst.cb.step(), dst.cr.step()};
      resize(planes, steps, size.width, size.height, dstPlanes, dstSteps, scaled.width,
             scaled.height, interpolation, rotation, 65536 * reduction, 65536 * reduction);
    };
  });
}

void addYcc420(const char* variant, int reduction, int interpolation, int rotation) {
  addPlanar("vekiYCbCr420RszRot_8u_P3R/" + std::string(variant), vekiYCbCr420RszRot_8u_P3R, 2,
            reduction, interpolation, rotation);
}

void addYcc422(const char* variant, int reduction, int interpolation, int rotation) {
  addPlanar("vekiYCbCr422RszRot_8u_P3R/" + std::string(variant), vekiYCbCr422RszRot_8u_P3R, 1,
            reduction, interpolation, rotation);
}

using ResizeRgb = decltype(&vekiYCbCr420RszCscRotRGB_8u_P3C3R);

/// The 4:2:2 function takes the destination's own size in the 24-bit format, the 4:2:0 one the size
/// before the turn.
void addRgb(const std::string& name, ResizeRgb resize, int chromaRows, int format, int pixelBytes,
            int interpolation, int rotation) {
  add(name, 1 + 1.0 / chromaRows + pixelBytes, [=](VekiSize size) -> Call {
    const Planes src(size, size.height / chromaRows);
    const VekiSize out = turned(size, rotation);
    const VekiSize scaled = chromaRows == 1 ? out : size;
    const Image dst(out.width * pixelBytes, out.height);
    return [=] {
      const Vek8u* const planes[3] = {src.y.data(), src.cb.data(), src.cr.data()};
      const int steps[3] = {src.y.step(), src.cb.step(), src.cr.step()};
      resize(planes, steps, size.width, size.height, dst.data(), dst.step(), scaled.width,
             scaled.height, format, interpolation, rotation, 65536, 65536);
    };
  });
}

void addYcc420Rgb(const char* variant, int format, int interpolation, int rotation) {
  addRgb("vekiYCbCr420RszCscRotRGB_8u_P3C3R/" + std::string(variant),
         vekiYCbCr420RszCscRotRGB_8u_P3C3R, 2, format, format == 7 ? 3 : 2, interpolation,
         rotation);
}

void addYcc422Rgb(const char* variant, int format, int interpolation, int rotation) {
  addRgb("vekiYCbCr422RszCscRotRGB_8u_P3C3R/" + std::string(variant),
         vekiYCbCr422RszCscRotRGB_8u_P3C3R, 1, format, format == 3 ? 3 : 2, interpolation,
         rotation);
}

void addReduce(const char* variant, int factor, int interpolation, int rotation) {
  add("vekiResizeCscRotate_8u_C2R/" + std::string(variant), 2 + 2.0 / factor / factor,
      [=](VekiSize size) -> Call {
        const VekiSize out = turned({size.width / factor, size.height / factor}, rotation);
        const Image src(2 * size.width, size.height), dst(2 * out.width, out.height);
        return [=] {
          vekiResizeCscRotate_8u_C2R(src.data(), src.step(), dst.data<Vek16u>(), dst.step(),
                                     size.width, size.height, factor, interpolation, 0, rotation);
        };
      });
}

[[maybe_unused]] const bool registered = [] {
  addYcc420("copy", 1, 0, 0);
  addYcc420("turned", 1, 0, 1);
  addYcc420("half", 2, 1, 0);
  addYcc420("half-turned", 2, 1, 1);
  addYcc420("quarter-nearest", 4, 0, 0);
  addYcc422("copy", 1, 0, 0);
  addYcc422("turned", 1, 0, 1);
  addYcc422("half-bilinear", 2, 1, 0);
  addYcc420Rgb("565", 4, 0, 0);
  addYcc420Rgb("888", 7, 0, 0);
  addYcc420Rgb("565-turned", 4, 0, 1);
  addYcc420Rgb("888-turned", 7, 0, 1);
  addYcc422Rgb("565", 0, 0, 0);
  addYcc422Rgb("565-bilinear", 0, 1, 0);
  addYcc422Rgb("888-turned", 3, 0, 2);
  addReduce("2", 2, 1, 0);
  addReduce("2-nearest", 2, 0, 0);
  addReduce("4-turned", 4, 1, 1);
  addReduce("8", 8, 1, 0);
  return true;
}();

}  // namespace
}  // namespace vek::bench
