// Reproducible noise, and a digest of results to compare with a known one.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>

namespace vek::test {

/// Noise from a linear congruential generator, the same everywhere.
class Noise {
 public:
  uint8_t byte() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<uint8_t>(state_ >> 24);
  }
  /// Of several bytes, the low one drawn first.
  template <std::integral T>
  T draw() {
    uint64_t value = 0;
    for (unsigned i = 0; i < sizeof(T); ++i) value |= uint64_t{byte()} << 8 * i;
    return static_cast<T>(value);
  }

 private:
  uint32_t state_ = 1;
};

/// FNV-1a over bytes, the low byte of a number first.
class Digest {
 public:
  template <std::integral T>
  void add(T number) {
    for (unsigned i = 0; i < sizeof(T); ++i) {
      value_ = (value_ ^ (static_cast<uint64_t>(number) >> 8 * i & 0xFF)) * 0x100000001b3u;
    }
  }
  /// Its bit pattern; both zeros count as +0.
  void add(double number) {
    uint64_t bits;
    memcpy(&bits, &number, sizeof bits);
    add(number == 0 ? 0 : bits);
  }
  template <class T>
  void add(const T* numbers, size_t count) {
    for (size_t i = 0; i < count; ++i) add(numbers[i]);
  }

  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xcbf29ce484222325u;
};

}  // namespace vek::test
