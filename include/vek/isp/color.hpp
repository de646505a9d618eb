/** @file color.hpp
 *  What makes colours right: gains, matrices and tone curves of the camera path. isp.hpp includes it. */
#ifndef VEK_ISP_COLOR_HPP
#define VEK_ISP_COLOR_HPP

#include "vek/view.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vek {
inline namespace v0 {

/** @addtogroup isp
 *  @{ */

/// Three rows of three numbers; it takes (red, green, blue) to (red, green, blue).
using Matrix3 = std::array<std::array<double, 3>, 3>;

/// The matrix that changes nothing.
inline constexpr Matrix3 identityMatrix = {{{{1, 0, 0}}, {{0, 1, 0}}, {{0, 0, 1}}}};

/// What red, green and blue are multiplied by; only their ratios say something about colour.
struct ColorGains {
  double red = 1;    ///< 1: not changed
  double green = 1;  ///< 1: not changed
  double blue = 1;   ///< 1: not changed
};

/// Tone curves: from light, 0..1, to what a display is sent, 0..1.
enum class ToneCurve {
  srgb,   ///< IEC 61966-2-1, what screens and files of pictures expect
  bt709,  ///< ITU-R BT.709, what television cameras apply
  linear  ///< none: for measuring, not for looking at
};

/// A tone curve as a table: entry i belongs to the light i / 1023. Values are 0..1 and do not fall.
using ToneTable = std::array<float, 1024>;

/// The table of a curve.
inline ToneTable toneTable(ToneCurve curve) {
  ToneTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double x = static_cast<double>(i) / 1023;
    double y = x;
    if (curve == ToneCurve::srgb)
      y = x <= .0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - .055;
    if (curve == ToneCurve::bt709) y = x < .018 ? 4.5 * x : 1.099 * std::pow(x, .45) - .099;
    table[i] = static_cast<float>(y);
  }
  return table;
}

/// Where the colour matrix is applied.
enum class MatrixPlace {
  linear,     ///< on the raw frame, before the tone curve: exact
  afterCurve  ///< after the tone curve, at no cost: right for greys, an approximation for the rest
};

/// The colour matrix of a camera.
struct CameraColor {
  /// From the camera's linear colour, balanced so that a grey has equal channels, to linear sRGB. Each
  /// row sums to 1, so that greys stay grey; rows are scaled to that.
  Matrix3 matrix = identityMatrix;
  /// The gains that balanced the camera in the light in which the matrix was measured. In any other
  /// light the matrix is adapted to that light, which the gains of the white balance tell. All zero:
  /// the matrix is used as it is in every light.
  ColorGains gains = {0, 0, 0};
  /// Where the matrix is applied. Only a linear one follows the light.
  MatrixPlace place = MatrixPlace::linear;
};

/// Values of Y of black and white.
enum class Range {
  studio,  ///< 16 and 235; chroma 16..240
  full     ///< 0 and 255; chroma 0..255. RGB outputs are full range in any case
};

/// The linear colour matrix of a camera for another light, which the white balance's gains tell.
///
/// `color.gains` balance the camera in the light for which `color.matrix` holds, `gains` in the
/// other light. A white sheet in the other light, seen with the first gains, is color.gains / gains;
/// the matrix says which colour w of the first light that is. So the other light is w times the first
/// one, in linear sRGB, and what it falls on has the colour that the camera tells, divided by w.
inline Matrix3 adaptedMatrix(const CameraColor& color, const ColorGains& gains) {
  const double from[3] = {color.gains.red, color.gains.green, color.gains.blue};
  const double to[3] = {gains.red, gains.green, gains.blue};
  const bool isFixed = from[0] <= 0 || from[1] <= 0 || from[2] <= 0;
  Matrix3 result = color.matrix;
  for (std::size_t i = 0; i < 3; ++i) {
    double sum = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      if (!isFixed) result[i][j] *= from[j] / to[j];
      sum += result[i][j];
    }
    // Of a light without any of a primary nothing could be told; no light is like that.
    sum = std::max(sum, .05 * (isFixed ? 1 : from[1] / to[1]));
    for (double& entry : result[i]) entry /= sum;
  }
  return result;
}

/// What a linear matrix becomes after a tone curve: the matrix that is nearest to it there, by least
/// squares over colours that fill the cube of the light that things reflect, 3 % to 80 %. Rows sum to
/// 1. No matrix can be right after a curve that is not straight; `docs/colour.md` says how wrong it is.
inline Matrix3 matrixAfterCurve(const Matrix3& linear, const ToneTable& curve) {
  const auto tone = [&](double light) {
    const double at = std::clamp(light, 0., 1.) * 1023;
    const auto i = static_cast<std::size_t>(std::min(at, 1022.));
    return curve[i] + (at - static_cast<double>(i)) * (curve[i + 1] - curve[i]);
  };
  const auto determinant = [&](std::size_t i, std::size_t j) {
    const std::size_t r1 = (j + 1) % 3, r2 = (j + 2) % 3, c1 = (i + 1) % 3, c2 = (i + 2) % 3;
    return linear[r1][c1] * linear[r2][c2] - linear[r1][c2] * linear[r2][c1];
  };
  double whole = 0;
  for (std::size_t i = 0; i < 3; ++i) whole += linear[0][i] * determinant(i, 0);
  if (std::abs(whole) < 1e-6) return linear;
  constexpr double lights[] = {.03, .1, .25, .5, .8};
  // Row i is the unit row plus p at the next column plus q at the one after it, less both at i: two
  // unknowns, and normal equations of 2 x 2.
  double aa[3] = {}, ab[3] = {}, bb[3] = {}, ar[3] = {}, br[3] = {};
  for (const double red : lights) {
    for (const double green : lights) {
      for (const double blue : lights) {
        const double scene[3] = {red, green, blue};
        double seen[3] = {};
        for (std::size_t i = 0; i < 3; ++i) {
          for (std::size_t j = 0; j < 3; ++j) seen[i] += determinant(i, j) / whole * scene[j];
          seen[i] = tone(seen[i]);
        }
        for (std::size_t i = 0; i < 3; ++i) {
          const double a = seen[(i + 1) % 3] - seen[i], b = seen[(i + 2) % 3] - seen[i];
          const double rest = tone(scene[i]) - seen[i];
          aa[i] += a * a;
          ab[i] += a * b;
          bb[i] += b * b;
          ar[i] += a * rest;
          br[i] += b * rest;
        }
      }
    }
  }
  Matrix3 result;
  for (std::size_t i = 0; i < 3; ++i) {
    const double whole2 = aa[i] * bb[i] - ab[i] * ab[i];
    const double p = (ar[i] * bb[i] - br[i] * ab[i]) / whole2;
    const double q = (br[i] * aa[i] - ar[i] * ab[i]) / whole2;
    result[i][i] = 1 - p - q;
    result[i][(i + 1) % 3] = p;
    result[i][(i + 2) % 3] = q;
  }
  return result;
}

/// @cond
namespace detail {

/// What the raw pipeline is given for a colour format: the table that its samples go through, and the
/// matrix.
struct TableAndMatrix {
  std::array<Vek8u, 1024> table;
  std::array<Vek16s, 9> matrix;
};

/// Which pixels are made of the planes. Packed RGB is made by a conversion that truncates.
enum class Planar { studio, full, towardsRgb };

/// `afterCurve` is applied between the curve and YCbCr; its rows sum to 1.
///
/// The raw pipeline truncates Y = (C0 . g) >> 8 and adds no 16, so that the table has to bring it: with
/// a row that sums to 236, g = 255 gives Y = 235 and g = 18 gives 16. Each entry is the least g that
/// gives the Y that is wanted; Y skips no value, as 236 < 256. The row of Cb sums to 0, so that greys have
/// exactly 128 and what the table adds to all channels vanishes.
///
/// Chroma is truncated, too, which noise makes half a step too low on average: dark greys come out greenish.
/// The row of Cr therefore sums to 1, which adds g / 256, half a step at a middle grey. A grey without noise
/// still has 128, as 128 + 255 / 256 is truncated. The same in Cb, where a step is two codes of blue, would
/// tint bright greys.
///
/// The state multiplies the matrix that it is given by K (camera.h) and rounds. What it is given is
/// therefore K^-1 C, in 1/65536 / 256; as the rows of |K| sum to 256 or less, rounding its entries
/// changes no entry of K K^-1 C by more than half of the last place.
inline TableAndMatrix tableAndMatrix(const ToneTable& curve, const Matrix3& afterCurve,
                                     Planar planar) {
  TableAndMatrix result;
  const bool isFull = planar == Planar::full;
  const int lumaSum = isFull ? 256 : 236;
  for (std::size_t i = 0; i < curve.size(); ++i) {
    const double tone = std::clamp(static_cast<double>(curve[i]), 0., 1.);
    int y = static_cast<int>(isFull ? 255 * tone + .5 : 16 + 219 * tone + .5);
    if (planar == Planar::towardsRgb) {
      // The conversion to RGB truncates: the Y that comes out nearest.
      const auto off = [&](int luma) { return std::abs((298 * (luma - 16) >> 8) - 255 * tone); };
      y = 16 + static_cast<int>(219 * tone);
      if (off(y + 1) < off(y)) ++y;
    }
    result.table[i] = static_cast<Vek8u>(std::min((y * 256 + lumaSum - 1) / lumaSum, 255));
  }
  // Light of 0..1 is 255 or 219 steps of Y, and 237.6 of g.
  const double lumaGain = isFull ? 1 : 236 / 256.;
  const double chromaGain = isFull ? 1 : lumaGain * 224 / 219;
  constexpr double kr = .299, kg = .587, kb = .114;
  const double ycc[3][3] = {
      {lumaGain * kr, lumaGain * kg, lumaGain * kb},
      {chromaGain * -.5 * kr / (1 - kb), chromaGain * -.5 * kg / (1 - kb), chromaGain * .5},
      {chromaGain * .5, chromaGain * -.5 * kg / (1 - kr), chromaGain * -.5 * kb / (1 - kr)}};
  const int sums[3] = {lumaSum, 0, 1};
  int wanted[3][3];
  for (std::size_t i = 0; i < 3; ++i) {
    int rest = sums[i];
    for (std::size_t j : {0u, 2u, 1u}) {
      double entry = 0;
      for (std::size_t k = 0; k < 3; ++k) entry += 256 * ycc[i][k] * afterCurve[k][j];
      wanted[i][j] = j == 1 ? rest : static_cast<int>(std::lround(entry));
      rest -= wanted[i][j];
    }
  }
  constexpr double k[3][3] = {{77, 143, 29}, {-30, -85, 128}, {128, -107, -21}};
  const auto cofactor = [&](std::size_t i, std::size_t j) {
    const std::size_t r1 = (i + 1) % 3, r2 = (i + 2) % 3, c1 = (j + 1) % 3, c2 = (j + 2) % 3;
    return k[r1][c1] * k[r2][c2] - k[r1][c2] * k[r2][c1];
  };
  const double whole =
      k[0][0] * cofactor(0, 0) + k[0][1] * cofactor(0, 1) + k[0][2] * cofactor(0, 2);
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      double entry = 0;
      for (std::size_t l = 0; l < 3; ++l) entry += 256 * cofactor(l, i) / whole * wanted[l][j];
      result.matrix[3 * i + j] =
          static_cast<Vek16s>(std::clamp(std::lround(entry), -32768L, 32767L));
    }
  }
  return result;
}

/// A tone curve in bytes.
inline std::array<Vek8u, 1024> byteTable(const ToneTable& curve) {
  std::array<Vek8u, 1024> result;
  for (std::size_t i = 0; i < curve.size(); ++i) {
    result[i] = static_cast<Vek8u>(255 * std::clamp(static_cast<double>(curve[i]), 0., 1.) + .5);
  }
  return result;
}

/// A linear matrix as raw frames are multiplied by it, in 1/4096. Rows sum to 4096, so that greys stay as
/// they are.
inline std::array<Vek16s, 9> bayerMatrix(const Matrix3& matrix) {
  constexpr std::size_t n = 3;
  std::array<Vek16s, n* n> result = {};
  for (std::size_t i = 0; i < n; ++i) {
    int rest = 4096;
    for (std::size_t j = 0; j < n; ++j) {
      if (i == j) continue;
      // Two of them leave a diagonal entry within the range as well.
      const long entry = std::lround(std::clamp(matrix[i][j], -1.49, 1.49) * 4096);
      result[n * i + j] = static_cast<Vek16s>(entry);
      rest -= static_cast<int>(entry);
    }
    result[n * i + i] = static_cast<Vek16s>(rest);
  }
  return result;
}

}  // namespace detail
/// @endcond

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_ISP_COLOR_HPP
