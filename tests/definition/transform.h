// What the transforms write.
#pragma once

#include "vek/image.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stddef.h>
#include <vector>

#include "image/transform/block_dct_basis.h"
#include "image/transform/real_fft_units.h"

namespace vek::test::definition {

template <class T>
T sampleAt(const void* rows, ptrdiff_t step, ptrdiff_t y, ptrdiff_t i) {
  T v;
  memcpy(&v, static_cast<const Vek8u*>(rows) + y * step + i * ptrdiff_t{sizeof(T)}, sizeof(T));
  return v;
}

template <class T>
void storeAt(void* rows, ptrdiff_t step, ptrdiff_t y, ptrdiff_t i, T v) {
  memcpy(static_cast<Vek8u*>(rows) + y * step + i * ptrdiff_t{sizeof(T)}, &v, sizeof(T));
}

// ---- Fourier ------------------------------------------------------------------------------------

struct ComplexNumber {
  double re, im;

  ComplexNumber operator+(ComplexNumber z) const { return {re + z.re, im + z.im}; }
  ComplexNumber operator-(ComplexNumber z) const { return {re - z.re, im - z.im}; }
  ComplexNumber operator*(ComplexNumber w) const {
    return {re * w.re - im * w.im, re * w.im + im * w.re};
  }
};

using ComplexNumbers = std::vector<ComplexNumber>;

/// exp(-2 pi i t / 1024), by the cosines of the first quarter.
inline ComplexNumber unit(size_t t) {
  const size_t r = t % 256;
  const double c = unitCosines.at[r], s = unitCosines.at[256 - r];
  const ComplexNumber units[4] = {{c, -s}, {-s, -c}, {-c, s}, {s, c}};
  return units[t / 256 % 4];
}

inline ComplexNumbers fourier(const ComplexNumbers& x) {
  const size_t n = x.size(), m = n / 4;
  if (n == 1) return x;
  if (n == 2) return {x[0] + x[1], x[0] - x[1]};
  ComplexNumbers parts[4], result(n);
  for (size_t i = 0; i < n; ++i) parts[i % 4].push_back(x[i]);
  for (ComplexNumbers& part : parts) part = fourier(part);
  for (size_t k = 0; k < m; ++k) {
    const size_t g = 1024 / n;
    const ComplexNumber a = parts[0][k], b = parts[1][k] * unit(k * g),
                        c = parts[2][k] * unit(2 * k * g), d = parts[3][k] * unit(3 * k * g);
    const ComplexNumber t0 = a + c, t1 = a - c, t2 = b + d, t3 = b - d;
    result[k] = t0 + t2;
    result[k + m] = {t1.re + t3.im, t1.im - t3.re};
    result[k + 2 * m] = t0 - t2;
    result[k + 3 * m] = {t1.re - t3.im, t1.im + t3.re};
  }
  return result;
}

inline ComplexNumbers inverseFourier(ComplexNumbers x) {
  for (ComplexNumber& z : x) std::swap(z.re, z.im);
  x = fourier(x);
  for (ComplexNumber& z : x) std::swap(z.re, z.im);
  return x;
}

/// Rows of a spectrum, transformed along the columns.
template <class Transform>
void transformColumns(std::vector<ComplexNumbers>& rows, Transform transform) {
  for (size_t k = 0; k < rows[0].size(); ++k) {
    ComplexNumbers column;
    for (const ComplexNumbers& row : rows) column.push_back(row[k]);
    column = transform(column);
    for (size_t y = 0; y < rows.size(); ++y) rows[y][k] = column[y];
  }
}

inline double scaled(double v, int scaleFactor, double low, double high) {
  const double factor = std::ldexp(1.0, -std::clamp(scaleFactor, -64, 64));
  return std::nearbyint(std::clamp(v * factor, low, high));
}

inline constexpr double lowestInt = -2147483648.0, highestInt = 2147483647.0;

/// The orders stand in the two words after the first multiple of 4.
inline void fftSides(const VekiRealFFTSpec* spec, size_t& width, size_t& height) {
  const auto address = reinterpret_cast<uintptr_t>(spec);
  const auto* const words = reinterpret_cast<const Vek32u*>((address + 3) / 4 * 4);
  width = size_t{1} << words[1], height = size_t{1} << words[2];
}

template <class Sample>
VekStatus realFftForward(const Sample* pSrc, int srcStep, Vek32s* pDst, int dstStep,
                         int scaleFactor, const VekiRealFFTSpec* pSpec, Vek8u*) {
  size_t width, height;
  fftSides(pSpec, width, height);
  const size_t columns = width / 2 + 1;
  std::vector<ComplexNumbers> rows(height, ComplexNumbers(columns));
  const auto sample = [&](size_t y, size_t x) -> double {
    return y < height ? sampleAt<Sample>(pSrc, srcStep, ptrdiff_t(y), ptrdiff_t(x)) : 0;
  };
  for (size_t y = 0; y < height; y += 2) {
    ComplexNumbers z;
    for (size_t x = 0; x < width; ++x) z.push_back({sample(y, x), sample(y + 1, x)});
    z = fourier(z);
    for (size_t k = 0; k < columns; ++k) {
      const ComplexNumber a = z[k], b = z[(width - k) % width];
      rows[y][k] = {a.re + b.re, a.im - b.im};
      if (y + 1 < height) rows[y + 1][k] = {a.im + b.im, b.re - a.re};
    }
  }
  transformColumns(rows, fourier);
  const int halved = std::clamp(scaleFactor, -64, 64);
  for (size_t y = 0; y < height; ++y) {
    for (size_t i = 0; i < 2 * columns; ++i) {
      const double v = (i % 2 == 0 ? rows[y][i / 2].re : rows[y][i / 2].im) / 2;
      storeAt(pDst, dstStep, ptrdiff_t(y), ptrdiff_t(i),
              static_cast<Vek32s>(scaled(v, halved, lowestInt, highestInt)));
    }
  }
  return vekStsNoErr;
}

template <class Sample>
VekStatus realFftInverse(const Vek32s* pSrc, int srcStep, Sample* pDst, int dstStep,
                         int scaleFactor, const VekiRealFFTSpec* pSpec, Vek8u*) {
  size_t width, height;
  fftSides(pSpec, width, height);
  const size_t columns = width / 2 + 1;
  std::vector<ComplexNumbers> rows(height);
  for (size_t y = 0; y < height; ++y) {
    for (size_t k = 0; k < columns; ++k) {
      const auto part = [&](size_t i) -> double {
        return sampleAt<Vek32s>(pSrc, srcStep, ptrdiff_t(y), ptrdiff_t(2 * k + i));
      };
      rows[y].push_back({part(0), part(1)});
    }
  }
  transformColumns(rows, inverseFourier);
  const ComplexNumbers none(columns, ComplexNumber{0, 0});
  const double low = sizeof(Sample) == 1 ? 0 : lowestInt;
  const double high = sizeof(Sample) == 1 ? 255 : highestInt;
  for (size_t y = 0; y < height; y += 2) {
    const ComplexNumbers &a = rows[y], &b = y + 1 < height ? rows[y + 1] : none;
    ComplexNumbers z(width);
    for (size_t k = 1; 2 * k < width; ++k) {
      z[k] = {a[k].re - b[k].im, a[k].im + b[k].re};
      z[width - k] = {a[k].re + b[k].im, b[k].re - a[k].im};
    }
    z[0] = {a[0].re, b[0].re};
    if (width > 1) z[width / 2] = {a[width / 2].re, b[width / 2].re};
    z = inverseFourier(z);
    for (size_t x = 0; x < width; ++x) {
      const auto store = [&](size_t row, double v) {
        storeAt(pDst, dstStep, ptrdiff_t(row), ptrdiff_t(x),
                static_cast<Sample>(scaled(v, scaleFactor, low, high)));
      };
      store(y, z[x].re);
      if (y + 1 < height) store(y + 1, z[x].im);
    }
  }
  return vekStsNoErr;
}

// ---- Cosine -------------------------------------------------------------------------------------

template <bool inverse>
void cosineBlock(const Vek16s* pSrc, ptrdiff_t srcStep, Vek16s* pDst, ptrdiff_t dstStep) {
  const auto factor = [](size_t k, size_t j) -> int64_t {
    return inverse ? dctBasis[j][k] : dctBasis[k][j];
  };
  int64_t t[64], results[64];
  for (size_t i = 0; i < 64; ++i) {
    t[i] = 1 << 10;
    for (size_t j = 0; j < 8; ++j) {
      t[i] += factor(i % 8, j) * sampleAt<Vek16s>(pSrc, srcStep, i / 8, j);
    }
    t[i] >>= 11;
  }
  for (size_t i = 0; i < 64; ++i) {
    results[i] = 1 << 19;
    for (size_t j = 0; j < 8; ++j) results[i] += factor(i / 8, j) * t[8 * j + i % 8];
    results[i] = std::clamp<int64_t>(results[i] >> 20, -32768, 32767);
  }
  for (size_t i = 0; i < 64; ++i) {
    storeAt(pDst, dstStep, i / 8, i % 8, static_cast<Vek16s>(results[i]));
  }
}

template <bool inverse>
VekStatus cosineBlocks(const Vek16s* pSrc, int srcStep, Vek16s* pDst, int dstStep, VekiSize roi) {
  const auto at = [](auto* rows, ptrdiff_t step, int x, int y) {
    return reinterpret_cast<decltype(rows)>(reinterpret_cast<uintptr_t>(rows) +
                                            static_cast<uintptr_t>(y * step + 2 * x));
  };
  for (int y = 0; y < roi.height; y += 8) {
    for (int x = 0; x < roi.width; x += 8) {
      cosineBlock<inverse>(at(pSrc, srcStep, x, y), srcStep, at(pDst, dstStep, x, y), dstStep);
    }
  }
  return vekStsNoErr;
}

template <bool inverse>
VekStatus cosineBlockAlone(const Vek16s* pSrc, Vek16s* pDst) {
  cosineBlock<inverse>(pSrc, 16, pDst, 16);
  return vekStsNoErr;
}

}  // namespace vek::test::definition
