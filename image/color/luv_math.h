// The fixed-point form of CIE LUV that all levels share: constants and where they come from.
//
// With D = X + 15 Y + 3 Z: u' = 4 X / D, v' = 9 Y / D, u = 13 L* (u' - u'w), v = 13 L* (v' - v'w),
// where u'w, v'w belong to white. Bytes hold L = L* 255 / 100, (u + 134) 255 / 354, (v + 140) 255 /
// 262, so the byte of u is L (u' - u'w) 1300 / 354 plus a constant, and that of v the same with
// 262.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

/// RGB to XYZ of the sRGB primaries in Q15, and D by channel. Sums over a pixel stay below
/// 255 * 629695 < 2^28.
constexpr Vek32s toX[3] = {13515, 11717, 5912};
constexpr Vek32s toY[3] = {6969, 23434, 2365};
constexpr Vek32s toZ[3] = {634, 3906, 31137};
constexpr Vek32s toD[3] = {toX[0] + 15 * toY[0] + 3 * toZ[0], toX[1] + 15 * toY[1] + 3 * toZ[1],
                           toX[2] + 15 * toY[2] + 3 * toZ[2]};
constexpr Vek32s whiteX = toX[0] + toX[1] + toX[2];
constexpr Vek32s whiteY = 32768;
constexpr Vek32s whiteD = toD[0] + toD[1] + toD[2];

/// u' and v' in Q14, truncated: X * 2^16 / D and 9 Y * 2^14 / D. Every grey has these:
constexpr Vek32s whiteU = static_cast<Vek32s>((Vek64s{whiteX} << 16) / whiteD);
constexpr Vek32s whiteV = static_cast<Vek32s>((Vek64s{9} * whiteY << 14) / whiteD);

/// From L times a Q14 difference to the byte: 1300 / 354 and 1300 / 262 with 20 and 21 - 14
/// fractional bits, and the constants (134 * 255 / 354 and 140 * 255 / 262) with one half for
/// rounding. The products stay below 2^30: differences are within 4143 for u and 5086 for v.
constexpr int uShift = 20, vShift = 21;
constexpr Vek32s uGain = 235, vGain = 635;
constexpr Vek32s uBase = static_cast<Vek32s>((134 * 255 / 354.0 + 0.5) * (1 << uShift));
constexpr Vek32s vBase = static_cast<Vek32s>((140 * 255 / 262.0 + 0.5) * (1 << vShift));

/// The inverse works on a = 1300 L u' and b = 1300 L v', both times 32: a = aWhite L + 32 (354 U -
/// 134 * 255), b likewise; then X = 9 a Y / (4 b) and Z = (12 * 1300 * 32 L - 3 a - 20 b) Y / (4
/// b). |a| and b stay below 2^23, the bracket below 2^28.
constexpr Vek32s aWhite = static_cast<Vek32s>(1300 * 32 * 4.0 * whiteX / whiteD + 0.5);
constexpr Vek32s bWhite = static_cast<Vek32s>(1300 * 32 * 9.0 * whiteY / whiteD + 0.5);
constexpr Vek32s aGain = 32 * 354, aBase = -32 * 134 * 255;
constexpr Vek32s bGain = 32 * 262, bBase = -32 * 140 * 255;
constexpr Vek32s zGain = 12 * 1300 * 32;

/// X and Z in 1/64 of an 8-bit step (like `luminance`), bounded to four times white: any larger one
/// saturates, and the sums below stay within 32 bits.
constexpr Vek32s mostXZ = 1 << 16;

/// XYZ to linear RGB in Q12 (3.240479, -1.537150, -0.498535; -0.969256, 1.875992, 0.041556;
/// 0.055648, -0.204043, 1.057311). |sum| <= 13273 * 2^16 + 6296 * 16320 + 2042 * 2^16 < 2^31.
constexpr Vek32s toRgb[3][3] = {{13273, -6296, -2042}, {-3970, 7684, 170}, {228, -836, 4331}};
constexpr int rgbShift = 12 + 6;

}  // namespace
}  // namespace vek::VEK_LEVEL
