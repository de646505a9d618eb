// Registering benchmarks: one entry per exported function, at the standard image sizes, and the
// same work done by what a user would pick instead.
#pragma once

#include "vek/vek.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vek::bench {

inline constexpr VekiSize standardSizes[] = {{64, 48}, {320, 240}, {1280, 720}, {1920, 1080}};

/// Until its end, images are made of memory that every other such scope uses, too: what is made for
/// one library works on the very memory of what is made for another.
class SharedMemory {
 public:
  SharedMemory();
  ~SharedMemory();
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
};

/// Memory of `size` bytes for an image.
std::shared_ptr<std::vector<uint8_t>> imageMemory(size_t size);

/// Image memory filled with noise, 64-byte aligned, shared by the copies of a benchmark's closure.
class Image {
 public:
  /// Rows of `rowBytes` bytes; the step is rounded up to a multiple of 64 unless given.
  Image(int rowBytes, int height, int step = 0)
      : step_(step > 0 ? step : (rowBytes + 63) / 64 * 64),
        bytes_(imageMemory(static_cast<size_t>(step_) * height + 128)) {
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

/// The work to time, and how to prepare it for a size.
using Call = std::function<void()>;
using Make = std::function<Call(VekiSize)>;

struct Entry {
  std::string name;      ///< the exported function, and "/variant" where it has several
  std::string peer;      ///< whose code this is; empty for ours
  double bytesPerPixel;  ///< what a call reads and writes for each pixel
  Make make;
};

std::vector<Entry>& entries();

/// Registers `name`; make(size) returns the call to time.
inline void add(const std::string& name, double bytesPerPixel, Make make) {
  entries().push_back({name, "", bytesPerPixel, std::move(make)});
}

/// Registers what `peer` does for the same work as our entry of that name.
inline void addPeer(const std::string& name, const std::string& peer, Make make) {
  entries().push_back({name, peer, 0, std::move(make)});
}

}  // namespace vek::bench
