// Colour conversions.
#include "vek/image.h"

#include "tests/campaign/packed.h"
#include "tests/footprint/ycbcr.h"

namespace vek::test {
namespace {

using footprint::ColorNames;
using footprint::Layout;

/// The images of one side of a conversion: one or three planes, with one step, three, or none.
void drawSide(Case& c, const ColorNames& f, Layout layout, VekiSize size, Use use) {
  const int planes = footprint::planeCount(layout);
  int step[3] = {}, blocks[3];
  for (int p = 0; p < planes; ++p) {
    const ptrdiff_t bytes = footprint::colorPlane(layout, p, size, 0).bytes;
    step[p] = p > 0 && f.oneStep ? step[0]
              : f.tight          ? static_cast<int>(bytes)
                                 : c.step(bytes, size.height, {}, use);
    blocks[p] = c.memory(use, footprint::colorPlane(layout, p, size, step[p]));
  }
  if (planes == 1) {
    c.pointer(blocks[0]);
  } else {
    c.planes(blocks, {1, 1, 1});
  }
  if (f.tight) return;
  if (planes == 1 || f.oneStep) {
    c.number(step[0], Steps{}.refused);
  } else {
    c.numbers(step, Steps{}.refused);
  }
}

template <class... A>
Record planar(const char* name, VekStatus (*f)(A...)) {
  return {name, bind(f), [names = ColorNames{name}](Case& c) {
            const int width = c.random.chance(2) ? c.random.in(300, 5000) : c.random.size(200);
            const VekiSize size = {width, c.random.in(1, 6)};
            drawSide(c, names, names.src, size, Use::in);
            drawSide(c, names, names.dst, size, Use::out);
            c.roi(size);
          }};
}

#define VEK_FORMATS(make, prefix, suffix)                                               \
  make(VEK_NAMED(prefix##RGB565##suffix)), make(VEK_NAMED(prefix##RGB555##suffix)),     \
      make(VEK_NAMED(prefix##RGB444##suffix)), make(VEK_NAMED(prefix##BGR565##suffix)), \
      make(VEK_NAMED(prefix##BGR555##suffix)), make(VEK_NAMED(prefix##BGR444##suffix))

}  // namespace

std::vector<Record> colorRecords() {
  const Manners model, anyStep = {false, anySteps};
  return {
      planar(VEK_NAMED(vekiRGBToYCbCr422_8u_C3C2R)),
      planar(VEK_NAMED(vekiRGBToYCbCr_8u_C3R)),
      planar(VEK_NAMED(vekiRGBToYUV420_8u_C3P3)),
      planar(VEK_NAMED(vekiRGBToYUV420_8u_C3P3R)),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3C2R)),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3P3)),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3P3R)),
      planar(VEK_NAMED(vekiRGBToYUV_8u_C3P3R)),
      planar(VEK_NAMED(vekiRGBToYUV_8u_C3R)),
      VEK_FORMATS(planar, vekiYCbCr420To, _8u16u_P3C3R),
      VEK_FORMATS(planar, vekiYCbCr422To, _8u16u_C2C3R),
      planar(VEK_NAMED(vekiYCbCr422ToRGB_8u_C2C3R)),
      VEK_FORMATS(planar, vekiYCbCrTo, _8u16u_C3R),
      VEK_FORMATS(planar, vekiYCbCrTo, _8u16u_P3C3R),
      planar(VEK_NAMED(vekiYCbCrToRGB_8u_C3R)),
      VEK_FORMATS(planar, vekiYUV420To, _8u16u_P3C3R),
      planar(VEK_NAMED(vekiYUV420ToRGB_8u_P3C3)),
      planar(VEK_NAMED(vekiYUV420ToRGB_8u_P3C3R)),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_C2C3R)),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_P3C3)),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_P3C3R)),
      planar(VEK_NAMED(vekiYUVToRGB_8u_C3R)),
      planar(VEK_NAMED(vekiYUVToRGB_8u_P3C3R)),
      packed(VEK_NAMED(vekiColorToGrayQ14_8u_C3C1R), model),
      packed(VEK_NAMED(vekiHLSToRGB_8u_C3R), model),
      packed(VEK_NAMED(vekiHSVToRGB_8u_C3R), model),
      packed(VEK_NAMED(vekiLUVToRGB_8u_C3R), model),
      packed(VEK_NAMED(vekiRGBToGray_8u_C3C1R), model),
      packed(VEK_NAMED(vekiRGBToHLS_8u_C3R), model),
      packed(VEK_NAMED(vekiRGBToHSV_8u_C3R), model),
      packed(VEK_NAMED(vekiRGBToLUV_8u_C3R), model),
      packed(VEK_NAMED(vekiRGBToXYZ_8u_C3R), model),
      packed(VEK_NAMED(vekiRGBToYCC_8u_C3R), model),
      packed(VEK_NAMED(vekiXYZToRGB_8u_C3R), model),
      packed(VEK_NAMED(vekiYCCToRGB_8u_C3R), model),
      packed(VEK_NAMED(vekiColorTwistQ14_8u_C3R), anyStep),
  };
}

}  // namespace vek::test
