// What is known about one camera, in a JSON file: `vekcam calibrate` writes it.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/raw_format.h"

namespace vekcam {

struct CameraFile {
  std::optional<RawFormat> format;
  std::optional<vek::Size> size;            ///< of the frames; dead pixels lie within
  std::optional<std::array<int, 4>> black;  ///< of R, Gr, Gb, B, in the units of the samples
  std::optional<int> white;                 ///< where samples saturate, in their units
  std::vector<VekiDeadPixel> dead;
  std::optional<vek::Matrix3> matrix;    ///< linear, from balanced colours to sRGB; rows sum to 1
  std::optional<vek::ColorGains> gains;  ///< of the light for which the matrix holds; green is 1
};

/// What a text says; a Failure that begins with `name` if it is no camera's.
CameraFile parseCamera(std::string_view text, const std::string& name);

std::string toJson(const CameraFile& camera);

}  // namespace vekcam
