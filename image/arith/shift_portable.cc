#include "image/arith/pointwise_portable.h"
#include "image/arith/shift_body.h"

namespace vek::portable {
namespace {

struct ShiftLanes : PlainLanes {
  static Sample right(Sample v, int amount) { return static_cast<Sample>(v >> amount); }
  static Sample left(Sample v, int amount) { return static_cast<Sample>((v << amount) & 0xFF); }

  static Sample scaledRight(Sample v, Sample f) { return static_cast<Sample>((v * f) >> 7); }
  static Sample scaledLeft(Sample v, Sample f) { return static_cast<Sample>((v * f) & 0xFF); }
};

}  // namespace

constexpr ShiftKernels shiftKernels = shiftKernelsOf<ShiftLanes>();

}  // namespace vek::portable
