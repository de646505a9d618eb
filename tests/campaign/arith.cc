// Arithmetic, logic, shifts, thresholds, set, copy.
#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {

std::vector<Record> arithRecords() {
  const Manners plain = {true, {}, {INT_MIN, -9, -8, -7, 0, 1, 7, 8, 15, 16, 17, INT_MAX}};
  const Manners anyStep = {true, anySteps};
  return {
      VEK_C1_C3(packed, vekiAdd, RSfs, plain),
      VEK_C1_C3(packed, vekiAddC, RSfs, plain),
      VEK_C1_C3(packed, vekiSub, RSfs, plain),
      VEK_C1_C3(packed, vekiSubC, RSfs, plain),
      VEK_C1_C3(packed, vekiMul, RSfs, plain),
      VEK_C1_C3(packed, vekiMulC, RSfs, plain),
      VEK_C1_C3(packed, vekiSqr, RSfs, plain),
      VEK_C1_C3(packed, vekiMulScale, R, plain),
      VEK_C1_C3(packed, vekiMulCScale, R, plain),
      VEK_C1_C3(packed, vekiAnd, R, plain),
      VEK_C1_C3(packed, vekiOr, R, plain),
      VEK_C1_C3(packed, vekiXor, R, plain),
      VEK_C1_C3(packed, vekiAndC, R, plain),
      VEK_C1_C3(packed, vekiOrC, R, plain),
      VEK_C1_C3(packed, vekiXorC, R, plain),
      VEK_C1_C3(packed, vekiNot, R, plain),
      VEK_C1_C3(packed, vekiRShiftC, R, plain),
      VEK_C1_C3(packed, vekiLShiftC, R, plain),
      VEK_C1_C3(packed, vekiSet, R, plain),
      VEK_C1_C3(packed, vekiCopy, R, plain),
      VEK_C1_C3(packed, vekiThreshold_GT, R, anyStep),
      VEK_C1_C3(packed, vekiThreshold_LT, R, anyStep),
      VEK_C1_C3(packed, vekiThreshold_GTVal, R, anyStep),
      VEK_C1_C3(packed, vekiThreshold_LTVal, R, anyStep),
      VEK_C1_C3(packed, vekiThreshold_LTValGTVal, R, anyStep),
  };
}

}  // namespace vek::test
