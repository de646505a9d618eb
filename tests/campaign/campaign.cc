#include "tests/campaign/campaign.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <sstream>
#include <thread>

#include "tests/support/failing_allocator.h"
#include "tests/support/levels.h"

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
  const void* from = &value;
  if (unit == 1) from = &small;
  if (unit == 2) from = &word;
  memcpy(to, from, static_cast<size_t>(unit));
}

/// Functions that ask for the level more than once a call still. The list is to become empty.
bool asksOften(const std::string& name) {
  const char* const functions[] = {
      "vekiYCbCr420RszRot_8u_P3R",         "vekiYCbCr422RszRot_8u_P3R",
      "vekiYCbCr420RszCscRotRGB_8u_P3C3R", "vekiYCbCr422RszCscRotRGB_8u_P3C3R",
      "vekiResizeCscRotate_8u_C2R",        "veki10RGGBtoYCbCr_RotRsz_8u_P3R"};
  return std::find(std::begin(functions), std::end(functions), name) != std::end(functions);
}

/// FNV-1a over numbers rather than bytes, so that it does not depend on the byte order.
void digestIn(uint64_t& digest, uint64_t value) {
  digest = (digest ^ value) * 0x100000001B3;
}

}  // namespace

// ---- Case ---------------------------------------------------------------------------------------

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

void Case::pointer(int block, int alignment) {
  Cell cell;
  cell.block = block, cell.alignment = alignment;
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

void Case::number(int64_t value, const Refused& refused) {
  Cell cell;
  cell.isNumber = true, cell.number = value, cell.refused = refused;
  arguments_.push_back({{cell}, false, nullptr});
}

void Case::numbers(const int (&values)[3], const Refused& refused) {
  number(values[0], refused);
  Argument& argument = arguments_.back();
  argument.array = true;
  argument.cells.resize(3, argument.cells[0]);
  for (size_t i = 1; i < 3; ++i) argument.cells[i].number = values[i];
}

void Case::pair(int first, int second, const Refused& refused) {
  number(first, refused);
  arguments_.back().cells.push_back(arguments_.back().cells[0]);
  arguments_.back().cells[1].number = second;
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
  if (kind == 199 && far_ && sizeof(void*) == 8 && !manyRows && rows > 1) {
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

// ---- One call -----------------------------------------------------------------------------------

/// A case with memory of its own for what a call writes.
class Trial {
 public:
  Trial(const Case& c, bool otherSide) : case_(c) {
    for (const Case::Block& b : c.blocks_) {
      if (b.use == Use::in) {
        buffers_.push_back(nullptr);
        continue;
      }
      const bool before = (b.guard == Buffer::Guard::before) != otherSide;
      buffers_.push_back(std::make_unique<Buffer>(
          b.area, b.alignment, before ? Buffer::Guard::before : Buffer::Guard::after, b.offset));
      buffers_.back()->setContents(b.contents);
      before_.push_back(buffers_.back()->contents());
    }
    for (const Case::Argument& a : c.arguments_) {
      arrays_.push_back(nullptr);
      if (!a.array) continue;
      const bool pointers = !a.cells[0].isNumber;
      const auto each = static_cast<ptrdiff_t>(pointers ? sizeof(void*) : sizeof(int));
      arrays_.back() = std::make_unique<Buffer>(Area{3 * each, 1, 0}, alignof(void*));
    }
    setArguments();
  }

  void spoil(const Case::Fault& f) {
    if (f.block >= 0) {
      uint8_t* const at = memoryOf(static_cast<size_t>(f.block)) + f.offset;
      spoilt_.push_back({at, {at, at + f.bytes.size()}});
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

  /// Makes about half of all numbers extreme.
  void exaggerate(Random& random) {
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

  /// Undoes all that was spoiled.
  void mend() {
    for (auto spoilt = spoilt_.rbegin(); spoilt != spoilt_.rend(); ++spoilt) {
      std::copy(spoilt->second.begin(), spoilt->second.end(), spoilt->first);
    }
    spoilt_.clear();
    setArguments();
  }

  VekStatus call(const Call& f) { return f(values_.data()); }

  std::vector<std::vector<uint8_t>> written() const {
    std::vector<std::vector<uint8_t>> all;
    for (const auto& b : buffers_) {
      if (b != nullptr) all.push_back(b->contents());
    }
    return all;
  }
  bool nothingWritten() const { return written() == before_; }
  bool outsideIntact() const {
    return std::all_of(buffers_.begin(), buffers_.end(),
                       [](const auto& b) { return b == nullptr || b->outsideIntact(); });
  }
  bool sourcesIntact() const {
    return std::all_of(case_.blocks_.begin(), case_.blocks_.end(), [](const Case::Block& b) {
      return b.use != Use::in ||
             (b.initial->contents() == b.contents && b.initial->outsideIntact());
    });
  }

  void digest(uint64_t& d) const {
    for (size_t i = 0; i < buffers_.size(); ++i) {
      if (buffers_[i] == nullptr || case_.blocks_[i].unit == 0) continue;
      const std::vector<uint8_t> bytes = buffers_[i]->contents();
      const auto unit = static_cast<size_t>(case_.blocks_[i].unit);
      for (size_t at = 0; at < bytes.size(); at += unit) {
        uint32_t value = 0;
        uint16_t half;
        if (unit == 4) memcpy(&value, &bytes[at], 4);
        if (unit == 2) memcpy(&half, &bytes[at], 2), value = half;
        digestIn(d, unit == 1 ? bytes[at] : value);
      }
    }
  }

 private:
  uint8_t* memoryOf(size_t block) const {
    return buffers_[block] != nullptr ? buffers_[block]->data()
                                      : case_.blocks_[block].initial->data();
  }

  Value valueOf(size_t a, size_t c) const {
    const Case::Argument& argument = case_.arguments_[a];
    const Case::Cell& cell = argument.cells[c];
    Value v;
    v.numbers[0] = cell.number;
    if (argument.made != nullptr) v.pointer = argument.made.get();
    if (cell.block >= 0) {
      v.pointer = memoryOf(static_cast<size_t>(cell.block));
    }
    return v;
  }

  void set(size_t a, size_t c, const Value& v) {
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

  void setArguments() {
    values_.assign(case_.arguments_.size(), Value{});
    for (size_t a = 0; a < values_.size(); ++a) {
      if (arrays_[a] != nullptr) values_[a].pointer = arrays_[a]->data();
      for (size_t c = 0; c < case_.arguments_[a].cells.size(); ++c) set(a, c, valueOf(a, c));
    }
  }

  const Case& case_;
  std::vector<std::unique_ptr<Buffer>> buffers_;  ///< null for sources, which all trials share
  std::vector<std::unique_ptr<Buffer>> arrays_;
  std::vector<std::vector<uint8_t>> before_;
  std::vector<Value> values_;
  std::vector<std::pair<uint8_t*, std::vector<uint8_t>>> spoilt_;  ///< with what was there
};

/// What the campaign does with a case.
class Examination {
 public:
  static std::string examine(const Record& record, Random& random, const Options& options,
                             uint64_t* digest) {
    Case c(random, options.far);
    record.draw(c);
    std::string wrong = compareLevels(record, c, digest);
    if (wrong.empty() && record.allocates) wrong = failAllocations(record, c);
    if (wrong.empty() && options.faults && random.chance(25)) wrong = spoilArguments(record, c);
    return wrong.empty() ? wrong : wrong + "\n    arguments:" + c.describe();
  }

  static std::string inThreads(const Record& record, Random& random, int count, int rounds) {
    Case c(random, false);
    record.draw(c);
    std::string wrong;
    for (Level level : levels()) {
      VekStatus status;
      std::vector<std::vector<uint8_t>> expected;
      {
        const LevelScope scope(level);
        Trial alone(c, false);
        status = alone.call(record.call);
        expected = alone.written();
      }
      std::mutex mutex;
      std::vector<std::thread> threads;
      for (int t = 0; t < count; ++t) {
        threads.emplace_back([&] {
          const LevelScope scope(level);
          for (int i = 0; i < rounds; ++i) {
            Trial trial(c, i % 2 != 0);
            const VekStatus result = trial.call(record.call);
            if (result == status && trial.written() == expected && trial.outsideIntact()) continue;
            const std::lock_guard lock(mutex);
            wrong = std::string("another result in a thread at level ") + name(level);
          }
        });
      }
      for (std::thread& t : threads) t.join();
    }
    return wrong.empty() ? wrong : wrong + "\n    arguments:" + c.describe();
  }

  static std::string order(const Record& record, Random& random, const std::string& ranks) {
    Case c(random, false);
    record.draw(c);
    const auto rank = [&](const Case::Fault& f) {
      if (f.block >= 0) return '~';
      auto a = static_cast<size_t>(f.argument);
      if (f.cell < 0 && c.arguments_[a].cells[0].isNumber) --a;
      return ranks.at(a);
    };
    const std::vector<Case::Fault> faults = c.faults();
    Trial trial(c, false);
    for (const Case::Fault& first : faults) {
      for (const Case::Fault& second : faults) {
        if (rank(first) > rank(second)) continue;
        trial.spoil(second);
        trial.spoil(first);
        const VekStatus status = trial.call(record.call);
        trial.mend();
        if (status == first.status) continue;
        return "status " + std::to_string(status) + " instead of " + std::to_string(first.status) +
               ": " + what(first) + " before " + what(second);
      }
    }
    return trial.nothingWritten() && trial.outsideIntact() ? "" : "refuses, but has written";
  }

 private:
  static std::string compareLevels(const Record& record, const Case& c, uint64_t* digest) {
    std::vector<std::vector<uint8_t>> expected;
    VekStatus expectedStatus = 0;
    bool otherSide = false;
    VekStatus defined = -1;
    if (record.define) {
      Trial trial(c, true);
      defined = trial.call(record.define);
      expected = trial.written();
    }
    for (Level level : levels()) {
      const LevelScope scope(level);
      const std::string at = std::string(" at level ") + name(level);
      Trial trial(c, otherSide);
      const int calls = allocationCalls();
      const size_t live = liveAllocations().size();
      const int asked = timesLevelAsked();
      const VekStatus status = trial.call(record.call);
      // Once in each exported function: asking takes longer than a small kernel.
      if (!asksOften(record.name) &&
          timesLevelAsked() - asked > 1 + static_cast<int>(record.also.size())) {
        return "asks for the level " + std::to_string(timesLevelAsked() - asked) + " times" + at;
      }
      if (!record.allocates && !record.mayAllocate && allocationCalls() != calls)
        return "allocates" + at;
      const size_t kept = static_cast<size_t>(c.keptWhenReleased);
      if (record.allocates && liveAllocations().size() != live + kept) return "leaks" + at;
      if (kept != 0) dropAllocations();
      if (status < 0) return "status " + std::to_string(status) + at;
      if (!trial.outsideIntact()) return "wrote outside" + at;
      if (level == Level::portable) {
        expectedStatus = defined < 0 ? status : defined;
        if (!record.define) expected = trial.written();
        if (digest != nullptr) digestIn(*digest, static_cast<uint32_t>(status));
        if (digest != nullptr) trial.digest(*digest);
      }
      if (status != expectedStatus) {
        return "status " + std::to_string(status) + " instead of " +
               std::to_string(expectedStatus) + at;
      }
      if (const std::string where = difference(expected, trial.written()); !where.empty()) {
        return (record.define ? "not as defined" : "not the portable result") + at + where;
      }
      if (!trial.sourcesIntact()) return "wrote into a source" + at;
      otherSide = !otherSide;
    }
    return {};
  }

  static std::string difference(const std::vector<std::vector<uint8_t>>& expected,
                                const std::vector<std::vector<uint8_t>>& actual) {
    for (size_t b = 0; b < expected.size(); ++b) {
      const auto at = std::mismatch(expected[b].begin(), expected[b].end(), actual[b].begin());
      if (at.first == expected[b].end()) continue;
      std::ostringstream out;
      out << ": destination " << b << ", byte " << at.first - expected[b].begin() << ": "
          << int{*at.second} << " instead of " << int{*at.first};
      return out.str();
    }
    return {};
  }

  /// Single faults must give their status, two at once the status of either; beside a null pointer,
  /// with any numbers, some status.
  static std::string spoilArguments(const Record& record, Case& c) {
    const std::vector<Case::Fault> faults = c.faults();
    if (faults.empty()) return {};
    const auto any = [&]() -> const Case::Fault& {
      return faults[static_cast<size_t>(c.random.in(0, static_cast<int>(faults.size()) - 1))];
    };
    const std::vector<Level> all = levels();
    const LevelScope scope(
        all[static_cast<size_t>(c.random.in(0, static_cast<int>(all.size()) - 1))]);
    Trial trial(c, false);
    for (int round = 0; round < 8; ++round) {
      const Case::Fault& first = any();
      const Case::Fault& second = round < 5 || first.null ? first : any();
      trial.spoil(first);
      if (&second != &first) trial.spoil(second);
      const bool extreme = round >= 5 && first.null && second.null;
      if (extreme) trial.exaggerate(c.random);
      const size_t live = liveAllocations().size();
      const bool noMemory = record.allocates && round % 2 != 0;  // arguments come first
      if (noMemory) failAllocation(1);
      const VekStatus status = trial.call(record.call);
      failAllocation(0);
      const size_t kept = noMemory ? 0 : static_cast<size_t>(c.keptWhenRefused);
      if (liveAllocations().size() != live + kept) return "leaks when it refuses: " + what(first);
      if (kept != 0) dropAllocations();
      trial.mend();
      if (extreme ? status >= 0 : status != first.status && status != second.status) {
        return "status " + std::to_string(status) + " instead of " + std::to_string(first.status) +
               ": " + what(first) + ", " + what(second);
      }
      if (!trial.nothingWritten() || !trial.outsideIntact()) {
        return "refuses, but has written: " + what(first) + ", " + what(second);
      }
    }
    return {};
  }

  static std::string what(const Case::Fault& f) {
    std::ostringstream out;
    if (f.block >= 0) {
      out << "byte " << f.offset << " of memory " << f.block << " spoiled";
    } else {
      out << "argument " << f.argument << '.' << f.cell << ' ';
      if (f.null) {
        out << "null";
      } else if (f.shift != 0) {
        out << "shifted by " << f.shift;
      } else {
        out << f.number;
      }
    }
    return out.str();
  }

  /// Lets each allocation of the call fail in turn.
  static std::string failAllocations(const Record& record, const Case& c) {
    Trial trial(c, false);
    const int before = allocationCalls();
    if (trial.call(record.call) < 0) return {};
    const int count = allocationCalls() - before;
    if (c.keptWhenReleased != 0) dropAllocations();
    for (int n = 1; n <= count; ++n) {
      Trial failing(c, false);
      const size_t live = liveAllocations().size();
      failAllocation(n);
      const VekStatus status = failing.call(record.call);
      failAllocation(0);
      const std::string at = " when allocation " + std::to_string(n) + " fails";
      if (status != vekStsMemAllocErr) return "status " + std::to_string(status) + at;
      if (liveAllocations().size() != live) return "leaks" + at;
      if (!failing.nothingWritten() || !failing.outsideIntact()) return "writes" + at;
    }
    return {};
  }
};

std::vector<Record> recordsOf(const std::string& family) {
  const struct {
    const char* name;
    std::vector<Record> (*records)();
  } families[] = {{"core", coreRecords},       {"aaa", aaaRecords},     {"raw", rawRecords},
                  {"preview", previewRecords}, {"color", colorRecords}, {"arith", arithRecords},
                  {"filter", filterRecords},   {"stat", statRecords}};
  std::vector<Record> all;
  for (const auto& f : families) {
    if (family != "all" && family != f.name) continue;
    for (Record& r : f.records()) all.push_back(std::move(r));
  }
  return all;
}

std::string runCase(const Record& record, Random& random, const Options& options,
                    uint64_t* digest) {
  return Examination::examine(record, random, options, digest);
}

std::string checkOrder(const Record& record, Random& random, const std::string& ranks) {
  return Examination::order(record, random, ranks);
}

std::string runInThreads(const Record& record, Random& random, int threads, int rounds) {
  return Examination::inThreads(record, random, threads, rounds);
}

}  // namespace vek::test
