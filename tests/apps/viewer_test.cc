// The viewer without its window, and frames that are stored.
#include "vekcam/viewer.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "tests/apps/scratch.h"
#include "vekcam/failure.h"

namespace vekcam {
namespace {

constexpr vek::Size frame = {320, 180};

/// The mean of a channel (0 is blue) of the picture at the left of the canvas.
double mean(const Viewer& viewer, int channel, vek::Size picture) {
  double sum = 0;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) sum += viewer.canvas().row(y)[4 * x + channel];
  }
  return sum / (picture.width * picture.height);
}

void show(Viewer& viewer, int frames) {
  for (int i = 0; i < frames; ++i) EXPECT_TRUE(viewer.advance());
}

TEST(Viewer, DoesWhatKeysAndSlidersSay) {
  Viewer viewer(simulatedSource(frame), vek::Rotation::none, vek::ToneCurve::srgb);
  show(viewer, 14);
  const double settled = mean(viewer, 1, frame);
  EXPECT_NEAR(settled, 100, 45);
  const double automatic = viewer.value(0);
  for (int i = 0; i < 8; ++i) viewer.press(Viewer::right);  // two stops, no longer automatic
  EXPECT_NEAR(viewer.value(0), automatic + 2, 1e-9);
  show(viewer, 2);
  EXPECT_GT(mean(viewer, 1, frame), settled + 20);
  viewer.press('A');
  show(viewer, 10);
  EXPECT_NEAR(mean(viewer, 1, frame), settled, 8);

  // The right end of the slider of blue, and beyond, while the button is down.
  const double blue = mean(viewer, 0, frame);
  viewer.press('W');
  const vek::Point end = {viewer.canvas().width() - 14, 132 + 2 * 44 + 22 + 2};
  viewer.point(end, true);
  viewer.point({end.x + 100, 0}, true);
  viewer.point({0, 0}, false);
  viewer.point({end.x - 200, end.y}, false);
  EXPECT_EQ(viewer.value(2), 8);
  show(viewer, 1);
  EXPECT_GT(mean(viewer, 0, frame), blue + 30);

  viewer.press('C');
  viewer.press('R');
  show(viewer, 1);
  EXPECT_EQ(viewer.value(2), 8);
  EXPECT_EQ(viewer.canvas().width() - 252, frame.height);
  viewer.press(' ');
  show(viewer, 1);  // once more, with the word on it
  EXPECT_FALSE(viewer.advance());
  const int frames = viewer.frames();
  viewer.press('N');
  show(viewer, 1);
  EXPECT_EQ(viewer.frames(), frames + 1);
  for (const int key : std::initializer_list<int>{'H', 'L', 'S', Viewer::up, Viewer::down, 0, 'Z'})
    viewer.press(key);
  EXPECT_TRUE(viewer.wantsScreenshot());
  EXPECT_FALSE(viewer.wantsScreenshot());
  viewer.press('Q');
  EXPECT_TRUE(viewer.isFinished());
}

TEST(Viewer, FitsLargeAndOddFramesIntoTheWindow) {
  const test::Scratch scratch;
  for (const auto& [size, bayer] : {std::pair{vek::Size{2592, 1944}, vek::Bayer::rggb},
                                    {{641, 479}, vek::Bayer::bggr},
                                    {{3000, 40}, vek::Bayer::gbrg},
                                    {{40, 3000}, vek::Bayer::grbg}}) {
    FrameInfo info;
    info.size = size;
    info.format = {vek::Raw::csi2_10, 10, bayer};
    const std::string file =
        scratch.file("frames", std::string(static_cast<size_t>(info.bytes()), '\x55'));
    Viewer viewer(streamSource(file, info, {}), vek::Rotation::cw90, vek::ToneCurve::linear);
    show(viewer, 1);
    EXPECT_LE(viewer.canvas().width(), 960 + 252);
    EXPECT_LE(viewer.canvas().height(), 720);
  }
}

TEST(FrameSource, TellsWhatDoesNotFit) {
  const test::Scratch scratch;
  FrameInfo info;
  info.size = {16, 16};
  info.format = {vek::Raw::bytes, 8, vek::Bayer::rggb};
  using State = FrameSource::State;
  scratch.file("a.raw", std::string(256, 'a'));
  scratch.file("b.raw", std::string(256, 'b'));
  const auto files = directorySource(scratch.path(""), info, {});
  EXPECT_EQ(files->next({}), State::ready);
  EXPECT_EQ(files->next({}), State::ready);
  EXPECT_EQ(files->frame().row(15)[15], 'b');
  EXPECT_EQ(files->next({}), State::ended);
  const auto stream = streamSource(scratch.file("c.raw", std::string(600, 'c')), info, {});
  EXPECT_EQ(stream->next({}), State::ready);
  EXPECT_EQ(stream->next({}), State::ready);
  EXPECT_THROW(stream->next({}), Failure);
  const auto other = directorySource(scratch.path(""), info, {});
  EXPECT_EQ(other->next({}), State::ready);
  EXPECT_EQ(other->next({}), State::ready);
  EXPECT_THROW(other->next({}), Failure);
  EXPECT_THROW(directorySource(scratch.path("a.raw"), info, {}), Failure);
  EXPECT_THROW(streamSource(scratch.path("none"), info, {}), Failure);
}

}  // namespace
}  // namespace vekcam
