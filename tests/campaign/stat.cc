// Norms.
#include "tests/footprint/stat.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {

std::vector<Record> statRecords() {
  const Manners norm = {footprint::normSource,
                        false,
                        {},
                        {INT_MIN, -257, -63, -62, -32, -31, 0, 1, 8, 16, 31, 32, 256, INT_MAX}};
  return {
      packed(VEK_NAMED(vekiNorm_Inf_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNorm_Inf_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNorm_L1_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNorm_L1_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNorm_L2_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNorm_L2_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_Inf_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_Inf_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_L1_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_L1_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_L2_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormDiff_L2_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_Inf_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_Inf_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_L1_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_L1_8u_C3RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_L2_8u_C1RSfs), norm),
      packed(VEK_NAMED(vekiNormRel_L2_8u_C3RSfs), norm),
  };
}

}  // namespace vek::test
