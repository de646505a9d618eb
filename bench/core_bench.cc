// The functions that work on no image: what one call costs.
#include "vek/vek.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <string>

namespace vek::bench {
namespace {

template <class Call>
void addCall(const std::string& name, Call call) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    auto run = call;
    for (auto _ : state) benchmark::DoNotOptimize(run());
  });
}

template <class Value, class Divide>
void addDivision(const std::string& name, Divide divide) {
  addCall(name, [divide, dividend = uint32_t{1}]() mutable {
    dividend = dividend * 1664525u + 1013904223u;
    Value remainder;
    return divide(dividend, dividend >> 28 | 1u, &remainder) + remainder;
  });
}

[[maybe_unused]] const bool registered = [] {
  addDivision<Vek8u>("_vekDiv_8u", _vekDiv_8u);
  addDivision<Vek16u>("_vekDiv_16u", _vekDiv_16u);
  addDivision<Vek32u>("_vekDiv_32u", _vekDiv_32u);
  addCall("vekiGetLibVersion", vekiGetLibVersion);
  addCall("_vekGetLibVersion_VekCam", _vekGetLibVersion_VekCam);
  addCall("vekLevel", vekLevel);
  addCall("vekLevelName", [] { return vekLevelName(0); });
  addCall("vekLevelLimit", vekLevelLimit);
  addCall("vekVersionString", vekVersionString);
  addCall("vekStatusString", [] { return vekStatusString(vekStsAwbNoData); });
  const auto allocate = [](void* (*take)(int), void (*release)(void*)) {
    return [=] {
      void* memory = take(256);
      benchmark::DoNotOptimize(memory);
      release(memory);
      return 0;
    };
  };
  addCall("vekMalloc+vekFree", allocate(vekMalloc, vekFree));
  addCall("vekiMalloc+vekiFree", allocate(vekiMalloc, vekiFree));
  return true;
}();

}  // namespace
}  // namespace vek::bench
