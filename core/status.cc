#include "vek/vek.h"

extern "C" const char* vekStatusString(VekStatus status) {
  switch (status) {
    case vekStsNoErr:
      return "success";
    case vekStsNotSupportedModeErr:
      return "a selector has a value that is not supported";
    case vekStsBadArgErr:
      return "an argument is out of its range";
    case vekStsSizeErr:
      return "a size is out of its range";
    case vekStsCoeffRangeErr:
      return "a coefficient is out of its range, or the matrix of a warp has no inverse";
    case vekStsNullPtrErr:
      return "a required pointer is null";
    case vekStsMemAllocErr:
      return "the allocator returned no memory";
    case vekStsDivisorErr:
      return "the divisor is below 1";
    case vekStsStepErr:
      return "a row step is below 1";
    case vekStsFftOrderErr:
      return "the order of an FFT is out of its range";
    case vekStsContextMatchErr:
      return "a state object is of another kind";
    case vekStsThresholdErr:
      return "the lower threshold is above the upper one";
    case vekStsMirrorFlipErr:
      return "the mirror axis is unknown";
    case vekStsMaskSizeErr:
      return "the size of a mask is not supported";
    case vekStsAnchorErr:
      return "the anchor is outside the mask";
    case vekStsStrideErr:
      return "a row step is smaller than the bytes of a row";
    case vekStsSqrtWrn:
      return "warning: a norm was too large for its result and was limited";
    case vekStsDivByZero:
      return "warning: a relative norm or normalized moments of an image of zeros";
    case vekStsAeAtLimit:
      return "warning: an exposure control value is at one of its limits";
    case vekStsAwbGainAtLimit:
      return "warning: a white-balance gain is at one of its limits";
    case vekStsAwbNoData:
      return "warning: no white-balance window could be used, the gains are unchanged";
    default:
      return "unknown status";
  }
}
