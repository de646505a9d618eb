// A checked raw region to three planes.
#pragma once

#include "vek/camera.h"

#include "camera/raw/state.h"

namespace vek {

/// Scale 1: edge rule and interior rule.
void _veki10RGGBToYCbCrRot_8u_P3R(const Vek16u* pSrc, Vek8u* const* pDst,
                                  const VekiRggbToYCbCrState& state);

/// Scale 2 or 4: one quad for each pixel.
void _veki10RGGBToYCbCrRot_8u_P3R_IntRsz(const Vek16u* pSrc, Vek8u* const* pDst,
                                         const VekiRggbToYCbCrState& state);

}  // namespace vek
