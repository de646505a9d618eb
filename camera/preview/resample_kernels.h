// Row kernels that sample source rows at equidistant 16.16 phases.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "core/level.h"

namespace vek {

/// The columns at which the rows of a tile are sampled: sample i at phase + i * step, in 16.16. With
/// phase 32768 and step 98304, for example, the samples 0, 1, 2 lie in the columns 0, 2, 3. Every object
/// is a ColumnsOf<>, which has room for its tables.
struct alignas(64) Columns {
  static constexpr ptrdiff_t maxCount = 1024;  ///< that any has room for

  Vek32u phase = 0, step = 0;
  ptrdiff_t n = -1;          ///< 0 to `room`; negative before they are prepared
  ptrdiff_t lastColumn = 0;  ///< of the source; for bilinear() alone

  // What prepare() makes of these, each level as its kernels need it. A block is a number of samples
  // that are looked up together. Block k begins with sample k * blockSize, the last one earlier where
  // it would reach beyond sample n - 1; its entries begin at k * blockSize in any case.
  ptrdiff_t blockSize = 0;  ///< 0 if nothing can be looked up
  ptrdiff_t blocks = 0;
  ptrdiff_t lastTouched = 0;  ///< the last column that is read
  int passes = 0;             ///< look-ups that a block takes
  bool hasFractions = false;  ///< not all phases are whole columns
  bool everyOther = false;    ///< the step is two columns
  const ptrdiff_t room;       ///< a multiple of 64
  Vek8u* const offsets;       ///< [8 * room]: of the samples, within their windows
  Vek16u* const fractions;  ///< [room + 32]: of the phases, and what the last vector reads besides

  /// [room]: the columns that the windows of the look-ups begin at. Every row begins by asking for them;
  /// they follow this object because a pointer to them would have to be loaded first.
  [[gnu::always_inline]] Vek32s* windows() { return reinterpret_cast<Vek32s*>(this + 1); }
  [[gnu::always_inline]] const Vek32s* windows() const {
    return reinterpret_cast<const Vek32s*>(this + 1);
  }

  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

 protected:
  Columns(ptrdiff_t count, Vek8u* offsetTable, Vek16u* fractionTable)
      : room(count), offsets(offsetTable), fractions(fractionTable) {}
};

/// With room for `count` columns.
template <ptrdiff_t count>
struct ColumnsOf : Columns {
  static_assert(count % 64 == 0 && count <= maxCount);

  ColumnsOf() : Columns(count, offsetTable_, fractionTable_) {
    VEK_ASSERT(windows() == windowTable_);
  }

 private:
  alignas(64) Vek32s windowTable_[count];
  alignas(64) Vek8u offsetTable_[8 * count];
  alignas(64) Vek16u fractionTable_[count + 32];
};

struct ResampleKernels {
  /// Prepares `columns`, of which the first four members are set. `blended`: for bilinear().
  void (*prepare)(Columns& columns, bool blended);

  /// dst[i] = row[column i] for i < n, the phase rounded down.
  void (*nearest)(const Vek8u* row, const Columns& columns, Vek8u* dst);

  /// The bilinear blend of rows `top` and `bottom` with the vertical weight fy (0..65535) for i < n:
  /// two horizontal blends a + (((b - a) * fx) >> 16), then a vertical one, each rounding toward
  /// minus infinity. A right neighbour beyond the last column is replaced by the left one; the
  /// callers' step limits give it weight 0 there. With fy 0 `bottom` is not read.
  void (*bilinear)(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& columns,
                   Vek8u* dst);
};

VEK_KERNEL_TABLE(ResampleKernels, resampleKernels)

}  // namespace vek
