// Colour conversions.
#include "vek/image.h"

#include "tests/campaign/packed.h"
#include "tests/definition/models.h"
#include "tests/definition/ycbcr.h"

namespace vek::test {
namespace {

using definition::Conversion;
using definition::Word;
using footprint::Layout;
using footprint::RowSteps;

/// The images of one side of a conversion: one or three planes, with one step, three, or none.
void drawSide(Case& c, RowSteps steps, Layout layout, VekiSize size, Use use) {
  const int planes = footprint::planeCount(layout);
  const bool oneStep = planes == 1 || steps == RowSteps::one;
  int step[3] = {}, blocks[3];
  for (int p = 0; p < planes; ++p) {
    const ptrdiff_t bytes = footprint::colorPlane(layout, p, size, 0).bytes;
    step[p] = p > 0 && oneStep          ? step[0]
              : steps == RowSteps::none ? static_cast<int>(bytes)
                                        : c.step(bytes, size.height, {}, use);
    blocks[p] = c.memory(use, footprint::colorPlane(layout, p, size, step[p]));
  }
  if (planes == 1) {
    c.pointer(blocks[0]);
  } else {
    c.planes(blocks, {1, 1, 1});
  }
  if (steps == RowSteps::none) return;
  if (oneStep) {
    c.number(step[0], Steps{}.refused);
  } else {
    c.numbers(step, Steps{}.refused);
  }
}

/// One side as programs have it.
void prepareSide(Arguments& a, RowSteps steps, Layout layout) {
  std::vector<Arguments::Plane> planes;
  for (int p = 0; p < footprint::planeCount(layout); ++p) {
    const Area area = footprint::colorPlane(layout, p, a.size, 0);
    planes.push_back(a.plane(static_cast<int>(area.bytes), static_cast<int>(area.rows),
                             steps == RowSteps::none ? 1 : 64));
  }
  if (planes.size() == 1) {
    a.pointer(planes[0].data);
  } else {
    a.pointers(planes);
  }
  if (steps == RowSteps::none) return;
  if (planes.size() == 1 || steps == RowSteps::one) {
    a.number(planes[0].step);
  } else {
    a.steps(planes);
  }
}

template <class F>
Record planar(const char* name, F f, Conversion conversion, const Word& word = {}) {
  conversion.word = word;
  const auto draw = [=](Case& c) {
    const int width = c.random.chance(2) ? c.random.in(300, 5000) : c.random.size(200);
    VekiSize size = {width, c.random.in(1, 6)};
    if (c.limits()) size = c.sizeAcrossSeams(2048);
    drawSide(c, conversion.steps, conversion.src(), size, Use::in);
    drawSide(c, conversion.steps, conversion.dst(), size, Use::out);
    c.roi(size);
  };
  const auto prepare = [=](Arguments& a) {
    prepareSide(a, conversion.steps, conversion.src());
    prepareSide(a, conversion.steps, conversion.dst());
    a.roi();
  };
  return with({name, bind(f), draw, {}, definition::converted(conversion), conversion.order},
              {{"", prepare}});
}

/// The records of a conversion to 16-bit pixels, one for each format.
#define VEK_WORDS(prefix, suffix, conversion)                                   \
  planar(VEK_NAMED(prefix##RGB565##suffix), conversion, {{5, 6, 5}}),           \
      planar(VEK_NAMED(prefix##RGB555##suffix), conversion, {{5, 5, 5}}),       \
      planar(VEK_NAMED(prefix##RGB444##suffix), conversion, {{4, 4, 4}}),       \
      planar(VEK_NAMED(prefix##BGR565##suffix), conversion, {{5, 6, 5}, true}), \
      planar(VEK_NAMED(prefix##BGR555##suffix), conversion, {{5, 5, 5}, true}), \
      planar(VEK_NAMED(prefix##BGR444##suffix), conversion, {{4, 4, 4}, true})

template <int channels = 3, class F, class Model>
Record model(const char* name, F f, Model define, const std::vector<Check>& order) {
  Manners manners;
  manners.order = order;
  return packed<3, channels>(name, f, manners, definition::pixels<channels>(f, define));
}

/// A model that is only close to its formula (tests/image/color compares them): pixel by pixel.
template <class F>
Record closeModel(const char* name, F f, const std::vector<Check>& order) {
  return model(
      name, f,
      [f](definition::Pixel p) {
        const Vek8u src[3] = {Vek8u(p[0]), Vek8u(p[1]), Vek8u(p[2])};
        Vek8u dst[3];
        f(src, 3, dst, 3, {1, 1});
        return definition::Pixel{dst[0], dst[1], dst[2]};
      },
      order);
}

}  // namespace

std::vector<Record> colorRecords() {
  using namespace definition;
  constexpr bool forward = true, back = false, yuv = true, ycbcr = false;
  const Check source = {vekStsNullPtrErr, 0}, sourceStep = {vekStsStepErr, 1},
              target = {vekStsNullPtrErr, 2}, targetStep = {vekStsStepErr, 3},
              weights = {vekStsNullPtrErr, 5};
  const std::vector<Check> sizeThenSteps = {pointers, sizes, steps},
                           stepsThenSize = {pointers, steps, sizes},
                           sizeThenSides = {sizes, source, sourceStep, target, targetStep},
                           sidesThenSize = {source, sourceStep, target, targetStep, sizes};
  const auto one = RowSteps::one, each = RowSteps::each, none = RowSteps::none;
  const Conversion toTriples = {forward, ycbcr, Layout::triples, one, {}, sizeThenSteps},
                   toPairs = {forward, ycbcr, Layout::pairs422, one, {}, sizeThenSteps},
                   fromTriples = {back, ycbcr, Layout::triples, one, {}, sizeThenSteps},
                   fromPairs = {back, ycbcr, Layout::pairs422, one, {}, sizeThenSteps};
  const auto inYuv = [](Conversion c) {
    c.yuv = true;
    return c;
  };
  // To 16-bit pixels steps come before the size, and 4:2:0 is checked side by side.
  const Conversion triplesToWords = {back, ycbcr, Layout::triples, one, {}, stepsThenSize},
                   planesToWords = {back, ycbcr, Layout::planes444, one, {}, stepsThenSize},
                   pairsToWords = {back, ycbcr, Layout::pairs422, one, {}, stepsThenSize},
                   planes420ToWords = {back, ycbcr, Layout::planes420, each, {}, sidesThenSize};
  return {
      planar(VEK_NAMED(vekiRGBToYCbCr422_8u_C3C2R), toPairs),
      planar(VEK_NAMED(vekiRGBToYCbCr_8u_C3R), toTriples),
      planar(VEK_NAMED(vekiRGBToYUV420_8u_C3P3),
             {forward, yuv, Layout::planes420, none, {}, {pointers, sizes}}),
      planar(VEK_NAMED(vekiRGBToYUV420_8u_C3P3R),
             {forward, yuv, Layout::planes420, each, {}, sizeThenSides}),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3C2R), inYuv(toPairs)),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3P3),
             {forward, yuv, Layout::planes422, none, {}, {pointers, sizes}}),
      planar(VEK_NAMED(vekiRGBToYUV422_8u_C3P3R),
             {forward, yuv, Layout::planes422, each, {}, sizeThenSides}),
      planar(VEK_NAMED(vekiRGBToYUV_8u_C3P3R),
             {forward, yuv, Layout::planes444, one, {}, sizeThenSteps}),
      planar(VEK_NAMED(vekiRGBToYUV_8u_C3R), inYuv(toTriples)),
      VEK_WORDS(vekiYCbCr420To, _8u16u_P3C3R, planes420ToWords),
      VEK_WORDS(vekiYCbCr422To, _8u16u_C2C3R, pairsToWords),
      planar(VEK_NAMED(vekiYCbCr422ToRGB_8u_C2C3R), fromPairs),
      VEK_WORDS(vekiYCbCrTo, _8u16u_C3R, triplesToWords),
      VEK_WORDS(vekiYCbCrTo, _8u16u_P3C3R, planesToWords),
      planar(VEK_NAMED(vekiYCbCrToRGB_8u_C3R), fromTriples),
      VEK_WORDS(vekiYUV420To, _8u16u_P3C3R, inYuv(planes420ToWords)),
      planar(VEK_NAMED(vekiYUV420ToRGB_8u_P3C3),
             {back, yuv, Layout::planes420, none, {}, {pointers, sizes}}),
      planar(VEK_NAMED(vekiYUV420ToRGB_8u_P3C3R),
             {back, yuv, Layout::planes420, each, {}, {sizes, pointers, steps}}),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_C2C3R), inYuv(fromPairs)),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_P3C3),
             {back, yuv, Layout::planes422, none, {}, {pointers, sizes}}),
      planar(VEK_NAMED(vekiYUV422ToRGB_8u_P3C3R),
             {back, yuv, Layout::planes422, each, {}, {sizes, pointers, steps}}),
      planar(VEK_NAMED(vekiYUVToRGB_8u_C3R), inYuv(fromTriples)),
      planar(VEK_NAMED(vekiYUVToRGB_8u_P3C3R),
             {back, yuv, Layout::planes444, one, {}, sizeThenSides}),
      model<1>(VEK_NAMED(vekiColorToGrayQ14_8u_C3C1R), weighted,
               {source, target, steps, weights, sizes}),
      closeModel(VEK_NAMED(vekiHLSToRGB_8u_C3R), sizeThenSteps),
      closeModel(VEK_NAMED(vekiHSVToRGB_8u_C3R), sizeThenSteps),
      closeModel(VEK_NAMED(vekiLUVToRGB_8u_C3R), stepsThenSize),
      model<1>(VEK_NAMED(vekiRGBToGray_8u_C3C1R), gray, stepsThenSize),
      model(VEK_NAMED(vekiRGBToHLS_8u_C3R), hls, sizeThenSteps),
      model(VEK_NAMED(vekiRGBToHSV_8u_C3R), hsv, sizeThenSteps),
      closeModel(VEK_NAMED(vekiRGBToLUV_8u_C3R), stepsThenSize),
      model(VEK_NAMED(vekiRGBToXYZ_8u_C3R), twistedBy<toXyz>, sizeThenSteps),
      model(VEK_NAMED(vekiRGBToYCC_8u_C3R), twistedBy<toYcc>, sizeThenSteps),
      model(VEK_NAMED(vekiXYZToRGB_8u_C3R), twistedBy<fromXyz>, sizeThenSteps),
      model(VEK_NAMED(vekiYCCToRGB_8u_C3R), twistedBy<fromYcc>, sizeThenSteps),
      packed<3>(VEK_NAMED(vekiColorTwistQ14_8u_C3R), {false, anySteps, {0}, {}, {pointers, sizes}},
                pixels<3>(vekiColorTwistQ14_8u_C3R, twisted)),
  };
}

}  // namespace vek::test
