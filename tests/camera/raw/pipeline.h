// Parameters and states for the tests of the raw pipeline.
#pragma once

#include "vek/camera.h"

#include <memory>

namespace vek::test {

/// Geometry of a region of width x height samples reduced by `scale`, with the smallest legal
/// steps.
inline VekiRggbGeometry rawGeometry(int width, int height, int scale = 1,
                                    int rotation = vekiRotNone, int chromaFormat = vekiChroma420,
                                    int borderValid = 0) {
  const bool quarterTurn = rotation == vekiRot90Ccw || rotation == vekiRot90Cw;
  const int across = (quarterTurn ? height : width) / scale,
            down = (quarterTurn ? width : height) / scale;
  const int unit = scale == 1 ? 8 : 4;
  const int luma = (across + unit - 1) / unit * unit, chroma = luma / 2;
  return {2 * (width + (borderValid != 0 ? 2 : 0)),
          width,
          height,
          {luma, chroma, chroma},
          across,
          down,
          scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce,
          rotation,
          chromaFormat,
          borderValid};
}

inline constexpr Vek16s identityMatrix[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};

/// Built-in linear curve, identity matrix, no dead pixels, no offset.
inline VekiRggbColorParam rawColor() {
  VekiRggbColorParam color = {};
  color.colorMatrix = identityMatrix;
  return color;
}

using RawState =
    std::unique_ptr<VekiRggbToYCbCrState, decltype(&vekiFree_10RGGBtoYCbCr_RotRsz_P3R)>;

/// Null if the parameters are refused.
inline RawState makeState(const VekiRggbColorParam& color, const VekiRggbGeometry& geometry) {
  VekiRggbToYCbCrState* state = nullptr;
  vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state);
  return {state, vekiFree_10RGGBtoYCbCr_RotRsz_P3R};
}

}  // namespace vek::test
