// Norms.
#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"
#include "tests/definition/norm.h"

namespace vek::test {
namespace {

using definition::Kind;
using definition::Norm;

template <int channels, class... A>
Record norm(const char* name, VekStatus (*f)(A...), Norm::Of of, Kind kind) {
  const Manners manners = {
      .numbers = {INT_MIN, -257, -63, -62, -32, -31, 0, 1, 8, 16, 31, 32, 256, INT_MAX},
      .order = {pointers, sizes, steps}};
  const Norm meaning = {kind, of, channels};
  const Call define = [meaning](const Value* v) { return meaning.define(v); };
  return packed<channels>(name, f, manners, sizeof(definition::Wide) == 16 ? define : Call());
}

}  // namespace

std::vector<Record> statRecords() {
  return {
      VEK_C1_C3(norm, vekiNorm_Inf, RSfs, Norm::image, Kind::inf),
      VEK_C1_C3(norm, vekiNorm_L1, RSfs, Norm::image, Kind::l1),
      VEK_C1_C3(norm, vekiNorm_L2, RSfs, Norm::image, Kind::l2),
      VEK_C1_C3(norm, vekiNormDiff_Inf, RSfs, Norm::difference, Kind::inf),
      VEK_C1_C3(norm, vekiNormDiff_L1, RSfs, Norm::difference, Kind::l1),
      VEK_C1_C3(norm, vekiNormDiff_L2, RSfs, Norm::difference, Kind::l2),
      VEK_C1_C3(norm, vekiNormRel_Inf, RSfs, Norm::relative, Kind::inf),
      VEK_C1_C3(norm, vekiNormRel_L1, RSfs, Norm::relative, Kind::l1),
      VEK_C1_C3(norm, vekiNormRel_L2, RSfs, Norm::relative, Kind::l2),
  };
}

}  // namespace vek::test
