// Names for the selector arguments of the preview functions.
#pragma once

namespace vek {

enum : int { vekiInterpolateNearest = 0, vekiInterpolateLinear = 1 };
enum : int {
  vekiCsc420RGB565 = 4,
  vekiCsc420RGB555 = 5,
  vekiCsc420RGB444 = 6,
  vekiCsc420BGR24 = 7
};
enum : int {
  vekiCsc422RGB565 = 0,
  vekiCsc422RGB555 = 1,
  vekiCsc422RGB444 = 2,
  vekiCsc422BGR24 = 3
};
enum : int { vekiReduceFirst = 0, vekiReduceAverage = 1 };
enum : int { vekiCscC2RGB565 = 0, vekiCscC2RGB555 = 1 };

}  // namespace vek
