// How programs call the preview functions. The peers of the benchmarks do the same.
#pragma once

#include "vek/vek.h"

#include <string>

namespace vek::test {

enum class Pixels { planar, rgb565, bgr24 };

/// One resize, rotation and conversion. `size` divided by down/up is the scaled image.
struct PreviewCase {
  const char* function;
  const char* variant;
  bool interleaved;  ///< one plane of Cb, Y0, Cr, Y1
  int chromaRows;    ///< luma rows that share a chroma row
  Pixels pixels;
  int down, up;
  int interpolation, rotation;
  int stepMultiple = 64;  ///< of the source and destination row steps

  std::string name() const { return std::string(function) + "/" + variant; }
  bool turned() const { return rotation == 1 || rotation == 2; }
  int pixelBytes() const { return pixels == Pixels::planar ? 1 : pixels == Pixels::rgb565 ? 2 : 3; }
  VekiSize scaled(VekiSize size) const {
    return {size.width * up / down & ~1, size.height * up / down & ~1};
  }
  VekiSize out(VekiSize size) const {
    const VekiSize s = scaled(size);
    return turned() ? VekiSize{s.height, s.width} : s;
  }
};

inline constexpr const char* resize420 = "vekiYCbCr420RszRot_8u_P3R";
inline constexpr const char* resize422 = "vekiYCbCr422RszRot_8u_P3R";
inline constexpr const char* rgbOf420 = "vekiYCbCr420RszCscRotRGB_8u_P3C3R";
inline constexpr const char* rgbOf422 = "vekiYCbCr422RszCscRotRGB_8u_P3C3R";
inline constexpr const char* rgbOfC2 = "vekiResizeCscRotate_8u_C2R";

inline constexpr PreviewCase previewCases[] = {
    {resize420, "copy", false, 2, Pixels::planar, 1, 1, 0, 0},
    {resize420, "copy-4096", false, 2, Pixels::planar, 1, 1, 0, 0, 4096},
    {resize420, "mirrored", false, 2, Pixels::planar, 1, 1, 0, 4},
    {resize420, "half-turn", false, 2, Pixels::planar, 1, 1, 0, 3},
    {resize420, "turned", false, 2, Pixels::planar, 1, 1, 0, 1},
    {resize420, "turned-4096", false, 2, Pixels::planar, 1, 1, 0, 2, 4096},
    {resize420, "half", false, 2, Pixels::planar, 2, 1, 1, 0},
    {resize420, "half-turned", false, 2, Pixels::planar, 2, 1, 1, 1},
    {resize420, "two-thirds", false, 2, Pixels::planar, 3, 2, 1, 0},
    {resize420, "two-thirds-turned", false, 2, Pixels::planar, 3, 2, 1, 2},
    {resize420, "two-thirds-nearest", false, 2, Pixels::planar, 3, 2, 0, 0},
    {resize420, "third", false, 2, Pixels::planar, 3, 1, 1, 0},
    {resize420, "quarter-nearest", false, 2, Pixels::planar, 4, 1, 0, 0},
    {resize420, "fifth-nearest", false, 2, Pixels::planar, 10, 2, 0, 0},
    {resize422, "copy", false, 1, Pixels::planar, 1, 1, 0, 0},
    {resize422, "mirrored", false, 1, Pixels::planar, 1, 1, 0, 4},
    {resize422, "turned", false, 1, Pixels::planar, 1, 1, 0, 1},
    {resize422, "turned-4096", false, 1, Pixels::planar, 1, 1, 0, 2, 4096},
    {resize422, "half-bilinear", false, 1, Pixels::planar, 2, 1, 1, 0},
    {resize422, "two-thirds-turned", false, 1, Pixels::planar, 3, 2, 1, 1},
    {resize422, "third-nearest", false, 1, Pixels::planar, 3, 1, 0, 0},
    {rgbOf420, "565", false, 2, Pixels::rgb565, 1, 1, 0, 0},
    {rgbOf420, "565-4096", false, 2, Pixels::rgb565, 1, 1, 0, 0, 4096},
    {rgbOf420, "565-half-turn", false, 2, Pixels::rgb565, 1, 1, 0, 3},
    {rgbOf420, "565-turned", false, 2, Pixels::rgb565, 1, 1, 0, 1},
    {rgbOf420, "565-turned-4096", false, 2, Pixels::rgb565, 1, 1, 0, 2, 4096},
    {rgbOf420, "565-half-turned", false, 2, Pixels::rgb565, 2, 1, 1, 1},
    {rgbOf420, "565-two-thirds", false, 2, Pixels::rgb565, 3, 2, 1, 0},
    {rgbOf420, "565-third", false, 2, Pixels::rgb565, 3, 1, 1, 0},
    {rgbOf420, "565-third-nearest", false, 2, Pixels::rgb565, 3, 1, 0, 0},
    {rgbOf420, "888", false, 2, Pixels::bgr24, 1, 1, 0, 0},
    {rgbOf420, "888-half-turn", false, 2, Pixels::bgr24, 1, 1, 0, 3},
    {rgbOf420, "888-turned", false, 2, Pixels::bgr24, 1, 1, 0, 1},
    {rgbOf420, "888-turned-4096", false, 2, Pixels::bgr24, 1, 1, 0, 2, 4096},
    {rgbOf420, "888-two-thirds-turned", false, 2, Pixels::bgr24, 3, 2, 1, 2},
    {rgbOf422, "565", false, 1, Pixels::rgb565, 1, 1, 0, 0},
    {rgbOf422, "565-bilinear", false, 1, Pixels::rgb565, 3, 2, 1, 0},
    {rgbOf422, "888", false, 1, Pixels::bgr24, 1, 1, 0, 0},
    {rgbOf422, "888-turned", false, 1, Pixels::bgr24, 1, 1, 0, 2},
    {rgbOf422, "888-half-turned", false, 1, Pixels::bgr24, 2, 1, 1, 2},
    {rgbOfC2, "2", true, 1, Pixels::rgb565, 2, 1, 1, 0},
    {rgbOfC2, "2-nearest", true, 1, Pixels::rgb565, 2, 1, 0, 0},
    {rgbOfC2, "2-turned", true, 1, Pixels::rgb565, 2, 1, 1, 2},
    {rgbOfC2, "4-turned", true, 1, Pixels::rgb565, 4, 1, 1, 1},
    {rgbOfC2, "8", true, 1, Pixels::rgb565, 8, 1, 1, 0},
};

}  // namespace vek::test
