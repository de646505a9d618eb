// The row kernels that unpack raw samples and apply black levels and gains.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/front/raw_groups.h"
#include "core/level.h"

namespace vek {

/// What is done to a row, whose samples belong to two colours alternately. The first entries are those
/// of the row's first sample.
struct RawCorrection {
  Vek16u black[2];
  Vek16u gain[2];
  int bits;  ///< of a sample, 8..16; those above them in its container do not count
};

/// For 0 <= i < n and c = i % 2, with s the i-th sample from the sample `first` of the group at src
/// on, dst[i] = min(1023, (max(s - black[c], 0) * gain[c] + 2^(bits + 1)) >> (bits + 2)).
///
/// 0 <= first < samples of a group, n >= 1. The bytes of the groups that hold the samples are read.
using RawRow = void (*)(const Vek8u* src, int first, ptrdiff_t n, const RawCorrection& correction,
                        Vek16u* dst);

struct FrontEndKernels {
  RawRow rows[rawFormatCount];  ///< by VekiRawFormat
};

VEK_KERNEL_TABLE(FrontEndKernels, frontEndKernels)

}  // namespace vek
