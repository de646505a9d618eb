// The camera path in C++: states that own what they point at, and the preview functions.
#include "vek/vek.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

#include "tests/cpp/noise.h"

namespace vek::test {
namespace {

Image<Raw10> rawFrame(Size size) {
  Image<Raw10> frame(size);
  std::minstd_rand random(5);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) frame.row(y)[x] = static_cast<Vek16u>(random() % 1023);
  }
  return frame;
}

/// What is wrong with a call whose last argument is a Failure.
template <class Call>
std::string refusal(VekStatus status, Call call) {
  Failure failure;
  call(failure);
  EXPECT_EQ(failure.status, status) << failure.message;
  return failure.argument;
}

TEST(RawFrontEnd, TakesTheRegionThatBeginsOnRed) {
  const Image<Vek8u> memory =
      random<Image<Vek8u>>({rawRowBytes(Raw::csi2_10, 24) > 0 ? 30 : 0, 10}, 4);
  const View<const RawByte> src(memory.data(), {30, 10}, Bytes(memory.stepBytes()));
  RawFrontEnd front;
  front.format = Raw::csi2_10;
  front.order = Bayer::gbrg;
  front.black = {64, 65, 66, 67};
  front.gain = {5000, 4096, 4096, 7000};
  const VekiRawFrontEnd record = {
      vekiRawCsi2_10, 10, vekiBayerGBRG, {64, 65, 66, 67}, {5000, 4096, 4096, 7000}};
  const Rect region = rawRegion({24, 10}, Bayer::gbrg);
  EXPECT_EQ(region.y, 1);
  Image<Raw10> expected({24, 8});
  ASSERT_EQ(vekiRawTo10RGGB_8u16u_C1R(src.data(), src.stepBytes(), region, expected.data(),
                                      expected.stepBytes(), &record),
            0);
  EXPECT_EQ(bytes(rawTo10Rggb(src, {24, 10}, front).view()), bytes(expected.view()));
  Image<Raw10> part({8, 4});
  EXPECT_EQ(rawTo10Rggb(src, part, front, {16, 5}), 0);
  EXPECT_EQ(bytes(part.view()), bytes(expected.sub({16, 4, 8, 4})));

  EXPECT_EQ(refusal(vekStsBadArgErr,
                    [&](Failure& f) {
                      rawTo10Rggb(src, part, front, {18, 5}, f);
                    }),
            "src");
  EXPECT_EQ(refusal(vekStsBadArgErr,
                    [&](Failure& f) {
                      rawTo10Rggb(src, part, front, {16, 7}, f);
                    }),
            "src");
  EXPECT_EQ(refusal(vekStsBadArgErr,
                    [&](Failure& f) {
                      rawTo10Rggb(src, part, front, {0, 0}, f);
                    }),
            "first");
  front.bits = 11;
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { rawTo10Rggb(src, part, front, f); }),
            "frontEnd");
}

TEST(RawFrontEnd, MatrixTakesTheRegionAndItsOrder) {
  const Image<Raw10> frame = rawFrame({24, 10});
  const BayerMatrix matrix = {6554, -2048, -410, -1024, 6144, -1024, 0, -2867, 6963};
  Image<Raw10> expected({20, 6});
  ASSERT_EQ(vekiColorMatrix_10Bayer_16u_C1R(frame.row(2) + 2, frame.stepBytes(), expected.data(),
                                            expected.stepBytes(), {20, 6}, matrix.data(),
                                            vekiBayerGBRG, 1),
            0);
  EXPECT_EQ(bytes(colorMatrix(frame.sub({2, 2, 20, 6}), matrix, Bayer::gbrg, true).view()),
            bytes(expected.view()));
  EXPECT_EQ(
      refusal(vekStsSizeErr,
              [&](Failure& f) { colorMatrix(frame, expected, matrix, Bayer::rggb, false, f); }),
      "dst");
  EXPECT_EQ(
      refusal(vekStsBadArgErr,
              [&](Failure& f) { colorMatrix(frame, BayerMatrix{16384}, Bayer::rggb, false, f); }),
      "matrix");
}

TEST(RawFrontEnd, PixelsComeInTheOrderOfTheirType) {
  const Image<Raw10> frame = rawFrame({24, 10});
  GammaTable10 table;
  for (size_t i = 0; i < table.size(); ++i) table[i] = static_cast<Vek8u>(i * 3 / 16);
  const View<const Raw10> inside = frame.sub({2, 2, 20, 6});
  Image<Rgb24> rgb({20, 6});
  Image<Bgr24> bgr({20, 6});
  ASSERT_EQ(
      vekiDemosaic_10RGGB_16u8u_C1C3R(inside.data(), inside.stepBytes(), rgb.data(),
                                      rgb.stepBytes(), {20, 6}, table.data(), vekiChannelsRGB, 1),
      0);
  EXPECT_EQ(bytes(demosaic(inside, table, true).view()), bytes(rgb.view()));
  demosaic(inside, bgr, table, true);
  for (int i = 0; i < 60; ++i) EXPECT_EQ(bgr.row(5)[i], rgb.row(5)[i / 3 * 3 + 2 - i % 3]);
  EXPECT_EQ(refusal(vekStsSizeErr, [&](Failure& f) { demosaic(frame, rgb, table, false, f); }),
            "dst");
}

TEST(States, ExposureOwnsItsWindows) {
  const Image<Raw10> frame = rawFrame({64, 48});
  const VekiRect window = {0, 0, 32, 32};
  const Vek16u weight = 65535;
  VekiAEParams record = {
      vekiAECallerWindows, &window, &weight, 1, 1, 0, 0, 1023, 900, 10, 2, 100, 1, 8, 100, 4000};
  VekiAEState* state = nullptr;
  ASSERT_EQ(vekiInitAlloc_AE_10RGGB_8u_C1R(&record, &state), 0);
  ExposureControls expected = {1000, 2}, actual = expected;
  const VekStatus status = vekiAE_10RGGB_8u_C1R(frame.data(), frame.stepBytes(), frame.size(),
                                                &expected.step, &expected.scale, state);
  vekiFree_AE_10RGGB_8u_C1R(state);

  AutoExposure exposure;
  ExposureParams params;
  {
    params.metering = Metering::windows;
    params.windows = {window};
    params.weights = {weight};
    params.target = 900;
    params.tolerance = 10;
    params.stepSize = 100;
    params.scaleMax = 8;
    params.stepMin = 100;
    params.stepMax = 4000;
    AutoExposure made(params);
    params.windows[0].x = 1;
    exposure = std::move(made);
  }
  EXPECT_EQ(exposure.meter(frame, actual), status);
  EXPECT_EQ(actual.step, expected.step);
  EXPECT_EQ(actual.scale, expected.scale);

  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { AutoExposure refused(params, f); }),
            "windows");
  params.metering = Metering::histogram;
  params.stepSize = 0;
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { AutoExposure refused(params, f); }),
            "stepSize");
  // What would be read beyond the frame: groups of four samples, or the right zone's last rows.
  params.stepSize = 1;
  EXPECT_EQ(AutoExposure(params).meter(frame.sub({0, 0, 62, 48}), actual, std::nothrow),
            vekStsBadArgErr);
  params.metering = Metering::fiveZones;
  EXPECT_GE(AutoExposure(params).meter(frame, actual), 0);
  std::vector<Vek16u> low(16 * 3);
  EXPECT_EQ(AutoExposure(params).meter(View<Raw10>(low, {16, 3}), actual, std::nothrow), 0);
  EXPECT_EQ(AutoExposure().meter(frame, actual, std::nothrow), vekStsBadArgErr);
  EXPECT_EQ(refusal(vekStsBadArgErr,
                    [&](Failure& f) {
                      const View<const Raw10> odd(frame.row(0) + 1, {32, 32}, Bytes(128));
                      AutoExposure(params).meter(odd, actual, f);
                    }),
            "frame");
}

TEST(States, RecommendedExposureFindsItsTarget) {
  for (const Metering metering : {Metering::histogram, Metering::wholeFrame}) {
    AutoExposure exposure(recommended::exposureParams({64, 48}, metering, {16, 1}, {255, 4000}));
    ExposureControls controls = {16, 1};
    int moves = 0;
    Image<Raw10> frame({64, 48});
    for (ExposureControls last = {}; last.scale != controls.scale; ++moves) {
      last = controls;
      for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) {
          frame.row(y)[x] =
              static_cast<Vek16u>(std::min(controls.scale * (x / 2 % 8 == 0 ? 9 : 1) / 2, 1023));
        }
      }
      exposure.meter(frame, controls);
      ASSERT_LT(moves, 12);
    }
    EXPECT_NEAR(controls.scale, metering == Metering::histogram ? 200 : 250, 70);
  }
}

TEST(States, WhiteBalanceOwnsItsWindows) {
  const Image<Raw10> frame = rawFrame({64, 48});
  const VekiRect window = {4, 8, 32, 16};
  const Vek8u weight = 3;
  const VekiAWBParams record = {0,     1,     &window, &weight, 1024, 1100, 0,    0,
                                60000, 60000, 1023,    1023,    2047, 1,    1023, 0,
                                50,    0,     65535,   256,     256,  256};
  VekiAWBState* state = nullptr;
  ASSERT_EQ(vekiInitAlloc_AWB_10RGGB_8u_C1R(&record, &state), 0);
  BalanceGains expected = {300, 256, 280}, actual = expected;
  const VekStatus status =
      vekiAWB_10RGGB_8u_C1R(frame.data(), frame.stepBytes(), frame.size(), &expected.red,
                            &expected.green, &expected.blue, state);
  vekiFree_AWB_10RGGB_8u_C1R(state);
  BalanceParams params;
  params.windows = {window};
  params.weights = {weight};
  params.refRatioB = 1100;
  params.validTolR = params.validTolB = 60000;
  params.maxGainStep = 50;
  AutoWhiteBalance made(params);
  const AutoWhiteBalance balance = std::move(made);
  params.windows.clear();
  EXPECT_EQ(balance.measure(frame, actual), status);
  EXPECT_EQ(actual.red, expected.red);
  EXPECT_EQ(actual.blue, expected.blue);
  EXPECT_NE(actual.red, 300);
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { AutoWhiteBalance refused(params, f); }),
            "weights");
  params.weights.clear();
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { AutoWhiteBalance refused(params, f); }),
            "windows");
}

/// The pipeline in C, with dead pixels at offsets, and its result.
template <class Planes>
void developInC(View<Raw10> frame, const Planes& dst, const std::vector<VekiDeadPixel>& dead,
                const std::vector<Vek8u>& table, int rotation, int scale, bool border) {
  const Vek16s matrix[9] = {300, -40, 0, 10, 256, -9, 0, -70, 330};
  const VekiRggbColorParam color = {table.empty() ? 0U : 1U,
                                    {1, 0, 0},
                                    {table.data(), nullptr, nullptr},
                                    dead.data(),
                                    static_cast<Vek32s>(dead.size()),
                                    0,
                                    0,
                                    0,
                                    matrix};
  const VekiRggbGeometry geometry = {
      frame.stepBytes(),
      frame.width() - (border ? 4 : 0),
      frame.height() - (border ? 4 : 0),
      {dst.y().stepBytes(), dst.cb().stepBytes(), dst.cr().stepBytes()},
      dst.width(),
      dst.height(),
      scale == 1 ? 2 : 3,
      rotation,
      dst.cb().height() == dst.height() ? 8 : 9,
      border};
  VekiRggbToYCbCrState* state = nullptr;
  ASSERT_EQ(vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state), 0);
  const Listed<Planes> to(dst);
  EXPECT_EQ(
      veki10RGGBtoYCbCr_RotRsz_8u_P3R(border ? frame.row(2) + 2 : frame.data(), to.data, state), 0);
  vekiFree_10RGGBtoYCbCr_RotRsz_P3R(state);
}

template <Chroma chroma>
void pipelineIsThatOfC(int scale, Rotation rotation, bool border, bool withTable) {
  const Size size = {64, 32};
  Image<Raw10> first = rawFrame({size.width + (border ? 4 : 0), size.height + (border ? 4 : 0)});
  Image<Raw10> second = rawFrame(first.size());
  RawColor color;
  color.matrix = {300, -40, 0, 10, 256, -9, 0, -70, 330};
  color.rowOffset = 100;
  color.columnOffset = 200;
  // Above the region, its first sample, one inside, one in the border, and one beyond it.
  color.deadPixels = {{99, 210}, {100, 200}, {107, 230}, {132, 210}, {140, 210}};
  std::vector<VekiDeadPixel> dead = {{0, 0}, {7, 30}};
  if (border) dead.push_back({32, 10});
  if (withTable) {
    for (int i = 0; i < 1024; ++i) color.table.push_back(static_cast<Vek8u>(i / 5));
  }
  const Size turned = rotated(size, rotation);
  const Size dstSize = {turned.width / scale, turned.height / scale};
  PlanarImage<chroma> expected(dstSize, scale == 1 && !border ? 1 : 0);
  developInC(second.view(), expected.view(), dead, color.table, static_cast<int>(rotation), scale,
             border);

  RawPipeline made(color, size, Bytes(first.stepBytes()), chroma, dstSize,
                   {expected.y().stepBytes(), expected.cb().stepBytes(), expected.cr().stepBytes()},
                   rotation, border);
  const RawPipeline pipeline = std::move(made);
  color.table.assign(1024, 0);
  PlanarImage<chroma> actual = pipeline.destination<chroma>();
  EXPECT_EQ(pipeline.process(first, actual), 0);
  EXPECT_EQ(bytes(actual.view()), bytes(expected.view()));
  EXPECT_EQ(bytes(first.view()), bytes(second.view()));
  const View<const Raw10> constant = first;
  EXPECT_EQ(pipeline.process(constant, actual, std::nothrow), vekStsBadArgErr);
}

TEST(States, RawPipelineOwnsTablesAndLists) {
  pipelineIsThatOfC<Chroma::c420>(1, Rotation::none, false, true);
  pipelineIsThatOfC<Chroma::c422>(1, Rotation::cw90, true, false);
  pipelineIsThatOfC<Chroma::c420>(2, Rotation::ccw90, false, false);
  pipelineIsThatOfC<Chroma::c422>(4, Rotation::half, false, true);
}

/// Refused before the library is called, which keeps memory of calls that it refuses.
TEST(States, RefusedPipelinesLeakNothing) {
  Image<Raw10> frame = rawFrame({64, 32});
  Image420 dst({64, 32});
  RawColor color;
  const auto argument = [&](auto change, Size size, Size dstSize, std::array<int, 3> steps,
                            Rotation rotation) {
    RawColor changed = color;
    change(changed);
    return refusal(vekStsBadArgErr, [&](Failure& f) {
      EXPECT_TRUE(
          RawPipeline(changed, size, Bytes(128), Chroma::c420, dstSize, steps, rotation, false, f)
              .empty());
    });
  };
  const auto nothing = [](RawColor&) {};
  const Size s = {64, 32};
  const std::array<int, 3> steps = {64, 32, 32};
  EXPECT_EQ(argument([](RawColor& c) { c.table.resize(1023); }, s, s, steps, {}), "color");
  EXPECT_EQ(argument([](RawColor& c) { c.rowOffset = -1; }, s, s, steps, {}), "color");
  EXPECT_EQ(argument(nothing, {63, 32}, s, steps, {}), "frameSize");
  EXPECT_EQ(argument(nothing, s, {32, 64}, steps, {}), "dstSize");
  EXPECT_EQ(argument(nothing, s, {64, 32}, steps, Rotation::cw90), "dstSize");
  EXPECT_EQ(argument(nothing, s, {16, 8}, {14, 8, 8}, {}), "dstSteps");
  EXPECT_EQ(argument(nothing, s, s, {68, 32, 32}, {}), "dstSteps");
  EXPECT_EQ(argument(nothing, {24, 8}, {6, 2}, steps, {}), "dstSize");
  EXPECT_EQ(argument(nothing, s, s, steps, Rotation::mirrorLeftRight), "rotation");

  const RawPipeline pipeline(color, frame, dst.view());
  Image420 made = pipeline.destination<Chroma::c420>();
  EXPECT_EQ(pipeline.process(std::as_const(frame), made), 0);
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { pipeline.process(frame, dst, f); }), "dst");
  EXPECT_EQ(
      refusal(vekStsBadArgErr, [&](Failure& f) { pipeline.process(frame.rows(0, 30), made, f); }),
      "frame");
  Image422 other({64, 32});
  EXPECT_EQ(refusal(vekStsBadArgErr, [&](Failure& f) { pipeline.process(frame, other, f); }),
            "dst");
}

TEST(Preview, ResizesLikeC) {
  const Size from = {128, 64}, to = {96, 48};
  const Image420 src420 = random<Image420>(from);
  const Image422 src422 = random<Image422>(from);
  const Listed<Planes420<const Vek8u>> from420(src420.view());
  const Listed<Planes422<const Vek8u>> from422(src422.view());
  const Steps steps = samplingSteps(from, to);
  for (const Rotation rotation : {Rotation::none, Rotation::ccw90, Rotation::cw90, Rotation::half,
                                  Rotation::mirrorLeftRight, Rotation::mirrorTopBottom}) {
    const int code = static_cast<int>(rotation);
    const Size turned = rotated(to, rotation);
    for (const Interpolation interpolation : {Interpolation::nearest, Interpolation::linear}) {
      const int how = static_cast<int>(interpolation);
      Image420 expected(turned);
      const Listed<Planes420<>> to420(expected);
      ASSERT_EQ(vekiYCbCr420RszRot_8u_P3R(from420.data, from420.steps, 128, 64, to420.data,
                                          to420.steps, 96, 48, how, code, steps.x, steps.y),
                0);
      const Image420 actual = resize<Image420>(src420, to, rotation, interpolation);
      EXPECT_EQ(bytes(actual.view()), bytes(expected.view()));
      const auto inRows = [&](auto&& made) {
        forBands(
            48, OneAfterAnother(),
            [&](Band rows) {
              EXPECT_EQ(resizeRows(src420, made, rows, rotation, interpolation), 0);
            },
            20);
        return bytes(made.view());
      };
      EXPECT_EQ(inRows(Image420(turned)), bytes(expected.view()));

      Image422 expected2(turned);
      const Listed<Planes422<>> to422(expected2);
      ASSERT_EQ(vekiYCbCr422RszRot_8u_P3R(from422.data, from422.steps, 128, 64, to422.data,
                                          to422.steps, 96, 48, how, code, steps.x, steps.y),
                0);
      Image422 actual2(turned);
      EXPECT_EQ(resize(src422, actual2, rotation, interpolation), 0);
      EXPECT_EQ(bytes(actual2.view()), bytes(expected2.view()));

      const auto packed = [&](auto pixel, int format) {
        using Pixel = decltype(pixel);
        Image<Pixel> made(turned);
        ASSERT_EQ(vekiYCbCr420RszCscRotRGB_8u_P3C3R(
                      from420.data, from420.steps, 128, 64, reinterpret_cast<Vek8u*>(made.data()),
                      made.stepBytes(), 96, 48, format, how, code, steps.x, steps.y),
                  0);
        EXPECT_EQ(bytes(resize<Image<Pixel>>(src420, to, rotation, interpolation).view()),
                  bytes(made.view()));
        EXPECT_EQ(inRows(Image<Pixel>(turned)), bytes(made.view()));
      };
      packed(Rgb565(), vekiCsc420RGB565);
      packed(Rgb555(), vekiCsc420RGB555);
      packed(Rgb444(), vekiCsc420RGB444);
      packed(Bgr24(), vekiCsc420BGR24);

      // Squares of 16-bit pixels alone can be turned.
      const auto packed422 = [&](auto pixel, Size size, int format) {
        using Pixel = decltype(pixel);
        const Size out = rotated(size, rotation);
        const Steps by = samplingSteps(from, size);
        Image<Pixel> made(out);
        ASSERT_EQ(vekiYCbCr422RszCscRotRGB_8u_P3C3R(
                      from422.data, from422.steps, 128, 64, reinterpret_cast<Vek8u*>(made.data()),
                      made.stepBytes(), out.width, out.height, format, how, code, by.x, by.y),
                  0);
        EXPECT_EQ(bytes(resize<Image<Pixel>>(src422, size, rotation, interpolation).view()),
                  bytes(made.view()));
      };
      packed422(Rgb565(), {64, 64}, vekiCsc422RGB565);
      packed422(Rgb444(), {64, 64}, vekiCsc422RGB444);
      packed422(Bgr24(), {96, 48}, vekiCsc422BGR24);
    }
  }
}

TEST(Preview, ReducesAndRotatesLikeC) {
  Image<Uyvy> src({96, 64});
  for (int y = 0; y < 64; ++y) {
    for (int i = 0; i < 192; ++i) src.row(y)[i] = static_cast<Vek8u>(i * y + 3 * i);
  }
  Image<Rgb555> expected({16, 24});
  ASSERT_EQ(vekiResizeCscRotate_8u_C2R(src.data(), src.stepBytes(), expected.data(),
                                       expected.stepBytes(), 96, 64, 4, 1, 1, 2),
            0);
  EXPECT_EQ(bytes(reduce<Rgb555>(src, 4, Reduction::average, Rotation::cw90).view()),
            bytes(expected.view()));

  Image420 rotated420({64, 96});
  const Listed<Planes420<>> to(rotated420);
  ASSERT_EQ(vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R(src.data(), src.stepBytes(), to.data, to.steps,
                                                  96, 64, 1),
            0);
  const Image420 from2 = to420(src, Rotation::ccw90);
  EXPECT_EQ(bytes(from2.view()), bytes(rotated420.view()));
  const Image422 planes = random<Image422>({96, 64});
  const Listed<Planes422<const Vek8u>> from(planes.view());
  ASSERT_EQ(
      vekiYCbCr422ToYCbCr420Rotate_8u_P3R(from.data, from.steps, to.data, to.steps, 96, 64, 2), 0);
  const Image420 from3 = to420(planes, Rotation::cw90);
  EXPECT_EQ(bytes(from3.view()), bytes(rotated420.view()));
}

/// What the C interface accepts, and then reads or writes beyond the images.
TEST(Preview, RefusesWhatWouldReachBeyondImages) {
  const Image422 src = random<Image422>({64, 64});
  const auto argument = [](auto call) { return refusal(vekStsBadArgErr, call); };
  Image422 odd({32, 31});
  EXPECT_EQ(argument([&](Failure& f) { resize(src, odd, {}, {}, f); }), "dst");
  Image<Rgb565> wide({64, 32});
  EXPECT_EQ(argument([&](Failure& f) { resize(src, wide, Rotation::cw90, {}, f); }), "rotation");
  EXPECT_EQ(argument([&](Failure& f) { resize(src, wide, {}, {}, {70000, 65536}, f); }), "steps");
  const Image<Vek8u> far({128, 64});
  const Planes422<const Vek8u> uneven(src.y(), src.cb(), far.sub({0, 0, 32, 64}));
  EXPECT_EQ(argument([&](Failure& f) { resize(uneven, wide, {}, {}, f); }), "src");
  const Image420 src420 = random<Image420>({64, 64});
  Image420 dst({32, 32});
  const Planes420<const Vek8u> apart(src420.y(), src420.cb(), far.sub({0, 0, 32, 32}));
  EXPECT_EQ(argument([&](Failure& f) { resize(apart, dst, {}, Interpolation::nearest, f); }),
            "src");
  // What the library itself refuses, with the reason.
  EXPECT_EQ(argument([&](Failure& f) {
              resize(src420, dst, {}, {}, {131073 * 2, 65536}, f);
            }),
            "steps");
  for (const Band rows : {Band{-2, 4}, Band{1, 2}, Band{0, 3}, Band{0, 0}, Band{30, 4}}) {
    EXPECT_EQ(argument([&](Failure& f) { resizeRows(src420, dst, rows, {}, {}, f); }), "rows");
  }
  Image420 odd420({33, 32});
  EXPECT_EQ(argument([&](Failure& f) { resize(src420, odd420, {}, {}, f); }), "dst");
  EXPECT_EQ(argument([&](Failure& f) {
              resize(src420, dst.sub({2, 0, 30, 32}), {}, {}, f);
            }),
            "dst.y");
}

TEST(Library, TellsAboutItself) {
  EXPECT_STREQ(version(), VEK_VERSION_STRING);
  EXPECT_EQ(imageVersion().major, 4);
  EXPECT_EQ(cameraVersion().major, 5);
  EXPECT_NE(cpuLevelName(cpuLevelNow()), nullptr);
  EXPECT_GE(cpuLevelLimit(), cpuLevelNow());
  EXPECT_NE(allocate(64), nullptr);
  EXPECT_NE(allocateCamera(64), nullptr);
  const auto divided = divide(Vek16u{1000}, Vek16u{7});
  EXPECT_EQ(divided.quotient, 142);
  EXPECT_EQ(divided.remainder, 6);
  EXPECT_EQ(divide(Vek8u{9}, Vek8u{0}).remainder, 9);
  EXPECT_EQ(divide(Vek32u{0xFFFFFFFF}, Vek32u{2}).quotient, 0x7FFFFFFFU);
}

}  // namespace
}  // namespace vek::test
