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

/// What varies between the benchmarks.
struct Frame {
  int scale = 1, rotation = 0, chromaFormat = 9;
  int border = 1;     ///< samples around the region that are valid
  int stepUnit = 64;  ///< the steps of the planes are multiples of this
};

VekiRggbGeometry geometry(VekiSize size, const Frame& frame) {
  const auto [scale, rotation, chromaFormat, border, stepUnit] = frame;
  const auto step = [unit = stepUnit](int bytes) { return (bytes + unit - 1) / unit * unit; };
  const bool turned = rotation == 1 || rotation == 2;
  const int width = (turned ? size.height : size.width) / scale / 4 * 4;
  const int height = (turned ? size.width : size.height) / scale / 4 * 4;
  VekiRggbGeometry g = {};
  g.srcWidth = (turned ? height : width) * scale;
  g.srcHeight = (turned ? width : height) * scale;
  g.srcStep = stepUnit > 64 ? step(2 * (size.width + 2)) : 2 * (size.width + 2);
  g.dstWidth = width;
  g.dstHeight = height;
  g.dstStep[0] = step(width + 64);
  g.dstStep[1] = g.dstStep[2] = step(width / 2 + 64);
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

void addFrame(const char* variant, const Frame& frame) {
  const double chroma = frame.chromaFormat == 8 ? 1 : 0.5;
  add(std::string("veki10RGGBtoYCbCr_RotRsz_8u_P3R/") + variant,
      2 + (1 + chroma) / (frame.scale * frame.scale), [=](VekiSize size) {
        const VekiRggbGeometry g = geometry(size, frame);
        const Image src(g.srcStep, g.srcHeight + 2);
        const Image y(g.dstStep[0], g.dstHeight + 1), cb(g.dstStep[1], g.dstHeight + 1),
            cr(g.dstStep[2], g.dstHeight + 1);
        const State state(initState(g), vekiFree_10RGGBtoYCbCr_RotRsz_P3R);
        // Without a border the planes begin one block before an aligned address.
        const int inset = frame.scale == 1 && frame.border == 0 ? 1 : 0;
        return [=] {
          Vek16u* const region = src.data<Vek16u>() + g.srcStep / 2 + 1;
          Vek8u* const dst[3] = {y.data() + 6 * inset, cb.data() + 3 * inset,
                                 cr.data() + 3 * inset};
          veki10RGGBtoYCbCr_RotRsz_8u_P3R(region, dst, state.get());
        };
      });
}

[[maybe_unused]] const bool registered = [] {
  addFrame("420", {});
  addFrame("420-edges", {.border = 0});
  addFrame("420-turned", {.rotation = 1});
  addFrame("420-turned-edges", {.rotation = 1, .border = 0});
  addFrame("420-turned-step4096", {.rotation = 1, .stepUnit = 4096});
  addFrame("422", {.chromaFormat = 8});
  addFrame("422-turned", {.rotation = 2, .chromaFormat = 8});
  addFrame("420-upside-down", {.rotation = 3});
  addFrame("420-half", {.scale = 2});
  addFrame("420-half-turned", {.scale = 2, .rotation = 1});
  addFrame("420-quarter", {.scale = 4});
  add("vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R", 0, [](VekiSize size) {
    const VekiRggbGeometry g = geometry(size, {});
    return [=] { vekiFree_10RGGBtoYCbCr_RotRsz_P3R(initState(g)); };
  });
  add("vekiFree_10RGGBtoYCbCr_RotRsz_P3R/null", 0,
      [](VekiSize) { return [] { vekiFree_10RGGBtoYCbCr_RotRsz_P3R(nullptr); }; });
  return true;
}();

}  // namespace
}  // namespace vek::bench
