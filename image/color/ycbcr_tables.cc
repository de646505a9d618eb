// The exported coefficient and clamp tables.
#include "vek/image.h"

#include "image/color/ycbcr_matrices.h"

constexpr Vek32s RGB_YCbCr_Q10[12] = {263, 516,  100, -152,  -298,   450,
                                      450, -377, -73, 16896, 131584, 131584};
constexpr Vek32s RGB_YCbCr[11] = {16843,  33030, 6423,    -9699,   -19071,  28770,
                                  -24117, -4653, 1081344, 8421376, 16842752};
constexpr Vek16s YCbCr_RGB_Q10[5] = {1192, 1634, -833, -401, 2065};
constexpr Vek32s YCbCr_RGB[5] = {76284, 104595, -53281, -25690, 132186};
constexpr Vek16s RGB_YUV_Q10[5] = {306, 601, 117, 504, 898};
constexpr Vek32s RGB_YUV[5] = {19595, 38470, 7471, 32244, 57475};
constexpr Vek16s YUV_RGB_Q10[4] = {1167, -403, -595, 2081};
constexpr Vek32s YUV_RGB[4] = {74711, -25821, -38076, 133169};

namespace vek {
namespace {

using namespace VEK_LEVEL;

// The kernels use the numbers that are exported.
constexpr bool forwardAgrees(const Matrix& m, const Vek32s* table) {
  bool agrees = true;
  for (int k = 0; k < 3; ++k) {
    for (int i = 0; i < 3; ++i) agrees = agrees && m.factor[k][i] == table[3 * k + i];
    agrees = agrees && m.offset[k] == table[9 + k];
  }
  return agrees;
}

constexpr bool inverseAgrees(const Matrix& m, Vek32s redOfV, Vek32s greenOfV, Vek32s greenOfU,
                             Vek32s blueOfU) {
  return m.factor[0][2] == redOfV && m.factor[1][2] == greenOfV && m.factor[1][1] == greenOfU &&
         m.factor[2][1] == blueOfU;
}

static_assert(forwardAgrees(rgbToYcbcr, RGB_YCbCr_Q10));
static_assert(ycbcrToRgb.factor[0][0] == YCbCr_RGB_Q10[0] &&
              inverseAgrees(ycbcrToRgb, YCbCr_RGB_Q10[1], YCbCr_RGB_Q10[2], YCbCr_RGB_Q10[3],
                            YCbCr_RGB_Q10[4]));
static_assert(rgbToYuv.factor[0][0] == RGB_YUV_Q10[0] && rgbToYuv.factor[0][1] == RGB_YUV_Q10[1] &&
              rgbToYuv.factor[0][2] == RGB_YUV_Q10[2] && uFactor == RGB_YUV_Q10[3] &&
              vFactor == RGB_YUV_Q10[4]);
static_assert(inverseAgrees(yuvToRgb, YUV_RGB_Q10[0], YUV_RGB_Q10[2], YUV_RGB_Q10[1],
                            YUV_RGB_Q10[3]));

/// Index -> index clamped to 0..2^bits - 1, back to back for 4, 5, 6 and 8 bits.
struct ClampTables {
  static constexpr int zero4 = 24, zero5 = 72 + 48, zero6 = 72 + 144 + 96,
                       zero8 = 72 + 144 + 288 + 376;
  Vek8u entries[72 + 144 + 288 + 1128];

  constexpr ClampTables() : entries() {
    fill(zero4, -24, 47, 15);
    fill(zero5, -48, 95, 31);
    fill(zero6, -96, 191, 63);
    fill(zero8, -376, 751, 255);
  }

 private:
  constexpr void fill(int zero, int first, int last, int top) {
    for (int i = first; i <= last; ++i) {
      entries[zero + i] = static_cast<Vek8u>(i < 0 ? 0 : i > top ? top : i);
    }
  }
};

constexpr ClampTables clampTables;

}  // namespace
}  // namespace vek

const Vek8u* const SAT16_DK = vek::clampTables.entries + vek::ClampTables::zero4;
const Vek8u* const SAT32_DK = vek::clampTables.entries + vek::ClampTables::zero5;
const Vek8u* const SAT64_DK = vek::clampTables.entries + vek::ClampTables::zero6;
const Vek8u* const SAT_DK = vek::clampTables.entries + vek::ClampTables::zero8;
