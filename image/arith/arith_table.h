// The arithmetic kernels of a level, from its row driver and its scaled() and mulScale() of
// samples.
#pragma once

#include "image/arith/arith_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// `Second` is Samples or Repeated.
template <class Operation, class Scaling, class Second>
void scaledRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, int shift, Vek8u* dst) {
  const auto op = [shift](Sample x, Sample y) {
    return scaled(Operation{}, Scaling{}, x, y, shift);
  };
  mapRow(n, op, dst, Samples{a}, Second{b});
}

template <class Second>
void mulScaleRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample x, Sample y) { return mulScale(x, y); }, dst, Samples{a}, Second{b});
}

constexpr ScaledRow owni_Add_8u_C1SRRow = scaledRow<Sum, ShiftRight, Samples>;
constexpr ScaledRow owni_Add_8u_C1Row = scaledRow<Sum, Plain, Samples>;
constexpr ScaledRow owni_Add_8u_C1SLRow = scaledRow<Sum, ShiftLeft, Samples>;
constexpr ScaledRow owni_AddC_8u_C3SRRow = scaledRow<Sum, ShiftRight, Repeated>;
constexpr ScaledRow owni_AddC_8u_C3Row = scaledRow<Sum, Plain, Repeated>;
constexpr ScaledRow owni_AddC_8u_C3SLRow = scaledRow<Sum, ShiftLeft, Repeated>;
constexpr ScaledRow owni_Sub_8u_C1SRRow = scaledRow<Difference, ShiftRight, Samples>;
constexpr ScaledRow owni_Sub_8u_C1Row = scaledRow<Difference, Plain, Samples>;
constexpr ScaledRow owni_Sub_8u_C1SLRow = scaledRow<Difference, ShiftLeft, Samples>;
constexpr ScaledRow owni_SubC_8u_C3SRRow = scaledRow<Difference, ShiftRight, Repeated>;
constexpr ScaledRow owni_SubC_8u_C3Row = scaledRow<Difference, Plain, Repeated>;
constexpr ScaledRow owni_SubC_8u_C3SLRow = scaledRow<Difference, ShiftLeft, Repeated>;
constexpr ScaledRow owni_Mul_8u_C1SRRow = scaledRow<Product, ShiftRight, Samples>;
constexpr ScaledRow owni_Mul_8u_C1Row = scaledRow<Product, Plain, Samples>;
constexpr ScaledRow owni_Mul_8u_C1SLRow = scaledRow<Product, ShiftLeft, Samples>;
constexpr ScaledRow owni_MulC_8u_C3SRRow = scaledRow<Product, ShiftRight, Repeated>;
constexpr ScaledRow owni_MulC_8u_C3Row = scaledRow<Product, Plain, Repeated>;
constexpr ScaledRow owni_MulC_8u_C3SLRow = scaledRow<Product, ShiftLeft, Repeated>;
constexpr PointwiseRow MulScaleC1S = mulScaleRow<Samples>;
constexpr PointwiseRow MulScaleCC3S = mulScaleRow<Repeated>;

}  // namespace

constexpr ArithKernels arithKernels = {
    {owni_Add_8u_C1SRRow, owni_Add_8u_C1Row, owni_Add_8u_C1SLRow},
    {owni_AddC_8u_C3SRRow, owni_AddC_8u_C3Row, owni_AddC_8u_C3SLRow},
    {owni_Sub_8u_C1SRRow, owni_Sub_8u_C1Row, owni_Sub_8u_C1SLRow},
    {owni_SubC_8u_C3SRRow, owni_SubC_8u_C3Row, owni_SubC_8u_C3SLRow},
    {owni_Mul_8u_C1SRRow, owni_Mul_8u_C1Row, owni_Mul_8u_C1SLRow},
    {owni_MulC_8u_C3SRRow, owni_MulC_8u_C3Row, owni_MulC_8u_C3SLRow},
    MulScaleC1S,
    MulScaleCC3S};

}  // namespace vek::VEK_LEVEL
