// Random draws from a seed, or from the bytes of a fuzzer's input: the same on every machine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vek::test {

class Random {
 public:
  explicit Random(uint64_t seed) : seed_(seed) {}
  /// Draws zeros, which make small and plain cases, once the bytes are used up.
  Random(const uint8_t* bytes, size_t size) : bytes_(bytes), left_(size) {}

  bool usedUp() const { return bytes_ != nullptr && left_ == 0; }

  uint64_t bits() { return bytes_ != nullptr ? take(8) : next(); }

  /// Uniform in low .. high, both included.
  int in(int low, int high) {
    const uint64_t count = static_cast<uint64_t>(int64_t{high} - low) + 1;
    const size_t bytes = count <= 256 ? 1 : count <= 65536 ? 2 : 4;
    const uint64_t drawn = bytes_ != nullptr ? take(bytes) : next() >> 16;
    return static_cast<int>(low + static_cast<int64_t>(drawn % count));
  }
  bool chance(int percent) { return in(0, 99) >= 100 - percent; }

  template <class T, size_t n>
  const T& of(const T (&choices)[n]) {
    return choices[in(0, static_cast<int>(n) - 1)];
  }

  /// A little less or more than a power of two up to `most`, or twice that: what a strip or tile of
  /// any size leaves over.
  int acrossSeam(int most) {
    int powers = 0;
    while (256 << powers <= most) ++powers;
    return (128 << in(0, powers)) * in(1, 2) + in(-2, 66);
  }

  /// A power of two of up to `most` bits, one less or one more, or the negative of that.
  int64_t aroundPower(int most) {
    const int64_t value = (int64_t{1} << in(0, most)) + in(-1, 1);
    return chance(50) ? value : -value;
  }

  /// Mostly small, sometimes around the sizes of vectors and strips.
  int size(int most) {
    const int limits[] = {20, 140, most};
    const int limit = of(limits);
    return in(1, limit < most ? limit : most);
  }

 private:
  uint64_t next() {  // splitmix64
    uint64_t z = seed_ += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }
  uint64_t take(size_t count) {
    uint64_t value = 0;
    for (; count > 0 && left_ > 0; --count, --left_) value = value << 8 | *bytes_++;
    return value;
  }

  uint64_t seed_ = 0;
  const uint8_t* bytes_ = nullptr;
  size_t left_ = 0;
};

}  // namespace vek::test
