// How raw formats pack their samples.
#pragma once

#include "vek/camera.h"

namespace vek {

/// A row is a sequence of groups, each of as many samples in as many bytes.
struct RawGroups {
  int samples, bytes;
};

constexpr int rawFormatCount = vekiRawCsi2_14 + 1;

constexpr RawGroups rawGroups[rawFormatCount] = {{1, 1}, {1, 2}, {4, 5}, {2, 3}, {4, 7}};

}  // namespace vek
