// Dithering.
#include "tests/definition/dither.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

constexpr int anyLevels[] = {2, 3, 4, 5, 15, 16, 17, 32, 64, 100, 128, 129, 254, 255, 256};
constexpr int anyBits[] = {1, 2, 4};

/// `count` says how the third number before the origin is drawn: levels, bits, or not at all.
enum class Count { levels, bits, none };

template <Count count, class... A>
Record dither(const char* name, VekStatus (*f)(A...), VekStatus (*define)(A...),
              std::vector<std::pair<std::string, std::pair<int, int>>> usual) {
  constexpr int srcChannels = count == Count::none ? 3 : 1;
  const auto dstBytes = [](VekiSize roi, int number) -> ptrdiff_t {
    if (count == Count::bits) return (ptrdiff_t{roi.width} * number + 7) / 8;
    return ptrdiff_t{roi.width} * (count == Count::none ? 2 : 1);
  };
  const auto draw = [=](Case& c) {
    Random& random = c.random;
    VekiSize roi = {random.size(300), random.size(40)};
    if (c.limits()) roi = c.sizeAcrossSeams(2048);
    int number = random.of(anyLevels);
    if (random.chance(30)) number = random.in(2, 256);
    if (count == Count::bits) number = random.of(anyBits);
    const ptrdiff_t srcBytes = ptrdiff_t{srcChannels} * roi.width;
    const bool inPlace = count == Count::levels && random.chance(30);
    const Use use = inPlace ? Use::inOut : Use::in;
    const int srcStep = c.step(srcBytes, roi.height, {1, false}, use);
    const int src = c.memory(use, {srcBytes, roi.height, srcStep});
    c.pointer(src);
    c.stride(srcStep, srcBytes);
    if (inPlace) {
      c.pointer(src);
      c.stride(srcStep, srcBytes);
    } else {
      const int dstStep = c.step(dstBytes(roi, number), roi.height, {});
      c.pointer(c.memory(Use::out, {dstBytes(roi, number), roi.height, dstStep}));
      c.stride(dstStep, dstBytes(roi, number));
    }
    c.roi(roi);
    if (count == Count::levels) c.number(number, {vekStsBadArgErr, {1, 0, -1, 257, INT_MIN}});
    if (count == Count::bits) c.number(number, {vekStsBadArgErr, {0, 3, 5, 8, -1, INT_MAX}});
    c.number(random.in(0, 1), {vekStsNotSupportedModeErr, {-1, 2, INT_MIN, INT_MAX}});
    const int places[] = {0, 1, -1, 7, 8, INT_MAX, INT_MIN};
    const int y = random.in(-20, 20), x = random.of(places);
    c.pair(x, y);
  };
  std::vector<Typical> typical;
  for (const auto& [variant, how] : usual) {
    typical.push_back({variant, [=, number = how.first, method = how.second](Arguments& a) {
                         a.image(a.plane(srcChannels * a.size.width, a.size.height));
                         a.image(
                             a.plane(static_cast<int>(dstBytes(a.size, number)), a.size.height));
                         a.roi();
                         if (count != Count::none) a.number(number);
                         a.number(method);
                         a.pair(0, 0);
                       }});
  }
  return with(
      {name,
       bind(f),
       draw,
       {},
       bind(define),
       {pointers, sizes, steps, {vekStsBadArgErr}, {vekStsStrideErr}, {vekStsNotSupportedModeErr}}},
      typical);
}

constexpr int ordered = vekiDitherOrdered, diffusion = vekiDitherDiffusion;

}  // namespace

std::vector<Record> ditherRecords() {
  return {
      dither<Count::levels>(VEK_NAMED(vekiDither_8u_C1R), definition::ditheredBytes,
                            {{"", {16, ordered}},
                             {"100-levels", {100, ordered}},
                             {"diffusion", {16, diffusion}},
                             {"diffusion-100-levels", {100, diffusion}}}),
      dither<Count::bits>(VEK_NAMED(vekiDitherPacked_8u_C1R), definition::ditheredBits,
                          {{"1-bit", {1, ordered}},
                           {"4-bits", {4, ordered}},
                           {"diffusion-1-bit", {1, diffusion}},
                           {"diffusion-4-bits", {4, diffusion}}}),
      dither<Count::none>(VEK_NAMED(vekiDitherRGB565_8u16u_C3R),
                          definition::ditheredPixels<5, 6, 5>,
                          {{"", {0, ordered}}, {"diffusion", {0, diffusion}}}),
      dither<Count::none>(VEK_NAMED(vekiDitherRGB555_8u16u_C3R),
                          definition::ditheredPixels<5, 5, 5>,
                          {{"", {0, ordered}}, {"diffusion", {0, diffusion}}}),
      dither<Count::none>(VEK_NAMED(vekiDitherRGB444_8u16u_C3R),
                          definition::ditheredPixels<4, 4, 4>,
                          {{"", {0, ordered}}, {"diffusion", {0, diffusion}}}),
  };
}

}  // namespace vek::test
