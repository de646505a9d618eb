// Seeded random numbers. Every random test prints its seed on failure (see SeededTest).
#pragma once

#include <cstdint>
#include <random>

namespace vek::test {

class Random {
 public:
  explicit Random(uint64_t seed) : engine_(seed) {}

  /// Uniform in low .. high, both included.
  int in(int low, int high) { return std::uniform_int_distribution<int>(low, high)(engine_); }
  bool chance(int percent) { return in(1, 100) <= percent; }
  uint64_t bits() { return engine_(); }

  /// Mostly small, sometimes around the sizes of vectors and strips.
  int size(int most) {
    const int sizes[] = {in(1, 20), in(1, 140), in(1, most)};
    const int size = sizes[in(0, 2)];
    return size < most ? size : most;
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace vek::test
