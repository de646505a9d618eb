// CIE LUV in fixed point: the constants that all levels share, and where they come from.
//
// With u' = 4 X / D, v' = 9 Y / D and D = X + 15 Y + 3 Z, the definition is u = 13 L* (u' - u'w) and
// v = 13 L* (v' - v'w), where u'w and v'w are those of white. The bytes hold L = L* 255 / 100, (u +
// 134) 255 / 354 and (v + 140) 255 / 262. In terms of L, the byte of u is L (u' - u'w) 1300 / 354 +
// 134 * 255 / 354, and that of v is the same with 262 and 140.
//
// Example: red, (255, 0, 0), has Y = 54 and L = 136. With u' = 0.4506 and u'w = 0.1978 the byte of u
// is 136 * 0.2528 * 3.672 + 96.5 = 222.8, which is rounded to 223.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

/// RGB to XYZ of the sRGB primaries in Q15, and to D. The sums of a pixel stay below 255 * 629695 <
/// 2^28.
constexpr Vek32s toX[3] = {13515, 11717, 5912};
constexpr Vek32s toY[3] = {6969, 23434, 2365};
constexpr Vek32s toZ[3] = {634, 3906, 31137};
constexpr Vek32s toD[3] = {toX[0] + 15 * toY[0] + 3 * toZ[0], toX[1] + 15 * toY[1] + 3 * toZ[1],
                           toX[2] + 15 * toY[2] + 3 * toZ[2]};
constexpr Vek32s whiteX = toX[0] + toX[1] + toX[2];
constexpr Vek32s whiteY = 32768;
constexpr Vek32s whiteD = toD[0] + toD[1] + toD[2];

/// u' and v' are computed in Q14 and truncated: X * 2^16 / D and 9 Y * 2^14 / D. These are white's, and
/// those of every grey.
constexpr Vek32s whiteU = static_cast<Vek32s>((Vek64s{whiteX} << 16) / whiteD);
constexpr Vek32s whiteV = static_cast<Vek32s>((Vek64s{9} * whiteY << 14) / whiteD);

/// From L times a Q14 difference to the byte: the factors 1300 / 354 and 1300 / 262 with 6 and 7
/// fractional bits, and the constants 134 * 255 / 354 and 140 * 255 / 262, each with one half for
/// rounding. The products stay below 2^30, since differences are within 4143 for u and 5086 for v.
constexpr int uShift = 20, vShift = 21;
constexpr Vek32s uGain = 235, vGain = 635;
constexpr Vek32s uBase = static_cast<Vek32s>((134 * 255 / 354.0 + 0.5) * (1 << uShift));
constexpr Vek32s vBase = static_cast<Vek32s>((140 * 255 / 262.0 + 0.5) * (1 << vShift));

/// The inverse works on a = 32 * 1300 L u' and b = 32 * 1300 L v'. From the byte U of u, a = aWhite L +
/// 32 (354 U - 134 * 255), and b is computed likewise from that of v. Then X = 9 a Y / (4 b) and Z =
/// (12 * 1300 * 32 L - 3 a - 20 b) Y / (4 b). |a| and b stay below 2^23, the bracket below 2^28.
constexpr Vek32s aWhite = static_cast<Vek32s>(1300 * 32 * 4.0 * whiteX / whiteD + 0.5);
constexpr Vek32s bWhite = static_cast<Vek32s>(1300 * 32 * 9.0 * whiteY / whiteD + 0.5);
constexpr Vek32s aGain = 32 * 354, aBase = -32 * 134 * 255;
constexpr Vek32s bGain = 32 * 262, bBase = -32 * 140 * 255;
constexpr Vek32s zGain = 12 * 1300 * 32;

/// X and Z are in 1/64 of an 8-bit step, as `luminance` is. They are bounded to four times white:
/// larger ones saturate all the same, and the sums below stay within 32 bits.
constexpr Vek32s mostXZ = 1 << 16;

/// XYZ to linear RGB in Q12 (3.240479, -1.537150, -0.498535; -0.969256, 1.875992, 0.041556;
/// 0.055648, -0.204043, 1.057311). |sum| <= 13273 * 2^16 + 6296 * 16320 + 2042 * 2^16 < 2^31.
constexpr Vek32s toRgb[3][3] = {{13273, -6296, -2042}, {-3970, 7684, 170}, {228, -836, 4331}};
constexpr int rgbShift = 12 + 6;

}  // namespace
}  // namespace vek::VEK_LEVEL
