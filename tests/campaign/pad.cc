// Borders.
#include "tests/definition/pad.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

/// Borders are often narrow, sometimes wider than the source.
int drawBorder(Random& random, int side) {
  const int widths[] = {0, 1, 3, side - 1, side, 2 * side + 1};
  return random.chance(60) ? random.of(widths) : random.in(0, 40);
}

template <int channels, class F, class Define>
Record pad(const char* name, F f, Define define) {
  const auto draw = [](Case& c) {
    Random& random = c.random;
    VekiSize src = {random.size(200), random.size(6)};
    if (c.limits()) src = c.sizeAcrossSeams(2048);
    const int left = drawBorder(random, src.width),
              top = drawBorder(random, std::min(src.height, 6));
    const VekiSize dst = {left + src.width + drawBorder(random, src.width),
                          top + src.height + drawBorder(random, std::min(src.height, 6))};
    const bool inPlace = random.chance(40);
    const Use use = inPlace ? Use::inOut : Use::out;
    const int dstStep = c.step(ptrdiff_t{channels} * dst.width, dst.height, {}, use);
    const int to = c.memory(use, footprint::pixels(dst, channels, dstStep));
    const int srcStep =
        inPlace ? dstStep : c.step(ptrdiff_t{channels} * src.width, src.height, {}, Use::in);
    if (inPlace) {
      c.pointer(to, 1, ptrdiff_t{top} * dstStep + ptrdiff_t{channels} * left);
    } else {
      c.pointer(c.memory(Use::in, footprint::pixels(src, channels, srcStep)));
    }
    c.number(srcStep, Steps{}.refused);
    c.roi(src);
    c.pointer(to);
    c.number(dstStep, Steps{}.refused);
    c.roi(dst);
    c.number(left, {vekStsBadArgErr, {-1, INT_MIN}});
    c.number(top, {vekStsBadArgErr, {-1, INT_MIN}});
    c.number(random.in(0, 2), {vekStsBadArgErr, {-1, 3, INT_MIN, INT_MAX}});
    if constexpr (channels == 1) {
      c.number(random.in(0, 255));
    } else {
      std::vector<Vek8u> value;
      for (int i = 0; i < channels; ++i) value.push_back(static_cast<Vek8u>(random.in(0, 255)));
      c.pointer(c.objects(value));
    }
  };
  const auto typical = [](const char* variant, int border) -> Typical {
    return {variant, [border](Arguments& a) {
              constexpr int width = 8;
              const VekiSize dst = {a.size.width + 2 * width, a.size.height + 2 * width};
              a.image(a.plane(channels * a.size.width, a.size.height));
              a.roi();
              a.image(a.plane(channels * dst.width, dst.height));
              a.pair(dst.width, dst.height);
              a.number(width);
              a.number(width);
              a.number(border);
              if constexpr (channels == 1) {
                a.number(77);
              } else {
                a.pointer(usualBytes[0]);
              }
            }};
  };
  constexpr int srcSize = 2, dstSize = 5, left = 6, top = 7, border = 8;
  return with({name,
               bind(f),
               draw,
               {},
               bind(define),
               {pointers,
                {vekStsSizeErr, srcSize},
                {vekStsSizeErr, dstSize},
                {vekStsBadArgErr, left},
                {vekStsBadArgErr, top},
                steps,
                {vekStsBadArgErr, border}}},
              {typical("", vekiBorderConstant), typical("replicate", vekiBorderReplicate),
               typical("mirror", vekiBorderMirror)});
}

}  // namespace

std::vector<Record> padRecords() {
  return {pad<1>(VEK_NAMED(vekiPad_8u_C1R), definition::paddedPlane),
          pad<3>(VEK_NAMED(vekiPad_8u_C3R), definition::padded<3>)};
}

}  // namespace vek::test
