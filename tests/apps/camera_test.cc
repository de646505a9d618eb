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
  const Accuracy accuracy = {1, 2, 3, 1, true, .5, .75};
  Report report = {settings,     measured, measured,
                   loop.times(), "png",    {{"a", "</script>", "12", accuracy}}};
  const std::string text = page(report);
  EXPECT_NE(text.find("\"cG5n\""), text.npos);
  EXPECT_NE(text.find("\"MTI=\""), text.npos);
  for (const char* outside : {"https:", "src=\"", "<link", "{{", "null,", "</script>\""}) {
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

}  // namespace
}  // namespace vekcam
