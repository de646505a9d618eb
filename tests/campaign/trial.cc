#include "tests/campaign/trial.h"

#include <algorithm>
#include <cstring>

namespace vek::test {

Trial::Trial(const Case& c, bool otherSide) : case_(c) {
  for (const Case::Block& b : c.blocks_) {
    if (b.use == Use::in) {
      buffers_.push_back(nullptr);
      continue;
    }
    const bool before = (b.guard == Buffer::Guard::before) != otherSide;
    buffers_.push_back(std::make_unique<Buffer>(
        b.area, b.alignment, before ? Buffer::Guard::before : Buffer::Guard::after, b.offset));
    buffers_.back()->setContents(b.contents);
  }
  before_ = written();
  for (const Case::Argument& a : c.arguments_) {
    arrays_.push_back(nullptr);
    if (!a.array) continue;
    const bool pointers = !a.cells[0].isNumber;
    const auto each = static_cast<ptrdiff_t>(pointers ? sizeof(void*) : sizeof(int));
    const auto count = static_cast<ptrdiff_t>(a.cells.size());
    arrays_.back() = std::make_unique<Buffer>(Area{count * each, 1, 0}, alignof(void*));
  }
  setArguments();
}

void Trial::inject(const Case::Fault& f) {
  if (f.block >= 0) {
    uint8_t* const at = memoryOf(static_cast<size_t>(f.block)) + f.offset;
    replaced_.push_back({at, {at, at + f.bytes.size()}});
    std::copy(f.bytes.begin(), f.bytes.end(), at);
    return;
  }
  const auto a = static_cast<size_t>(f.argument);
  if (f.cell < 0) {
    values_[a].pointer = nullptr;
    return;
  }
  Value v = valueOf(a, static_cast<size_t>(f.cell));
  if (f.null || f.shift != 0) {
    v.pointer = f.null ? nullptr : static_cast<uint8_t*>(v.pointer) + f.shift;
  } else {
    v.numbers[0] = f.number;
  }
  set(a, static_cast<size_t>(f.cell), v);
}

void Trial::exaggerate(Random& random) {
  for (size_t a = 0; a < values_.size(); ++a) {
    for (size_t c = 0; c < case_.arguments_[a].cells.size(); ++c) {
      const int extremes[] = {0x7FFFFFFF, -0x7FFFFFFF - 1, 0x7FFFFFF8, 1 << 30, 65536};
      if (!case_.arguments_[a].cells[c].isNumber || random.chance(50)) continue;
      Value v;
      v.numbers[0] = random.of(extremes);
      set(a, c, v);
    }
  }
}

void Trial::undoFaults() {
  for (auto replaced = replaced_.rbegin(); replaced != replaced_.rend(); ++replaced) {
    std::copy(replaced->second.begin(), replaced->second.end(), replaced->first);
  }
  replaced_.clear();
  setArguments();
}

std::vector<std::vector<uint8_t>> Trial::written() const {
  std::vector<std::vector<uint8_t>> all;
  for (size_t i = 0; i < buffers_.size(); ++i) {
    const Use use = case_.blocks_[i].use;
    if (use != Use::in && use != Use::scratch) all.push_back(buffers_[i]->contents());
  }
  return all;
}

bool Trial::outsideIntact() const {
  return std::all_of(buffers_.begin(), buffers_.end(),
                     [](const auto& b) { return b == nullptr || b->outsideIntact(); });
}

bool Trial::sourcesIntact() const {
  return std::all_of(case_.blocks_.begin(), case_.blocks_.end(), [](const Case::Block& b) {
    return b.use != Use::in || (b.initial->contents() == b.contents && b.initial->outsideIntact());
  });
}

void Trial::digest(uint64_t& d) const {
  for (size_t i = 0; i < buffers_.size(); ++i) {
    const Case::Block& b = case_.blocks_[i];
    if (b.use == Use::in || b.use == Use::scratch || b.unit == 0) continue;
    const std::vector<uint8_t> bytes = buffers_[i]->contents();
    const auto unit = static_cast<size_t>(b.unit);
    for (size_t at = 0; at < bytes.size(); at += unit) {
      uint64_t value = 0;
      uint32_t word;
      uint16_t half;
      if (unit == 8) memcpy(&value, &bytes[at], 8);
      if (unit == 4) memcpy(&word, &bytes[at], 4), value = word;
      if (unit == 2) memcpy(&half, &bytes[at], 2), value = half;
      digestIn(d, unit == 1 ? bytes[at] : value);
    }
  }
}

uint8_t* Trial::memoryOf(size_t block) const {
  return buffers_[block] != nullptr ? buffers_[block]->data()
                                    : case_.blocks_[block].initial->data();
}

Value Trial::valueOf(size_t a, size_t c) const {
  const Case::Argument& argument = case_.arguments_[a];
  const Case::Cell& cell = argument.cells[c];
  Value v;
  v.numbers[0] = cell.number;
  if (argument.made != nullptr) v.pointer = argument.made.get();
  if (cell.block >= 0) {
    v.pointer = memoryOf(static_cast<size_t>(cell.block)) + cell.offset;
  }
  return v;
}

void Trial::set(size_t a, size_t c, const Value& v) {
  const Case::Argument& argument = case_.arguments_[a];
  if (!argument.array) {
    if (argument.cells[c].isNumber) {
      values_[a].numbers[c] = v.numbers[0];
    } else {
      values_[a].pointer = v.pointer;
    }
  } else if (argument.cells[c].isNumber) {
    arrays_[a]->as<int>()[c] = static_cast<int>(v.numbers[0]);
  } else {
    arrays_[a]->as<void*>()[c] = v.pointer;
  }
}

void Trial::setArguments() {
  values_.assign(case_.arguments_.size(), Value{});
  for (size_t a = 0; a < values_.size(); ++a) {
    if (arrays_[a] != nullptr) values_[a].pointer = arrays_[a]->data();
    for (size_t c = 0; c < case_.arguments_[a].cells.size(); ++c) set(a, c, valueOf(a, c));
  }
}

}  // namespace vek::test
