// The arguments of one call of an exported function: how they are drawn, the memory behind them, and
// what would be wrong with others.
#pragma once

#include "vek/vek.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/buffer.h"

namespace vek::test {

/// One argument of a call, as any parameter type takes it: a pointer, a number, two numbers of a
/// VekiSize or VekiPoint, or four of a VekiRect.
struct Value {
  void* pointer = nullptr;
  int64_t numbers[4] = {};
};

using Call = std::function<VekStatus(const Value* arguments)>;

template <class T>
T as(const Value& v) {
  if constexpr (std::is_pointer_v<T>) {
    return static_cast<T>(v.pointer);
  } else if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(v.numbers[0]);
  } else if constexpr (std::is_same_v<T, VekiRect>) {
    return {static_cast<int>(v.numbers[0]), static_cast<int>(v.numbers[1]),
            static_cast<int>(v.numbers[2]), static_cast<int>(v.numbers[3])};
  } else {
    return T{static_cast<int>(v.numbers[0]), static_cast<int>(v.numbers[1])};
  }
}

/// A call of f; of a definition, which returns nothing where any status will do.
template <class R, class... A>
Call bind(R (*f)(A...)) {
  return [f]<size_t... i>(std::index_sequence<i...>)->Call {
    return [f](const Value* v) {
      if constexpr (std::is_void_v<R>) {
        f(as<A>(v[i])...);
        return VekStatus{-1};
      } else {
        return f(as<A>(v[i])...);
      }
    };
  }
  (std::index_sequence_for<A...>{});
}

/// Values that an argument must not have, and the status that answers them.
class Refused {
 public:
  Refused() = default;
  Refused(VekStatus s, std::initializer_list<int> values) : status(s) {
    for (int v : values) add(v);
  }
  void add(int value) { values_[count_++] = value; }
  const int* begin() const { return values_; }
  const int* end() const { return values_ + count_; }

  VekStatus status = vekStsNoErr;

 private:
  int values_[8] = {};
  size_t count_ = 0;
};

/// What a call does with the memory behind a pointer: it finds its contents there (in), leaves its
/// results there (out), or both, as when it works in place; or whatever it likes (scratch).
enum class Use { in, out, inOut, scratch };

/// How the step of an image is drawn, and which steps are refused.
struct Steps {
  int unit = 1;         ///< steps are multiples of this
  bool overlap = true;  ///< rows may be closer than they are long (in sources)
  bool any = false;     ///< 0 and negative steps are fine
  Refused refused = {vekStsStepErr, {0, -1, -2147483647 - 1}};
};

/// What a case may be, and what is done with it.
struct Options {
  bool faults = true;      ///< inject faults into the arguments, too
  bool far = true;         ///< rows may lie gigabytes apart
  bool limits = false;     ///< sizes and numbers at which a function may change what it does
  bool definition = true;  ///< compare with the definition, where the record has one
};

/// The arguments of one call and the memory behind them.
class Case {
 public:
  Case(Random& draws, const Options& options) : random(draws), options_(options) {}

  Random& random;  ///< what the arguments are drawn from

  // ---- Memory. `unit` is the size of a sample (0: of no matter to others than this process);
  // contents are drawn, and the same on every machine.

  int memory(Use use, const Area& area, size_t alignment = 1, int unit = 1, int mask = 0xFFFF,
             size_t offset = 0);
  /// Memory that holds `bytes`, or with `use` out receives as many.
  int object(Use use, const void* bytes, size_t size, size_t alignment, int unit);
  template <class T>
  int objects(const std::vector<T>& values, Use use = Use::in) {
    const int unit = std::is_integral_v<T> ? static_cast<int>(sizeof(T)) : 0;
    return object(use, values.data(), values.size() * sizeof(T), alignof(T), unit);
  }
  template <class T>
  T* data(int block) {
    return blocks_[static_cast<size_t>(block)].initial->as<T>();
  }

  // ---- Arguments, in the order of the function's parameters.

  /// A pointer that is refused if it is null or no multiple of `alignment` (0: never refused).
  /// It points `offset` bytes behind the block's own pointer.
  void pointer(int block, int alignment = 1, ptrdiff_t offset = 0);
  /// The same for an array of pointers.
  void planes(const int (&blocks)[3], const int (&alignments)[3]);
  void planes(const std::vector<int>& blocks);
  void number(int64_t value, const Refused& refused = {});
  /// An array of numbers.
  void numbers(const int (&values)[3], const Refused& refused) {
    numbers(std::vector<int>(values, values + 3), refused);
  }
  void numbers(const std::vector<int>& values, const Refused& refused);
  void pair(int first, int second, const Refused& refused = {});
  void rect(const VekiRect& r, const Refused& refused) {
    pair(r.x, r.y, refused);
    for (int v : {r.width, r.height}) {
      arguments_.back().cells.push_back(arguments_.back().cells[0]);
      arguments_.back().cells.back().number = v;
    }
  }
  void roi(VekiSize size, VekStatus status = vekStsSizeErr) {
    pair(size.width, size.height, {status, {0, -1, -2147483647 - 1}});
  }
  /// Something that the library made, released with the case; refused if null.
  void state(void* made, std::function<void(void*)> release);

  /// A value that a field of the record in a block must not have.
  template <class Record, class Field, class Bad>
  void refuse(int block, Field Record::*field, const Bad& bad) {
    Record r = {};
    const auto offset = reinterpret_cast<uint8_t*>(&(r.*field)) - reinterpret_cast<uint8_t*>(&r);
    refuseBytes(block, static_cast<size_t>(offset), Field(bad));
  }
  /// A value that entry `index` of an array in a block must not have.
  template <class T>
  void refuseEntry(int block, size_t index, const T& bad, VekStatus status) {
    refuseBytes(block, index * sizeof(T), bad, status);
  }

  /// The same for anything anywhere in a block.
  template <class T>
  void refuseAt(int block, size_t offset, const T& bad, VekStatus status = vekStsBadArgErr) {
    refuseBytes(block, offset, bad, status);
  }
  /// One more value that a number of the last argument must not have.
  void alsoRefuse(int cell, int bad) {
    arguments_.back().cells[static_cast<size_t>(cell)].refused.add(bad);
  }
  /// The step of rows of `bytes` bytes that must not overlap: shorter ones have a status of their own.
  void stride(int step, ptrdiff_t bytes);
  void clearFaults() { faults_.clear(); }

  // ---- Limits.

  /// Whether sizes lie at the seams of strips and tiles, and numbers about where arithmetic changes.
  bool limits() const { return options_.limits; }
  /// A size that crosses seams: wide and low or high and narrow, with whole vectors or without.
  VekiSize sizeAcrossSeams(int mostColumns, int mostRows = 128) {
    if (random.chance(60)) return {random.acrossSeam(mostColumns), random.in(1, 5)};
    return {random.in(1, random.chance(50) ? 9 : 40), random.acrossSeam(mostRows)};
  }

  /// A step for rows of `bytes` bytes.
  int step(ptrdiff_t bytes, int rows, const Steps& steps = {}, Use use = Use::out);

  VekStatus nullStatus = vekStsNullPtrErr;  ///< what answers null and misaligned pointers
  int keptWhenRefused = 0;                  ///< allocations that a refusal keeps on purpose
  int keptWhenReleased = 0;                 ///< allocations that the case itself keeps on purpose
  std::string note;                         ///< what else tells one case from another

  // ---- What is wrong with other arguments.

  /// One thing that is wrong: another value of an argument, or in the memory of a block.
  struct Fault {
    VekStatus status;
    int argument = -1, cell = 0;  ///< cell -1: the array itself is null
    bool null = false;
    int shift = 0;
    int64_t number = 0;
    int block = -1;
    size_t offset = 0;
    std::vector<uint8_t> bytes = {};
  };

  std::vector<Fault> faults() const;

  /// The argument whose place in the order of checks a fault has: an array of steps that is null
  /// is answered with the planes before it.
  size_t checkedWith(const Fault& fault) const;
  std::string describe() const;

 private:
  friend class Trial;
  friend struct CaseReader;

  struct Block {
    Use use;
    Area area;
    size_t alignment, offset;
    int unit;
    Buffer::Guard guard;
    std::unique_ptr<Buffer> initial;  ///< of out and inOut only the contents count
    std::vector<uint8_t> contents;
  };
  struct Cell {
    int block = -1;
    int alignment = 1;
    ptrdiff_t offset = 0;
    int64_t number = 0;
    bool isNumber = false;
    Refused refused = {};
  };
  struct Argument {
    std::vector<Cell> cells;
    bool array = false;
    std::shared_ptr<void> made;
  };
  template <class T>
  void refuseBytes(int block, size_t offset, const T& bad, VekStatus status = vekStsBadArgErr) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&bad);
    Fault fault = {status};
    fault.block = block, fault.offset = offset, fault.bytes = {bytes, bytes + sizeof(T)};
    faults_.push_back(fault);
  }
  Options options_;
  std::vector<Block> blocks_;
  std::vector<Argument> arguments_;
  std::vector<Fault> faults_;
};

}  // namespace vek::test
