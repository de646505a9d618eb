// What the peers share: who else does the work of one of our benchmarks, and images for them.
#pragma once

#include "vek/vek.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vek::bench {

/// Image memory filled with noise, 64-byte aligned, shared by the copies of a closure.
class Image {
 public:
  /// Rows of `rowBytes` bytes; the step is rounded up to a multiple of 64 unless given.
  Image(int rowBytes, int height, int step = 0)
      : step_(step > 0 ? step : (rowBytes + 63) / 64 * 64),
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

/// The work to time, and how to prepare it for a size.
using Call = std::function<void()>;
using Make = std::function<Call(VekiSize)>;

/// What somebody else's code does for the same work as our benchmark of that name.
struct Peer {
  std::string name;
  std::string peer;
  Make make;
};

inline std::vector<Peer>& peers() {
  static std::vector<Peer> all;
  return all;
}

inline void addPeer(const std::string& name, const std::string& peer, Make make) {
  peers().push_back({name, peer, std::move(make)});
}

}  // namespace vek::bench
