#include "vekcam/pipeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vekcam {
namespace {

int roundUp(int n, int multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

VekiSize turned(VekiSize size, int degrees) {
  return isQuarterTurn(degrees) ? VekiSize{size.height, size.width} : size;
}

using Matrix16 = std::array<Vek16s, 9>;

/// The colour correction in 1/256 with each row scaled so that grey stays grey. The rows of the
/// pipeline's YCbCr matrix, Cb -30 -85 128 and Cr 128 -107 -21, do not add up to zero: Cb and Cr of
/// a grey vanish for red : green : blue = .983 : 1 : .894. The common factor .96 puts white at
/// Y = 235, where the preview conversion expects it.
Matrix16 balancedMatrix(const Matrix3& correction) {
  constexpr double rowSums[3] = {.96 * .9827, .96, .96 * .8944};
  Matrix16 matrix;
  for (size_t i = 0; i < 3; ++i) {
    const double* const row = correction[i].data();
    const double factor = 256 * rowSums[i] / (row[0] + row[1] + row[2]);
    long rest = std::lround(256 * rowSums[i]);
    for (size_t j = 0; j < 3; ++j) {
      if (j == i) continue;
      const long entry = std::lround(factor * row[j]);
      matrix[3 * i + j] = static_cast<Vek16s>(entry);
      rest -= entry;
    }
    matrix[4 * i] = static_cast<Vek16s>(rest);  // the diagonal makes the sum exact
  }
  return matrix;
}

/// The 16.16 distance between samples; never past the largest one that keeps the last sample
/// inside.
int samplingStep(int from, int to) {
  const auto ratio = [](int64_t a, int64_t b) { return a * 65536 / b; };
  return static_cast<int>(std::min(ratio(from, to), ratio((from & ~1) - 1, (to & ~1) - 1)));
}

}  // namespace

int rotationCode(int degrees) {
  switch (degrees) {
    case 90:
      return vekiRot90Cw;
    case 180:
      return vekiRot180;
    case 270:
      return vekiRot90Ccw;
    default:
      return vekiRotNone;
  }
}

bool isQuarterTurn(int degrees) {
  return degrees == 90 || degrees == 270;
}

YCbCrImage::YCbCrImage(VekiSize size)
    : size_(size),
      steps_{roundUp(size.width, 64), roundUp(size.width / 2, 64), roundUp(size.width / 2, 64)},
      planes_{
          AlignedArray<Vek8u>(static_cast<size_t>(steps_[0]) * static_cast<size_t>(size.height)),
          AlignedArray<Vek8u>(static_cast<size_t>(steps_[1]) *
                              static_cast<size_t>(size.height / 2)),
          AlignedArray<Vek8u>(static_cast<size_t>(steps_[2]) *
                              static_cast<size_t>(size.height / 2))} {}

std::array<Vek8u*, 3> YCbCrImage::planes() {
  return {planes_[0].data(), planes_[1].data(), planes_[2].data()};
}

std::array<const Vek8u*, 3> YCbCrImage::planes() const {
  return {planes_[0].data(), planes_[1].data(), planes_[2].data()};
}

VekiSize usableRegion(VekiSize size, int degrees, int scale) {
  const VekiSize unit = scale == 1 ? VekiSize{2, 2} : turned({4 * scale, 2 * scale}, degrees);
  return {size.width / unit.width * unit.width, size.height / unit.height * unit.height};
}

RawPipeline::RawPipeline(const RawFrame& shape, const PipelineSettings& settings)
    : deadPixels_(withMirroredEntries(settings.deadPixels, shape.size())),
      image_(
          turned({settings.region.width / settings.scale, settings.region.height / settings.scale},
                 settings.degrees)) {
  const Matrix16 matrix = balancedMatrix(settings.colorCorrection);
  VekiRggbColorParam color = {};
  color.gammaMode = vekiGammaModeCurve;
  color.gammaCurve[0] =
      settings.curve == vek::ToneCurve::linear ? vekiGammaCurveLinear : vekiGammaCurveStandard;
  color.deadPixels = deadPixels_.empty() ? nullptr : deadPixels_.data();
  color.numDeadPixels = static_cast<int>(deadPixels_.size());
  color.colorMatrix = matrix.data();
  VekiRggbGeometry geometry = {};
  geometry.srcStep = shape.step();
  geometry.srcWidth = settings.region.width;
  geometry.srcHeight = settings.region.height;
  std::ranges::copy(image_.steps(), geometry.dstStep);
  geometry.dstWidth = image_.size().width;
  geometry.dstHeight = image_.size().height;
  geometry.filterMode = settings.scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce;
  geometry.rotation = rotationCode(settings.degrees);
  geometry.chromaFormat = vekiChroma420;
  geometry.srcBorderValid = 1;
  VekiRggbToYCbCrState* state = nullptr;
  succeeded(vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state),
            "vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R");
  state_.reset(state);
}

void RawPipeline::convert(RawFrame& frame) {
  succeeded(veki10RGGBtoYCbCr_RotRsz_8u_P3R(frame.row(0), image_.planes().data(), state_.get()),
            "veki10RGGBtoYCbCr_RotRsz_8u_P3R");
}

void toPicture(const YCbCrImage& image, VekiSize size, int degrees, Picture& picture) {
  const VekiSize from = image.size();
  const VekiSize out = turned(size, degrees);
  if (picture.width != out.width || picture.height != out.height) {
    picture = Picture(out.width, out.height);
  }
  const bool blend = from.width != size.width || from.height != size.height;
  succeeded(vekiYCbCr420RszCscRotRGB_8u_P3C3R(
                image.planes().data(), image.steps().data(), from.width, from.height,
                picture.bgr.data(), picture.step(), size.width, size.height, vekiCsc420BGR24,
                blend ? vekiInterpolateLinear : vekiInterpolateNearest, rotationCode(degrees),
                samplingStep(from.width, size.width), samplingStep(from.height, size.height)),
            "vekiYCbCr420RszCscRotRGB_8u_P3C3R");
}

}  // namespace vekcam
