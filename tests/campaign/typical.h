// A function as programs call it: whole images of a common size, everyday parameters. Benchmarks run
// these calls.
#pragma once

#include "vek/vek.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/campaign/case.h"

namespace vek::test {

/// Memory for images. Calls that are prepared one after the other with the same Memory have their
/// images at the same addresses.
class Memory {
 public:
  /// The n-th block, 64-byte aligned and filled with noise.
  uint8_t* block(size_t n, size_t bytes);

 private:
  std::vector<std::vector<uint8_t>> blocks_;
};

/// The arguments of one call, in the order of the function's parameters, and what they point at.
class Arguments {
 public:
  Arguments(VekiSize s, std::shared_ptr<Memory> memory) : size(s), memory_(std::move(memory)) {}

  const VekiSize size;  ///< of the images

  struct Plane {
    Vek8u* data;
    int step;
  };
  /// Memory for `rows` rows, without passing it. Steps are multiples of `unit`.
  Plane plane(int rowBytes, int rows, int unit = 64);
  /// The same with so many bytes around the rows on every side, and so many rows.
  Plane bordered(int rowBytes, int rows, int borderBytes, int borderRows);

  void pointer(const void* p) { values_.push_back({const_cast<void*>(p), {}}); }
  void number(int64_t n) { values_.push_back({nullptr, {n, 0}}); }
  void pair(int first, int second) { values_.push_back({nullptr, {first, second}}); }
  void rect(const VekiRect& r) { values_.push_back({nullptr, {r.x, r.y, r.width, r.height}}); }
  void roi() { pair(size.width, size.height); }
  void image(const Plane& p) {
    pointer(p.data);
    number(p.step);
  }
  /// Arrays of the planes' pointers and of their steps.
  void pointers(const std::vector<Plane>& planes);
  void steps(const std::vector<Plane>& planes);

  /// A copy of the values that lives as long as the arguments.
  template <class T>
  T* keep(std::vector<T> values) {
    const auto kept = std::make_shared<std::vector<T>>(std::move(values));
    kept_.push_back(kept);
    return kept->data();
  }
  /// The same of a value that a call changes: it has its first value again in every call.
  template <class T>
  T* keepForEachCall(T value) {
    T* const kept = keep(std::vector{value});
    restore_.push_back([=] { *kept = value; });
    return kept;
  }
  /// Something that the library made, released with the arguments.
  template <class T>
  T* keep(T* made, VekStatus (*release)(T*)) {
    kept_.emplace_back(made, release);
    return made;
  }

  VekStatus call(const Call& function) const {
    for (const auto& restore : restore_) restore();
    return function(values_.data());
  }
  /// What a call reads and writes of the images.
  double bytes() const { return bytes_; }

 private:
  std::shared_ptr<Memory> memory_;
  size_t blocks_ = 0;
  double bytes_ = 0;
  std::vector<Value> values_;
  std::vector<std::shared_ptr<void>> kept_;
  std::vector<std::function<void()>> restore_;
};

/// One way in which programs call a function.
struct Typical {
  std::string variant;  ///< empty if there is only one, or for the plainest
  std::function<void(Arguments&)> prepare;
};

}  // namespace vek::test
