/** @file isp.hpp
 *  The camera path as one object: any sensor's raw frames in, pictures with the right colours out.
 *  C++17, header only.
 *
 *      vek::Isp isp({.size = {1920, 1080}, .format = vek::Raw::csi2_10, .order = vek::Bayer::bggr,
 *                    .black = 64});
 *      vek::Image<vek::Bgr24> out(isp.outputSize());
 *      isp.process(frame, out);              // a frame's bytes, any of the output formats
 *      sensor.program(isp.results().exposure.time, isp.results().exposure.gain);
 *
 *  What a frame goes through:
 *
 *      unpack, black level, gains -> dead samples -> linear colour matrix -> tone curve, demosaicing,
 *      YCbCr, reduction -> resizing, rotation, conversion to the output's pixels
 *
 *  All of that happens in bands of a few rows that stay in the cache from the raw frame to the
 *  pixels; the output does not depend on their height. Every n-th pair of rows is kept for the
 *  automatic exposure and the automatic white balance, which then decide about the next frame.
 *
 *  `docs/colour.md` says what makes the colours right, and measures how right they are. */
#ifndef VEK_ISP_HPP
#define VEK_ISP_HPP

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#if defined(__GNUC__) && defined(__SSE2__)
#include <immintrin.h>
#define VEK_ISP_X86
#endif

#include "vek/camera.h"
#include "vek/image.h"
#include "vek/view.hpp"

namespace vek {
inline namespace v0 {

/** @defgroup isp C++: the camera path as one object
 *  @{ */

// ---- Colour -----------------------------------------------------------------------------------

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

// ---- Control ----------------------------------------------------------------------------------

/// Recommended values, with the reasons for them.
namespace recommended {

/// The mean of the green samples that the exposure aims at, of 1023. A usual scene reflects about
/// 18 % of the light on average, so that a white sheet just stays below saturation.
inline constexpr double exposureTarget = 184;
/// The exposure stays while the mean is this much (of the target) off or less. An eighth of a stop
/// is not seen, and a sensor whose shortest times are a dozen rows can get there.
inline constexpr double exposureTolerance = .09;
/// What the exposure is divided by while more than half of the samples are saturated, as their mean
/// says little then. The light of a lamp and that of the sun are about a factor of 1000 apart, which
/// this covers in three frames.
inline constexpr double saturatedFactor = 16;
/// The most that an exposure is multiplied by at once: read noise makes the mean of a black frame
/// meaningless.
inline constexpr double mostBrighter = 64;

/// The largest gain of red and of blue over green, and the inverse of the smallest one. Candle light
/// needs about 4 in blue.
inline constexpr int mostWhiteBalance = 8;
/// How far (in 1/1024) the mean of a scene may be from grey: a scene has a colour of its own. While it
/// is farther off, the light is taken to have changed, and the gains go for a grey mean at once.
inline constexpr int coarseTolerance = 280;
/// How far (in 1/1024) the nearly white parts of the scene may be from grey: 0.6 % is less than one
/// code of the picture.
inline constexpr int fineTolerance = 6;
/// A quad is nearly white if red and blue are this close to green, of 1023.
inline constexpr int whiteLimit = 100;
/// A quad is nearly white if its mean is above this, where noise is small beside whiteLimit, ...
inline constexpr int whiteLow = 100;
/// ... and below this, where no channel is saturated.
inline constexpr int whiteHigh = 800;
/// A window is used if a part of it, 1 / whiteShare, is nearly white.
inline constexpr int whiteShare = 4;

/// Rows of a band. With 24 rows of 4K the band, its planes and the pixels stay within half a megabyte.
inline constexpr int bandRows = 24;

}  // namespace recommended

/// What a frame was taken with: the product of time and gain decides how bright it is.
struct Exposure {
  double time = 1;  ///< exposure time, in any unit
  double gain = 1;  ///< analogue gain; 1 is none
};

/// The automatic exposure. The time is used first; gain comes where the time ends, as it adds noise.
struct ExposureSettings {
  bool on = true;                                     ///< off: results().exposure stays
  Exposure least = {1, 1};                            ///< shortest time, smallest gain
  Exposure most = {1000, 8};                          ///< longest time, largest gain
  double target = recommended::exposureTarget;        ///< mean green sample, above 0, below 1023
  double tolerance = recommended::exposureTolerance;  ///< of the target, 0..1
};

/// What the last frame told.
struct IspResults {
  /// For the next frame: program the sensor with them. See also Isp::setExposure().
  Exposure exposure;
  /// The gains that the next frame is balanced with; green is 1.
  ColorGains gains;
  double brightness = 0;         ///< mean green sample of the frame, 0..1023
  double saturated = 0;          ///< part of the green samples that is saturated, 0..1
  bool exposureHeld = false;     ///< the brightness was within the tolerance: nothing was moved
  bool exposureAtLimit = false;  ///< the target needs more or less light than the limits allow
  bool balanceHeld = false;      ///< the gains were right: nothing was moved
  bool balanceAtLimit = false;   ///< a gain is at its limit
  bool balanceHasData = false;   ///< something in the frame could be used; if not, the gains stay
};

/// What an Isp is made for.
struct IspSettings {
  Size size = {0, 0};         ///< of the frames, in samples
  Raw format = Raw::csi2_10;  ///< how samples are packed
  Bayer order = Bayer::rggb;  ///< the colours of the frame's top left 2 x 2 samples
  int black = 0;  ///< black level, in the units of the samples; see also Isp::setBlack()
  int bits = 0;   ///< Raw::plain16: valid bits of a word, 9..16; 0 is 10
  /// The part of the frame that is shown. It begins on a red sample and has even sides. Without a
  /// width it is the largest such part.
  Rect crop = {0, 0, 0, 0};
  int scale = 1;  ///< 1, 2 or 4: blocks of so many samples a side become one pixel
  /// The picture is resized to this, before it is rotated. Without a width it is not.
  Size output = {0, 0};
  Rotation rotation = Rotation::none;          ///< of the picture
  Range range = Range::studio;                 ///< of I420, NV12 and I422
  ToneCurve curve = ToneCurve::srgb;           ///< see also Isp::setCurve()
  CameraColor color = {};                      ///< see also Isp::setColor()
  ColorGains gains = {};                       ///< of the first frame; see also Isp::setGains()
  double digitalGain = 1;                      ///< on top of them, 1..8
  std::vector<VekiDeadPixel> deadPixels = {};  ///< rows and columns of the frame
  ExposureSettings exposure = {};              ///< the automatic exposure
  bool whiteBalance = true;                    ///< the automatic white balance
  int jobs = 1;  ///< how many bands are worked on at once; see Isp::process()
  int bandRows = recommended::bandRows;  ///< rows of a band, at least 1
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

template <auto release>
struct Releaser {
  template <class State>
  void operator()(State* state) const {
    release(state);
  }
};
using RawState = std::unique_ptr<VekiRggbToYCbCrState, Releaser<vekiFree_10RGGBtoYCbCr_RotRsz_P3R>>;
using BalanceState = std::unique_ptr<VekiAWBState, Releaser<vekiFree_AWB_10RGGB_8u_C1R>>;

constexpr int roundUp(int n, int multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

inline bool isAligned(const void* pointer, std::uintptr_t bytes) {
  return reinterpret_cast<std::uintptr_t>(pointer) % bytes == 0;
}

// ---- The raw pipeline's colour ----

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
/// gives the Y that is wanted; Y skips no value, as 236 < 256. Rows of chroma sum to 0, so that greys
/// have exactly 128 and what the table adds to all channels vanishes.
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
  const int sums[3] = {lumaSum, 0, 0};
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

// ---- The linear matrix on the raw frame ----

/// For the samples of even and of odd columns of a row: the weights, in 1/32768, of a half of what
/// the two neighbours beside a sample are above it, of the two above and below it, and of a quarter
/// of what the four diagonal ones are; see unmixPlain().
struct UnmixRow {
  Vek16s beside[2], vertical[2], diagonal[2];
};

/// Of even rows (R, Gr) and of odd ones (Gb, B).
struct Unmix {
  UnmixRow rows[2];
  bool isNeeded;
};

inline Unmix unmixFrom(const Matrix3& m) {
  const auto weight = [](double w) {
    return static_cast<Vek16s>(std::lround(std::clamp(w, -1., 32767 / 32768.) * 32768));
  };
  Unmix result = {};
  const auto redOrBlue = [&](std::size_t own, std::size_t other, UnmixRow& row, int column) {
    row.beside[column] = row.vertical[column] = weight(m[own][1] / 4);
    row.diagonal[column] = weight(m[own][other] / 4);
  };
  redOrBlue(0, 2, result.rows[0], 0);
  redOrBlue(2, 0, result.rows[1], 1);
  const Vek16s red = weight(m[1][0] / 2), blue = weight(m[1][2] / 2);
  result.rows[0].beside[1] = result.rows[1].vertical[0] = red;
  result.rows[0].vertical[1] = result.rows[1].beside[0] = blue;
  for (const UnmixRow& row : result.rows) {
    for (int i = 0; i < 2; ++i) {
      if (row.beside[i] != 0 || row.vertical[i] != 0 || row.diagonal[i] != 0)
        result.isNeeded = true;
    }
  }
  return result;
}

/// Applies the matrix to one row: with c a sample and the differences h, v, x of the sums of its
/// neighbours beside it, above and below it, and at its corners from as many times c,
///
///     c + m1 (h + v) / 4 + m2 x / 4      of a red or blue sample
///     c + m1 h / 2 + m2 v / 2            of a green one
///
/// which is the matrix with the mean of each other colour around the sample, as its rows sum to 1.
/// Each product keeps two fractional bits and is rounded down; 3/4 makes up for what the three lose and
/// rounds. Where there is no colour it adds nothing. 8 h, 8 v and 8 x are within 16 bits: 8 * 4 * 1023
/// = 32736; so are the sums of products, 8184 + 8184 + 16368.
///
/// `begin` is even; up to 16 samples past `end` may be read and written.
inline void unmixPlain(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* out,
                       int begin, int end, const UnmixRow& weights) {
  for (int x = begin; x < end; ++x) {
    const int c = at[x], odd = x & 1;
    const auto part = [](int difference, int weight) { return (difference * 8 * weight) >> 16; };
    const int sum =
        part(at[x - 1] + at[x + 1] - 2 * c, weights.beside[odd]) +
        part(up[x] + down[x] - 2 * c, weights.vertical[odd]) +
        part(up[x - 1] + up[x + 1] + down[x - 1] + down[x + 1] - 4 * c, weights.diagonal[odd]);
    out[x] = static_cast<Vek16u>(std::clamp(c + ((sum + 3) >> 2), 0, 1023));
  }
}

#if defined(VEK_ISP_X86)
/// Weights of even and of odd columns as a pair of words.
inline int weightPair(const Vek16s* w) {
  return static_cast<int>(static_cast<Vek16u>(w[0]) | static_cast<Vek32u>(static_cast<Vek16u>(w[1]))
                                                          << 16);
}

inline __m128i load128(const Vek16u* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void unmixSse2(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* out,
                      int begin, int end, const UnmixRow& weights) {
  const __m128i kh = _mm_set1_epi32(weightPair(weights.beside));
  const __m128i kv = _mm_set1_epi32(weightPair(weights.vertical));
  const __m128i kx = _mm_set1_epi32(weightPair(weights.diagonal));
  const __m128i most = _mm_set1_epi16(1023), three = _mm_set1_epi16(3);
  for (int x = begin; x < end; x += 8) {
    const __m128i c = load128(at + x), twice = _mm_add_epi16(c, c);
    const __m128i h = _mm_add_epi16(load128(at + x - 1), load128(at + x + 1));
    const __m128i v = _mm_add_epi16(load128(up + x), load128(down + x));
    const __m128i d = _mm_add_epi16(_mm_add_epi16(load128(up + x - 1), load128(up + x + 1)),
                                    _mm_add_epi16(load128(down + x - 1), load128(down + x + 1)));
    const __m128i beside = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(h, twice), 3), kh);
    const __m128i vertical = _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(v, twice), 3), kv);
    const __m128i diagonal =
        _mm_mulhi_epi16(_mm_slli_epi16(_mm_sub_epi16(d, _mm_add_epi16(twice, twice)), 3), kx);
    __m128i sum = _mm_add_epi16(_mm_add_epi16(beside, vertical), _mm_add_epi16(diagonal, three));
    sum = _mm_add_epi16(c, _mm_srai_epi16(sum, 2));
    sum = _mm_min_epi16(_mm_max_epi16(sum, _mm_setzero_si128()), most);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), sum);
  }
}

__attribute__((target("avx2"))) inline __m256i load256(const Vek16u* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

__attribute__((target("avx2"))) inline void unmixAvx2(const Vek16u* up, const Vek16u* at,
                                                      const Vek16u* down, Vek16u* out, int begin,
                                                      int end, const UnmixRow& weights) {
  const __m256i kh = _mm256_set1_epi32(weightPair(weights.beside));
  const __m256i kv = _mm256_set1_epi32(weightPair(weights.vertical));
  const __m256i kx = _mm256_set1_epi32(weightPair(weights.diagonal));
  const __m256i most = _mm256_set1_epi16(1023), three = _mm256_set1_epi16(3);
  for (int x = begin; x < end; x += 16) {
    const __m256i c = load256(at + x), twice = _mm256_add_epi16(c, c);
    const __m256i h = _mm256_add_epi16(load256(at + x - 1), load256(at + x + 1));
    const __m256i v = _mm256_add_epi16(load256(up + x), load256(down + x));
    const __m256i d =
        _mm256_add_epi16(_mm256_add_epi16(load256(up + x - 1), load256(up + x + 1)),
                         _mm256_add_epi16(load256(down + x - 1), load256(down + x + 1)));
    const __m256i beside = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(h, twice), 3), kh);
    const __m256i vertical =
        _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_sub_epi16(v, twice), 3), kv);
    const __m256i diagonal = _mm256_mulhi_epi16(
        _mm256_slli_epi16(_mm256_sub_epi16(d, _mm256_add_epi16(twice, twice)), 3), kx);
    __m256i sum =
        _mm256_add_epi16(_mm256_add_epi16(beside, vertical), _mm256_add_epi16(diagonal, three));
    sum = _mm256_add_epi16(c, _mm256_srai_epi16(sum, 2));
    sum = _mm256_min_epi16(_mm256_max_epi16(sum, _mm256_setzero_si256()), most);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), sum);
  }
}
#endif

/// The fastest form that the processor has; all give the same.
inline auto unmixRow() {
#if defined(VEK_ISP_X86)
  return __builtin_cpu_supports("avx2") ? unmixAvx2 : unmixSse2;
#else
  return unmixPlain;
#endif
}

// ---- Output ----

enum class Pixels { i420, nv12, i422, rgb565, rgb555, rgb444, bgr24, rgb24, bgrx32, rgbx32 };

constexpr bool isPlanar(Pixels pixels) {
  return pixels == Pixels::i420 || pixels == Pixels::nv12 || pixels == Pixels::i422;
}

/// An output of any kind, or a part of it.
struct Target {
  Pixels pixels;
  Size size;
  Vek8u* planes[3];
  int steps[3];

  /// The part that begins at a column and a row; both even if chroma is shared.
  Target at(int x, int y) const {
    static constexpr int bytes[] = {1, 1, 1, 2, 2, 2, 3, 3, 4, 4};
    Target part = *this;
    const std::ptrdiff_t column = x, row = y;
    part.planes[0] += row * steps[0] + column * bytes[static_cast<int>(pixels)];
    const std::ptrdiff_t chromaRow = pixels == Pixels::i422 ? row : row / 2;
    if (pixels == Pixels::nv12) part.planes[1] += chromaRow * steps[1] + column;
    if (pixels == Pixels::i420 || pixels == Pixels::i422) {
      part.planes[1] += chromaRow * steps[1] + column / 2;
      part.planes[2] += chromaRow * steps[2] + column / 2;
    }
    return part;
  }
};

template <class Storage>
Target packedTarget(Pixels pixels, Storage* data, Size size, int step) {
  return {pixels, size, {reinterpret_cast<Vek8u*>(data), nullptr, nullptr}, {step, 0, 0}};
}
template <Chroma chroma>
Target planarTarget(Pixels pixels, const Planes<Vek8u, chroma>& v) {
  return {pixels,
          v.size(),
          {v.y().data(), v.cb().data(), v.cr().data()},
          {v.y().stepBytes(), v.cb().stepBytes(), v.cr().stepBytes()}};
}
inline Target target(const View<Rgb565>& v) {
  return packedTarget(Pixels::rgb565, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb555>& v) {
  return packedTarget(Pixels::rgb555, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb444>& v) {
  return packedTarget(Pixels::rgb444, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Bgr24>& v) {
  return packedTarget(Pixels::bgr24, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgb24>& v) {
  return packedTarget(Pixels::rgb24, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Bgrx32>& v) {
  return packedTarget(Pixels::bgrx32, v.data(), v.size(), v.stepBytes());
}
inline Target target(const View<Rgbx32>& v) {
  return packedTarget(Pixels::rgbx32, v.data(), v.size(), v.stepBytes());
}
inline Target target(const Nv12<Vek8u>& v) {
  return {Pixels::nv12,
          v.size(),
          {v.y().data(), v.pairs().data(), nullptr},
          {v.y().stepBytes(), v.pairs().stepBytes(), 0}};
}
inline Target target(const Planes420<Vek8u>& v) {
  return planarTarget(Pixels::i420, v);
}
inline Target target(const Planes422<Vek8u>& v) {
  return planarTarget(Pixels::i422, v);
}

/// Copies rows of bytes.
inline void copyRows(const Vek8u* from, int fromStep, Vek8u* to, int toStep, int bytes, int rows) {
  for (int y = 0; y < rows; ++y) {
    std::memcpy(to + static_cast<std::ptrdiff_t>(y) * toStep,
                from + static_cast<std::ptrdiff_t>(y) * fromStep, static_cast<std::size_t>(bytes));
  }
}

/// Planes of YCbCr that begin at cache lines, as do their rows.
struct SourcePlanes {
  const Vek8u* planes[3];
  int steps[3];
};

/// Planes of `from` pixels, resized to `to`, rotated, and converted to the target's pixels.
struct Finish {
  Size from;
  Size to;  ///< before rotation
  Rotation rotation;
  Interpolation interpolation;

  bool isCopy() const {
    return rotation == Rotation::none && from.width == to.width && from.height == to.height;
  }
  Size size() const { return rotated(to, rotation); }

  /// Bytes that run() needs in `scratch`, which begins at a cache line.
  std::size_t scratchBytes() const {
    return 3 * static_cast<std::size_t>(roundUp(size().width, 64)) *
           static_cast<std::size_t>(size().height);
  }

  void run(const SourcePlanes& source, const Target& target, Vek8u* scratch) const {
    switch (target.pixels) {
      case Pixels::i420:
      case Pixels::nv12:
      case Pixels::i422:
        return planar(source, target, scratch);
      case Pixels::rgb565:
        return packed(source, target, vekiCsc420RGB565, scratch);
      case Pixels::rgb555:
        return packed(source, target, vekiCsc420RGB555, scratch);
      case Pixels::rgb444:
        return packed(source, target, vekiCsc420RGB444, scratch);
      default:
        return packed(source, target, vekiCsc420BGR24, scratch);
    }
  }

 private:
  void planar(const SourcePlanes& source, const Target& target, Vek8u* scratch) const {
    const bool is422 = target.pixels == Pixels::i422, isNv12 = target.pixels == Pixels::nv12;
    const Size size = this->size();
    const int chromaRows = is422 ? size.height : size.height / 2;
    SourcePlanes made = source;
    if (!isCopy()) {
      // Exchanging rows needs equal steps of chroma.
      const bool isDirect = !isNv12 && isAligned(target.planes[0], 4) && target.steps[0] % 4 == 0 &&
                            isAligned(target.planes[1], 2) && isAligned(target.planes[2], 2) &&
                            target.steps[1] % 2 == 0 && target.steps[1] == target.steps[2];
      const int step = roundUp(size.width, 64);
      Vek8u* planes[3] = {scratch, scratch + static_cast<std::ptrdiff_t>(step) * size.height,
                          nullptr};
      planes[2] = planes[1] + static_cast<std::ptrdiff_t>(step) * chromaRows;
      int steps[3] = {step, step, step};
      if (isDirect) {
        std::copy_n(target.planes, 3, planes);
        std::copy_n(target.steps, 3, steps);
      }
      const Steps sampling = samplingSteps(from, to);
      const auto convert = is422 ? vekiYCbCr422RszRot_8u_P3R : vekiYCbCr420RszRot_8u_P3R;
      convert(source.planes, source.steps, from.width, from.height, planes, steps, to.width,
              to.height, static_cast<int>(interpolation), static_cast<int>(rotation), sampling.x,
              sampling.y);
      if (isDirect) return;
      made = {{planes[0], planes[1], planes[2]}, {step, step, step}};
    }
    if (isNv12) {
      vekiYCbCr420ToNV12_8u_P3P2R(made.planes, made.steps, target.planes, target.steps, size);
      return;
    }
    for (int i = 0; i < 3; ++i) {
      copyRows(made.planes[i], made.steps[i], target.planes[i], target.steps[i],
               i == 0 ? size.width : size.width / 2, i == 0 ? size.height : chromaRows);
    }
  }

  void packed(const SourcePlanes& source, const Target& target, int format, Vek8u* scratch) const {
    const Size size = this->size();
    const bool is24 = format == vekiCsc420BGR24;
    const bool is32 = target.pixels == Pixels::bgrx32 || target.pixels == Pixels::rgbx32;
    const bool isDirect =
        !is32 && isAligned(target.planes[0], 8) && target.steps[0] % (is24 ? 2 : 8) == 0;
    const int rowBytes = size.width * (is24 ? 3 : 2);
    Vek8u* const made = isDirect ? target.planes[0] : scratch;
    const int step = isDirect ? target.steps[0] : roundUp(rowBytes, 64);
    const Steps sampling = samplingSteps(from, to);
    vekiYCbCr420RszCscRotRGB_8u_P3C3R(source.planes, source.steps, from.width, from.height, made,
                                      step, to.width, to.height, format,
                                      static_cast<int>(interpolation), static_cast<int>(rotation),
                                      sampling.x, sampling.y);
    constexpr int reversed[] = {2, 1, 0, 3}, kept[] = {0, 1, 2, 3};
    if (target.pixels == Pixels::rgb24) {
      vekiPermuteChannels_8u_C3R(made, step, target.planes[0], target.steps[0], size, reversed);
    } else if (is32) {
      vekiPermuteChannels_8u_C3C4R(made, step, target.planes[0], target.steps[0], size,
                                   target.pixels == Pixels::bgrx32 ? kept : reversed, 255);
    } else if (!isDirect) {
      copyRows(made, step, target.planes[0], target.steps[0], rowBytes, size.height);
    }
  }
};

// ---- Raw formats ----

/// Bits of a sample; 0 if the format does not exist or has no words of so many.
constexpr int bitsOf(Raw format, int wordBits) {
  switch (format) {
    case Raw::bytes:
      return 8;
    case Raw::plain16:
      return wordBits == 0 ? 10 : wordBits >= 9 && wordBits <= 16 ? wordBits : 0;
    case Raw::csi2_10:
      return 10;
    case Raw::csi2_12:
      return 12;
    case Raw::csi2_14:
      return 14;
  }
  return 0;
}

/// A dead sample, and the columns of its nearest neighbours of its colour in its row that are not
/// dead; -1 if there is none.
struct DeadSample {
  int row, column, left, right;
};

}  // namespace detail
/// @endcond

// ---- The object -------------------------------------------------------------------------------

/// The camera path. Construction checks everything and takes all memory; process() takes none. An Isp
/// works on one frame at a time.
///
/// The constructor and the functions that set something throw Error, and change nothing, if an argument
/// is wrong; its text says which and why. See OnError for other ways.
class Isp {
 public:
  /// Makes everything that frames of this kind need.
  explicit Isp(const IspSettings& settings) : settings_(settings) {
    checkSource();
    checkRegion();
    checkOutput();
    exposure_ = settings.exposure;
    setExposureSettings(settings.exposure);
    for (Vek16u& black : frontEnd_.black) black = 0;
    setBlack({settings.black, settings.black, settings.black, settings.black});
    setGains(settings.gains, settings.digitalGain);
    setDeadPixels(settings.deadPixels);
    makeBuffers();
    makeBalance();
    curve_ = toneTable(settings.curve);
    setColor(settings.color);
    results_.exposure = settings.exposure.least;
  }

  /// The size of the picture, rotated: what an output has to have.
  Size outputSize() const { return rotated(output_, settings_.rotation); }
  /// The part of the frame that is shown.
  Rect crop() const { return region_; }
  /// What the last frame told, and what the next one should be taken with.
  const IspResults& results() const { return results_; }
  /// The linear matrix that the next frame is given, or that it would be given if the matrix acted
  /// before the curve: the camera's, adapted to the light.
  Matrix3 matrix() const { return adaptedMatrix(color_, gains()); }
  /// The gains that the next frame is balanced with; green is 1.
  ColorGains gains() const {
    return {balance_[0] / static_cast<double>(unit), 1, balance_[2] / static_cast<double>(unit)};
  }

  /// Black levels of R, Gr (the green beside red), Gb (the green beside blue), B, in the units of the
  /// samples.
  void setBlack(const std::array<int, 4>& black) {
    for (const int level : black) {
      if (level < 0 || level > (1 << bits_) - 2) {
        OnError().failure(vekStsBadArgErr, "Isp", "black", "is %d, not in 0..%d", level,
                          (1 << bits_) - 2);
      }
    }
    for (std::size_t i = 0; i < 4; ++i) frontEnd_.black[i] = static_cast<Vek16u>(black[i]);
  }

  /// Gains of the colours, relative to green, and a gain on top of them. With the automatic white
  /// balance on, they are those that it starts from. All samples are scaled so that a saturated sample
  /// stays saturated: no gain is below 1, or highlights would lose their white.
  void setGains(const ColorGains& gains, double digitalGain = 1) {
    const double most = recommended::mostWhiteBalance;
    const auto isWrong = [&](double gain) {
      return !(gain * most >= gains.green && gain <= gains.green * most);
    };
    if (!(gains.green > 0) || isWrong(gains.red) || isWrong(gains.blue)) {
      OnError().failure(vekStsBadArgErr, "Isp", "gains",
                        "%g, %g, %g: red and blue are not within 1/%g..%g of green", gains.red,
                        gains.green, gains.blue, most, most);
    }
    if (!(digitalGain >= 1 && digitalGain <= 8)) {
      OnError().failure(vekStsBadArgErr, "Isp", "digitalGain", "is %g, not in 1..8", digitalGain);
    }
    digitalGain_ = digitalGain;
    balance_[0] = static_cast<Vek16u>(std::lround(gains.red / gains.green * unit));
    balance_[1] = unit;
    balance_[2] = static_cast<Vek16u>(std::lround(gains.blue / gains.green * unit));
    results_.gains = this->gains();
  }

  /// Turns the automatic white balance on or off; the gains stay.
  void setWhiteBalance(bool on) { settings_.whiteBalance = on; }

  /// Settings of the automatic exposure.
  void setExposureSettings(const ExposureSettings& exposure) {
    if (!(exposure.least.time > 0 && exposure.least.time <= exposure.most.time)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "times %g to %g are no range",
                        exposure.least.time, exposure.most.time);
    }
    if (!(exposure.least.gain > 0 && exposure.least.gain <= exposure.most.gain)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "gains %g to %g are no range",
                        exposure.least.gain, exposure.most.gain);
    }
    if (!(exposure.target > 0 && exposure.target < 1023)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure",
                        "target is %g, not above 0 and below 1023", exposure.target);
    }
    if (!(exposure.tolerance >= 0 && exposure.tolerance <= 1)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "tolerance is %g, not in 0..1",
                        exposure.tolerance);
    }
    exposure_ = exposure;
  }

  /// What the next frame that is processed was taken with. A sensor shows new values one or two frames
  /// after they were set; the control takes that into account if it is told so before each process().
  /// Without a call it takes the frame to be taken with results().exposure.
  void setExposure(const Exposure& taken) {
    if (!(taken.time > 0 && taken.gain > 0)) {
      OnError().failure(vekStsBadArgErr, "Isp", "taken",
                        "has time %g and gain %g, not both above 0", taken.time, taken.gain);
    }
    results_.exposure = taken;
  }

  /// The tone curve.
  void setCurve(ToneCurve curve) { setCurve(toneTable(curve)); }
  /// A tone curve of the caller's.
  void setCurve(const ToneTable& curve) {
    float last = 0;
    for (const float value : curve) {
      if (!(value >= last && value <= 1))
        OnError().failure(vekStsBadArgErr, "Isp", "curve", "falls, or leaves 0..1, at %g",
                          double{value});
      last = value;
    }
    take(makePaths(curve, color_));
    curve_ = curve;
  }

  /// The camera's colour matrix. Throws if a row does not sum to anything above 0.
  void setColor(const CameraColor& color) {
    for (const auto& row : color.matrix) {
      if (!(row[0] + row[1] + row[2] > 0)) {
        OnError().failure(vekStsBadArgErr, "Isp", "matrix", "has a row that sums to %g",
                          row[0] + row[1] + row[2]);
      }
    }
    take(makePaths(curve_, color));
    color_ = color;
  }

  /// Dead samples, in rows and columns of the frame. Each becomes the mean of its neighbours of the
  /// same colour in its row, or one of them at the edge or beside another dead one.
  void setDeadPixels(const std::vector<VekiDeadPixel>& dead) {
    std::vector<detail::DeadSample> list;
    for (const VekiDeadPixel& p : dead) {
      if (p.row < 0 || p.row >= settings_.size.height || p.column < 0 ||
          p.column >= settings_.size.width) {
        OnError().failure(vekStsBadArgErr, "Isp", "deadPixels",
                          "has (row %d, column %d), outside %d x %d", p.row, p.column,
                          settings_.size.width, settings_.size.height);
      }
      // Of those that no pixel depends on nothing need be known.
      const int row = p.row - region_.y, column = p.column - region_.x;
      if (row >= -border && row < region_.height + border && column >= -columnsBefore() &&
          column < region_.width + columnsAfter()) {
        list.push_back({row, column, 0, 0});
      }
    }
    const auto before = [](const detail::DeadSample& a, const detail::DeadSample& b) {
      return a.row != b.row ? a.row < b.row : a.column < b.column;
    };
    std::sort(list.begin(), list.end(), before);
    const auto neighbour = [&](detail::DeadSample at, int step) {
      do {
        at.column += step;
        if (at.column < -columnsBefore() || at.column >= region_.width + columnsAfter())
          return none;
      } while (std::binary_search(list.begin(), list.end(), at, before));
      return at.column;
    };
    for (detail::DeadSample& sample : list) {
      sample.left = neighbour(sample, -2);
      sample.right = neighbour(sample, 2);
    }
    dead_ = std::move(list);
  }

  /// Makes a picture of a frame, and decides about exposure and white balance of the next one.
  ///
  /// `frame` is a view of bytes: as wide as the bytes of a row of samples, or wider, and of the frame's
  /// height. `out` is a view of I420 (Planes420<>), NV12, I422 (Planes422<>), Rgb565, Rgb555, Rgb444,
  /// Bgr24, Rgb24, Bgrx32 or Rgbx32 of outputSize() pixels. It has no alignment to keep to, but with
  /// rows and first pixels at multiples of 8 bytes it is written directly.
  ///
  /// Returns vekStsNoErr, or an error with nothing written.
  template <class Out>
  VekStatus process(const View<const RawByte>& frame, Out&& out, OnError onError = {}) {
    return process(frame, std::forward<Out>(out), OneAfterAnother(), onError);
  }

  /// The same in as many jobs as the settings say. `executor(n, job)` calls job(0) to job(n - 1), in
  /// any order and at the same time if it likes, and returns when all have returned. The picture does
  /// not depend on it.
  template <class Out, class Executor,
            std::enable_if_t<!std::is_convertible_v<Executor, OnError>, int> = 0>
  VekStatus process(const View<const RawByte>& frame, Out&& out, Executor&& executor,
                    OnError onError = {}) {
    const detail::Target target = detail::target(out);
    if (const VekStatus status = check(frame, target, onError); status < 0) return status;
    prepare();
    const Path& path = paths_[target.pixels == detail::Pixels::i422 ? 2
                              : isPlanar(target.pixels)             ? 1
                                                                    : 0];
    const int jobs = static_cast<int>(workers_.size());
    executor(jobs, [&](int i) {
      makeBands(frame, target, path, workers_[static_cast<std::size_t>(i)], i, jobs);
    });
    if (isResized()) finishWhole(target);
    measure();
    return onError.success();
  }

 private:
  static constexpr int border = 2;  ///< samples around the region that bands are made from
  static constexpr int lead = 32;   ///< samples in front of column 0: a cache line
  static constexpr int trail = 32;  ///< samples behind the last column, for whole vectors
  static constexpr int none = INT32_MIN;
  static constexpr int unit = 1024;  ///< a gain of 1 of the white balance
  static constexpr int smallestSide = 16;

  /// What the raw pipeline needs for one kind of output: a state for whole bands, one for the last.
  struct Path {
    std::unique_ptr<detail::TableAndMatrix> values;  ///< the states point at its table
    detail::RawState band, last;
  };

  /// The memory of a job.
  struct Worker {
    Image<Vek16u> samples;   ///< the band's rows of 10-bit RGGB, `border` more above and below
    Image<Vek16u> unmixed;   ///< the same after the linear matrix
    Image<Vek8u> planes[3];  ///< what the raw pipeline makes of them; empty if resized
    detail::Memory scratch;
  };

  static Vek16u* at(Image<Vek16u>& rows, int row) { return rows.row(row + border) + lead; }

  // ---- Construction ----

  void checkSource() {
    const Size size = settings_.size;
    bits_ = detail::bitsOf(settings_.format, settings_.bits);
    const auto bad = vekStsBadArgErr;
    if (size.width < 1 || size.height < 1 || size.width > 65536 || size.height > 65536) {
      OnError().failure(bad, "Isp", "size", "is %d x %d, not 1..65536 each", size.width,
                        size.height);
    }
    if (bits_ == 0 ||
        (settings_.format != Raw::plain16 && settings_.bits != 0 && settings_.bits != bits_)) {
      OnError().failure(bad, "Isp", "bits", "%d do not belong to the format %d", settings_.bits,
                        static_cast<int>(settings_.format));
    }
    if (settings_.order < Bayer::rggb || settings_.order > Bayer::bggr) {
      OnError().failure(bad, "Isp", "order", "%d is none", static_cast<int>(settings_.order));
    }
    frontEnd_.format = static_cast<int>(settings_.format);
    frontEnd_.bits = bits_;
    frontEnd_.order = static_cast<int>(settings_.order);
  }

  void checkRegion() {
    const auto bad = vekStsBadArgErr;
    const int order = static_cast<int>(settings_.order), scale = settings_.scale;
    const Size size = settings_.size;
    region_ = settings_.crop;
    if (region_.width == 0 && region_.height == 0) {
      if (vekiRawRegion(size, order, &region_) < 0) {
        OnError().failure(bad, "Isp", "size",
                          "%d x %d with order %d has no region that begins on a red sample",
                          size.width, size.height, order);
      }
    } else if (region_.x < 0 || region_.y < 0 || region_.width < 1 || region_.height < 1 ||
               region_.width > size.width - region_.x || region_.height > size.height - region_.y) {
      OnError().failure(bad, "Isp", "crop", "at (%d, %d), %d x %d, is not inside %d x %d",
                        region_.x, region_.y, region_.width, region_.height, size.width,
                        size.height);
    } else if ((region_.x & 1) != (order & 1) || (region_.y & 1) != order >> 1) {
      OnError().failure(bad, "Isp", "crop",
                        "begins at (%d, %d); red samples are in columns 2n%s and rows 2n%s",
                        region_.x, region_.y, order & 1 ? " + 1" : "", order >> 1 ? " + 1" : "");
    } else if ((region_.width | region_.height) & 1) {
      OnError().failure(bad, "Isp", "crop", "of %d x %d has an odd side", region_.width,
                        region_.height);
    }
    if (scale != 1 && scale != 2 && scale != 4) {
      OnError().failure(bad, "Isp", "scale", "is %d, not 1, 2 or 4", scale);
    }
    // What reduced pictures are whole blocks of.
    region_.width -= scale == 1 ? 0 : region_.width % (4 * scale);
    region_.height -= scale == 1 ? 0 : region_.height % (2 * scale);
    if (region_.width < smallestSide || region_.height < smallestSide) {
      OnError().failure(bad, "Isp", "crop", "leaves %d x %d samples, not %d a side", region_.width,
                        region_.height, smallestSide);
    }
  }

  void checkOutput() {
    const auto bad = vekStsBadArgErr;
    planeSize_ = {region_.width / settings_.scale, region_.height / settings_.scale};
    output_ = settings_.output;
    if (output_.width == 0 && output_.height == 0) output_ = planeSize_;
    if (output_.width < 2 || output_.height < 2 || output_.width > 65536 ||
        output_.height > 65536) {
      OnError().failure(bad, "Isp", "output", "is %d x %d, not 2..65536 each", output_.width,
                        output_.height);
    }
    if (settings_.rotation < Rotation::none || settings_.rotation > Rotation::mirrorTopBottom) {
      OnError().failure(bad, "Isp", "rotation", "%d is none", static_cast<int>(settings_.rotation));
    }
    if (settings_.jobs < 1 || settings_.jobs > 1024) {
      OnError().failure(bad, "Isp", "jobs", "is %d, not in 1..1024", settings_.jobs);
    }
    if (settings_.bandRows < 1)
      OnError().failure(bad, "Isp", "bandRows", "is %d", settings_.bandRows);
    // Whole blocks, and columns of a rotated band that begin at aligned addresses.
    const int rows = std::min(settings_.bandRows, region_.height);
    bandRows_ = std::min(detail::roundUp(rows, 8 * settings_.scale), region_.height);
    bands_ = (region_.height + bandRows_ - 1) / bandRows_;
  }

  void makeBuffers() {
    const int rows = bandRows_ + 2 * border;
    const Size samples = {lead + region_.width + trail, rows};
    const std::size_t jobs = static_cast<std::size_t>(std::min(settings_.jobs, bands_));
    if (isResized()) makePlanes(planes_, planeSize_.height);
    workers_.resize(jobs);
    for (Worker& worker : workers_) {
      for (Image<Vek16u>* buffer : {&worker.samples, &worker.unmixed}) {
        *buffer = Image<Vek16u>(samples);
        std::memset(buffer->data(), 0,
                    static_cast<std::size_t>(buffer->stepBytes()) * static_cast<std::size_t>(rows));
      }
      if (!isResized()) makePlanes(worker.planes, bandRows_ / settings_.scale);
      if (!isResized()) worker.scratch = memory(bandFinish(bandRows_).scratchBytes());
    }
    if (isResized()) workers_[0].scratch = memory(wholeFinish().scratchBytes());
  }

  /// Chroma planes are as high as luma for 4:2:2.
  void makePlanes(Image<Vek8u>* planes, int rows) const {
    for (int i = 0; i < 3; ++i) {
      planes[i] = Image<Vek8u>({i == 0 ? planeSize_.width : planeSize_.width / 2, rows});
    }
  }

  static detail::Memory memory(std::size_t bytes) {
    detail::Memory result(bytes);
    if (result.data() == nullptr) {
      OnError().failure(vekStsMemAllocErr, "Isp", "output", "needs %lld bytes, more than there are",
                        static_cast<long long>(bytes));
    }
    return result;
  }

  std::array<Path, 3> makePaths(const ToneTable& curve, const CameraColor& color) const {
    Matrix3 after = identityMatrix;
    if (color.place == MatrixPlace::afterCurve) {
      CameraColor fixed = color;
      fixed.gains = {0, 0, 0};
      after = matrixAfterCurve(adaptedMatrix(fixed, {}), curve);
    }
    const bool isFull = settings_.range == Range::full;
    const detail::Planar ycc = isFull ? detail::Planar::full : detail::Planar::studio;
    std::array<Path, 3> paths;
    const detail::Planar kinds[] = {detail::Planar::towardsRgb, ycc, ycc};
    const int lastRows = region_.height - (bands_ - 1) * bandRows_;
    for (std::size_t i = 0; i < 3; ++i) {
      paths[i].values =
          std::make_unique<detail::TableAndMatrix>(detail::tableAndMatrix(curve, after, kinds[i]));
      const int format = i == 2 ? vekiChroma422 : vekiChroma420;
      paths[i].band = makeState(*paths[i].values, format, bandRows_);
      paths[i].last = makeState(*paths[i].values, format, lastRows);
    }
    return paths;
  }

  detail::RawState makeState(const detail::TableAndMatrix& values, int chromaFormat,
                             int rows) const {
    VekiRggbColorParam color = {};
    color.gammaMode = vekiGammaModeTable;
    color.gammaTable[0] = values.table.data();
    color.colorMatrix = values.matrix.data();
    const Image<Vek8u>* const planes = isResized() ? planes_ : workers_[0].planes;
    VekiRggbGeometry geometry = {};
    geometry.srcStep = workers_[0].samples.stepBytes();
    geometry.srcWidth = region_.width;
    geometry.srcHeight = rows;
    for (int i = 0; i < 3; ++i) geometry.dstStep[i] = planes[i].stepBytes();
    geometry.dstWidth = planeSize_.width;
    geometry.dstHeight = rows / settings_.scale;
    geometry.filterMode = settings_.scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce;
    geometry.chromaFormat = chromaFormat;
    geometry.srcBorderValid = 1;
    VekiRggbToYCbCrState* state = nullptr;
    const VekStatus status = vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&color, &geometry, &state);
    if (status < 0)
      OnError().failure(status, "Isp", "color", "needs a state: %s", vekStatusString(status));
    return detail::RawState(state);
  }

  void take(std::array<Path, 3>&& paths) { paths_ = std::move(paths); }

  // ---- Bands ----

  bool isResized() const {
    return output_.width != planeSize_.width || output_.height != planeSize_.height;
  }

  detail::Finish bandFinish(int rows) const {
    const Size size = {planeSize_.width, rows / settings_.scale};
    return {size, size, settings_.rotation, Interpolation::nearest};
  }
  detail::Finish wholeFinish() const {
    return {planeSize_, output_, settings_.rotation, Interpolation::linear};
  }

  /// Samples of the frame beside the region that are there; where they are not, the region is mirrored.
  int columnsBefore() const { return std::min(region_.x & ~1, border); }
  int columnsAfter() const {
    return std::min((settings_.size.width - region_.x - region_.width) & ~1, border);
  }
  bool hasRow(int row) const {
    const int y = region_.y + row;
    return y >= 0 && y < settings_.size.height;
  }

  /// What does not change from band to band.
  void prepare() {
    const ColorGains now = gains();
    const double least = std::min({now.red, now.green, now.blue}) / digitalGain_;
    const double wanted[4] = {now.red, now.green, now.green, now.blue};
    for (std::size_t i = 0; i < 4; ++i) {
      const int range = (1 << bits_) - 1 - frontEnd_.black[i];
      const double whole = 4096 * 1023. / std::ldexp(range, 10 - bits_);
      frontEnd_.gain[i] =
          static_cast<Vek16u>(std::min(std::ceil(whole * wanted[i] / least), 65535.));
    }
    unmix_ = color_.place == MatrixPlace::linear ? detail::unmixFrom(matrix()) : detail::Unmix{};
  }

  void makeBands(const View<const RawByte>& frame, const detail::Target& target, const Path& path,
                 Worker& worker, int job, int jobs) {
    const auto first = [&](int j) { return static_cast<int>(std::int64_t{bands_} * j / jobs); };
    for (int band = first(job); band < first(job + 1); ++band) {
      const int y = band * bandRows_, rows = std::min(bandRows_, region_.height - y);
      readBand(frame, worker, y, rows, band != first(job));
      keepRows(worker, y, rows);
      Image<Vek16u>& source = unmix_.isNeeded ? worker.unmixed : worker.samples;
      if (unmix_.isNeeded) unmixBand(worker, rows);
      Vek8u* planes[3];
      for (int i = 0; i < 3; ++i) {
        const int row = !isResized() ? 0
                                     : y / settings_.scale /
                                           (i > 0 && target.pixels != detail::Pixels::i422 ? 2 : 1);
        planes[i] = (isResized() ? planes_ : worker.planes)[i].row(row);
      }
      veki10RGGBtoYCbCr_RotRsz_8u_P3R(at(source, 0), planes,
                                      (band == bands_ - 1 ? path.last : path.band).get());
      if (!isResized()) finishBand(target, worker, y, rows);
    }
  }

  /// Rows y - 2 to y + rows + 1 of the region as 10-bit RGGB, without dead samples. If the worker's last
  /// band was the one above, it has four of them.
  void readBand(const View<const RawByte>& frame, Worker& worker, int y, int rows, bool continues) {
    int top = -border;  // the first row that is read, from the band's first one
    if (continues) {
      for (int row = -border; row < border; ++row) {
        std::memcpy(at(worker.samples, row) - lead, at(worker.samples, row + bandRows_) - lead,
                    static_cast<std::size_t>(worker.samples.rowBytes()));
      }
      top = border;
    } else if (!hasRow(y - border)) {
      top = 0;
    }
    const int bottom = hasRow(y + rows + 1) ? rows + border : rows;
    const int before = columnsBefore(), after = columnsAfter();
    const VekiRect part = {region_.x - before, region_.y + y + top, before + region_.width + after,
                           bottom - top};
    if (part.height > 0) {
      vekiRawTo10RGGB_8u16u_C1R(frame.data(), frame.stepBytes(), part,
                                at(worker.samples, top) - before, worker.samples.stepBytes(),
                                &frontEnd_);
      correct(worker, y, top, bottom);
    }
    for (int row = top; row < bottom; ++row) mirrorColumns(at(worker.samples, row));
    const auto copy = [&](int from, int to) {
      std::memcpy(at(worker.samples, to) - lead, at(worker.samples, from) - lead,
                  static_cast<std::size_t>(worker.samples.rowBytes()));
    };
    for (int i = 1; i <= border; ++i) {
      if (!continues && !hasRow(y - border)) copy(i, -i);
      if (bottom == rows) copy(rows - 1 - i, rows - 1 + i);
    }
  }

  void correct(Worker& worker, int y, int top, int bottom) {
    const auto first =
        std::lower_bound(dead_.begin(), dead_.end(), y + top,
                         [](const detail::DeadSample& d, int row) { return d.row < row; });
    for (auto d = first; d != dead_.end() && d->row < y + bottom; ++d) {
      Vek16u* const row = at(worker.samples, d->row - y);
      if (d->left == none && d->right == none) continue;
      const int left = row[d->left == none ? d->right : d->left];
      const int right = row[d->right == none ? d->left : d->right];
      row[d->column] = static_cast<Vek16u>((left + right + 1) >> 1);
    }
  }

  /// About the outermost column, which keeps the order of colours.
  void mirrorColumns(Vek16u* row) const {
    const int last = region_.width - 1;
    for (int i = 1; i <= border; ++i) {
      if (columnsBefore() == 0) row[-i] = row[i];
      if (columnsAfter() == 0) row[last + i] = row[last - i];
    }
  }

  void unmixBand(Worker& worker, int rows) {
    const auto unmix = detail::unmixRow();
    for (int row = -1; row <= rows; ++row) {
      unmix(at(worker.samples, row - 1), at(worker.samples, row), at(worker.samples, row + 1),
            at(worker.unmixed, row), -2, region_.width + 2, unmix_.rows[row & 1]);
    }
  }

  void finishBand(const detail::Target& target, Worker& worker, int y, int rows) {
    const detail::Finish finish = bandFinish(rows);
    const int top = y / settings_.scale, below = planeSize_.height - top - finish.to.height;
    int column = 0, row = 0;
    switch (settings_.rotation) {
      case Rotation::none:
      case Rotation::mirrorLeftRight:
        row = top;
        break;
      case Rotation::half:
      case Rotation::mirrorTopBottom:
        row = below;
        break;
      case Rotation::ccw90:
        column = top;
        break;
      case Rotation::cw90:
        column = below;
        break;
    }
    finish.run(source(worker.planes), target.at(column, row),
               static_cast<Vek8u*>(worker.scratch.data()));
  }

  void finishWhole(const detail::Target& target) {
    wholeFinish().run(source(planes_), target, static_cast<Vek8u*>(workers_[0].scratch.data()));
  }

  static detail::SourcePlanes source(const Image<Vek8u>* planes) {
    return {{planes[0].data(), planes[1].data(), planes[2].data()},
            {planes[0].stepBytes(), planes[1].stepBytes(), planes[2].stepBytes()}};
  }

  // ---- Measuring ----

  void makeBalance() {
    const int pairs = region_.height / 2;
    // From 100 pairs of rows on nothing is gained.
    kept_ = std::clamp(pairs / 96, 1, 4);
    statistics_ = Image<Vek16u>({region_.width, (pairs + kept_ - 1) / kept_ * 2});
    const auto side = [](int length, int count, int multiple) {
      return std::max(length / count / multiple * multiple, multiple);
    };
    const int w = side(statistics_.width(), 8, 4), h = side(statistics_.height(), 6, 8);
    for (int y = 0; y + h <= statistics_.height(); y += h) {
      for (int x = 0; x + w <= statistics_.width(); x += w) windows_.push_back({x, y, w, h});
    }
    weights_.assign(windows_.size(), 1);
    everything_ = balanceState(vekiAWBGrayWorld, recommended::coarseTolerance);
    whites_ = balanceState(vekiAWBWhitePoints, recommended::fineTolerance);
  }

  detail::BalanceState balanceState(int method, int tolerance) const {
    using namespace recommended;
    VekiAWBParams params = {};
    params.method = method;
    params.numWindows = static_cast<int>(windows_.size());
    params.pWindows = windows_.data();
    params.pWeights = weights_.data();
    params.refRatioR = params.refRatioB = unit;  // what the balance aims at: equal channels
    params.holdTolR = params.holdTolB = static_cast<Vek16u>(tolerance);
    // Any light that gains can balance is valid.
    params.validTolR = params.validTolB = 65535;
    params.wpdLimit1 = params.wpdLimit2 = whiteLimit;
    params.wpdLimit3 = 2 * whiteLimit;
    params.wpdLow = whiteLow;
    params.wpdHigh = whiteHigh;
    params.minWhiteCount = windows_.front().width * windows_.front().height / whiteShare;
    params.maxGainStep = 65535;  // no brake: a target is right at once
    params.gainMin = unit / mostWhiteBalance;
    params.gainMax = unit * mostWhiteBalance;
    params.defaultGainR = params.defaultGainG = params.defaultGainB = unit;
    VekiAWBState* state = nullptr;
    const VekStatus status = vekiInitAlloc_AWB_10RGGB_8u_C1R(&params, &state);
    if (status < 0)
      OnError().failure(status, "Isp", "size", "needs a state: %s", vekStatusString(status));
    return detail::BalanceState(state);
  }

  /// Keeps every n-th pair of rows of the band.
  void keepRows(Worker& worker, int y, int rows) {
    const std::size_t bytes = static_cast<std::size_t>(region_.width) * sizeof(Vek16u);
    for (int row = 0; row < rows; row += 2) {
      const int pair = (y + row) / 2;
      if (pair % kept_ != 0) continue;
      for (int i = 0; i < 2; ++i) {
        std::memcpy(statistics_.row(pair / kept_ * 2 + i), at(worker.samples, row + i), bytes);
      }
    }
  }

  void measure() {
    std::int64_t sum = 0, saturated = 0;
    for (int y = 0; y < statistics_.height(); ++y) {
      const Vek16u* const row = statistics_.row(y) + ((y & 1) ^ 1);
      Vek32u rowSum = 0, rowSaturated = 0;
      for (int x = 0; x < statistics_.width(); x += 2) {
        rowSum += row[x];
        rowSaturated += row[x] >> 9 & (row[x] + 1u) >> 10;
      }
      sum += rowSum;
      saturated += rowSaturated;
    }
    const double greens = statistics_.width() / 2. * statistics_.height();
    results_.brightness = static_cast<double>(sum) / greens;
    results_.saturated = static_cast<double>(saturated) / greens;
    if (exposure_.on) expose();
    if (settings_.whiteBalance) balance();
  }

  /// Green follows light, so that one step brings the brightness to its target. Nothing moves within
  /// the tolerance, and as each step is taken from what the frame was taken with, nothing can swing.
  void expose() {
    const Exposure least = exposure_.least, most = exposure_.most;
    const double ratio = results_.saturated > .5
                             ? 1 / recommended::saturatedFactor
                             : std::min(exposure_.target / std::max(results_.brightness, .5),
                                        recommended::mostBrighter);
    results_.exposureHeld =
        std::abs(results_.brightness - exposure_.target) <= exposure_.tolerance * exposure_.target;
    results_.exposureAtLimit = false;
    if (results_.exposureHeld) return;
    const double light = results_.exposure.time * results_.exposure.gain * ratio;
    results_.exposureAtLimit = light > most.time * most.gain || light < least.time * least.gain;
    const double time = std::clamp(light / least.gain, least.time, most.time);
    results_.exposure = {time, std::clamp(light / time, least.gain, most.gain)};
  }

  /// By the mean of everything while that is far from grey, as at the start or in a new light, then by
  /// what is nearly white.
  void balance() {
    const std::array<Vek16u, 3> before = balance_;
    const auto update = [&](const detail::BalanceState& state) {
      return vekiAWB_10RGGB_8u_C1R(statistics_.data(), statistics_.stepBytes(), statistics_.size(),
                                   &balance_[0], &balance_[1], &balance_[2], state.get());
    };
    VekStatus status = update(everything_);
    if (balance_ == before && status == vekStsNoErr) status = update(whites_);
    results_.balanceHeld = balance_ == before && status == vekStsNoErr;
    results_.balanceAtLimit = status == vekStsAwbGainAtLimit;
    results_.balanceHasData = status != vekStsAwbNoData;
    results_.gains = gains();
  }

  // ---- Calls ----

  VekStatus check(const View<const RawByte>& frame, const detail::Target& target,
                  OnError onError) const {
    const std::int64_t bytes = rawRowBytes(settings_.format, settings_.size.width);
    if (frame.empty())
      return onError.failure(vekStsNullPtrErr, "Isp::process", "frame", "is empty");
    if (frame.width() < bytes) {
      return onError.failure(vekStsStrideErr, "Isp::process", "frame",
                             "has rows of %d bytes; %d samples take %d", frame.width(),
                             settings_.size.width, static_cast<int>(bytes));
    }
    if (frame.height() < settings_.size.height) {
      return onError.failure(vekStsSizeErr, "Isp::process", "frame", "has %d rows, not %d",
                             frame.height(), settings_.size.height);
    }
    const Size size = outputSize();
    if (target.planes[0] == nullptr)
      return onError.failure(vekStsNullPtrErr, "Isp::process", "out", "is empty");
    if (target.size.width != size.width || target.size.height != size.height) {
      return onError.failure(vekStsSizeErr, "Isp::process", "out", "is %d x %d, not %d x %d",
                             target.size.width, target.size.height, size.width, size.height);
    }
    if (isPlanar(target.pixels) && ((size.width | size.height) & 1) != 0) {
      return onError.failure(vekStsSizeErr, "Isp::process", "out",
                             "shares chroma, which pictures of %d x %d cannot", size.width,
                             size.height);
    }
    return vekStsNoErr;
  }

  IspSettings settings_;
  int bits_ = 0;  ///< of a sample
  Rect region_ = {};
  Size planeSize_ = {};  ///< of what the raw pipeline makes of the region
  Size output_ = {};     ///< before rotation
  int bandRows_ = 0, bands_ = 0;
  VekiRawFrontEnd frontEnd_ = {};
  std::vector<detail::DeadSample> dead_;
  ToneTable curve_ = {};
  CameraColor color_;
  detail::Unmix unmix_ = {};
  std::array<Path, 3> paths_;
  std::vector<Worker> workers_;
  Image<Vek8u> planes_[3];  ///< of the whole picture if it is resized

  int kept_ = 1;  ///< every kept_-th pair of rows is measured
  Image<Vek16u> statistics_;
  std::vector<Rect> windows_;  ///< the states point at them
  std::vector<Vek8u> weights_;
  detail::BalanceState everything_, whites_;
  std::array<Vek16u, 3> balance_ = {unit, unit, unit};  ///< red, green, blue, in 1/unit
  double digitalGain_ = 1;
  ExposureSettings exposure_;
  IspResults results_;
};

/** @} */

}  // namespace v0
}  // namespace vek

#undef VEK_ISP_X86

#endif  // VEK_ISP_HPP
