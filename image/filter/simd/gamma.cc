#include "core/kernel/blocks.h"
#include "core/kernel/byte_table.h"
#include "image/filter/gamma_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
using VBytes = hn::Vec<decltype(bytes)>;

#if VEK_HAVE_BYTE_TABLE

class Table {
 public:
  explicit Table(const Vek8u* entries) : table_(entries) {}
  VBytes operator()(VBytes index) const { return VBytes{table_.at(index.raw)}; }

 private:
  ByteTable table_;
};

#else

/// Half a table as eight parts of 16 entries. x86 looks up by an index's low four bits unless its
/// top bit is set; there each part but the first is kept as its difference (exclusive or) from the
/// one before. NEON looks up 0 for every index above 15 and needs no differences.
class HalfTable {
 public:
  explicit HalfTable(const Vek8u* entries) {
    for (int part = 0; part < 8; ++part) {
      const VBytes own = hn::LoadDup128(bytes, entries + 16 * part);
      parts_[part] = part == 0 || !HWY_ARCH_X86
                         ? own
                         : hn::Xor(own, hn::LoadDup128(bytes, entries + 16 * part - 16));
    }
  }

  /// Entries of the indices below 128; what other lanes get is of no use. On x86 an index
  /// takes part in all look-ups up to its own part, and the differences add up to that part's
  /// entry: once 16 * part is subtracted, lanes with a smaller index have their top bit set, which
  /// looks up 0.
  VBytes operator()(VBytes index) const {
    VBytes result = hn::TableLookupBytesOr0(parts_[0], index);
    for (int part = 1; part < 8; ++part) {
      index = hn::Sub(index, hn::Set(bytes, 16));
      result = hn::Xor(result, hn::TableLookupBytesOr0(parts_[part], index));
    }
    return result;
  }

 private:
  VBytes parts_[8];
};

class Table {
 public:
  explicit Table(const Vek8u* entries) : low_(entries), high_(entries + 128) {}

  VBytes operator()(VBytes index) const {
    const VBytes top = hn::Set(bytes, 128);
    return hn::IfThenElse(hn::Lt(index, top), low_(index), high_(hn::Xor(index, top)));
  }

 private:
  HalfTable low_, high_;
};

#endif

void ownGamma_8u_(const GammaTable& table, const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  constexpr int block = static_cast<int>(hn::MaxLanes(bytes));
  const Table lookUp(table.entries);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    hn::StoreU(lookUp(hn::LoadU(bytes, in)), bytes, out);
  };
  copiedBlocks<block>(n, body, Out<1>{dst}, In<1>{src});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr GammaKernels gammaKernels = {ownGamma_8u_};

}  // namespace vek::VEK_LEVEL
