// From a raw frame to a picture: the raw pipeline and the RGB preview.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "vekcam/library_call.h"
#include "vekcam/picture.h"
#include "vekcam/raw_frame.h"
#include "vekcam/sensor.h"

namespace vekcam {

/// Clockwise turn by 0, 90, 180 or 270 degrees as the library's rotation code.
int rotationCode(int degrees);
bool isQuarterTurn(int degrees);

/// A planar YCbCr 4:2:0 image whose planes and rows start at cache lines.
class YCbCrImage {
 public:
  explicit YCbCrImage(VekiSize size);

  VekiSize size() const { return size_; }
  std::array<Vek8u*, 3> planes();
  std::array<const Vek8u*, 3> planes() const;
  const std::array<int, 3>& steps() const { return steps_; }

 private:
  VekiSize size_;
  std::array<int, 3> steps_;
  std::array<AlignedArray<Vek8u>, 3> planes_;
};

struct PipelineSettings {
  VekiSize region = {0, 0};  ///< at the frame's top left; see usableRegion()
  int degrees = 0;           ///< clockwise
  int scale = 1;             ///< 1, 2 or 4: how many times smaller the image becomes
  vek::ToneCurve curve = vek::ToneCurve::srgb;
  Matrix3 colorCorrection = vek::identityMatrix;
  std::vector<VekiDeadPixel> deadPixels;
};

/// The largest region within `size` that can be turned and reduced: a reduced image must have a
/// width that is a multiple of 4 and an even height, a full-size one an even width and height.
VekiSize usableRegion(VekiSize size, int degrees, int scale);

class RawPipeline {
 public:
  RawPipeline(const RawFrame& shape, const PipelineSettings& settings);

  /// Replaces the frame's dead pixels and converts it.
  void convert(RawFrame& frame);

  const YCbCrImage& image() const { return image_; }

 private:
  std::vector<VekiDeadPixel> deadPixels_;  ///< used in place by the state
  YCbCrImage image_;
  std::unique_ptr<VekiRggbToYCbCrState, Releaser<vekiFree_10RGGBtoYCbCr_RotRsz_P3R>> state_;
};

/// Scales an image to `size` (before the turn) and turns it. Samples are blended when the size
/// changes.
void toPicture(const YCbCrImage& image, VekiSize size, int degrees, Picture& picture);

}  // namespace vekcam
