#include "tests/campaign/case.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace vek::test {
namespace {

/// A sample of a pattern, of as many bits as `mask` has.
uint32_t sample(Random& random, int pattern, const uint8_t (&tile)[16], size_t x, size_t y,
                uint32_t mask) {
  switch (pattern) {
    case 0:
      return 0;
    case 1:
      return mask;
    case 2:
      return (x + y) % 2 == 0 ? 0 : mask;
    case 3: {
      const uint32_t extremes[] = {0, 1, mask / 2, mask / 2 + 1, mask - 1, mask};
      return random.of(extremes);
    }
    case 4:
      return static_cast<uint32_t>(x + 3 * y);
    case 5:
      return tile[x % 16] * (mask > 255 ? 0x101u : 1u);
    default:
      return static_cast<uint32_t>(random.bits());
  }
}

void store(uint8_t* to, uint32_t value, int unit) {
  const auto small = static_cast<uint8_t>(value);
  const auto word = static_cast<uint16_t>(value);
  const uint64_t twice = value * uint64_t{0x100000001};
  const void* from = &value;
  if (unit == 1) from = &small;
  if (unit == 2) from = &word;
  if (unit == 8) from = &twice;
  memcpy(to, from, static_cast<size_t>(unit));
}

}  // namespace

int Case::memory(Use use, const Area& area, size_t alignment, int unit, int mask, size_t offset) {
  Block b = {use, area, alignment, offset, unit, Buffer::Guard::after, nullptr, {}};
  if (random.chance(50)) b.guard = Buffer::Guard::before;
  if (alignment == 1 && random.chance(50)) {
    b.alignment = 64;
    b.offset = static_cast<size_t>(random.in(0, 63));
  }
  const int pattern = random.in(0, 9);
  uint8_t tile[16] = {};
  if (pattern == 5) {
    for (uint8_t& t : tile) t = static_cast<uint8_t>(random.in(0, 255));
  }
  Random noise(static_cast<uint64_t>(random.in(0, 0x7FFFFFFF)));
  const auto bytes = static_cast<size_t>(area.bytes), each = static_cast<size_t>(unit);
  b.contents.resize(bytes * static_cast<size_t>(area.rows));
  const auto most = static_cast<uint32_t>(unit == 1 ? 255 : unit == 2 ? mask : -1);
  for (size_t i = 0; i < b.contents.size(); i += each) {
    const uint32_t value = sample(noise, pattern, tile, i % bytes / each, i / bytes, most) & most;
    store(&b.contents[i], value, unit);
  }
  if (use == Use::in) {
    b.initial = std::make_unique<Buffer>(area, b.alignment, b.guard, b.offset);
    b.initial->setContents(b.contents);
    b.contents = b.initial->contents();  // rows may overlap
  }
  blocks_.push_back(std::move(b));
  return static_cast<int>(blocks_.size()) - 1;
}

int Case::object(Use use, const void* bytes, size_t size, size_t alignment, int unit) {
  const auto* from = static_cast<const uint8_t*>(bytes);
  Block b = {use,       {static_cast<ptrdiff_t>(size), 1, 0},
             alignment, 0,
             unit,      Buffer::Guard::after,
             nullptr,   {from, from + size}};
  b.initial = std::make_unique<Buffer>(b.area, alignment);
  b.initial->setContents(b.contents);
  blocks_.push_back(std::move(b));
  return static_cast<int>(blocks_.size()) - 1;
}

void Case::pointer(int block, int alignment, ptrdiff_t offset) {
  Cell cell;
  cell.block = block, cell.alignment = alignment, cell.offset = offset;
  arguments_.push_back({{cell}, false, nullptr});
}

void Case::planes(const int (&blocks)[3], const int (&alignments)[3]) {
  Argument argument = {{}, true, nullptr};
  for (int i = 0; i < 3; ++i) {
    Cell cell;
    cell.block = blocks[i], cell.alignment = alignments[i];
    argument.cells.push_back(cell);
  }
  arguments_.push_back(argument);
}

void Case::planes(const std::vector<int>& blocks) {
  Argument argument = {{}, true, nullptr};
  for (int block : blocks) {
    argument.cells.push_back({});
    argument.cells.back().block = block;
  }
  arguments_.push_back(argument);
}

void Case::number(int64_t value, const Refused& refused) {
  Cell cell;
  cell.isNumber = true, cell.number = value, cell.refused = refused;
  arguments_.push_back({{cell}, false, nullptr});
}

void Case::numbers(const std::vector<int>& values, const Refused& refused) {
  number(values[0], refused);
  Argument& argument = arguments_.back();
  argument.array = true;
  argument.cells.resize(values.size(), argument.cells[0]);
  for (size_t i = 1; i < values.size(); ++i) argument.cells[i].number = values[i];
}

void Case::pair(int first, int second, const Refused& refused) {
  number(first, refused);
  arguments_.back().cells.push_back(arguments_.back().cells[0]);
  arguments_.back().cells[1].number = second;
}

void Case::stride(int step, ptrdiff_t bytes) {
  number(step, Steps{}.refused);
  if (bytes == 1) return;
  Fault fault = {vekStsStrideErr, static_cast<int>(arguments_.size()) - 1};
  fault.number = bytes - 1;
  faults_.push_back(fault);
}

void Case::state(void* made, std::function<void(void*)> release) {
  arguments_.push_back({{Cell{}}, false, std::shared_ptr<void>(made, std::move(release))});
}

int Case::step(ptrdiff_t bytes, int rows, const Steps& steps, Use use) {
  const auto up = [&](int64_t v) {
    return static_cast<int>((v + steps.unit - 1) / steps.unit * steps.unit);
  };
  const int kind = random.in(0, 199), padding = random.in(0, 1) == 0 ? 9 : 70;
  const int pad = random.in(0, padding);
  const int exact = up(bytes);
  if (kind < 80) return exact;
  const bool manyRows = rows > 6;
  if (kind == 199 && options_.far && sizeof(void*) == 8 && !manyRows && rows > 1) {
    return up(pad % 2 == 0 ? 1 << 30 : (1 << 30) + 12345);
  }
  if (kind >= 190 && kind < 195 && use == Use::in && steps.overlap) {
    return std::max(steps.unit, up(bytes * pad / 71));
  }
  const int padded = up(bytes + int64_t{pad} * steps.unit);
  if (steps.any && kind >= 150) return kind < 190 ? -padded : kind < 195 ? 0 : padded;
  return padded;
}

std::vector<Case::Fault> Case::faults() const {
  std::vector<Fault> list = faults_;
  for (int a = 0; a < static_cast<int>(arguments_.size()); ++a) {
    const Argument& argument = arguments_[static_cast<size_t>(a)];
    if (argument.array || argument.made != nullptr) {
      list.push_back({nullStatus, a, argument.array ? -1 : 0, true});
    }
    for (int c = 0; c < static_cast<int>(argument.cells.size()); ++c) {
      const Cell& cell = argument.cells[static_cast<size_t>(c)];
      if (cell.block >= 0 && cell.alignment > 0) {
        list.push_back({nullStatus, a, c, true});
        for (int shift = 1; shift < cell.alignment; shift *= 2) {
          list.push_back({nullStatus, a, c, false, shift});
        }
      }
      for (int bad : cell.refused) {
        list.push_back({cell.refused.status, a, c, false, 0, bad});
      }
    }
  }
  return list;
}

size_t Case::checkedWith(const Fault& fault) const {
  const auto argument = static_cast<size_t>(fault.argument);
  return argument - (fault.cell < 0 && arguments_[argument].cells[0].isNumber ? 1 : 0);
}

std::string Case::describe() const {
  std::ostringstream out;
  out << note;
  for (const Argument& argument : arguments_) {
    out << (argument.array ? " [" : " (");
    for (const Cell& cell : argument.cells) {
      if (cell.isNumber) out << ' ' << cell.number;
      if (cell.block < 0) continue;
      const Area& area = blocks_[static_cast<size_t>(cell.block)].area;
      out << " #" << cell.block << ": " << area.bytes << " bytes x " << area.rows << " step "
          << area.step << " from " << area.first;
    }
    out << (argument.array ? " ]" : " )");
  }
  return out.str();
}

}  // namespace vek::test
