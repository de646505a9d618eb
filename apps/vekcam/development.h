// How frames become pictures: what the user, the camera's file and the frame's file say, in this order.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/camera_file.h"
#include "vekcam/raw_input.h"

namespace vekcam {

/// What the user says; what is left out comes from the camera's file or the frame's.
struct DevelopmentSettings {
  std::optional<vek::ColorGains> gains;  ///< fixed; otherwise as shot, or automatic
  bool balancesAnew = false;             ///< automatic even if the file has the gains as shot
  std::optional<std::array<int, 4>> black;
  std::optional<int> white;            ///< where samples saturate
  std::optional<vek::Matrix3> matrix;  ///< for every light
  std::optional<vek::Rotation> rotation;
  std::vector<VekiDeadPixel> dead;  ///< besides the camera's
  CameraFile camera;
  vek::ToneCurve curve = vek::ToneCurve::srgb;
  vek::Range range = vek::Range::studio;
  int scale = 1;
  vek::Size resized = {0, 0};  ///< before the rotation; no width: not resized
};

/// The frame's black and white levels, as the settings have them.
FrameInfo withLevels(FrameInfo info, const DevelopmentSettings& settings);

/// An Isp for frames of this kind that works in so many jobs. What does not fit them is a Failure.
vek::Isp makeIsp(const FrameInfo& info, const DevelopmentSettings& settings, int jobs);

/// Processes the frame until its white balance stands; the picture of the last time is in `out`.
template <class Out, class Executor>
void processUntilBalanced(vek::Isp& isp, const vek::View<const vek::RawByte>& frame, Out&& out,
                          Executor&& executor) {
  constexpr int mostTimes = 8;  // it stands after two or three
  bool isOn = true;
  for (int i = 0; i < mostTimes && isOn; ++i) {
    const vek::ColorGains before = isp.gains();
    isp.process(frame, out, executor);
    isOn = isp.gains().red != before.red || isp.gains().blue != before.blue;
  }
  if (isOn) isp.process(frame, out, executor);
}

/// What makes a frame's picture doubtful: orders of colours that fit better, light that the white
/// balance cannot use. Empty if nothing does.
std::vector<std::string> doubtsAbout(const FrameInfo& info, const std::vector<Vek8u>& bytes,
                                     const vek::IspResults& results, bool isBalanced);

}  // namespace vekcam
