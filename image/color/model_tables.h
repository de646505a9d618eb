// Look-up tables of the non-linear colour models, computed at compile time from their definitions.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

namespace vek::VEK_LEVEL {
namespace {

template <class T, size_t n>
struct Table {
  T at[n];
};

/// 16384 / i rounded to nearest; no i gives a tie. Entry 0 is 0, so that 0 divided by a range of 0
/// gives 0.
constexpr Table<Vek16s, 512> reciprocalsQ14 = [] {
  Table<Vek16s, 512> table = {};
  for (int i = 1; i < 512; ++i) table.at[i] = static_cast<Vek16s>((2 * 16384 + i) / (2 * i));
  return table;
}();

/// Cube root of 0 < y <= 1 by Newton's iteration from above, to the precision of double.
constexpr double cubeRoot(double y) {
  double root = 1;
  for (int i = 0; i < 60; ++i) root -= (root * root * root - y) / (3 * root * root);
  return root;
}

/// CIE lightness 0..255 of relative luminance i / 255, rounded to nearest.
constexpr Table<Vek8u, 256> lightness = [] {
  Table<Vek8u, 256> table = {};
  for (int i = 0; i < 256; ++i) {
    const double y = i / 255.0;
    const double star = y > 0.008856 ? 116 * cubeRoot(y) - 16 : 903.3 * y;
    table.at[i] = static_cast<Vek8u>(star * 255 / 100 + 0.5);
  }
  return table;
}();

/// The inverse of `lightness`: the relative luminance of CIE lightness i / 255, in 1/64 of an 8-bit
/// step and rounded to nearest. Entries reach 255 * 64.
constexpr int luminanceBits = 6;
constexpr Table<Vek32s, 256> luminance = [] {
  Table<Vek32s, 256> table = {};
  for (int i = 0; i < 256; ++i) {
    const double star = i * 100 / 255.0;
    const double root = (star + 16) / 116;
    const double y = star > 903.3 * 0.008856 ? root * root * root : star / 903.3;
    table.at[i] = static_cast<Vek32s>(y * 255 * (1 << luminanceBits) + 0.5);
  }
  return table;
}();

}  // namespace
}  // namespace vek::VEK_LEVEL
