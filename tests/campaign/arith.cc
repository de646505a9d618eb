// Arithmetic, logic, shifts, thresholds, set, copy.
#include "vek/image.h"

#include <climits>

#include "tests/definition/pointwise.h"

namespace vek::test {
namespace {

template <int channels, class... A>
Record each(const char* name, VekStatus (*f)(A...), const Manners& manners,
            definition::Formula formula) {
  return packed<channels>(name, f, manners, definition::pointwise(partsOf(f), channels, formula));
}

}  // namespace

std::vector<Record> arithRecords() {
  using namespace definition;
  Manners plain = {true, {}, {INT_MIN, -9, -8, -7, 0, 1, 7, 8, 15, 16, 17, INT_MAX}};
  plain.order = {pointers, steps, sizes};
  plain.usual = {{"", 0}, {"scale1", 1}, {"scale3", 3}, {"scale-2", -2}};
  Manners copy = plain, set = plain;
  copy.order = {pointers, sizes, steps};
  set.order = {{vekStsNullPtrErr, 1}, sizes, steps, {vekStsNullPtrErr, 0}};  // the value comes last
  Manners threshold = {true, anySteps};
  threshold.order = {pointers, sizes, {vekStsThresholdErr}};
  const Formula same = [](const int* x) { return x[0]; };
  const Formula conjunction = [](const int* x) { return x[0] & x[1]; };
  const Formula disjunction = [](const int* x) { return x[0] | x[1]; };
  const Formula difference = [](const int* x) { return x[0] ^ x[1]; };
  // Amounts are unsigned.
  const Formula right = [](const int* x) { return x[1] < 0 || x[1] > 7 ? 0 : x[0] >> x[1]; };
  const Formula left = [](const int* x) { return x[1] < 0 || x[1] > 7 ? 0 : x[0] << x[1] & 255; };
  const Formula below = [](const int* x) { return x[0] < x[1] ? x[2] : x[0]; };
  const Formula above = [](const int* x) { return x[0] > x[1] ? x[2] : x[0]; };
  return {
      VEK_C1_C3(each, vekiAdd, RSfs, plain, sum),
      VEK_C1_C3(each, vekiAddC, RSfs, plain, sum),
      VEK_C1_C3(each, vekiSub, RSfs, plain, firstFromSecond),
      VEK_C1_C3(each, vekiSubC, RSfs, plain, constantFromImage),
      VEK_C1_C3(each, vekiMul, RSfs, plain, product),
      VEK_C1_C3(each, vekiMulC, RSfs, plain, product),
      VEK_C1_C3(each, vekiSqr, RSfs, plain, square),
      VEK_C1_C3(each, vekiMulScale, R, plain, scaledBy255),
      VEK_C1_C3(each, vekiMulCScale, R, plain, scaledBy255),
      VEK_C1_C3(each, vekiAnd, R, plain, conjunction),
      VEK_C1_C3(each, vekiOr, R, plain, disjunction),
      VEK_C1_C3(each, vekiXor, R, plain, difference),
      VEK_C1_C3(each, vekiAndC, R, plain, conjunction),
      VEK_C1_C3(each, vekiOrC, R, plain, disjunction),
      VEK_C1_C3(each, vekiXorC, R, plain, difference),
      VEK_C1_C3(each, vekiNot, R, plain, [](const int* x) { return 255 - x[0]; }),
      VEK_C1_C3(each, vekiRShiftC, R, plain, right),
      VEK_C1_C3(each, vekiLShiftC, R, plain, left),
      VEK_C1_C3(each, vekiSet, R, set, same),
      VEK_C1_C3(each, vekiCopy, R, copy, same),
      VEK_C1_C3(each, vekiThreshold_GT, R, threshold,
                [](const int* x) { return std::min(x[0], x[1]); }),
      VEK_C1_C3(each, vekiThreshold_LT, R, threshold,
                [](const int* x) { return std::max(x[0], x[1]); }),
      VEK_C1_C3(each, vekiThreshold_GTVal, R, threshold, above),
      VEK_C1_C3(each, vekiThreshold_LTVal, R, threshold, below),
      VEK_C1_C3(each, vekiThreshold_LTValGTVal, R, threshold,
                [](const int* x) { return x[0] < x[1]   ? x[2]
                                          : x[0] > x[3] ? x[4]
                                                        : x[0]; }),
  };
}

}  // namespace vek::test
