// Raw frames from files.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/raw_format.h"

namespace vekcam {

/// Sides of frames that can be developed at any scale and in any rotation.
constexpr int smallestFrameSide = 16;
constexpr int largestFrameSide = 32768;

/// What frames are like, and what their file says about the camera.
struct FrameInfo {
  vek::Size size = {0, 0};
  RawFormat format;
  int step = 0;                   ///< bytes from row to row; 0: those of a row of samples
  std::array<int, 4> black = {};  ///< of R, Gr, Gb, B
  int white = 0;                  ///< where samples saturate; 0: at the largest value
  vek::Rotation rotation = vek::Rotation::none;  ///< that shows the picture upright
  std::optional<vek::ColorGains> asShot;         ///< the white balance that the camera found
  std::optional<vek::CameraColor> color;

  int stepBytes() const;
  int64_t bytes() const { return int64_t{stepBytes()} * size.height; }
  /// `bytes` may lack the padding of the last row.
  vek::View<const vek::RawByte> view(const std::vector<Vek8u>& bytes) const;
};

struct RawImage {
  FrameInfo info;
  std::vector<Vek8u> bytes;
};

/// One plain frame; "-" is standard input. A file that is shorter, but for the padding of the last row,
/// or longer is a Failure, which says what the size of the file hints at.
RawImage readPlainFrame(const std::string& path, const FrameInfo& info);

/// Whether a file's name or its first bytes say that it is a DNG or a camera's raw file.
bool isCameraRaw(const std::string& path);
/// By the name alone.
bool hasCameraRawName(const std::string& path);

/// The sensor's data of a DNG or a camera's raw file, as LibRaw reads it. Anything that is not of a Bayer
/// sensor is a Failure, and everything if this build has no LibRaw.
RawImage readCameraRaw(const std::string& path);

/// "0.20.2-Release", or empty if this build has no LibRaw.
std::string libRawVersion();

}  // namespace vekcam
