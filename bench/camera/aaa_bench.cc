#include "vek/camera.h"

#include "bench/support.h"

namespace vek::bench {
namespace {

const VekiAEParams aeParams = {
    vekiAEHistogram, nullptr, nullptr, 0, 10, 100, 300, 700, 512, 20, 2, 5, 0, 65536, 0, 65536};

void addExposure(const char* variant, Vek32s mode, Vek16u histCountThresh = 10) {
  add(std::string("vekiAE_10RGGB_8u_C1R/") + variant, 2, [=](VekiSize size) {
    VekiAEParams params = aeParams;
    params.mode = mode;
    params.histCountThresh = histCountThresh;
    VekiAEState* made = nullptr;
    vekiInitAlloc_AE_10RGGB_8u_C1R(&params, &made);
    const std::shared_ptr<VekiAEState> state(made, vekiFree_AE_10RGGB_8u_C1R);
    const Image frame(2 * size.width, size.height);
    return [=] {
      Vek16u step = 100, scale = 1000;
      vekiAE_10RGGB_8u_C1R(frame.data<Vek16u>(), frame.step(), size, &step, &scale, state.get());
    };
  });
}

struct WholeFrame {
  VekiRect window;
  Vek8u weight = 1;
};

VekiAWBParams awbParams(const WholeFrame& windows, Vek32s method) {
  return {method,
          1,
          &windows.window,
          &windows.weight,
          1024,
          1024,
          0,
          0,
          100,
          100,
          200,
          200,
          200,
          50,
          900,
          0,
          50,
          0,
          65535,
          256,
          256,
          256};
}

void addWhiteBalance(const char* variant, Vek32s method) {
  add(std::string("vekiAWB_10RGGB_8u_C1R/") + variant, 2, [=](VekiSize size) {
    const auto windows = std::make_shared<WholeFrame>();
    windows->window = {0, 0, size.width, size.height};
    const VekiAWBParams params = awbParams(*windows, method);
    VekiAWBState* made = nullptr;
    vekiInitAlloc_AWB_10RGGB_8u_C1R(&params, &made);
    const std::shared_ptr<VekiAWBState> state(made, vekiFree_AWB_10RGGB_8u_C1R);
    const Image frame(2 * size.width, size.height);
    for (int i = 0; i < frame.step() / 2 * size.height; ++i) frame.data<Vek16u>()[i] &= 1023;
    return [=] {
      (void)windows;
      Vek16u red = 300, green = 256, blue = 300;
      vekiAWB_10RGGB_8u_C1R(frame.data<Vek16u>(), frame.step(), size, &red, &green, &blue,
                            state.get());
    };
  });
}

/// A state cannot be made many times without being released, so both names time the pair.
void addLifeCycles(const std::string& function) {
  add(function + "_AE_10RGGB_8u_C1R", 0, [](VekiSize) {
    return [] {
      VekiAEState* state = nullptr;
      vekiInitAlloc_AE_10RGGB_8u_C1R(&aeParams, &state);
      vekiFree_AE_10RGGB_8u_C1R(state);
    };
  });
  add(function + "_AWB_10RGGB_8u_C1R", 0, [](VekiSize) {
    return [] {
      const WholeFrame windows = {{0, 0, 64, 48}};
      const VekiAWBParams params = awbParams(windows, vekiAWBGrayWorld);
      VekiAWBState* state = nullptr;
      vekiInitAlloc_AWB_10RGGB_8u_C1R(&params, &state);
      vekiFree_AWB_10RGGB_8u_C1R(state);
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  addExposure("histogram", vekiAEHistogram);
  addExposure("histogram-none-populated", vekiAEHistogram, 65535);
  addExposure("whole-frame", vekiAEWholeFrame);
  addExposure("five-zones", vekiAEFiveZones);
  addWhiteBalance("gray-world", vekiAWBGrayWorld);
  addWhiteBalance("white-points", vekiAWBWhitePoints);
  addLifeCycles("vekiInitAlloc");
  addLifeCycles("vekiFree");
  return true;
}();

}  // namespace
}  // namespace vek::bench
