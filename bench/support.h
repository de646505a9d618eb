// Registering benchmarks: one entry per exported function, at the standard image sizes.
#pragma once

#include "vek/vek.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vek::bench {

inline constexpr VekiSize standardSizes[] = {{64, 48}, {320, 240}, {1280, 720}, {1920, 1080}};

/// Image memory filled with noise, 64-byte aligned, shared by the copies of a benchmark's closure.
class Image {
 public:
  /// Rows of `rowBytes` bytes; the step is rounded up to a multiple of 64.
  Image(int rowBytes, int height)
      : step_((rowBytes + 63) / 64 * 64),
        bytes_(std::make_shared<std::vector<uint8_t>>(static_cast<size_t>(step_) * height + 128)) {
    uint32_t state = 12345;
    for (uint8_t& b : *bytes_) {
      state = state * 1664525u + 1013904223u;
      b = static_cast<uint8_t>(state >> 24);
    }
  }

  template <class T = Vek8u>
  T* data() const {
    const uintptr_t p = reinterpret_cast<uintptr_t>(bytes_->data());
    return reinterpret_cast<T*>((p + 63) / 64 * 64);
  }
  int step() const { return step_; }

 private:
  int step_;
  std::shared_ptr<std::vector<uint8_t>> bytes_;
};

/// Registers `name` at every standard size. make(size) returns the call to time; `bytesPerPixel` is
/// what the call reads and writes for each pixel, for the bytes-per-second figure.
template <class Make>
void add(const std::string& name, double bytesPerPixel, Make make) {
  for (VekiSize size : standardSizes) {
    const std::string label =
        name + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
    benchmark::RegisterBenchmark(label.c_str(), [=](benchmark::State& state) {
      auto call = make(size);
      for (auto _ : state) {
        call();
        benchmark::ClobberMemory();
      }
      const double pixels = static_cast<double>(state.iterations()) * size.width * size.height;
      state.counters["pixels/s"] = benchmark::Counter(pixels, benchmark::Counter::kIsRate);
      state.SetBytesProcessed(static_cast<int64_t>(pixels * bytesPerPixel));
    });
  }
}

}  // namespace vek::bench
