// Order of channels, semi-planar 4:2:0.
#include "tests/definition/channels.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

VekiSize drawSize(Case& c) {
  if (c.limits()) return c.sizeAcrossSeams(4096);
  return {c.random.size(300), c.random.in(1, 5)};
}

template <int srcChannels, int dstChannels, class... A>
Record permute(const char* name, VekStatus (*f)(A...)) {
  constexpr bool hasValue = sizeof...(A) > 6;
  const auto draw = [](Case& c) {
    const VekiSize roi = drawSize(c);
    const bool inPlace = srcChannels == dstChannels && c.random.chance(40);
    const Use use = inPlace ? Use::inOut : Use::in;
    const int srcStep = c.step(ptrdiff_t{srcChannels} * roi.width, roi.height, {}, use);
    const int src = c.memory(use, footprint::pixels(roi, srcChannels, srcStep));
    const int dstStep =
        inPlace ? srcStep : c.step(ptrdiff_t{dstChannels} * roi.width, roi.height, {});
    const int dst =
        inPlace ? src : c.memory(Use::out, footprint::pixels(roi, dstChannels, dstStep));
    c.pointer(src);
    c.number(srcStep, Steps{}.refused);
    c.pointer(dst);
    c.number(dstStep, Steps{}.refused);
    c.roi(roi);
    const int most = std::max(srcChannels, dstChannels) - 1;
    std::vector<int> order;
    for (int i = 0; i < dstChannels; ++i) order.push_back(c.random.in(0, most));
    const int block = c.objects(order);
    c.pointer(block);
    for (size_t i = 0; i < order.size(); ++i) {
      for (int entry : {-1, most + 1, INT_MIN}) c.refuseEntry(block, i, entry, vekStsBadArgErr);
    }
    if (hasValue) c.number(c.random.in(0, 255));
  };
  const auto prepare = [](Arguments& a) {
    a.image(a.plane(srcChannels * a.size.width, a.size.height));
    a.image(a.plane(dstChannels * a.size.width, a.size.height));
    a.roi();
    a.pointer(a.keep(std::vector<int>{2, 1, 0, 3}));
    if (hasValue) a.number(255);
  };
  VekStatus (*define)(A...) = definition::permuted<srcChannels, dstChannels>;
  return with({name, bind(f), draw, {}, bind(define), {pointers, sizes, steps, {vekStsBadArgErr}}},
              {{"", prepare}});
}

/// The rows of a plane of three or of two.
Area planeOf(VekiSize roi, bool semiPlanar, int plane, int step) {
  if (plane == 0) return {roi.width, roi.height, step};
  const ptrdiff_t width = (roi.width + 1) / 2;
  return {semiPlanar ? 2 * width : width, (roi.height + 1) / 2, step};
}

void drawPlanes(Case& c, VekiSize roi, bool semiPlanar, Use use) {
  std::vector<int> blocks, rowSteps;
  for (int p = 0; p < (semiPlanar ? 2 : 3); ++p) {
    const Area area = planeOf(roi, semiPlanar, p, 0);
    rowSteps.push_back(c.step(area.bytes, static_cast<int>(area.rows), {}, use));
    blocks.push_back(c.memory(use, planeOf(roi, semiPlanar, p, rowSteps.back())));
  }
  c.planes(blocks);
  c.numbers(rowSteps, Steps{}.refused);
}

void preparePlanes(Arguments& a, bool semiPlanar) {
  std::vector<Arguments::Plane> planes;
  for (int p = 0; p < (semiPlanar ? 2 : 3); ++p) {
    const Area area = planeOf(a.size, semiPlanar, p, 0);
    planes.push_back(a.plane(static_cast<int>(area.bytes), static_cast<int>(area.rows)));
  }
  a.pointers(planes);
  a.steps(planes);
}

template <bool fromSemiPlanar, class F>
Record semiPlanar(const char* name, F f) {
  const auto draw = [](Case& c) {
    const VekiSize roi = drawSize(c);
    drawPlanes(c, roi, fromSemiPlanar, Use::in);
    drawPlanes(c, roi, !fromSemiPlanar, Use::out);
    c.roi(roi);
  };
  const auto prepare = [](Arguments& a) {
    preparePlanes(a, fromSemiPlanar);
    preparePlanes(a, !fromSemiPlanar);
    a.roi();
  };
  return with({name,
               bind(f),
               draw,
               {},
               bind(definition::planesMoved<fromSemiPlanar>),
               {pointers, sizes, steps}},
              {{"", prepare}});
}

}  // namespace

std::vector<Record> channelsRecords() {
  return {permute<3, 3>(VEK_NAMED(vekiPermuteChannels_8u_C3R)),
          permute<4, 4>(VEK_NAMED(vekiPermuteChannels_8u_C4R)),
          permute<4, 3>(VEK_NAMED(vekiPermuteChannels_8u_C4C3R)),
          permute<3, 4>(VEK_NAMED(vekiPermuteChannels_8u_C3C4R)),
          semiPlanar<false>(VEK_NAMED(vekiYCbCr420ToNV12_8u_P3P2R)),
          semiPlanar<true>(VEK_NAMED(vekiNV12ToYCbCr420_8u_P2P3R))};
}

}  // namespace vek::test
