#include "tests/campaign/typical.h"

namespace vek::test {

uint8_t* Memory::block(size_t n, size_t bytes) {
  if (n >= blocks_.size()) blocks_.resize(n + 1);
  std::vector<uint8_t>& block = blocks_[n];
  if (block.size() != bytes + 64) block = std::vector<uint8_t>(bytes + 64);
  uint32_t state = 12345;
  for (uint8_t& b : block) {
    state = state * 1664525u + 1013904223u;
    b = static_cast<uint8_t>(state >> 24);
  }
  const auto address = reinterpret_cast<uintptr_t>(block.data());
  return block.data() + (64 - address % 64);
}

Arguments::Plane Arguments::plane(int rowBytes, int rows, int unit) {
  const int step = (rowBytes + unit - 1) / unit * unit;
  bytes_ += static_cast<double>(rowBytes) * rows;
  // A row more: the last one of an exposure histogram may be read on.
  return {memory_->block(blocks_++, static_cast<size_t>(step) * static_cast<size_t>(rows + 1)),
          step};
}

Arguments::Plane Arguments::bordered(int rowBytes, int rows, int borderBytes, int borderRows) {
  const Plane whole = plane(rowBytes + 2 * borderBytes, rows + 2 * borderRows);
  return {whole.data + borderRows * whole.step + borderBytes, whole.step};
}

void Arguments::pointers(const std::vector<Plane>& planes) {
  std::vector<Vek8u*> list;
  for (const Plane& p : planes) list.push_back(p.data);
  pointer(keep(list));
}

void Arguments::steps(const std::vector<Plane>& planes) {
  std::vector<int> list;
  for (const Plane& p : planes) list.push_back(p.step);
  pointer(keep(list));
}

}  // namespace vek::test
