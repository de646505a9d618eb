#include "vek/image.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

using One = VekStatus (*)(const Vek8u*, int, VekiSize, Vek32s*, int);
using Two = VekStatus (*)(const Vek8u*, int, const Vek8u*, int, VekiSize, Vek32s*, int);

void addOne(const std::string& name, int channels, One norm) {
  add(name, channels, [=](VekiSize size) {
    const Image a(size.width * channels, size.height);
    return [=] {
      Vek32s result[3];
      norm(a.data(), a.step(), size, result, 0);
      benchmark::DoNotOptimize(result);
    };
  });
}

void addTwo(const std::string& name, int channels, Two norm) {
  add(name, 2 * channels, [=](VekiSize size) {
    const Image a(size.width * channels, size.height), b(size.width * channels, size.height);
    return [=] {
      Vek32s result[3];
      norm(a.data(), a.step(), b.data() + 1, b.step(), size, result, 0);
      benchmark::DoNotOptimize(result);
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  addOne("vekiNorm_Inf_8u_C1RSfs", 1, vekiNorm_Inf_8u_C1RSfs);
  addOne("vekiNorm_Inf_8u_C3RSfs", 3, vekiNorm_Inf_8u_C3RSfs);
  addOne("vekiNorm_L1_8u_C1RSfs", 1, vekiNorm_L1_8u_C1RSfs);
  addOne("vekiNorm_L1_8u_C3RSfs", 3, vekiNorm_L1_8u_C3RSfs);
  addOne("vekiNorm_L2_8u_C1RSfs", 1, vekiNorm_L2_8u_C1RSfs);
  addOne("vekiNorm_L2_8u_C3RSfs", 3, vekiNorm_L2_8u_C3RSfs);
  addTwo("vekiNormDiff_Inf_8u_C1RSfs", 1, vekiNormDiff_Inf_8u_C1RSfs);
  addTwo("vekiNormDiff_Inf_8u_C3RSfs", 3, vekiNormDiff_Inf_8u_C3RSfs);
  addTwo("vekiNormDiff_L1_8u_C1RSfs", 1, vekiNormDiff_L1_8u_C1RSfs);
  addTwo("vekiNormDiff_L1_8u_C3RSfs", 3, vekiNormDiff_L1_8u_C3RSfs);
  addTwo("vekiNormDiff_L2_8u_C1RSfs", 1, vekiNormDiff_L2_8u_C1RSfs);
  addTwo("vekiNormDiff_L2_8u_C3RSfs", 3, vekiNormDiff_L2_8u_C3RSfs);
  addTwo("vekiNormRel_Inf_8u_C1RSfs", 1, vekiNormRel_Inf_8u_C1RSfs);
  addTwo("vekiNormRel_Inf_8u_C3RSfs", 3, vekiNormRel_Inf_8u_C3RSfs);
  addTwo("vekiNormRel_L1_8u_C1RSfs", 1, vekiNormRel_L1_8u_C1RSfs);
  addTwo("vekiNormRel_L1_8u_C3RSfs", 3, vekiNormRel_L1_8u_C3RSfs);
  addTwo("vekiNormRel_L2_8u_C1RSfs", 1, vekiNormRel_L2_8u_C1RSfs);
  addTwo("vekiNormRel_L2_8u_C3RSfs", 3, vekiNormRel_L2_8u_C3RSfs);
  return true;
}();

}  // namespace
}  // namespace vek::bench
