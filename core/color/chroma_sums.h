// The sums of luma and chroma parts that suit a matrix and a pixel format.
#pragma once

#include "core/color/byte_sums.h"
#include "core/color/field_sums.h"

namespace vek::VEK_LEVEL {
namespace {

template <const Matrix& m, class Format, bool fields = Format::bytes == 2 && (Weights<m>::luma > 1)>
struct SumsFor {
  using Type = ByteSums<m>;
};
template <const Matrix& m, class Format>
struct SumsFor<m, Format, true> {
  using Type = FieldSums<m>;
};

/// A block of pixels takes two of these, Sums(Cb, Cr) for the even and for the odd pixels (the same
/// one where pairs share chroma); then Sums::luma<odd>(bytes) of the luma and
/// Sums::store<Format>(luma parts, sums, dst).
template <const Matrix& m, class Format>
using Sums = typename SumsFor<m, Format>::Type;

}  // namespace
}  // namespace vek::VEK_LEVEL
