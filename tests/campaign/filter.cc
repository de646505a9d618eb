// Filters.
#include "tests/footprint/filter.h"

#include "vek/image.h"

#include <climits>

#include "tests/campaign/packed.h"

namespace vek::test {
namespace {

using footprint::Neighbourhood;

int channelsOf(const std::string& name) {
  return name.find("_C1") != std::string::npos ? 1 : 3;
}

/// Source, destination and region of a filter; `anchor` is the pixel's place in what it reads.
void drawImages(Case& c, int channels, VekiSize mask, VekiPoint anchor, VekiSize most) {
  VekiSize roi = {c.random.size(most.width), c.random.in(1, most.height)};
  const int area = mask.width * mask.height;
  if (c.random.chance(8) && area < 1000) {  // several strips
    roi = {c.random.in(300, area < 60 ? 6000 : area < 200 ? 1500 : 450), 2};
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

using Plain = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize);
using Masked = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, VekiSize, VekiPoint);
using Color = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, int);
using Plane = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, const Vek32s*, VekiSize,
                        VekiPoint, int);
using Line = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, const Vek32s*, int, int, int);

Record morphology(const char* name, Plain f) {
  return {name, bind(f), [channels = channelsOf(name)](Case& c) {
            drawImages(c, channels, {3, 3}, {1, 1}, {200, 6});
          }};
}

Record medianColor(const char* name, Color f) {
  return {name, bind(f), [](Case& c) {
            const int side = 3 + 2 * c.random.in(0, 1);
            drawImages(c, 3, {side, side}, {side / 2, side / 2}, {130, 6});
            c.number(11 * side, {vekStsMaskSizeErr, {0, 35, 53, INT_MIN, INT_MAX}});
          }};
}

const Refused noAnchor = {vekStsAnchorErr, {-1, INT_MIN, INT_MAX}};

void numberAnchor(Case& c, VekiPoint anchor, VekiSize size) {
  c.pair(anchor.x, anchor.y, noAnchor);
  c.alsoRefuse(0, size.width);
  c.alsoRefuse(1, size.height);
}

/// Box and median.
Record masked(const char* name, Masked f, bool median) {
  return {name, bind(f), [channels = channelsOf(name), median](Case& c) {
            Random& random = c.random;
            VekiSize mask;
            // Where the kernels change: sums, factors and counters that just fit or do not.
            const VekiSize boxes[] = {{2, 43}, {6, 17},   {15, 8},  {43, 3},  {16, 16},
                                      {43, 6}, {2, 128},  {2, 258}, {48, 85}, {48, 86},
                                      {49, 6}, {15, 257}, {15, 258}};
            const VekiSize medians[] = {{15, 17}, {7, 37},   {33, 21},   {5, 85},
                                        {129, 5}, {131, 5},  {257, 3},   {3, 255},
                                        {41, 21}, {129, 35}, {129, 255}, {901, 75}};
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
          }};
}

/// The entries, and the divisor that goes with them.
std::vector<Vek32s> drawKernel(Random& random, size_t count, int& divisor) {
  const int magnitudes[] = {2, 12, 300, 32767};
  const int magnitude = random.of(magnitudes);
  std::vector<Vek32s> entries;
  int64_t sum = 0;
  for (size_t i = 0; i < count; ++i) {
    const bool extreme = random.chance(20);
    entries.push_back(extreme ? magnitude : random.in(-magnitude / 2 - 1, magnitude));
    sum += entries.back();
  }
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
    c.refuseEntry(kernel, i, 32768, vekStsCoeffRangeErr);
    c.refuseEntry(kernel, i, INT_MIN, vekStsCoeffRangeErr);
  }
  c.pointer(kernel);
}

const Refused noSize = {vekStsSizeErr, {1, 0, -1, INT_MIN}};
const Refused noDivisor = {vekStsDivisorErr, {0, -1, INT_MIN}};

Record plane(const char* name, Plane f) {
  return {name, bind(f), [channels = channelsOf(name)](Case& c) {
            const VekiSize size = {c.random.in(2, 7), c.random.in(2, 7)};
            const VekiPoint anchor = drawAnchor(c.random, size);
            int divisor;
            const auto entries =
                drawKernel(c.random, static_cast<size_t>(size.width * size.height), divisor);
            drawImages(c, channels, size, {size.width - 1 - anchor.x, size.height - 1 - anchor.y},
                       {150, 5});
            drawKernelArguments(c, entries);
            c.pair(size.width, size.height, noSize);
            numberAnchor(c, anchor, size);
            c.number(divisor, noDivisor);
          }};
}

Record line(const char* name, Line f, bool row) {
  return {name, bind(f), [channels = channelsOf(name), row](Case& c) {
            const int n = c.random.in(2, c.random.chance(5) ? 140 : 12);
            const int anchor = c.random.in(0, n - 1), before = n - 1 - anchor;
            int divisor;
            const auto entries = drawKernel(c.random, static_cast<size_t>(n), divisor);
            drawImages(c, channels, row ? VekiSize{n, 1} : VekiSize{1, n},
                       row ? VekiPoint{before, 0} : VekiPoint{0, before}, {150, 5});
            drawKernelArguments(c, entries);
            c.number(n, noSize);
            c.number(anchor, noAnchor);
            c.alsoRefuse(0, n);
            c.number(divisor, noDivisor);
          }};
}

}  // namespace

std::vector<Record> filterRecords() {
  Manners mirror;
  mirror.steps.refused.status = vekStsSizeErr;
  mirror.numbers = {0, 1, 2};
  mirror.refusedNumbers = {vekStsMirrorFlipErr, {-1, 3, INT_MIN, INT_MAX}};
  Manners gamma = mirror;
  gamma.inPlace = true;
  return {
      VEK_C1_C3(masked, vekiFilterBox, R, false),
      VEK_C1_C3(masked, vekiFilterMedian, R, true),
      medianColor(VEK_NAMED(vekiFilterMedianColor_8u_C3R)),
      VEK_C1_C3(plane, vekiFilter, R),
      VEK_C1_C3(line, vekiFilterRow, R, true),
      VEK_C1_C3(line, vekiFilterColumn, R, false),
      VEK_C1_C3(morphology, vekiErode3x3, R),
      VEK_C1_C3(morphology, vekiDilate3x3, R),
      VEK_C1_C3(packed, vekiMirror, R, mirror),
      packed(VEK_NAMED(vekiGammaFwd_8u_C3R), gamma),
      packed(VEK_NAMED(vekiGammaInv_8u_C3R), gamma),
  };
}

}  // namespace vek::test
