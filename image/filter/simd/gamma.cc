#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/byte_table.h"
#include "core/kernel/lanes.h"
#include "image/filter/gamma_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if VEK_HAVE_BYTE_TABLE

class Table {
 public:
  explicit Table(const Vek8u* entries) : table_(entries) {}
  V8u operator()(V8u index) const { return V8u{table_.at(index.raw)}; }

 private:
  ByteTable table_;
};

#else

/// Half a table, in eight parts of 16 entries, for indices 0 .. 127. Every part is asked at every
/// index, each time after 16 more were subtracted, and the answers are combined by exclusive or.
///
/// On x86 a part answers by an index's low four bits, unless the top bit is set: then it answers 0.
/// So an index of 37 = 2 * 16 + 5 is answered by parts 0, 1 and 2 (as 37, 21 and 5, each with low
/// bits 5) and by none after those (-11 and so on have the top bit set). That is why parts after
/// the first hold the differences (by exclusive or) from the part before: entry 5 of part 0, its
/// difference from entry 5 of part 1, and that one's from part 2 leave entry 5 of part 2.
///
/// NEON answers 0 for every index above 15, so that only the right part answers and each holds its
/// entries as they are.
class HalfTable {
 public:
  explicit HalfTable(const Vek8u* entries) {
    for (int part = 0; part < 8; ++part) {
      const V8u sixteen = hn::LoadDup128(u8, entries + 16 * part);
      parts_[part] = part == 0 || !HWY_ARCH_X86
                         ? sixteen
                         : hn::Xor(sixteen, hn::LoadDup128(u8, entries + 16 * part - 16));
    }
  }

  /// What lanes with an index of 128 or more get is of no use.
  V8u operator()(V8u index) const {
    V8u result = hn::TableLookupBytesOr0(parts_[0], index);
    for (int part = 1; part < 8; ++part) {
      index = hn::Sub(index, hn::Set(u8, 16));
      result = hn::Xor(result, hn::TableLookupBytesOr0(parts_[part], index));
    }
    return result;
  }

 private:
  V8u parts_[8];
};

class Table {
 public:
  explicit Table(const Vek8u* entries) : low_(entries), high_(entries + 128) {}

  V8u operator()(V8u index) const {
    const V8u top = hn::Set(u8, 128);
    return hn::IfThenElse(hn::Lt(index, top), low_(index), high_(hn::Xor(index, top)));
  }

 private:
  HalfTable low_, high_;
};

#endif

void map(const GammaTable& table, const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  VEK_ASSERT(n >= 1);
  const Table lookUp(table.entries);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    hn::StoreU(lookUp(hn::LoadU(u8, in)), u8, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<1>{dst}, In<1>{src});
}

}  // namespace

constexpr GammaKernels gammaKernels = {.map = map};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
