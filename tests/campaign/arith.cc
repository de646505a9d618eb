// Arithmetic, logic, shifts, thresholds, set, copy.
#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"
#include "tests/footprint/pointwise.h"

namespace vek::test {

std::vector<Record> arithRecords() {
  const Manners plain = {
      footprint::pointwise, true, {}, {INT_MIN, -9, -8, -7, 0, 1, 7, 8, 15, 16, 17, INT_MAX}};
  Manners anyStep = plain;
  anyStep.steps.any = true;
  anyStep.steps.refused = {};
  return {
      packed(VEK_NAMED(vekiAdd_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiAdd_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiAddC_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiAddC_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiSub_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiSub_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiSubC_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiSubC_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiMul_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiMul_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiMulC_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiMulC_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiSqr_8u_C1RSfs), plain),
      packed(VEK_NAMED(vekiSqr_8u_C3RSfs), plain),
      packed(VEK_NAMED(vekiMulScale_8u_C1R), plain),
      packed(VEK_NAMED(vekiMulScale_8u_C3R), plain),
      packed(VEK_NAMED(vekiMulCScale_8u_C1R), plain),
      packed(VEK_NAMED(vekiMulCScale_8u_C3R), plain),
      packed(VEK_NAMED(vekiAnd_8u_C1R), plain),
      packed(VEK_NAMED(vekiAnd_8u_C3R), plain),
      packed(VEK_NAMED(vekiOr_8u_C1R), plain),
      packed(VEK_NAMED(vekiOr_8u_C3R), plain),
      packed(VEK_NAMED(vekiXor_8u_C1R), plain),
      packed(VEK_NAMED(vekiXor_8u_C3R), plain),
      packed(VEK_NAMED(vekiAndC_8u_C1R), plain),
      packed(VEK_NAMED(vekiAndC_8u_C3R), plain),
      packed(VEK_NAMED(vekiOrC_8u_C1R), plain),
      packed(VEK_NAMED(vekiOrC_8u_C3R), plain),
      packed(VEK_NAMED(vekiXorC_8u_C1R), plain),
      packed(VEK_NAMED(vekiXorC_8u_C3R), plain),
      packed(VEK_NAMED(vekiNot_8u_C1R), plain),
      packed(VEK_NAMED(vekiNot_8u_C3R), plain),
      packed(VEK_NAMED(vekiRShiftC_8u_C1R), plain),
      packed(VEK_NAMED(vekiRShiftC_8u_C3R), plain),
      packed(VEK_NAMED(vekiLShiftC_8u_C1R), plain),
      packed(VEK_NAMED(vekiLShiftC_8u_C3R), plain),
      packed(VEK_NAMED(vekiSet_8u_C1R), plain),
      packed(VEK_NAMED(vekiSet_8u_C3R), plain),
      packed(VEK_NAMED(vekiCopy_8u_C1R), plain),
      packed(VEK_NAMED(vekiCopy_8u_C3R), plain),
      packed(VEK_NAMED(vekiThreshold_GT_8u_C1R), anyStep),
      packed(VEK_NAMED(vekiThreshold_GT_8u_C3R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LT_8u_C1R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LT_8u_C3R), anyStep),
      packed(VEK_NAMED(vekiThreshold_GTVal_8u_C1R), anyStep),
      packed(VEK_NAMED(vekiThreshold_GTVal_8u_C3R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LTVal_8u_C1R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LTVal_8u_C3R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LTValGTVal_8u_C1R), anyStep),
      packed(VEK_NAMED(vekiThreshold_LTValGTVal_8u_C3R), anyStep),
  };
}

}  // namespace vek::test
