#include "vek/image.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

/// Registers convert(src, srcStep, dst, dstStep, size) from three bytes a pixel to `dstBytes`.
template <class Convert>
void addModel(const char* name, int dstBytes, Convert convert) {
  add(name, 3 + dstBytes, [=](VekiSize size) -> Call {
    const Image src(3 * size.width, size.height), dst(dstBytes * size.width, size.height);
    return [=] { convert(src.data(), src.step(), dst.data(), dst.step(), size); };
  });
}

[[maybe_unused]] const bool registered = [] {
  addModel("vekiRGBToGray_8u_C3C1R", 1, vekiRGBToGray_8u_C3C1R);
  addModel("vekiColorToGrayQ14_8u_C3C1R", 1, [](auto... args) {
    const Vek32s weights[3] = {4899, 9617, 1868};
    vekiColorToGrayQ14_8u_C3C1R(args..., weights);
  });
  addModel("vekiColorTwistQ14_8u_C3R", 3, [](auto... args) {
    const Vek32s twist[3][4] = {
        {9000, 5000, 2384, 0}, {-3000, 19000, 384, 81920}, {100, -2000, 18284, -16384}};
    vekiColorTwistQ14_8u_C3R(args..., twist);
  });
  addModel("vekiRGBToXYZ_8u_C3R", 3, vekiRGBToXYZ_8u_C3R);
  addModel("vekiXYZToRGB_8u_C3R", 3, vekiXYZToRGB_8u_C3R);
  addModel("vekiRGBToYCC_8u_C3R", 3, vekiRGBToYCC_8u_C3R);
  addModel("vekiYCCToRGB_8u_C3R", 3, vekiYCCToRGB_8u_C3R);
  addModel("vekiRGBToLUV_8u_C3R", 3, vekiRGBToLUV_8u_C3R);
  addModel("vekiLUVToRGB_8u_C3R", 3, vekiLUVToRGB_8u_C3R);
  addModel("vekiRGBToHLS_8u_C3R", 3, vekiRGBToHLS_8u_C3R);
  addModel("vekiHLSToRGB_8u_C3R", 3, vekiHLSToRGB_8u_C3R);
  addModel("vekiRGBToHSV_8u_C3R", 3, vekiRGBToHSV_8u_C3R);
  addModel("vekiHSVToRGB_8u_C3R", 3, vekiHSVToRGB_8u_C3R);
  return true;
}();

}  // namespace
}  // namespace vek::bench
