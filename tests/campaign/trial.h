// One call with the arguments of a case.
#pragma once

#include "tests/campaign/case.h"

namespace vek::test {

/// A case with memory of its own for what a call writes.
class Trial {
 public:
  /// With `otherSide` the inaccessible pages lie on the other side of destinations.
  Trial(const Case& c, bool otherSide);

  /// Makes one thing wrong; undoFaults() makes all good again.
  void inject(const Case::Fault& fault);
  /// Makes about half of all numbers extreme.
  void exaggerate(Random& random);
  void undoFaults();

  VekStatus call(const Call& f) { return f(values_.data()); }

  /// The contents of all destinations, scratch left out.
  std::vector<std::vector<uint8_t>> written() const;
  bool nothingWritten() const { return written() == before_; }
  bool outsideIntact() const;
  bool sourcesIntact() const;

  /// Takes in what was written, number by number, so that the byte order does not matter.
  void digest(uint64_t& digest) const;

 private:
  uint8_t* memoryOf(size_t block) const;
  Value valueOf(size_t argument, size_t cell) const;
  void set(size_t argument, size_t cell, const Value& v);
  void setArguments();

  const Case& case_;
  std::vector<std::unique_ptr<Buffer>> buffers_;  ///< null for sources, which all trials share
  std::vector<std::unique_ptr<Buffer>> arrays_;
  std::vector<std::vector<uint8_t>> before_;
  std::vector<Value> values_;
  std::vector<std::pair<uint8_t*, std::vector<uint8_t>>> replaced_;  ///< with what was there
};

/// FNV-1a over numbers rather than bytes.
inline void digestIn(uint64_t& digest, uint64_t value) {
  digest = (digest ^ value) * 0x100000001B3;
}

}  // namespace vek::test
