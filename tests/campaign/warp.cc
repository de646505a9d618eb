// Affine and perspective warps.
#include "tests/definition/warp.h"

#include "vek/image.h"

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

using definition::AffineMap;
using definition::PerspectiveMap;

/// A number that is the same on every machine, often with few bits, so that positions are ties.
Vek64f drawFactor(Random& random, int most) {
  const int units[] = {1, 2, 256, 1000, 1 << 20};
  const int unit = random.of(units);
  return static_cast<Vek64f>(random.in(-most * unit, most * unit)) / unit;
}

/// A point on which the map puts another one, so that the picture is seen.
Vek64f drawPoint(Random& random, int first, int side) {
  return first + random.in(-1, side) + random.in(0, 256) / 256.0;
}

/// A linear map: c0, c1, c3 and c4.
void drawLinear(Random& random, Vek64f* c) {
  c[0] = c[4] = 1, c[1] = c[3] = 0;
  const int kind = random.in(0, 9);
  if (kind < 2) return;
  if (kind < 4) {  // mirrors and quarter turns
    const int sign[] = {-1, 1};
    c[0] = random.of(sign), c[4] = random.of(sign);
    if (random.chance(50)) std::swap(c[0], c[1]), std::swap(c[3], c[4]);
  } else if (kind < 7) {  // rotations and scales
    c[0] = c[4] = drawFactor(random, 2);
    c[1] = drawFactor(random, 2), c[3] = -c[1];
  } else {
    for (int i : {0, 1, 3, 4}) c[i] = drawFactor(random, kind == 9 ? 30 : 2);
  }
}

std::vector<Vek64f> drawMap(Case& c, int count, bool forward, VekiSize src, const VekiRect& dst) {
  Random& random = c.random;
  Vek64f m[9] = {0, 0, 0, 0, 0, 0, 0, 0, 1};
  drawLinear(random, m);
  if (forward && std::fabs(m[0] * m[4] - m[1] * m[3]) < 0.01) m[0] = m[4] = 1, m[1] = m[3] = 0;
  if (count == 9 && random.chance(80)) {
    const Vek64f strength[] = {0.00001, 0.001, 0.03};
    m[6] = drawFactor(random, 2) * random.of(strength);
    m[7] = drawFactor(random, 2) * random.of(strength);
    if (random.chance(20)) m[8] = random.in(-1, 1);
  }
  const Vek64f sx = drawPoint(random, 0, src.width), sy = drawPoint(random, 0, src.height);
  const Vek64f dx = drawPoint(random, dst.x, dst.width), dy = drawPoint(random, dst.y, dst.height);
  const Vek64f fromX = forward ? sx : dx, fromY = forward ? sy : dy;
  const Vek64f z = m[6] * fromX + m[7] * fromY + m[8];
  m[2] = (forward ? dx : sx) * z - (m[0] * fromX + m[1] * fromY);
  m[5] = (forward ? dy : sy) * z - (m[3] * fromX + m[4] * fromY);
  if (!forward && count == 6 && random.chance(10)) {  // at the limit, and far outside
    const Vek64f limit = std::nextafter(0x1p30, 0.0);
    m[3 * random.in(0, 1) + 2] = random.chance(50) ? limit : -limit;
    if (random.chance(50)) m[0] = 0, m[1] = m[2] = 0;
  }
  if (!forward && count == 6 && std::fabs(m[2]) >= 0x1p29) m[0] = m[1] = 0;
  if (!forward && count == 6 && std::fabs(m[5]) >= 0x1p29) m[3] = m[4] = 0;
  if (count == 9 && forward &&
      std::fabs((m[0] * (m[4] * m[8] - m[5] * m[7]) + m[1] * (m[5] * m[6] - m[3] * m[8])) +
                m[2] * (m[3] * m[7] - m[4] * m[6])) < 1e-9) {
    std::fill(m, m + 9, 0), m[0] = m[4] = m[8] = 1;
  }
  if (count == 9 && !forward && random.chance(20)) {  // any scale
    const int power = random.in(-1070, 980);
    for (Vek64f& v : m) v = std::ldexp(v, power);
    if (m[0] == 0 && m[4] == 0) m[8] = 1;
  }
  return {m, m + count};
}

VekiRect drawRect(Case& c) {
  Random& random = c.random;
  VekiSize size = {random.size(300), random.in(1, 12)};
  if (c.limits()) size = c.sizeAcrossSeams(1024, 64);
  const auto first = [&](int side) {
    if (random.chance(90)) return random.in(-side, 20);
    return random.chance(50) ? -32768 : 32768 - side;
  };
  const int x = first(size.width);
  return {x, first(size.height), size.width, size.height};
}

/// Coefficients at any address.
void passCoefficients(Case& c, const std::vector<Vek64f>& m, bool forward) {
  const auto lead = static_cast<size_t>(c.random.in(0, 7));
  std::vector<Vek8u> bytes(lead + m.size() * sizeof(Vek64f) +
                           static_cast<size_t>(c.random.in(0, 1)));
  memcpy(&bytes[lead], m.data(), m.size() * sizeof(Vek64f));
  const int block = c.object(Use::in, bytes.data(), bytes.size(), 1, 0);
  const auto refuse = [&](size_t i, Vek64f bad) {
    c.refuseAt(block, lead + i * sizeof(Vek64f), bad, vekStsCoeffRangeErr);
  };
  for (size_t i = 0; i < m.size(); ++i) {
    refuse(i, std::numeric_limits<Vek64f>::quiet_NaN());
    refuse(i, std::numeric_limits<Vek64f>::infinity());
  }
  if (m.size() == 6 && !forward) {
    for (size_t i : {2, 5}) refuse(i, 0x1p30), refuse(i, -1e300);
  }
  c.pointer(block, 1, static_cast<ptrdiff_t>(lead));
}

template <int channels, class Map>
void drawWarp(Case& c) {
  Random& random = c.random;
  VekiSize src = {random.size(200), random.size(60)};
  if (c.limits() && random.chance(50)) src = c.sizeAcrossSeams(2048);
  const VekiRect dst = drawRect(c);
  const int border = random.in(0, 2), srcBytes = channels * src.width;
  const int srcStep = c.step(srcBytes, src.height, {1, false}, Use::in);
  c.pointer(c.memory(Use::in, footprint::pixels(src, channels, srcStep)));
  c.stride(srcStep, srcBytes);
  c.pair(src.width, src.height, {vekStsSizeErr, {0, -1, INT_MIN, 32768, INT_MAX}});
  const Use use = border == vekiBorderTransparent ? Use::inOut : Use::out;
  const int dstStep = c.step(ptrdiff_t{channels} * dst.width, dst.height, {}, use);
  c.pointer(c.memory(use, footprint::pixels({dst.width, dst.height}, channels, dstStep)));
  c.stride(dstStep, ptrdiff_t{channels} * dst.width);
  c.rect(dst, {vekStsSizeErr, {-32769, INT_MIN, INT_MAX}});
  c.alsoRefuse(0, 32769 - dst.width), c.alsoRefuse(1, 32769 - dst.height);
  c.alsoRefuse(2, 32769 - dst.x), c.alsoRefuse(3, 32769 - dst.y);
  for (int cell : {2, 3}) c.alsoRefuse(cell, 0);
  const bool forward = random.chance(50);
  passCoefficients(c, drawMap(c, Map::count, forward, src, dst), forward);
  c.number(forward ? 0 : 1, {vekStsNotSupportedModeErr, {-1, 2, INT_MIN, INT_MAX}});
  c.number(random.in(0, 2), {vekStsNotSupportedModeErr, {-1, 3, INT_MIN, INT_MAX}});
  c.number(border, {vekStsNotSupportedModeErr, {-1, 3, INT_MIN, INT_MAX}});
  if constexpr (channels == 1) {
    c.number(random.in(0, 255));
  } else {
    std::vector<Vek8u> value;
    for (int i = 0; i < channels; ++i) value.push_back(static_cast<Vek8u>(random.in(0, 255)));
    c.pointer(c.objects(value), border == vekiBorderConstant ? 1 : 0);
  }
}

/// About the centre of the picture: a rotation by 0.3 that makes it a little larger, and for
/// perspective warps its right edge a little smaller.
std::vector<Vek64f> typicalMap(VekiSize size, int count) {
  const Vek64f cosine = 1.02 * std::cos(0.3), sine = 1.02 * std::sin(0.3);
  const Vek64f x = size.width / 2.0, y = size.height / 2.0;
  std::vector<Vek64f> m = {cosine, -sine,  x - cosine * x + sine * y,
                           sine,   cosine, y - sine * x - cosine * y};
  if (count == 9) m.insert(m.end(), {0.0001, -0.00005, 1});
  return m;
}

template <int channels, int count>
Typical typical(const char* variant, int interpolation) {
  return {variant, [interpolation](Arguments& a) {
            a.image(a.plane(channels * a.size.width, a.size.height));
            a.roi();
            a.image(a.plane(channels * a.size.width, a.size.height));
            a.rect({0, 0, a.size.width, a.size.height});
            a.pointer(a.keep(typicalMap(a.size, count)));
            a.number(vekiWarpForward);
            a.number(interpolation);
            a.number(vekiBorderConstant);
            if constexpr (channels == 1) {
              a.number(77);
            } else {
              a.pointer(usualBytes[0]);
            }
          }};
}

template <int channels, class Map, class F, class Define>
Record warp(const char* name, F f, Define define) {
  constexpr int src = 0, dst = 3, coefficients = 6, value = 10;
  return with({name,
               bind(f),
               drawWarp<channels, Map>,
               {},
               bind(define),
               {{vekStsNullPtrErr, src},
                {vekStsNullPtrErr, dst},
                {vekStsNullPtrErr, coefficients},
                sizes,
                steps,
                {vekStsStrideErr},
                {vekStsNotSupportedModeErr},
                {vekStsNullPtrErr, value},
                {vekStsCoeffRangeErr}}},
              {typical<channels, Map::count>("", vekiWarpLinear),
               typical<channels, Map::count>("nearest", vekiWarpNearest),
               typical<channels, Map::count>("cubic", vekiWarpCubic)});
}

}  // namespace

std::vector<Record> warpRecords() {
  using definition::warp;
  return {
      test::warp<1, AffineMap>(VEK_NAMED(vekiAffineWarp_8u_C1R), warp<1, AffineMap, Vek8u>),
      test::warp<3, AffineMap>(VEK_NAMED(vekiAffineWarp_8u_C3R), warp<3, AffineMap, const Vek8u*>),
      test::warp<1, PerspectiveMap>(VEK_NAMED(vekiPerspectiveWarp_8u_C1R),
                                    warp<1, PerspectiveMap, Vek8u>),
      test::warp<3, PerspectiveMap>(VEK_NAMED(vekiPerspectiveWarp_8u_C3R),
                                    warp<3, PerspectiveMap, const Vek8u*>)};
}

}  // namespace vek::test
