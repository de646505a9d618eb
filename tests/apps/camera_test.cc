// The simulated camera and what it is made of.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

#include "vekcam/camera_loop.h"
#include "vekcam/report.h"

namespace vekcam {
namespace {

constexpr VekiSize smallSize = {320, 180};
constexpr int settlingLimit = 20;

std::vector<FrameRecord> take(CameraLoop& loop, int frames) {
  std::vector<FrameRecord> records;
  for (int i = 0; i < frames; ++i) records.push_back(loop.step());
  return records;
}

int channelSpread(const Vek8u* pixel) {
  const auto [low, high] = std::minmax({pixel[0], pixel[1], pixel[2]});
  return high - low;
}

// Every light of the script, and the first one once more after the last.
TEST(CameraLoop, SettlesAfterEachChangeOfLight) {
  for (const Metering metering :
       {Metering::isp, Metering::frame, Metering::centre, Metering::windows}) {
    SCOPED_TRACE(name(metering));
    LoopSettings settings;
    settings.size = settings.preview = smallSize;
    settings.metering = metering;
    CameraLoop loop(settings);
    const int lights = static_cast<int>(lightScript().size()) + 1;
    const std::vector<FrameRecord> records = take(loop, lights * framesPerLight);
    const std::vector<int> settled = settlingTimes(records);
    ASSERT_EQ(settled.size(), static_cast<size_t>(lights));
    for (const int frames : settled) {
      EXPECT_GE(frames, 0) << "never settles";
      EXPECT_LE(frames, settlingLimit);
    }
    // The night needs all of the exposure time and some analogue gain; the change was a real one.
    const FrameRecord& night = records[2 * framesPerLight - 1];
    EXPECT_EQ(night.controls.exposure, controlRange.maxExposure);
    EXPECT_GT(night.controls.analogueGain, controlRange.minGain);
    if (metering != Metering::isp) {
      EXPECT_EQ(night.exposureStatus, vekStsAeAtLimit);
    }
    for (size_t first = framesPerLight; first < records.size(); first += framesPerLight) {
      EXPECT_FALSE(records[first].inBand) << "frame " << first;
    }
  }
}

TEST(CameraLoop, SettlesWithTheFirstFrameAfterWhichAllAreInTheBand) {
  std::vector<FrameRecord> records(framesPerLight + 3);
  for (size_t i = 0; i < framesPerLight; ++i) records[i].inBand = i != 1 && i != 4;
  EXPECT_EQ(settlingTimes(records), (std::vector{5, -1}));
}

TEST(CameraLoop, ColorsAreThoseOfTheSceneInEveryLight) {
  LoopSettings settings;
  settings.size = {1280, 720};
  settings.preview = {640, 360};
  settings.rotation = vek::Rotation::cw90;
  CameraLoop loop(settings);
  for (const Light& light : lightScript()) {
    const FrameRecord last = take(loop, framesPerLight).back();
    EXPECT_EQ(last.balanceStatus, vekStsNoErr) << light.name;
    const Accuracy accuracy = loop.accuracy();
    EXPECT_LE(accuracy.meanDifference, 3) << light.name;
    EXPECT_LE(accuracy.worstDifference, 8) << light.name << ", patch " << accuracy.worstPatch;
    EXPECT_LE(accuracy.greySpread, 2) << light.name;
    EXPECT_TRUE(accuracy.isMonotonic) << light.name;
  }
}

// The histogram law never stands still; its swings stay small.
TEST(CameraLoop, HistogramStaysNearItsTarget) {
  LoopSettings settings;
  settings.size = settings.preview = smallSize;
  settings.metering = Metering::histogram;
  CameraLoop loop(settings);
  EXPECT_LE(loop.band().high, 1.5 * loop.band().low);
  for (int i = 0; i < 4 * framesPerLight; ++i) {
    const FrameRecord record = loop.step();
    EXPECT_TRUE(record.inBand || i % framesPerLight < settlingLimit)
        << "frame " << i << ": " << record.brightness;
  }
}

TEST(Report, StandsAlone) {
  LoopSettings settings;
  settings.size = settings.preview = {64, 64};
  CameraLoop loop(settings);
  const vekcam::Run measured = {Metering::frame, {1, 2, 2046}, take(loop, framesPerLight + 3)};
  Report report = {settings, measured, measured, loop.times(), "png", {{"shown", "12"}}};
  const std::string text = page(report);
  EXPECT_NE(text.find("base64,cG5n\""), text.npos);
  EXPECT_NE(text.find("base64,MTI=\""), text.npos);
  for (const char* outside : {"http:", "https:", "<script", "<link", "nan", "inf,"}) {
    EXPECT_EQ(text.find(outside), text.npos) << outside;
  }
}

TEST(RawFrame, BorderMirrorsWithTheBayerPhase) {
  RawFrame frame({6, 4});
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) frame.row(y)[x] = static_cast<Vek16u>(10 * y + x);
  }
  frame.mirrorBorder();
  const auto mirrored = [](int i, int n) { return i < 0 ? -i : i >= n ? 2 * n - 2 - i : i; };
  for (int y = -2; y < 6; ++y) {
    for (int x = -2; x < 8; ++x) {
      EXPECT_EQ(frame.row(y)[x], 10 * mirrored(y, 4) + mirrored(x, 6)) << y << ", " << x;
    }
  }
  EXPECT_EQ(reinterpret_cast<uintptr_t>(frame.row(1)) % 64, 0u);
}

/// A flat frame.
RawFrame flat(VekiSize size, int value) {
  RawFrame frame(size);
  for (int y = 0; y < size.height; ++y) {
    std::fill_n(frame.row(y), size.width, static_cast<Vek16u>(value));
  }
  return frame;
}

/// What the pipeline and a preview that turns by `degrees` make of a frame.
Picture develop(RawFrame& frame, PipelineSettings settings, int degrees = 0) {
  settings.region = frame.size();
  frame.mirrorBorder();
  RawPipeline pipeline(frame, settings);
  pipeline.convert(frame);
  Picture picture;
  toPicture(pipeline.image(), pipeline.image().size(), degrees, picture);
  return picture;
}

TEST(Pipeline, TurnsClockwiseAtEveryScale) {
  RawFrame frame = flat({64, 32}, 0);  // a red top left quarter
  for (int i = 0; i < 16 * 8; ++i) frame.row(i / 16 * 2)[i % 16 * 2] = 900;
  for (const int scale : {1, 2, 4}) {
    for (const int degrees : {0, 90, 180, 270}) {
      SCOPED_TRACE(testing::Message() << "scale " << scale << ", " << degrees << " degrees");
      PipelineSettings settings;
      settings.scale = scale;
      const Picture byPreview = develop(frame, settings, degrees);
      settings.degrees = degrees;
      const Picture picture = develop(frame, settings);
      EXPECT_EQ(picture.bgr, byPreview.bgr);
      const int w = (isQuarterTurn(degrees) ? 32 : 64) / scale, h = 64 * 32 / scale / scale / w;
      ASSERT_EQ(picture.width, w);
      ASSERT_EQ(picture.height, h);
      const VekiPoint clockwise[] = {
          {w / 4, h / 4}, {3 * w / 4, h / 4}, {3 * w / 4, 3 * h / 4}, {w / 4, 3 * h / 4}};
      for (int i = 0; i < 4; ++i) {
        const Vek8u* const bgr = picture.row(clockwise[i].y) + 3 * clockwise[i].x;
        EXPECT_EQ(bgr[2] > 160, i == degrees / 90) << "corner " << i;
        EXPECT_LT(std::max(bgr[0], bgr[1]), 120) << "corner " << i;
      }
    }
  }
}

TEST(Pipeline, KeepsGreysNeutralAndReachesWhite) {
  PipelineSettings settings;
  for (const Matrix3& correction : {settings.colorCorrection, Sensor::colorCorrection()}) {
    settings.colorCorrection = correction;
    for (const int value : {60, 200, 500, 1023}) {
      RawFrame frame = flat({16, 16}, value);
      const Picture picture = develop(frame, settings);
      EXPECT_LE(channelSpread(picture.row(8) + 24), 5) << value;
      EXPECT_EQ(picture.row(8)[24] >= 248, value == 1023);
    }
  }
}

// Dead pixels anywhere, edges included, leave no trace in a uniform frame.
TEST(Pipeline, ReplacesDeadPixelsUpToTheEdges) {
  PipelineSettings settings;
  settings.deadPixels = {{5, 1},  {9, 9},   {5, 30}, {1, 14}, {14, 21},
                         {9, 11}, {15, 31}, {12, 0}, {0, 17}};
  RawFrame frame = flat({32, 16}, 400);
  for (const VekiDeadPixel& p : settings.deadPixels) frame.row(p.row)[p.column] = 1023;
  RawFrame clean = flat({32, 16}, 400);
  EXPECT_EQ(develop(frame, settings).bgr, develop(clean, PipelineSettings()).bgr);
}

TEST(Pipeline, CropsToWhatCanBeReduced) {
  const int cases[][6] = {{1918, 1078, 0, 1, 1918, 1078},
                          {1918, 1078, 0, 2, 1912, 1076},
                          {1918, 1078, 90, 2, 1916, 1072},
                          {1920, 1080, 270, 4, 1920, 1072},
                          {16, 16, 90, 4, 16, 16}};
  for (const auto& [width, height, degrees, scale, usedWidth, usedHeight] : cases) {
    PipelineSettings settings;
    settings.region = usableRegion({width, height}, degrees, scale);
    settings.degrees = degrees;
    settings.scale = scale;
    EXPECT_EQ(settings.region.width, usedWidth) << degrees << ", " << scale;
    EXPECT_EQ(settings.region.height, usedHeight) << degrees << ", " << scale;
    RawFrame frame({width, height});
    EXPECT_NO_THROW(RawPipeline(frame, settings).convert(frame));
  }
}

// Enlarged, reduced and turned previews stay within the sampling limits of the library.
TEST(Pipeline, PreviewsOfAnyEvenSize) {
  const YCbCrImage image({62, 46});
  Picture picture;
  for (const VekiSize size : {VekiSize{2, 2}, {30, 22}, {62, 46}, {64, 46}, {250, 90}}) {
    for (const int degrees : {0, 90, 180, 270}) {
      EXPECT_NO_THROW(toPicture(image, size, degrees, picture)) << size.width << ", " << degrees;
      EXPECT_EQ(picture.width, isQuarterTurn(degrees) ? size.height : size.width);
    }
  }
}

}  // namespace
}  // namespace vekcam
