// The shift kernels of a level, from its row driver and its shiftRight() and shiftLeft() of
// samples.
#pragma once

#include "image/arith/shift_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

void owni_RShiftC_8u_C1S(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst) {
  mapRow(
      n, [amount](Sample v) { return shiftRight(v, amount); }, dst, Samples{src});
}

void owni_LShiftC_8u_C1S(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst) {
  mapRow(
      n, [amount](Sample v) { return shiftLeft(v, amount); }, dst, Samples{src});
}

void owni_RShiftC_8u_C3S(const Vek8u* src, const Vek8u* amounts, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample amount) { return shiftRight(v, amount); }, dst, Samples{src},
      Repeated{amounts});
}

void owni_LShiftC_8u_C3S(const Vek8u* src, const Vek8u* amounts, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v, Sample amount) { return shiftLeft(v, amount); }, dst, Samples{src},
      Repeated{amounts});
}

}  // namespace

constexpr ShiftKernels shiftKernels = {owni_RShiftC_8u_C1S, owni_LShiftC_8u_C1S,
                                       owni_RShiftC_8u_C3S, owni_LShiftC_8u_C3S};

}  // namespace vek::VEK_LEVEL
