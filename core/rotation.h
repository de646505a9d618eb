// Rotation codes that the camera functions share.
#pragma once

namespace vek {

/// Whether the destination holds the source's columns as its rows.
inline bool isQuarterTurn(int rotation) {
  return rotation == 1 || rotation == 2;
}

}  // namespace vek
