// Filters.
#include "tests/definition/filter.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"
#include "tests/footprint/filter.h"

namespace vek::test {
namespace {

using footprint::Neighbourhood;

/// Source, destination and region of a filter; `anchor` is the pixel's place in what it reads.
void drawImages(Case& c, int channels, VekiSize mask, VekiPoint anchor, VekiSize most) {
  VekiSize roi = {c.random.size(most.width), c.random.in(1, most.height)};
  const int area = mask.width * mask.height;
  if (c.random.chance(8) && area < 1000) {  // several strips
    roi = {c.random.in(300, area < 60 ? 6000 : area < 200 ? 1500 : 450), 2};
  }
  if (c.limits()) {
    roi = c.sizeAcrossSeams(area < 30 ? 2048 : area < 200 ? 512 : 256);
    if (area > 60) (roi.width > roi.height ? roi.height : roi.width) = 1;
  }
  Neighbourhood n = {channels, roi, mask, anchor, 0, 0};
  n.srcStep = c.step(footprint::filterSource(n).bytes, roi.height + mask.height - 1, {}, Use::in);
  n.dstStep = c.step(footprint::filterDestination(n).bytes, roi.height);
  c.pointer(c.memory(Use::in, footprint::filterSource(n)));
  c.number(n.srcStep, Steps{}.refused);
  c.pointer(c.memory(Use::out, footprint::filterDestination(n)));
  c.number(n.dstStep, Steps{}.refused);
  c.roi(roi);
}

VekiPoint drawAnchor(Random& random, VekiSize mask) {
  return {random.in(0, mask.width - 1), random.in(0, mask.height - 1)};
}

/// Source, with enough around it for a neighbourhood of `side` by `side` pixels with any anchor,
/// destination and region.
void prepareImages(Arguments& a, int channels, int side) {
  const int rowBytes = channels * a.size.width;
  a.image(a.bordered(rowBytes, a.size.height, channels * side, side));
  a.image(a.plane(rowBytes, a.size.height));
  a.roi();
}

std::string squareLabel(int side) {
  return std::to_string(side) + "x" + std::to_string(side);
}

/// Filters with a mask and a centred anchor.
std::vector<Typical> typicalMasked(int channels, const std::vector<int>& sides) {
  std::vector<Typical> all;
  for (int side : sides) {
    all.push_back({squareLabel(side), [=](Arguments& a) {
                     prepareImages(a, channels, side);
                     a.pair(side, side);
                     a.pair(side / 2, side / 2);
                   }});
  }
  return all;
}

const Check masks = {vekStsMaskSizeErr}, anchors = {vekStsAnchorErr};

template <int channels>
Record morphology(const char* name, const Call& f, const Call& define) {
  const auto draw = [](Case& c) { drawImages(c, channels, {3, 3}, {1, 1}, {200, 6}); };
  return with({name, f, draw, {}, define, {pointers, steps, sizes}},
              {{"", [](Arguments& a) { prepareImages(a, channels, 1); }}});
}
template <int channels, class F>
Record erode(const char* name, F f) {
  return morphology<channels>(name, bind(f), bind(definition::extreme3x3<channels, false>));
}
template <int channels, class F>
Record dilate(const char* name, F f) {
  return morphology<channels>(name, bind(f), bind(definition::extreme3x3<channels, true>));
}

const Refused noAnchor = {vekStsAnchorErr, {-1, INT_MIN, INT_MAX}};

void numberAnchor(Case& c, VekiPoint anchor, VekiSize size) {
  c.pair(anchor.x, anchor.y, noAnchor);
  c.alsoRefuse(0, size.width);
  c.alsoRefuse(1, size.height);
}

void drawMasked(Case& c, int channels, bool median) {
  Random& random = c.random;
  VekiSize mask;
  // Where the kernels change: sums, factors and counters that just fit or do not.
  const VekiSize boxes[] = {{2, 43},  {6, 17},  {15, 8},  {43, 3}, {16, 16},  {43, 6},  {2, 128},
                            {2, 258}, {48, 85}, {48, 86}, {49, 6}, {15, 257}, {15, 258}};
  const VekiSize medians[] = {{15, 17}, {7, 37},  {33, 21}, {5, 85},   {129, 5},   {131, 5},
                              {257, 3}, {3, 255}, {41, 21}, {129, 35}, {129, 255}, {901, 75}};
  if (random.chance(15)) {
    mask = median ? random.of(medians) : random.of(boxes);
  } else if (median) {
    const int sides[] = {1, 3, 5, 7, 9, 11, 13};
    mask.width = random.of(sides);
    mask.height = random.chance(50) ? mask.width : random.of(sides);
    if (random.chance(5)) mask.width = 2 * random.in(0, 80) + 1;
  } else {
    mask.width = random.in(2, random.chance(10) ? 130 : 20);
    mask.height = random.in(2, random.chance(10) ? 70 : 12);
  }
  const VekiPoint anchor = drawAnchor(random, mask);
  const int area = mask.width * mask.height;
  const VekiSize most = area > 10000  ? VekiSize{12, 2}
                        : area > 1000 ? VekiSize{70, 3}
                                      : VekiSize{150, 6};
  drawImages(c, channels, mask, anchor, most);
  c.pair(mask.width, mask.height, {vekStsMaskSizeErr, {median ? 2 : 1, 0, -1, INT_MIN}});
  if (median) c.alsoRefuse(1, 257);
  numberAnchor(c, anchor, mask);
}

template <int channels, class F>
Record box(const char* name, F f) {
  return with({name,
               bind(f),
               [](Case& c) { drawMasked(c, channels, false); },
               {},
               bind(definition::box<channels>),
               {pointers, steps, sizes, masks, anchors}},
              typicalMasked(channels, {3, 5, 15, 31}));
}

template <int channels, class F>
Record median(const char* name, F f) {
  return with({name,
               bind(f),
               [](Case& c) { drawMasked(c, channels, true); },
               {},
               bind(definition::median<channels>),
               {pointers, sizes, steps, masks, anchors}},
              typicalMasked(channels, {3, 5, 7, 11, 15, 31}));
}

Record medianColor(const char* name, const Call& f) {
  const auto draw = [](Case& c) {
    const int side = 3 + 2 * c.random.in(0, 1);
    drawImages(c, 3, {side, side}, {side / 2, side / 2}, {130, 6});
    c.number(11 * side, {vekStsMaskSizeErr, {0, 35, 53, INT_MIN, INT_MAX}});
  };
  std::vector<Typical> all;
  for (int side : {3, 5}) {
    all.push_back({squareLabel(side), [=](Arguments& a) {
                     prepareImages(a, 3, side);
                     a.number(11 * side);
                   }});
  }
  return with({name, f, draw, {}, bind(definition::colorMedian), {pointers, sizes, steps, masks}},
              all);
}

/// Makes the entries, or all of them together, as large as a kind of arithmetic just takes them or
/// does not: bytes, two bytes of which the lower one is signed, sums of 15 and of 31 bits of
/// products with 255.
void limitKernel(Random& random, std::vector<Vek32s>& entries, int64_t& sum) {
  const int limits[] = {127, 128, -128, -129, 32639, 32640, 32767, -32768};
  int64_t left = random.chance(50) ? 128 : 8421504;
  left += random.in(0, 1);
  const bool together = random.chance(60);
  const int sign = random.chance(50) ? 1 : -1;
  sum = 0;
  for (Vek32s& entry : entries) {
    const bool last = &entry == &entries.back();
    const int64_t part = last ? left : left / 2;
    if (!together && random.chance(20)) entry = random.of(limits);
    if (together) entry = sign * static_cast<Vek32s>(std::min<int64_t>(part, 32767));
    if (together) left -= std::abs(entry);
    sum += entry;
  }
}

/// The entries, and the divisor that goes with them.
std::vector<Vek32s> drawKernel(Case& c, size_t count, int& divisor) {
  Random& random = c.random;
  const int magnitudes[] = {2, 12, 300, 32767};
  const int magnitude = random.of(magnitudes);
  std::vector<Vek32s> entries;
  int64_t sum = 0;
  for (size_t i = 0; i < count; ++i) {
    const bool extreme = random.chance(20);
    entries.push_back(extreme ? magnitude : random.in(-magnitude / 2 - 1, magnitude));
    sum += entries.back();
  }
  if (c.limits()) limitKernel(random, entries, sum);
  const int kind = random.in(0, 3), shift = random.in(0, 30), any = random.in(1, INT_MAX);
  divisor = kind == 0 && sum > 0 ? static_cast<int>(sum)
            : kind == 1          ? 1 << shift
            : kind == 2          ? any % 50 + 1
                                 : any;
  return entries;
}

void drawKernelArguments(Case& c, const std::vector<Vek32s>& entries) {
  const int kernel = c.objects(entries);
  for (size_t i : {size_t{0}, entries.size() - 1}) {
    for (int bad : {32768, -32769, INT_MAX}) c.refuseEntry(kernel, i, bad, vekStsCoeffRangeErr);
    c.refuseEntry(kernel, i, INT_MIN, vekStsCoeffRangeErr);
  }
  c.pointer(kernel);
}

const Refused noSize = {vekStsSizeErr, {1, 0, -1, INT_MIN}};
const Refused noDivisor = {vekStsDivisorErr, {0, -1, INT_MIN}};
const std::vector<Check> linearOrder = {
    pointers, steps, sizes, anchors, {vekStsDivisorErr}, {vekStsCoeffRangeErr}};

/// Sums that fit 16 bits (binomial ones) and 32, divisors that are a power of two and that are not.
struct Kernel {
  const char* variant;
  int side;
  std::vector<Vek32s> entries;
  int divisor;
};

const Kernel usualPlanes[] = {{"3x3smooth", 3, {1, 2, 1, 2, 4, 2, 1, 2, 1}, 16},
                              {"3x3sharp", 3, {-90, -90, -90, -90, 1000, -90, -90, -90, -90}, 280},
                              {"5x5mean", 5, std::vector<Vek32s>(25, 1), 25},
                              {"5x5wide", 5, std::vector<Vek32s>(25, 100), 2500}};
const Kernel usualLines[] = {{"3", 3, {1, 2, 1}, 4},
                             {"5", 5, {1, 4, 6, 4, 1}, 16},
                             {"15", 15, std::vector<Vek32s>(15, 70), 1050}};

std::vector<Typical> typicalPlanes(int channels) {
  std::vector<Typical> all;
  for (const Kernel& k : usualPlanes) {
    all.push_back({k.variant, [=](Arguments& a) {
                     prepareImages(a, channels, k.side);
                     a.pointer(a.keep(k.entries));
                     a.pair(k.side, k.side);
                     a.pair(k.side / 2, k.side / 2);
                     a.number(k.divisor);
                   }});
  }
  return all;
}

std::vector<Typical> typicalLines(int channels) {
  std::vector<Typical> all;
  for (const Kernel& k : usualLines) {
    all.push_back({k.variant, [=](Arguments& a) {
                     prepareImages(a, channels, k.side);
                     a.pointer(a.keep(k.entries));
                     a.number(k.side);
                     a.number(k.side / 2);
                     a.number(k.divisor);
                   }});
  }
  return all;
}

template <int channels, class F>
Record plane(const char* name, F f) {
  const auto draw = [](Case& c) {
    VekiSize size = {c.random.in(2, 7), c.random.in(2, 7)};
    if (c.limits() && c.random.chance(15)) size = {c.random.in(14, 20), c.random.in(14, 18)};
    const VekiPoint anchor = drawAnchor(c.random, size);
    int divisor;
    const auto entries = drawKernel(c, static_cast<size_t>(size.width * size.height), divisor);
    drawImages(c, channels, size, {size.width - 1 - anchor.x, size.height - 1 - anchor.y},
               {150, 5});
    drawKernelArguments(c, entries);
    c.pair(size.width, size.height, noSize);
    numberAnchor(c, anchor, size);
    c.number(divisor, noDivisor);
  };
  return with({name, bind(f), draw, {}, bind(definition::convolution<channels>), linearOrder},
              typicalPlanes(channels));
}

template <int channels>
Record line(const char* name, const Call& f, const Call& define, bool row) {
  const auto draw = [row](Case& c) {
    int n = c.random.in(2, c.random.chance(5) ? 140 : 12);
    if (c.limits() && c.random.chance(15)) n = c.random.in(255, 290);
    const int anchor = c.random.in(0, n - 1), before = n - 1 - anchor;
    int divisor;
    const auto entries = drawKernel(c, static_cast<size_t>(n), divisor);
    drawImages(c, channels, row ? VekiSize{n, 1} : VekiSize{1, n},
               row ? VekiPoint{before, 0} : VekiPoint{0, before}, {150, 5});
    drawKernelArguments(c, entries);
    c.number(n, noSize);
    c.number(anchor, noAnchor);
    c.alsoRefuse(0, n);
    c.number(divisor, noDivisor);
  };
  return with({name, f, draw, {}, define, linearOrder}, typicalLines(channels));
}

template <int channels, class F>
Record row(const char* name, F f) {
  return line<channels>(name, bind(f), bind(definition::rowFilter<channels>), true);
}
template <int channels, class F>
Record column(const char* name, F f) {
  return line<channels>(name, bind(f), bind(definition::columnFilter<channels>), false);
}

}  // namespace

std::vector<Record> filterRecords() {
  Manners mirror;  // a step is answered as a size is
  mirror.steps.refused.status = vekStsSizeErr;
  mirror.numbers = {0, 1, 2};
  mirror.refusedNumbers = {vekStsMirrorFlipErr, {-1, 3, INT_MIN, INT_MAX}};
  mirror.order = {pointers, sizes, {vekStsMirrorFlipErr}};
  mirror.usual = {{"rows", vekiMirrorHorizontalAxis},
                  {"columns", vekiMirrorVerticalAxis},
                  {"both", vekiMirrorBothAxes}};
  Manners gamma = mirror;
  gamma.inPlace = true;
  return {
      VEK_C1_C3(box, vekiFilterBox, R),
      VEK_C1_C3(median, vekiFilterMedian, R),
      medianColor("vekiFilterMedianColor_8u_C3R", bind(vekiFilterMedianColor_8u_C3R)),
      VEK_C1_C3(plane, vekiFilter, R),
      VEK_C1_C3(row, vekiFilterRow, R),
      VEK_C1_C3(column, vekiFilterColumn, R),
      VEK_C1_C3(erode, vekiErode3x3, R),
      VEK_C1_C3(dilate, vekiDilate3x3, R),
      packed<1>(VEK_NAMED(vekiMirror_8u_C1R), mirror, bind(definition::mirror<1>)),
      packed<3>(VEK_NAMED(vekiMirror_8u_C3R), mirror, bind(definition::mirror<3>)),
      packed<3>(VEK_NAMED(vekiGammaFwd_8u_C3R), gamma, bind(definition::gamma<true>)),
      packed<3>(VEK_NAMED(vekiGammaInv_8u_C3R), gamma, bind(definition::gamma<false>)),
  };
}

}  // namespace vek::test
