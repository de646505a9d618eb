#include "vek/camera.h"

#include <memory>

#include "bench/support.h"

namespace vek::bench {
namespace {

using State = std::shared_ptr<VekiRggbToYCbCrState>;

constexpr Vek16s colorMatrix[9] = {412, -118, -38, -60, 380, -64, 6, -122, 372};

VekiRggbColorParam color() {
  VekiRggbColorParam p = {};
  p.gammaCurve[0] = 1;
  p.colorMatrix = colorMatrix;
  return p;
}

/// `border` samples around the region are valid; planes have steps that are multiples of 64.
VekiRggbGeometry geometry(VekiSize size, int scale, int rotation, int chromaFormat, int border) {
  const bool turned = rotation == 1 || rotation == 2;
  const int width = (turned ? size.height : size.width) / scale / 4 * 4;
  const int height = (turned ? size.width : size.height) / scale / 4 * 4;
  VekiRggbGeometry g = {};
  g.srcWidth = (turned ? height : width) * scale;
  g.srcHeight = (turned ? width : height) * scale;
  g.srcStep = 2 * (size.width + 2);
  g.dstWidth = width;
  g.dstHeight = height;
  g.dstStep[0] = (width + 127) / 64 * 64;
  g.dstStep[1] = g.dstStep[2] = (width / 2 + 127) / 64 * 64;
  g.filterMode = scale == 1 ? 2 : 3;
  g.rotation = rotation;
  g.chromaFormat = chromaFormat;
  g.srcBorderValid = border;
  return g;
}

VekiRggbToYCbCrState* initState(const VekiRggbGeometry& g) {
  const VekiRggbColorParam p = color();
  VekiRggbToYCbCrState* state = nullptr;
  vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&p, &g, &state);
  return state;
}

void addFrame(const char* variant, int scale, int rotation, int chromaFormat, int border = 1) {
  const double chroma = chromaFormat == 8 ? 1 : 0.5;
  add(std::string("veki10RGGBtoYCbCr_RotRsz_8u_P3R/") + variant, 2 + (1 + chroma) / (scale * scale),
      [=](VekiSize size) {
        const VekiRggbGeometry g = geometry(size, scale, rotation, chromaFormat, border);
        const Image src(g.srcStep, g.srcHeight + 2);
        const Image y(g.dstStep[0], g.dstHeight + 1), cb(g.dstStep[1], g.dstHeight + 1),
            cr(g.dstStep[2], g.dstHeight + 1);
        const State state(initState(g), vekiFree_10RGGBtoYCbCr_RotRsz_P3R);
        // Without a border the planes begin one block before an aligned address.
        const int inset = scale == 1 && border == 0 ? 1 : 0;
        return [=] {
          Vek16u* const region = src.data<Vek16u>() + g.srcStep / 2 + 1;
          Vek8u* const dst[3] = {y.data() + 6 * inset, cb.data() + 3 * inset,
                                 cr.data() + 3 * inset};
          veki10RGGBtoYCbCr_RotRsz_8u_P3R(region, dst, state.get());
        };
      });
}

[[maybe_unused]] const bool registered = [] {
  addFrame("420", 1, 0, 9);
  addFrame("420-edges", 1, 0, 9, 0);
  addFrame("420-turned", 1, 1, 9);
  addFrame("420-turned-edges", 1, 1, 9, 0);
  addFrame("422", 1, 0, 8);
  addFrame("422-turned", 1, 2, 8);
  addFrame("420-upside-down", 1, 3, 9);
  addFrame("420-half", 2, 0, 9);
  addFrame("420-half-turned", 2, 1, 9);
  addFrame("420-quarter", 4, 0, 9);
  add("vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R", 0, [](VekiSize size) {
    const VekiRggbGeometry g = geometry(size, 1, 0, 9, 1);
    return [=] { vekiFree_10RGGBtoYCbCr_RotRsz_P3R(initState(g)); };
  });
  add("vekiFree_10RGGBtoYCbCr_RotRsz_P3R/null", 0,
      [](VekiSize) { return [] { vekiFree_10RGGBtoYCbCr_RotRsz_P3R(nullptr); }; });
  return true;
}();

}  // namespace
}  // namespace vek::bench
