// The two ways from a checked raw region to three planes.
#pragma once

#include "vek/camera.h"

#include "camera/raw/state.h"
#include "core/level.h"

namespace vek {

/// Scale 1: each pixel is interpolated, by the edge rule or by the interior rule.
void convertFullSize(const Vek16u* pSrc, Vek8u* const* pDst, const VekiRggbToYCbCrState& state,
                     Level level);

/// Scale 2 or 4: each pixel is one quad.
void convertReducedSize(const Vek16u* pSrc, Vek8u* const* pDst, const VekiRggbToYCbCrState& state,
                        Level level);

}  // namespace vek
