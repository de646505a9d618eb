// What moments are, and where a state keeps its sums.
#pragma once

#include "vek/image.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <stddef.h>

#include "core/int128.h"

namespace vek::test::definition {

/// The orders of the ten moments.
inline constexpr int orders[10][2] = {{0, 0}, {1, 0}, {0, 1}, {2, 0}, {1, 1},
                                      {0, 2}, {3, 0}, {2, 1}, {1, 2}, {0, 3}};

/// The words of a state, which begins at the first multiple of 4.
struct MomentState {
  uint32_t* words;

  static constexpr int tagWord = 96;

  explicit MomentState(const void* memory)
      : words(reinterpret_cast<uint32_t*>((reinterpret_cast<uintptr_t>(memory) + 3) / 4 * 4)) {}
  int count() const { return static_cast<int>(words[1]); }
  void setCount(int channels) { words[1] = static_cast<uint32_t>(channels); }

  /// Sums have 64 bits up to the second order and 128 above it.
  void set(int channel, int i, Int128 sum) {
    if (i < 6) {
      memcpy(at(channel, i), &sum.low, 8);
    } else {
      memcpy(at(channel, i), &sum, 16);
    }
  }
  Int128 get(int channel, int i) const {
    int64_t narrow;
    memcpy(&narrow, at(channel, i), 8);
    Int128 sum = narrow;
    if (i >= 6) memcpy(&sum, at(channel, i), 16);
    return sum;
  }

 private:
  uint32_t* at(int channel, int i) const {
    return words + 2 + 28 * channel + (i < 6 ? 2 * i : 12 + 4 * (i - 6));
  }
};

#ifdef __SIZEOF_INT128__

__extension__ typedef __int128 Wide;

inline Wide power(Wide base, int exponent) {
  return exponent == 0 ? 1 : base * power(base, exponent - 1);
}

template <int channels>
VekStatus summed(const Vek8u* pSrc, int srcStep, VekiSize roi, VekiMomentState* pState) {
  MomentState state(pState);
  for (int c = 0; c < channels; ++c) {
    for (int i = 0; i < 10; ++i) {
      Wide sum = 0;
      for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
          const Vek8u v = pSrc[ptrdiff_t{y} * srcStep + ptrdiff_t{x} * channels + c];
          sum += power(x, orders[i][0]) * power(y, orders[i][1]) * v;
        }
      }
      state.set(c, i, {static_cast<uint64_t>(sum), static_cast<uint64_t>(sum >> 64)});
    }
  }
  state.setCount(channels);
  return vekStsNoErr;
}

/// The sum over all pixels of (x + a)^p (y + b)^q I.
inline Wide shiftedSum(const VekiMomentState* pState, int channel, int p, int q, Wide a, Wide b) {
  constexpr int binomials[4][4] = {{1}, {1, 1}, {1, 2, 1}, {1, 3, 3, 1}};
  Wide sum = 0;
  for (int i = 0; i < 10; ++i) {
    const int r = orders[i][0], t = orders[i][1];
    if (r > p || t > q) continue;
    const Int128 m = MomentState(pState).get(channel, i);
    const Wide exact = static_cast<Wide>(m.high) << 64 | m.low;
    sum += exact * binomials[p][r] * binomials[q][t] * power(a, p - r) * power(b, q - t);
  }
  return sum;
}

inline void shiftedMoments(const VekiMomentState* pState, int channel, Wide a, Wide b, double* m) {
  for (int i = 0; i < 10; ++i) {
    m[i] = static_cast<double>(shiftedSum(pState, channel, orders[i][0], orders[i][1], a, b));
  }
}

inline VekStatus spatial(const VekiMomentState* pState, int channel, VekiPoint origin,
                         Vek64f* pMoments) {
  double m[10];
  shiftedMoments(pState, channel, origin.x, origin.y, m);
  memcpy(pMoments, m, sizeof m);
  return vekStsNoErr;
}

/// Whether there is anything to have moments.
inline bool centralMoments(const VekiMomentState* pState, int channel, double* mu) {
  const Wide s = shiftedSum(pState, channel, 0, 0, 0, 0);
  for (int i = 0; i < 10; ++i) mu[i] = 0;
  if (s == 0) return false;
  const auto nearest = [&](int p, int q) {
    return (2 * shiftedSum(pState, channel, p, q, 0, 0) + s) / (2 * s);
  };
  double m[10];
  shiftedMoments(pState, channel, -nearest(1, 0), -nearest(0, 1), m);
  const double dx = m[1] / m[0], dy = m[2] / m[0];
  mu[0] = m[0];
  mu[3] = m[3] - dx * m[1];
  mu[4] = m[4] - dx * m[2];
  mu[5] = m[5] - dy * m[2];
  mu[6] = m[6] - dx * (3 * mu[3] + dx * m[1]);
  mu[7] = (m[7] - dx * (2 * mu[4] + dx * m[2])) - dy * mu[3];
  mu[8] = (m[8] - dy * (2 * mu[4] + dy * m[1])) - dx * mu[5];
  mu[9] = m[9] - dy * (3 * mu[5] + dy * m[2]);
  return true;
}

inline VekStatus central(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  double mu[10];
  centralMoments(pState, channel, mu);
  memcpy(pMoments, mu, sizeof mu);
  return vekStsNoErr;
}

inline bool normalizedMoments(const VekiMomentState* pState, int channel, double* nu) {
  if (!centralMoments(pState, channel, nu)) return false;
  const double n2 = nu[0] * nu[0], n3 = n2 * std::sqrt(nu[0]);
  for (int i = 3; i < 10; ++i) nu[i] /= i < 6 ? n2 : n3;
  nu[0] = 1;
  return true;
}

inline VekStatus normalized(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  double nu[10];
  const bool any = normalizedMoments(pState, channel, nu);
  memcpy(pMoments, nu, sizeof nu);
  return any ? vekStsNoErr : vekStsDivByZero;
}

inline VekStatus hu(const VekiMomentState* pState, int channel, Vek64f* pMoments) {
  double nu[10];
  const bool any = normalizedMoments(pState, channel, nu);
  const double a = nu[3], b = nu[4], c = nu[5], d = nu[6], e = nu[7], f = nu[8], g = nu[9];
  const double t0 = d + f, t1 = e + g, q0 = t0 * t0, q1 = t1 * t1, n4 = 4 * b, r = a - c;
  const double u0 = t0 * (q0 - 3 * q1), u1 = t1 * (3 * q0 - q1), p0 = d - 3 * f, p1 = 3 * e - g;
  const double h[7] = {a + c,
                       r * r + n4 * b,
                       p0 * p0 + p1 * p1,
                       q0 + q1,
                       p0 * u0 + p1 * u1,
                       r * (q0 - q1) + (n4 * t0) * t1,
                       p1 * u0 - p0 * u1};
  memcpy(pMoments, h, sizeof h);
  return any ? vekStsNoErr : vekStsDivByZero;
}

#endif

}  // namespace vek::test::definition
