#include "vek/vek.h"

namespace vek {
namespace {

/// Restoring binary long division for targets without a divide instruction: one round per quotient
/// bit. `n >> 1 >= d` keeps the shifted divisor at most n, so nothing leaves T.
template <class T>
T divide(T n, T d, T* pRem) {
  T quotient = 0;
  T remainder = n;
  if (d != 0 && n >= d) {
    T bit = 1;
    while (static_cast<T>(n >> 1) >= d) {
      d = static_cast<T>(d << 1);
      bit = static_cast<T>(bit << 1);
    }
    for (; bit != 0; bit = static_cast<T>(bit >> 1), d = static_cast<T>(d >> 1)) {
      if (remainder >= d) {
        remainder = static_cast<T>(remainder - d);
        quotient = static_cast<T>(quotient + bit);
      }
    }
  }
  if (pRem != nullptr) *pRem = remainder;
  return quotient;
}

}  // namespace
}  // namespace vek

extern "C" {

unsigned int _vekDiv_8u(unsigned int n, unsigned int d, Vek8u* pRem) {
  return vek::divide(static_cast<Vek8u>(n), static_cast<Vek8u>(d), pRem);
}

unsigned int _vekDiv_16u(unsigned int n, unsigned int d, Vek16u* pRem) {
  return vek::divide(static_cast<Vek16u>(n), static_cast<Vek16u>(d), pRem);
}

Vek32u _vekDiv_32u(Vek32u n, Vek32u d, Vek32u* pRem) {
  return vek::divide(n, d, pRem);
}

}  // extern "C"
