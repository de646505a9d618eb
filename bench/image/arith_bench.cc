#include "vek/image.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

constexpr Vek8u value3[3] = {3, 100, 200};
constexpr Vek8u high3[3] = {103, 150, 220};
constexpr Vek32u amounts[3] = {1, 3, 4};
constexpr Vek32u equalAmounts[3] = {3, 3, 3};

/// call(srcA, srcB, dst, size) on images of `channels` channels; `streams` images are touched.
template <class Call>
void addPointwise(const std::string& name, int channels, int streams, Call call) {
  add(name, channels * streams, [=](VekiSize size) {
    const Image a(size.width * channels, size.height), b(size.width * channels, size.height),
        dst(size.width * channels, size.height);
    return [=] { call(a, b, dst, size); };
  });
}

using TwoScaled = VekStatus (*)(const Vek8u*, int, const Vek8u*, int, Vek8u*, int, VekiSize, int);
using Two = VekStatus (*)(const Vek8u*, int, const Vek8u*, int, Vek8u*, int, VekiSize);
using OneScaled = VekStatus (*)(const Vek8u*, int, Vek8u*, int, VekiSize, int);
using One = VekStatus (*)(const Vek8u*, int, Vek8u*, int, VekiSize);
template <class Value>
using ValueScaled = VekStatus (*)(const Vek8u*, int, Value, Vek8u*, int, VekiSize, int);
template <class Value>
using WithValue = VekStatus (*)(const Vek8u*, int, Value, Vek8u*, int, VekiSize);

/// Scale factor 0, a common one, and one that saturates.
constexpr int scaleFactors[] = {0, 1, 3, -2};

std::string scaledName(const std::string& name, int scaleFactor) {
  return scaleFactor == 0 ? name : name + "/scale" + std::to_string(scaleFactor);
}

void addTwoScaled(const std::string& name, int channels, TwoScaled function) {
  for (int scale : scaleFactors) {
    addPointwise(scaledName(name, scale), channels, 3,
                 [=](const Image& a, const Image& b, const Image& dst, VekiSize size) {
                   function(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), size,
                            scale);
                 });
  }
}

template <class Value>
void addValueScaled(const std::string& name, int channels, ValueScaled<Value> function,
                    Value value) {
  for (int scale : scaleFactors) {
    addPointwise(scaledName(name, scale), channels, 2,
                 [=](const Image& a, const Image&, const Image& dst, VekiSize size) {
                   function(a.data(), a.step(), value, dst.data(), dst.step(), size, scale);
                 });
  }
}

void addOneScaled(const std::string& name, int channels, OneScaled function) {
  for (int scale : scaleFactors) {
    addPointwise(scaledName(name, scale), channels, 2,
                 [=](const Image& a, const Image&, const Image& dst, VekiSize size) {
                   function(a.data(), a.step(), dst.data(), dst.step(), size, scale);
                 });
  }
}

void addTwo(const std::string& name, int channels, Two function) {
  addPointwise(name, channels, 3,
               [=](const Image& a, const Image& b, const Image& dst, VekiSize size) {
                 function(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), size);
               });
}

template <class Value>
void addValue(const std::string& name, int channels, WithValue<Value> function, Value value) {
  addPointwise(name, channels, 2,
               [=](const Image& a, const Image&, const Image& dst, VekiSize size) {
                 function(a.data(), a.step(), value, dst.data(), dst.step(), size);
               });
}

void addOne(const std::string& name, int channels, One function) {
  addPointwise(name, channels, 2,
               [=](const Image& a, const Image&, const Image& dst, VekiSize size) {
                 function(a.data(), a.step(), dst.data(), dst.step(), size);
               });
}

/// Functions whose constants follow the region: thresholds.
template <class Function, class... Constants>
void addThreshold(const std::string& name, int channels, Function function,
                  Constants... constants) {
  addPointwise(name, channels, 2,
               [=](const Image& a, const Image&, const Image& dst, VekiSize size) {
                 function(a.data(), a.step(), dst.data(), dst.step(), size, constants...);
               });
}

template <class Value>
void addSet(const std::string& name, int channels,
            VekStatus (*function)(Value, Vek8u*, int, VekiSize), Value value) {
  addPointwise(name, channels, 1, [=](const Image&, const Image&, const Image& dst, VekiSize size) {
    function(value, dst.data(), dst.step(), size);
  });
}

void addArithmetic() {
  addTwoScaled("vekiAdd_8u_C1RSfs", 1, vekiAdd_8u_C1RSfs);
  addTwoScaled("vekiAdd_8u_C3RSfs", 3, vekiAdd_8u_C3RSfs);
  addTwoScaled("vekiSub_8u_C1RSfs", 1, vekiSub_8u_C1RSfs);
  addTwoScaled("vekiSub_8u_C3RSfs", 3, vekiSub_8u_C3RSfs);
  addTwoScaled("vekiMul_8u_C1RSfs", 1, vekiMul_8u_C1RSfs);
  addTwoScaled("vekiMul_8u_C3RSfs", 3, vekiMul_8u_C3RSfs);
  addValueScaled<Vek8u>("vekiAddC_8u_C1RSfs", 1, vekiAddC_8u_C1RSfs, 77);
  addValueScaled<const Vek8u*>("vekiAddC_8u_C3RSfs", 3, vekiAddC_8u_C3RSfs, value3);
  addValueScaled<Vek8u>("vekiSubC_8u_C1RSfs", 1, vekiSubC_8u_C1RSfs, 77);
  addValueScaled<const Vek8u*>("vekiSubC_8u_C3RSfs", 3, vekiSubC_8u_C3RSfs, value3);
  addValueScaled<Vek8u>("vekiMulC_8u_C1RSfs", 1, vekiMulC_8u_C1RSfs, 77);
  addValueScaled<const Vek8u*>("vekiMulC_8u_C3RSfs", 3, vekiMulC_8u_C3RSfs, value3);
  addOneScaled("vekiSqr_8u_C1RSfs", 1, vekiSqr_8u_C1RSfs);
  addOneScaled("vekiSqr_8u_C3RSfs", 3, vekiSqr_8u_C3RSfs);
  addTwo("vekiMulScale_8u_C1R", 1, vekiMulScale_8u_C1R);
  addTwo("vekiMulScale_8u_C3R", 3, vekiMulScale_8u_C3R);
  addValue<Vek8u>("vekiMulCScale_8u_C1R", 1, vekiMulCScale_8u_C1R, 77);
  addValue<const Vek8u*>("vekiMulCScale_8u_C3R", 3, vekiMulCScale_8u_C3R, value3);
}

void addLogic() {
  addTwo("vekiAnd_8u_C1R", 1, vekiAnd_8u_C1R);
  addTwo("vekiAnd_8u_C3R", 3, vekiAnd_8u_C3R);
  addTwo("vekiOr_8u_C1R", 1, vekiOr_8u_C1R);
  addTwo("vekiOr_8u_C3R", 3, vekiOr_8u_C3R);
  addTwo("vekiXor_8u_C1R", 1, vekiXor_8u_C1R);
  addTwo("vekiXor_8u_C3R", 3, vekiXor_8u_C3R);
  addValue<Vek8u>("vekiAndC_8u_C1R", 1, vekiAndC_8u_C1R, 77);
  addValue<const Vek8u*>("vekiAndC_8u_C3R", 3, vekiAndC_8u_C3R, value3);
  addValue<Vek8u>("vekiOrC_8u_C1R", 1, vekiOrC_8u_C1R, 77);
  addValue<const Vek8u*>("vekiOrC_8u_C3R", 3, vekiOrC_8u_C3R, value3);
  addValue<Vek8u>("vekiXorC_8u_C1R", 1, vekiXorC_8u_C1R, 77);
  addValue<const Vek8u*>("vekiXorC_8u_C3R", 3, vekiXorC_8u_C3R, value3);
  addOne("vekiNot_8u_C1R", 1, vekiNot_8u_C1R);
  addOne("vekiNot_8u_C3R", 3, vekiNot_8u_C3R);
  addValue<Vek32u>("vekiRShiftC_8u_C1R", 1, vekiRShiftC_8u_C1R, 3);
  addValue<const Vek32u*>("vekiRShiftC_8u_C3R", 3, vekiRShiftC_8u_C3R, amounts);
  addValue<const Vek32u*>("vekiRShiftC_8u_C3R/equal", 3, vekiRShiftC_8u_C3R, equalAmounts);
  addValue<Vek32u>("vekiLShiftC_8u_C1R", 1, vekiLShiftC_8u_C1R, 3);
  addValue<const Vek32u*>("vekiLShiftC_8u_C3R", 3, vekiLShiftC_8u_C3R, amounts);
  addValue<const Vek32u*>("vekiLShiftC_8u_C3R/equal", 3, vekiLShiftC_8u_C3R, equalAmounts);
}

void addThresholdsSetCopy() {
  addThreshold("vekiThreshold_GT_8u_C1R", 1, vekiThreshold_GT_8u_C1R, Vek8u{100});
  addThreshold("vekiThreshold_GT_8u_C3R", 3, vekiThreshold_GT_8u_C3R, value3);
  addThreshold("vekiThreshold_LT_8u_C1R", 1, vekiThreshold_LT_8u_C1R, Vek8u{100});
  addThreshold("vekiThreshold_LT_8u_C3R", 3, vekiThreshold_LT_8u_C3R, value3);
  addThreshold("vekiThreshold_GTVal_8u_C1R", 1, vekiThreshold_GTVal_8u_C1R, Vek8u{100}, Vek8u{9});
  addThreshold("vekiThreshold_GTVal_8u_C3R", 3, vekiThreshold_GTVal_8u_C3R, value3, high3);
  addThreshold("vekiThreshold_LTVal_8u_C1R", 1, vekiThreshold_LTVal_8u_C1R, Vek8u{100}, Vek8u{9});
  addThreshold("vekiThreshold_LTVal_8u_C3R", 3, vekiThreshold_LTVal_8u_C3R, value3, high3);
  addThreshold("vekiThreshold_LTValGTVal_8u_C1R", 1, vekiThreshold_LTValGTVal_8u_C1R, Vek8u{50},
               Vek8u{1}, Vek8u{99}, Vek8u{2});
  addThreshold("vekiThreshold_LTValGTVal_8u_C3R", 3, vekiThreshold_LTValGTVal_8u_C3R, value3, high3,
               high3, value3);
  addSet<Vek8u>("vekiSet_8u_C1R", 1, vekiSet_8u_C1R, 77);
  addSet<const Vek8u*>("vekiSet_8u_C3R", 3, vekiSet_8u_C3R, value3);
  addOne("vekiCopy_8u_C1R", 1, vekiCopy_8u_C1R);
  addOne("vekiCopy_8u_C3R", 3, vekiCopy_8u_C3R);
}

[[maybe_unused]] const bool registered = [] {
  addArithmetic();
  addLogic();
  addThresholdsSetCopy();
  return true;
}();

}  // namespace
}  // namespace vek::bench
