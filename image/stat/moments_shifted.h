// Moments about another origin.
#pragma once

#include "image/stat/moments_kernels.h"

namespace vek {

/// The moments with (a, b) for the coordinates of what was (0, 0). With s for the sum over all pixels of
/// what follows it, the third order is (x + a)^3 = x^3 + a ((x + a)^2 + x (x + a) + x^2), for example.
template <class T>
MomentsOf<T> shifted(const MomentsOf<T>& m, Vek64s a, Vek64s b) {
  MomentsOf<T> s;
  s.m00 = m.m00;
  s.m10 = m.m10 + m.m00 * a;
  s.m01 = m.m01 + m.m00 * b;
  const T xx = m.m20 + m.m10 * a;  // x (x + a)
  const T xy = m.m11 + m.m01 * a;  // (x + a) y
  const T yx = m.m11 + m.m10 * b;  // x (y + b)
  const T yy = m.m02 + m.m01 * b;  // y (y + b)
  s.m20 = xx + s.m10 * a;
  s.m11 = xy + s.m10 * b;
  s.m02 = yy + s.m01 * b;
  s.m30 = m.m30 + (s.m20 + xx + m.m20) * a;
  s.m21 = m.m21 + (xy + m.m11) * a + s.m20 * b;
  s.m12 = m.m12 + (yx + m.m11) * b + s.m02 * a;
  s.m03 = m.m03 + (s.m02 + yy + m.m02) * b;
  return s;
}

}  // namespace vek
