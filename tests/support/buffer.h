// Image memory that notices what a call must not touch.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/support/area.h"
#include "tests/support/random.h"

namespace vek::test {

/// Memory for one area. It ends (or begins, with Guard::before) at an inaccessible page, so a read
/// past that side of the area faults; all its other bytes outside the area are canaries. Of rows
/// that lie far apart only the pages that they touch exist.
class Buffer {
 public:
  enum class Guard { after, before };

  /// The pointer for the call is a multiple of `alignment`, plus `offset` bytes.
  explicit Buffer(const Area& area, size_t alignment = 1, Guard guard = Guard::after,
                  size_t offset = 0);
  ~Buffer();
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  /// The pointer to hand to the call.
  uint8_t* data() { return origin_; }
  const uint8_t* data() const { return origin_; }
  template <class T>
  T* as() {
    return reinterpret_cast<T*>(origin_);
  }

  /// The bytes of the area, row after row.
  std::vector<uint8_t> contents() const;
  void setContents(const std::vector<uint8_t>& bytes);

  /// Whether no byte outside the area has changed since construction.
  bool outsideIntact() const;

 private:
  struct Span {
    uint8_t* begin;
    size_t size;
  };

  uint8_t* row(ptrdiff_t y) const { return origin_ + area_.first + y * area_.step; }

  Area area_;
  Span mapping_;
  std::vector<Span> accessible_;
  uint8_t* origin_;
};

}  // namespace vek::test
