// A full-size frame from the sensor to the display.
#include "vek/camera.h"

#include <gtest/gtest.h>

#include "tests/camera/raw/pipeline.h"
#include "tests/footprint/preview.h"
#include "tests/footprint/raw.h"
#include "tests/support/differential.h"
#include "tests/support/failing_allocator.h"

namespace vek::test {
namespace {

/// 1920 x 1080 through the raw pipeline and the preview: no allocation, no byte outside the planes, and
/// the same picture at every level.
TEST(FramePath, FullHdAllocatesNothingAndStaysInside) {
  const VekiRggbGeometry geometry = rawGeometry(1920, 1080, 1, 0, 9, 1);
  VekiRggbColorParam color = rawColor();
  const VekiDeadPixel dead[] = {{5, 9}, {1079, 1919}};
  color.deadPixels = dead;
  color.numDeadPixels = 2;
  const RawState state = makeState(color, geometry);
  const auto raw = footprint::rawFrame(geometry);
  Buffer frame(raw.src, 2);
  Random random(baseSeed());
  frame.fill(random);

  const footprint::Resize resize = {1920, 1080, {1920, 960, 960}, 640, 360, 1, 1, 196608, 196608};
  const auto preview = footprint::ycc420Rgb(resize, 720, 2);
  failAllocation(1);
  runAtEveryLevel(
      {{raw.dst[0], 8}, {raw.dst[1], 4}, {raw.dst[2], 4}, {preview.dst[0], 8}}, [&](auto dst) {
        Vek8u* const planes[3] = {dst[0], dst[1], dst[2]};
        EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(frame.as<Vek16u>(), planes, state.get()), 0);
        const Vek8u* const src[3] = {dst[0], dst[1], dst[2]};
        EXPECT_EQ(vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, resize.srcStep, 1920, 1080, dst[3], 720,
                                                    640, 360, 4, 1, 1, 196608, 196608),
                  0);
      });
  EXPECT_EQ(vekiMalloc(1), nullptr) << "the allocation that was to fail had been made";
}

}  // namespace
}  // namespace vek::test
