// Pictures in 4:2:0 as players take them: a line about all of them, and a line before each.
#pragma once

#include <cmath>
#include <fmt/format.h>
#include <string>
#include <vek/isp.hpp>

namespace vekcam {

inline std::string y4mHeader(vek::Size size, vek::Range range, double framesPerSecond) {
  const long thousandths = std::lround(framesPerSecond * 1000);
  return fmt::format("YUV4MPEG2 W{} H{} F{}:1000 Ip A1:1 C420jpeg XCOLORRANGE={}\n", size.width,
                     size.height, thousandths, range == vek::Range::full ? "FULL" : "LIMITED");
}

inline constexpr const char* y4mFrame = "FRAME\n";

/// Of I420 without padding.
inline size_t planeBytes(vek::Size size) {
  return static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 3 / 2;
}

}  // namespace vekcam
