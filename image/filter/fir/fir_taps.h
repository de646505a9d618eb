// The taps of a linear filter in groups that are multiplied together.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "image/filter/fir/fir_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// A group of neighbours in a row, the first of them `where` bytes after src, and their
/// coefficients for each row of the destination.
struct Across {
  ptrdiff_t where;
  Vek32u factors[2];
};

/// A group of taps anywhere. Taps that it lacks stand in the place of another, with a coefficient
/// of 0.
template <class Dots>
struct Scattered {
  ptrdiff_t where[Dots::taps];
  Vek32u factors[2];
  int size;

  void add(ptrdiff_t place, Vek32s factor, Vek32s lowerFactor) {
    VEK_ASSERT(size < Dots::taps);
    for (int i = size; i < Dots::taps; ++i) where[i] = place;
    factors[0] |= Dots::factor(factor, size);
    factors[1] |= Dots::factor(lowerFactor, size);
    ++size;
  }
};

/// The taps of `rows` (1 or 2) rows of the destination at once, listed once for a region. Of two
/// rows the upper one multiplies a source row by one row of the kernel, and the lower one
/// multiplies it by the kernel row above that.
///
/// Where Dots takes coefficients byte by byte, each is split into high * 256 + low with a low part
/// of -128 .. 127: 300 is 1 * 256 + 44, and 200 is 1 * 256 - 56. The groups of high parts come
/// first in the list; their sum is multiplied by 256 before the low parts are added.
template <class Dots, int rows>
class ListedTaps {
 public:
  ListedTaps(const FirTaps& taps, ptrdiff_t rowStep) : taps_(taps), rowStep_(rowStep) {
    // A last column that groups of neighbours would leave over is grouped down the column instead.
    down_ = taps.width == 1 || (taps.width % Dots::taps == 1 && taps.height > 2);
    across_ = down_ ? taps.width - 1 : taps.width;
    // Four pixels of three bytes take twice as many loads as three do, which does not pay for one
    // row.
    const bool three = rows == 1 && taps.pixelBytes == 3 && Dots::taps > 3;
    const ptrdiff_t together = three ? 3 : Dots::taps;
    const ptrdiff_t groups = (across_ + together - 1) / together;
    share_ = groups == 0 ? 1 : (across_ + groups - 1) / groups;
    if (Dots::inParts) {
      for (ptrdiff_t i = 0; i < taps.width * taps.height; ++i) {
        fits_ = fits_ && taps.last[-i] <= mostInParts;
      }
      add([](Vek32s v) { return (v - lowPart(v)) / 256; });
      firstLow_ = size_;
      firstLowScattered_ = sizeScattered_;
      add(lowPart);
    } else {
      add([](Vek32s v) { return v; });
    }
  }

  /// False for too many taps, or one whose coefficient is too large to be taken byte by byte.
  bool isComplete() const { return fits_ && size_ <= most && sizeScattered_ <= mostScattered; }
  /// From the first to the last tap of a group of neighbours, in bytes.
  ptrdiff_t reach() const { return (share_ - 1) * taps_.pixelBytes; }

  /// Walks the groups, by pointers of its own that the compiler keeps in registers: as far as it
  /// knows, a store to an image could change those of the list.
  class Walk {
   public:
    explicit Walk(const ListedTaps& list)
        : groups_(list.groups_),
          low_(groups_ + list.firstLow_),
          end_(groups_ + list.size_),
          scattered_(list.scattered_),
          lowScattered_(scattered_ + list.firstLowScattered_),
          endScattered_(scattered_ + list.sizeScattered_),
          high_(list.firstLow_ + list.firstLowScattered_ > 0) {}

    /// Adds all groups to sums that are 0.
    template <class Sums>
    [[gnu::always_inline]] inline void addTo(Sums& sums, const Vek8u* src) const {
      if (Dots::inParts && high_) {
        for (const Across* group = groups_; group < low_; ++group) sums.add(src, *group);
        for (const Scattered<Dots>* group = scattered_; group < lowScattered_; ++group) {
          sums.add(src, *group);
        }
        sums.multiplyBy256();
      }
      for (const Across* group = low_; group < end_; ++group) sums.add(src, *group);
      for (const Scattered<Dots>* group = lowScattered_; group < endScattered_; ++group) {
        sums.add(src, *group);
      }
    }

   private:
    const Across *groups_, *low_, *end_;
    const Scattered<Dots>*scattered_, *lowScattered_, *endScattered_;
    bool high_;
  };

 private:
  static constexpr int most = 128, mostScattered = 64;
  static constexpr Vek32s mostInParts = 127 * 256 + 127;

  static Vek32s lowPart(Vek32s v) { return ((v + 128) & 0xFF) - 128; }

  template <class PartOf>
  void add(PartOf partOf) {
    const ptrdiff_t inputs = taps_.height + rows - 1;
    const auto coefficient = [&](ptrdiff_t x, ptrdiff_t y) {
      return y < 0 || y >= taps_.height ? 0 : partOf(taps_.last[-(y * taps_.width + x)]);
    };
    for (ptrdiff_t y = 0; y < inputs; ++y) {
      for (ptrdiff_t x = 0; x < across_; x += share_) {
        // The last group begins further back if it is not full.
        const ptrdiff_t first = x + share_ <= across_ ? x : across_ - share_;
        Across group = {y * rowStep_ + first * taps_.pixelBytes, {}};
        for (ptrdiff_t k = x; k < across_ && k < x + share_; ++k) {
          for (int r = 0; r < rows; ++r) {
            group.factors[r] |= Dots::factor(coefficient(k, y - r), static_cast<int>(k - first));
          }
        }
        append(groups_, size_, most, group);
      }
    }
    for (ptrdiff_t y = 0; down_ && y < inputs; y += Dots::taps) {
      Scattered<Dots> group = {};
      for (ptrdiff_t k = y; k < inputs && k < y + Dots::taps; ++k) {
        group.add(k * rowStep_ + across_ * taps_.pixelBytes, coefficient(across_, k),
                  rows == 2 ? coefficient(across_, k - 1) : 0);
      }
      append(scattered_, sizeScattered_, mostScattered, group);
    }
  }

  template <class Group>
  static void append(Group* groups, int& size, int limit, const Group& group) {
    if ((group.factors[0] | group.factors[1]) == 0) return;
    if (size < limit) groups[size] = group;
    if (size <= limit) ++size;
  }

  const FirTaps& taps_;
  ptrdiff_t rowStep_;
  ptrdiff_t across_, share_;  ///< taps of a row that go in groups of neighbours, and of each group
  bool down_, fits_ = true;
  int size_ = 0, sizeScattered_ = 0, firstLow_ = 0, firstLowScattered_ = 0;
  Across groups_[most];
  Scattered<Dots> scattered_[mostScattered];
};

/// The taps of a kernel of any size, grouped anew each time.
template <class Dots>
struct WalkedTaps {
  using Walk = WalkedTaps;

  const FirTaps& taps;
  ptrdiff_t rowStep;

  template <class Sums>
  [[gnu::always_inline]] inline void addTo(Sums& sums, const Vek8u* src) const {
    Scattered<Dots> group = {};
    const Vek32s* coefficient = taps.last;
    for (ptrdiff_t y = 0; y < taps.height; ++y) {
      for (ptrdiff_t x = 0; x < taps.width; ++x) {
        group.add(y * rowStep + x * taps.pixelBytes, *coefficient--, 0);
        if (group.size < Dots::taps) continue;
        sums.add(src, group);
        group = {};
      }
    }
    if (group.size > 0) sums.add(src, group);
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
