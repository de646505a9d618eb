// Norms.
#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {

std::vector<Record> statRecords() {
  const Manners norm = {
      false, {}, {INT_MIN, -257, -63, -62, -32, -31, 0, 1, 8, 16, 31, 32, 256, INT_MAX}};
  return {
      VEK_C1_C3(packed, vekiNorm_Inf, RSfs, norm),
      VEK_C1_C3(packed, vekiNorm_L1, RSfs, norm),
      VEK_C1_C3(packed, vekiNorm_L2, RSfs, norm),
      VEK_C1_C3(packed, vekiNormDiff_Inf, RSfs, norm),
      VEK_C1_C3(packed, vekiNormDiff_L1, RSfs, norm),
      VEK_C1_C3(packed, vekiNormDiff_L2, RSfs, norm),
      VEK_C1_C3(packed, vekiNormRel_Inf, RSfs, norm),
      VEK_C1_C3(packed, vekiNormRel_L1, RSfs, norm),
      VEK_C1_C3(packed, vekiNormRel_L2, RSfs, norm),
  };
}

}  // namespace vek::test
