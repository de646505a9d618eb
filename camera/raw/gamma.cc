#include "camera/raw/gamma.h"

#include "core/assert.h"

namespace vek {
namespace {

constexpr int curvePoints = 33;

constexpr Vek16u linearCurve[2 * curvePoints] = {
    0,   0,   2,   2,   4,   4,   6,   6,   8,   8,   10,  10,  12,  12,   14,  14,  16,
    16,  20,  20,  24,  24,  28,  28,  32,  32,  40,  40,  48,  48,  56,   56,  64,  64,
    80,  80,  96,  96,  112, 112, 128, 128, 160, 160, 192, 192, 224, 224,  256, 256, 320,
    320, 384, 384, 448, 448, 512, 512, 640, 640, 768, 768, 896, 896, 1024, 1024};

constexpr Vek16u standardCurve[2 * curvePoints] = {
    0,   0,   2,   9,   4,   18,  6,   27,  8,   36,  10,  45,  12,  54,   14,  63,  16,
    72,  20,  90,  24,  106, 28,  121, 32,  135, 40,  160, 48,  183, 56,   203, 64,  222,
    80,  256, 96,  286, 112, 314, 128, 340, 160, 387, 192, 428, 224, 467,  256, 502, 320,
    565, 384, 622, 448, 674, 512, 722, 640, 809, 768, 887, 896, 958, 1024, 1024};

}  // namespace

const Vek16u* gammaCurvePoints(Vek32u curve) {
  return curve == 0 ? linearCurve : standardCurve;
}

void fillGammaTable(Vek8u* pTable, const Vek16u* pPoints) {
  VEK_ASSERT(pPoints[0] == 0);
  const Vek16u* segment = pPoints;
  for (Vek32u i = 0; i < gammaTableSize; ++i) {
    while (i > segment[2]) segment += 2;
    const Vek32u x0 = segment[0], y0 = segment[1], x1 = segment[2], y1 = segment[3];
    // y with 10 fractional bits becomes 8 bits without a fraction by a shift of 12.
    // @quirk The 512 rounds up only the last eighth of an output step, not its upper half: the linear
    // curve maps 0..3 to 0 and 4..7 to 1, so that it just drops two bits.
    const Vek32u rise = _vekDiv_32u((i - x0) * ((y1 - y0) * 1024), x1 - x0, nullptr);
    const Vek32u v = (y0 * 1024 + rise + 512) >> 12;
    pTable[i] = static_cast<Vek8u>(v < 255 ? v : 255);
  }
}

}  // namespace vek
