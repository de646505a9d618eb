// The raw front end.
#include "tests/definition/front.h"

#include "vek/camera.h"

#include <climits>

#include "tests/campaign/campaign.h"

namespace vek::test {
namespace {

Refused bad(std::initializer_list<int> values) {
  return {vekStsBadArgErr, values};
}

int drawBits(Random& random, int format) {
  const int bits[] = {8, random.in(9, 16), 10, 12, 14};
  return bits[format];
}

VekiRawFrontEnd drawFrontEnd(Random& random) {
  VekiRawFrontEnd front = {};
  front.format = random.in(0, 4), front.order = random.in(0, 3);
  front.bits = drawBits(random, front.format);
  const int most = 1 << front.bits;
  const int levels[] = {0, most / 16, most - 1, most, 65535};
  const int gains[] = {0, 1, 4096, 4370, 8192, 65535};
  for (Vek16u& black : front.black) {
    black = static_cast<Vek16u>(
        std::min(random.chance(40) ? random.of(levels) : random.in(0, most / 4), 65535));
  }
  for (Vek16u& gain : front.gain) {
    gain = static_cast<Vek16u>(random.chance(40) ? random.of(gains) : random.in(2000, 20000));
  }
  return front;
}

void refuseFrontEnds(Case& c, int block, const VekiRawFrontEnd& front) {
  using F = VekiRawFrontEnd;
  for (int format : {-1, 5, INT_MIN}) c.refuse(block, &F::format, format);
  for (int bits : {7, 17, INT_MAX}) c.refuse(block, &F::bits, bits);
  c.refuse(block, &F::bits, front.format == vekiRawPlain16 ? 8 : front.bits + 1);
  for (int order : {-1, 4, INT_MAX}) c.refuse(block, &F::order, order);
}

void drawConversion(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  Random& random = c.random;
  const VekiRawFrontEnd front = drawFrontEnd(random);
  const auto [samples, bytes] = definition::rawLayouts[front.format];
  VekiRect r = {2 * random.in(0, 9) + front.order % 2, 2 * random.in(0, 2) + front.order / 2,
                2 * random.size(150), 2 * random.in(1, 3)};
  if (c.limits()) r.width = 2 * random.acrossSeam(2048);
  const int begin = r.x / samples * bytes, end = (r.x + r.width + samples - 1) / samples * bytes;
  const int srcStep = c.step(end, r.height, {1, false});
  const Area area = {end - begin, r.height, srcStep, ptrdiff_t{r.y} * srcStep + begin};
  c.pointer(c.memory(Use::in, area));
  c.number(srcStep, bad({0, -1, INT_MIN, end - 1}));
  c.rect(r, bad({-1, INT_MIN}));
  for (int v : {r.x + 1, r.x + (1 << 30), INT_MAX}) c.alsoRefuse(0, v);
  for (int v : {r.y + 1, INT_MAX - front.order / 2}) c.alsoRefuse(1, v - v % 2 + (r.y + 1) % 2);
  for (int v : {0, r.width + 1, INT_MAX - 1}) c.alsoRefuse(2, v);
  for (int v : {0, r.height + 1, INT_MAX}) c.alsoRefuse(3, v);
  const int dstStep = c.step(2 * r.width, r.height, {2});
  c.pointer(c.memory(Use::out, {2 * r.width, r.height, dstStep}, 2, 2), 2);
  c.number(dstStep, bad({0, -2, INT_MIN, 2 * r.width - 2, dstStep + 1}));
  const int block = c.objects(std::vector{front});
  refuseFrontEnds(c, block, front);
  c.pointer(block);
}

void drawRegion(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  const int order = c.random.in(0, 3), left = order % 2, top = order / 2;
  const int sizes[] = {2, 3, 4, 5, 1079, 1080, INT_MAX - 2, INT_MAX - 1};
  const int height = top + c.random.of(sizes), width = left + c.random.of(sizes);
  c.pair(width, height, bad({0, -1, INT_MIN, 1}));
  if (left == 1) c.alsoRefuse(0, 2);
  if (top == 1) c.alsoRefuse(1, 2);
  c.number(order, bad({-1, 4, INT_MIN, INT_MAX}));
  c.pointer(c.memory(Use::out, {sizeof(VekiRect), 1, 0}, alignof(VekiRect), 4));
}

VekStatus defineRegion(VekiSize size, int order, VekiRect* region) {
  *region = {order % 2, order / 2, 0, 0};
  region->width = (size.width - region->x) / 2 * 2;
  region->height = (size.height - region->y) / 2 * 2;
  return vekStsNoErr;
}

void drawColorMatrix(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  Random& random = c.random;
  VekiSize size = {random.in(2, 150), random.in(2, 7)};
  if (c.limits()) size.width = 2 + random.acrossSeam(1024);
  const int border = random.chance(60) ? random.in(-1, 2) : 0, around = border != 0 ? 1 : 0;
  const int srcStep = c.step(2 * (size.width + 2 * around), size.height + 2 * around, {2, false});
  c.pointer(c.memory(Use::in,
                     {2 * (size.width + 2 * around), size.height + 2 * around, srcStep,
                      -ptrdiff_t{around} * (srcStep + 2)},
                     2, 2, 1023),
            2);
  c.number(srcStep, bad({0, -2, INT_MIN, 2 * size.width - 2, srcStep + 1}));
  const int dstStep = c.step(2 * size.width, size.height, {2});
  c.pointer(c.memory(Use::out, {2 * size.width, size.height, dstStep}, 2, 2), 2);
  c.number(dstStep, bad({0, -2, INT_MIN, 2 * size.width - 2, dstStep + 1}));
  c.pair(size.width, size.height, bad({1, 0, -1, INT_MIN}));
  const int range = random.chance(30) ? 16383 : 5000;
  std::vector<Vek16s> matrix;
  for (int i = 0; i < 9; ++i) {
    matrix.push_back(static_cast<Vek16s>(random.chance(20) ? range : random.in(-range, range)));
  }
  const int block = c.objects(matrix);
  for (Vek16s entry : {Vek16s{16384}, Vek16s{-16384}}) {
    c.refuseEntry(block, static_cast<size_t>(random.in(0, 8)), entry, vekStsBadArgErr);
  }
  c.pointer(block);
  c.number(random.in(0, 3), bad({-1, 4, INT_MIN, INT_MAX}));
  c.number(border);
}

Typical typicalConversion(const char* variant, int format, int bits) {
  return {variant, [=](Arguments& a) {
            const auto [samples, bytes] = definition::rawLayouts[format];
            a.image(a.plane(a.size.width / samples * bytes, a.size.height));
            a.rect({0, 0, a.size.width, a.size.height});
            a.image(a.plane(2 * a.size.width, a.size.height));
            const auto black = static_cast<Vek16u>(1 << bits >> 4);
            const VekiRawFrontEnd front = {
                format, bits, 0, {black, black, black, black}, {8000, 4370, 4370, 7000}};
            a.pointer(a.keep(std::vector{front}));
          }};
}

void prepareColorMatrix(Arguments& a) {
  const Arguments::Plane src = a.bordered(2 * a.size.width, a.size.height, 2, 1);
  a.image(src);
  a.image(a.plane(2 * a.size.width, a.size.height));
  a.roi();
  a.pointer(a.keep(std::vector<Vek16s>{6554, -2048, -410, -1024, 6144, -1024, 0, -2867, 6963}));
  a.number(vekiBayerRGGB);
  a.number(1);
}

void prepareRegion(Arguments& a) {
  a.roi();
  a.number(vekiBayerBGGR);
  a.pointer(a.keep(std::vector<VekiRect>(1)));
}

}  // namespace

std::vector<Record> frontRecords() {
  return {with({"vekiRawTo10RGGB_8u16u_C1R",
                bind(vekiRawTo10RGGB_8u16u_C1R),
                drawConversion,
                {},
                bind(definition::rawFrontEnd)},
               {typicalConversion("", vekiRawCsi2_10, 10),
                typicalConversion("csi2-12", vekiRawCsi2_12, 12),
                typicalConversion("csi2-14", vekiRawCsi2_14, 14),
                typicalConversion("raw8", vekiRaw8, 8),
                typicalConversion("plain16", vekiRawPlain16, 12)}),
          with({"vekiColorMatrix_10Bayer_16u_C1R",
                bind(vekiColorMatrix_10Bayer_16u_C1R),
                drawColorMatrix,
                {},
                bind(definition::colorMatrix)},
               {{"", prepareColorMatrix}}),
          with({"vekiRawRegion", bind(vekiRawRegion), drawRegion, {}, bind(defineRegion)},
               {{"", prepareRegion}})};
}

}  // namespace vek::test
