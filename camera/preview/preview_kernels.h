// The kernels that the preview functions work with.
#pragma once

#include "camera/preview/csc_kernels.h"
#include "camera/preview/reduce_kernels.h"
#include "camera/preview/resample_kernels.h"
#include "core/kernel/place_kernels.h"
#include "core/level.h"

namespace vek {

/// Those of one level, which an exported function selects once for the whole call.
struct PreviewKernels {
  const ReduceKernels& reduce;
  const ResampleKernels& resample;
  const CscKernels& csc;
  const PlaceKernels& place;
};

inline PreviewKernels previewKernels(Level level) {
  return {.reduce = select(reduceKernels, level),
          .resample = select(resampleKernels, level),
          .csc = select(cscKernels, level),
          .place = select(placeKernels, level)};
}

}  // namespace vek
