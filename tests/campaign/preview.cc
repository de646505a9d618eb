// Resize, rotate and convert.
#include "tests/definition/preview.h"

#include "vek/camera.h"

#include <climits>

#include "tests/campaign/campaign.h"
#include "tests/campaign/preview_cases.h"

namespace vek::test {
namespace {

using footprint::pixelBytes;
using footprint::Resize;

Refused bad(std::initializer_list<int> values) {
  return {vekStsBadArgErr, values};
}

const Refused belowOne = bad({0, -1, INT_MIN});

using Aligned = const int (&)[3];

int roundUp(int value, int unit) {
  return (value + unit - 1) / unit * unit;
}

int maxStep(int src, int dst) {
  return static_cast<int>((((src & ~1) - 1) * 65536LL) / ((dst & ~1) - 1));
}

/// Row steps for the source, and sampling steps within their limits, often the limits themselves or
/// whole samples.
void drawSteps(Resize& a, Random& random, Aligned alignments) {
  for (int i = 0; i < 3; ++i) {
    const int row = i == 0 ? a.srcWidth : a.srcWidth / 2;
    a.srcStep[i] = roundUp(row, alignments[i]) + alignments[i] * random.in(0, 2);
  }
  const int xMost = maxStep(a.srcWidth, a.dstWidth), yMost = maxStep(a.srcHeight, a.dstHeight);
  const bool unscaled = a.srcWidth == a.dstWidth && a.srcHeight == a.dstHeight;
  a.xStep = unscaled ? 65536 : random.chance(50) ? xMost : random.in(1, xMost);
  a.yStep = unscaled ? 65536 : random.chance(50) ? yMost : random.in(1, yMost);
  if (a.xStep > 65536 && random.chance(40)) a.xStep &= ~0xFFFF;
}

/// Destination sizes are multiples of the units; sometimes strips and tiles are crossed.
Resize drawResize(Case& c, int widthUnit, int heightUnit, Aligned alignments) {
  Random& random = c.random;
  Resize a = {};
  const bool wide = random.chance(3), unscaled = !wide && random.chance(40);
  a.dstWidth = roundUp(wide ? random.in(500, 1500) : random.size(150) + 1, widthUnit);
  a.dstHeight = roundUp(random.size(60) + 1, heightUnit);
  a.srcWidth = unscaled ? a.dstWidth : wide ? random.in(500, 1500) : random.size(150) + 1;
  a.srcHeight = unscaled ? a.dstHeight : random.size(60) + 1;
  if (c.limits()) {  // a size of 1 is refused, and sources are about as large
    const VekiSize size = c.sizeAcrossSeams(2048);
    a.dstWidth = roundUp(size.width + 1, widthUnit),
    a.dstHeight = roundUp(size.height + 1, heightUnit);
    a.srcWidth = unscaled ? a.dstWidth : a.dstWidth * random.in(1, 6) / 3 + 2;
    a.srcHeight = unscaled ? a.dstHeight : a.dstHeight * random.in(1, 6) / 3 + 2;
  }
  drawSteps(a, random, alignments);
  a.interpolation = random.in(0, 1);
  a.rotation = random.in(0, 5);
  return a;
}

void drawPlanes(Case& c, Use use, const Area (&areas)[3], Aligned alignments) {
  int blocks[3];
  for (int i = 0; i < 3; ++i) {
    blocks[i] = c.memory(use, areas[i], static_cast<size_t>(alignments[i]));
  }
  c.planes(blocks, alignments);
}

/// The row steps of an image `width` pixels wide; misaligned and shorter ones are refused.
void drawRowSteps(Case& c, Aligned steps, int width, Aligned alignments) {
  c.numbers(steps, belowOne);
  for (int i = 0; i < 3; ++i) {
    const int row = i == 0 ? width : width / 2, unit = alignments[i];
    if (unit > 1) c.alsoRefuse(i, steps[i] + unit / 2);
    c.alsoRefuse(i, (row - 1) / unit * unit);
  }
}

/// Source planes, row steps and size; sizes are refused where something bounds them.
void drawSource(Case& c, const Resize& a, const footprint::Planes& print, Aligned planes,
                Aligned steps, bool bounded) {
  drawPlanes(c, Use::in, print.src, planes);
  drawRowSteps(c, a.srcStep, a.srcWidth, steps);
  c.number(a.srcWidth, bounded ? bad({0, -1, INT_MIN, INT_MAX}) : bad({INT_MAX}));
  c.number(a.srcHeight, bounded ? belowOne : Refused());
}

/// Interpolation, rotation and sampling steps.
void drawManner(Case& c, const Resize& a, bool bounded) {
  c.number(a.interpolation, bad({-1, 2, INT_MAX}));
  c.number(a.rotation, bad({-1, 6, INT_MIN}));
  c.number(a.xStep, belowOne);
  if (bounded) c.alsoRefuse(0, maxStep(a.srcWidth, a.dstWidth) + 1);
  c.number(a.yStep, belowOne);
  if (bounded) c.alsoRefuse(0, maxStep(a.srcHeight, a.dstHeight) + 1);
}

/// Reduces to a half or a quarter, mostly without rotation.
void makeExact(Resize& a, Random& random) {
  const int factor = random.chance(50) ? 2 : 4;
  a.srcWidth = factor * a.dstWidth + random.in(0, factor - 1);
  a.srcHeight = factor * a.dstHeight + random.in(0, factor - 1);
  drawSteps(a, random, {8, 8, 8});
  if (random.chance(70)) a.rotation = 0;
}

/// Some rows of the scaled image: pairs, with an odd last one.
void drawRowRange(Case& c, int height) {
  const int pairs = height / 2, first = 2 * c.random.in(0, pairs - 1);
  const int count = 2 * c.random.in(1, pairs - first / 2);
  const bool toEnd = first + count == 2 * pairs;
  c.number(first, bad({-1, -2, 1, INT_MIN, INT_MAX, height + height % 2}));
  c.number(toEnd ? height - first : count, bad({0, 1, -1, INT_MIN, INT_MAX, height - first + 1}));
}

Resize drawPlanarResize(Case& c, bool is420, Aligned srcUnits, Aligned dstUnits) {
  Random& random = c.random;
  Resize a = drawResize(c, 2, is420 ? 2 : 1, srcUnits);
  if (is420 && random.chance(40)) makeExact(a, random);
  const int across = a.isQuarterTurn() ? a.dstHeight : a.dstWidth;
  int dstStep[3];
  for (int i = 0; i < 3; ++i) {
    dstStep[i] = roundUp(i == 0 ? across : across / 2, dstUnits[i]) + dstUnits[i] * random.in(0, 3);
  }
  const auto print = is420 ? footprint::ycc420(a, dstStep) : footprint::ycc422(a, dstStep);
  drawSource(c, a, print, srcUnits, srcUnits, true);
  drawPlanes(c, Use::out, print.dst, dstUnits);
  drawRowSteps(c, dstStep, across, dstUnits);
  c.number(a.dstWidth, bad({0, -1, INT_MIN, INT_MAX, a.dstWidth + 1}));
  c.number(a.dstHeight, belowOne);
  if (is420) c.alsoRefuse(0, a.dstHeight + 1);
  drawManner(c, a, true);
  return a;
}

void draw420(Case& c) {
  drawPlanarResize(c, true, {8, 8, 8}, {4, 2, 2});
}

void draw420Rows(Case& c) {
  drawRowRange(c, drawPlanarResize(c, true, {8, 8, 8}, {4, 2, 2}).dstHeight);
}

void draw422(Case& c) {
  drawPlanarResize(c, false, {4, 1, 1}, {4, 1, 1});
}

Resize draw420Rgb(Case& c) {
  Random& random = c.random;
  const Resize a = drawResize(c, 1, 1, {4, 2, 2});
  const int format = random.in(4, 7), bytes = pixelBytes(format - 4), unit = format == 7 ? 2 : 8;
  const int across = a.isQuarterTurn() ? a.dstHeight : a.dstWidth;
  const int dstStep = roundUp(across * bytes, unit) + unit * random.in(0, 2);
  const auto print = footprint::ycc420Rgb(a, dstStep, bytes);
  drawSource(c, a, print, {4, 2, 2}, {4, 2, 2}, true);
  c.pointer(c.memory(Use::out, print.dst[0], 8), 8);
  c.number(dstStep, bad({0, -1, INT_MIN, dstStep + 1, (across * bytes - 1) / unit * unit}));
  c.number(a.dstWidth, belowOne);
  c.number(a.dstHeight, belowOne);
  c.number(format, bad({3, 8, INT_MIN}));
  drawManner(c, a, true);
  return a;
}

void draw420RgbRows(Case& c) {
  drawRowRange(c, draw420Rgb(c).dstHeight);
}

void draw422Rgb(Case& c) {
  Random& random = c.random;
  Resize a = drawResize(c, random.chance(50) ? 4 : 1, 1, {4, 2, 2});
  const int format = random.in(0, 3), bytes = pixelBytes(format);
  if (random.chance(30)) {  // nothing bounds sizes and steps
    a.srcWidth = random.in(1, a.srcWidth);
    a.srcHeight = random.in(1, a.srcHeight);
    a.xStep = random.in(1, 3 * 65536);
    a.yStep = random.chance(80) ? random.in(1, 3 * 65536) : INT_MAX;
  }
  // 16-bit quarter turns scatter the pixels of an unequal size.
  const bool small = a.dstWidth <= 20 && a.dstHeight <= 20;
  if (format == 3 ? random.chance(20) : a.isQuarterTurn() && !small) {
    a.dstHeight = a.dstWidth = std::min(a.dstWidth, c.limits() ? 300 : INT_MAX);
  }
  if (format == 3 && a.isQuarterTurn()) std::swap(a.dstWidth, a.dstHeight);
  for (int i : {1, 2}) a.srcStep[i] = roundUp(a.srcWidth, 4) / 2 + 2 * random.in(0, 2);
  const int row = a.dstWidth * bytes, extra = random.in(0, 1);
  const int dstStep = format == 3 ? roundUp(row, 4) + extra : roundUp(row, 8) + 8 * extra;
  const auto print = footprint::ycc422Rgb(a, dstStep, bytes);
  drawSource(c, a, print, {1, 1, 1}, {4, 2, 2}, false);
  c.pointer(c.memory(Use::out, print.dst[0]));
  c.number(dstStep, bad({0, -1, INT_MIN, dstStep + 2}));
  c.number(a.dstWidth);
  c.number(a.dstHeight);
  c.number(format, bad({-1, 4}));
  drawManner(c, a, false);
}

void draw422Reduce(Case& c) {
  Random& random = c.random;
  const int factor = 2 << random.in(0, 2);
  int width = factor * random.size(150), height = factor * random.size(40);
  if (random.chance(2)) width = factor * random.in(500, 1500);
  if (c.limits()) {
    const VekiSize size = c.sizeAcrossSeams(1024);
    width = factor * size.width, height = factor * size.height;
  }
  width += random.in(0, factor - 1);
  height += random.in(0, factor - 1);
  const int interpolation = random.in(0, 1), format = random.in(0, 1), rotation = random.in(0, 3);
  const bool quarterTurn = rotation == 1 || rotation == 2;
  const int across = (quarterTurn ? height : width) / factor;
  const int srcStep = roundUp(2 * width, 8) + 8 * random.in(0, 1);
  const int dstStep = roundUp(2 * across, 8) + 8 * random.in(0, 1);
  const auto print =
      footprint::ycc422Reduce(width, height, srcStep, factor, interpolation, rotation, dstStep);
  c.pointer(c.memory(Use::in, print.src[0], 8), 8);
  c.number(srcStep, bad({0, -1, INT_MIN, srcStep + 4, (2 * width - 1) / 8 * 8}));
  c.pointer(c.memory(Use::out, print.dst[0], 8), 8);
  c.number(dstStep, bad({0, -1, INT_MIN, dstStep + 4, (2 * across - 1) / 8 * 8}));
  c.number(width, bad({0, -1, INT_MIN, INT_MAX, factor - 1}));
  c.number(height, bad({0, -1, INT_MIN, factor - 1}));
  c.number(factor, bad({0, 1, 3, 16, -2, INT_MAX}));
  c.number(interpolation, bad({-1, 2}));
  c.number(format, bad({-1, 2}));
  c.number(rotation, bad({-1, 4}));
}

// ---- 4:2:2 to 4:2:0 with rotation ---------------------------------------------------------------

const Steps rowsApart = {.overlap = false, .refused = belowOne};

/// An image of planes with these rows; the shortest step that is refused is a row's bytes less one.
std::vector<int> drawRows(Case& c, const std::vector<VekiSize>& rows, Use use, bool isArray) {
  std::vector<int> steps, blocks;
  for (const VekiSize& plane : rows) {
    const int step = c.step(plane.width, plane.height, rowsApart, use);
    steps.push_back(step);
    blocks.push_back(c.memory(use, {plane.width, plane.height, step}));
  }
  if (isArray) {
    c.planes(blocks);
    c.numbers(steps, belowOne);
  } else {
    c.pointer(blocks[0]);
    c.number(steps[0], belowOne);
  }
  for (size_t i = 0; i < rows.size(); ++i) c.alsoRefuse(static_cast<int>(i), rows[i].width - 1);
  return steps;
}

/// The planes of a 4:2:0 image, turned, or of a 4:2:2 image.
std::vector<VekiSize> planes420(VekiSize size, int rotation) {
  if (rotation == 1 || rotation == 2) std::swap(size.width, size.height);
  const VekiSize chroma = {size.width / 2, size.height / 2};
  return {size, chroma, chroma};
}
std::vector<VekiSize> source422(VekiSize size, bool planar) {
  if (!planar) return {{2 * size.width, size.height}};
  const VekiSize chroma = {size.width / 2, size.height};
  return {size, chroma, chroma};
}

template <bool planar>
void drawHalved(Case& c) {
  Random& random = c.random;
  VekiSize size = {random.size(150), random.size(60)};
  if (c.limits()) size = c.sizeAcrossSeams(2048, 256);
  size = {roundUp(size.width, 2), roundUp(size.height, 2)};
  const int rotation = random.in(0, 5);
  drawRows(c, source422(size, planar), Use::in, planar);
  drawRows(c, planes420(size, rotation), Use::out, true);
  c.number(size.width, bad({0, 1, -2, INT_MIN, INT_MAX, size.width + 1}));
  c.number(size.height, bad({0, 1, -2, INT_MIN, INT_MAX, size.height + 1}));
  c.number(rotation, bad({-1, 6, INT_MIN}));
}

template <bool planar>
Typical typicalHalving(const char* variant, int rotation) {
  return {variant, [=](Arguments& a) {
            const auto planes = [&](const std::vector<VekiSize>& rows) {
              std::vector<Arguments::Plane> all;
              for (const VekiSize& plane : rows) all.push_back(a.plane(plane.width, plane.height));
              return all;
            };
            const auto src = planes(source422(a.size, planar));
            if (planar) {
              a.pointers(src);
              a.steps(src);
            } else {
              a.image(src[0]);
            }
            const auto dst = planes(planes420(a.size, rotation));
            a.pointers(dst);
            a.steps(dst);
            for (int number : {a.size.width, a.size.height, rotation}) a.number(number);
          }};
}

// ---- How programs call them ---------------------------------------------------------------------

/// A sampling step that fits `to` samples into `from`.
int usualStep(int from, int to) {
  return static_cast<int>(
      std::min(int64_t{from - 1} * 65536 / (to - 1), int64_t{from} * 65536 / to));
}

std::vector<Arguments::Plane> usualPlanes(Arguments& a, const PreviewCase& p, VekiSize size) {
  const VekiSize chroma = {size.width / 2, size.height / p.chromaRows};
  return {a.plane(size.width, size.height, p.stepMultiple),
          a.plane(chroma.width, chroma.height, p.stepMultiple),
          a.plane(chroma.width, chroma.height, p.stepMultiple)};
}

void prepareReduce(Arguments& a, const PreviewCase& p) {
  const VekiSize out = p.out(a.size);
  a.image(a.plane(2 * a.size.width, a.size.height, p.stepMultiple));
  a.image(a.plane(2 * out.width, out.height, p.stepMultiple));
  a.number(a.size.width);
  a.number(a.size.height);
  for (int number : {p.down, p.interpolation, 0, p.rotation}) a.number(number);
}

/// To the 24-bit format the 4:2:2 function takes the destination's own size, everything else the
/// size before the rotation.
void preparePlanar(Arguments& a, const PreviewCase& p) {
  const VekiSize scaled = p.scaled(a.size), out = p.out(a.size);
  const std::vector<Arguments::Plane> src = usualPlanes(a, p, a.size);
  a.pointers(src);
  a.steps(src);
  a.number(a.size.width);
  a.number(a.size.height);
  const bool toPlanes = p.pixels == Pixels::planar, is422 = p.chromaRows == 1;
  if (toPlanes) {
    const std::vector<Arguments::Plane> dst = usualPlanes(a, p, out);
    a.pointers(dst);
    a.steps(dst);
  } else {
    a.image(a.plane(p.pixelBytes() * out.width, out.height, p.stepMultiple));
  }
  const VekiSize given = !toPlanes && is422 ? out : scaled;
  a.number(given.width);
  a.number(given.height);
  if (!toPlanes) a.number((p.pixels == Pixels::bgr24 ? 3 : 0) + (is422 ? 0 : 4));
  a.number(p.interpolation);
  a.number(p.rotation);
  a.number(usualStep(a.size.width, scaled.width));
  a.number(usualStep(a.size.height, scaled.height));
}

/// Of one variant, or of all.
std::vector<Typical> typicalPreviews(const std::string& function, const std::string& variant = "") {
  std::vector<Typical> all;
  for (const PreviewCase& p : previewCases) {
    if (p.function != function || (!variant.empty() && p.variant != variant)) continue;
    all.push_back({p.variant, [&p](Arguments& a) {
                     if (p.interleaved) {
                       prepareReduce(a, p);
                     } else {
                       preparePlanar(a, p);
                     }
                   }});
  }
  return all;
}

template <class F, class Define>
Record preview(const char* name, F f, std::function<void(Case&)> draw, Define define) {
  const auto drawCamera = [draw](Case& c) {
    c.nullStatus = vekStsBadArgErr;
    draw(c);
  };
  return with({name, bind(f), drawCamera, {}, bind(define)}, typicalPreviews(name));
}

/// Programs make the second half of the rows in another thread.
Record secondHalf(Record record, const std::vector<Typical>& whole) {
  const Typical& of = whole[0];
  record.typical = {{of.variant, [prepare = of.prepare](Arguments& a) {
                       prepare(a);
                       a.number(a.size.height / 6 * 2);
                       a.number(a.size.height / 6 * 2);
                     }}};
  return record;
}

template <bool planar, class F, class Define>
Record halved(const char* name, F f, Define define) {
  Record record = preview(name, f, drawHalved<planar>, define);
  record.typical = {typicalHalving<planar>("", vekiRotNone),
                    typicalHalving<planar>("quarter-turn", vekiRot90Cw),
                    typicalHalving<planar>("half-turn", vekiRot180)};
  return record;
}

}  // namespace

std::vector<Record> previewRecords() {
  using namespace definition;
  return {
      preview(VEK_NAMED(vekiYCbCr420RszRot_8u_P3R), draw420, planarResize<true>),
      preview(VEK_NAMED(vekiYCbCr422RszRot_8u_P3R), draw422, planarResize<false>),
      preview(VEK_NAMED(vekiYCbCr420RszCscRotRGB_8u_P3C3R), draw420Rgb, planarRgb<true>),
      secondHalf(preview(VEK_NAMED(vekiYCbCr420RszRotRows_8u_P3R), draw420Rows, planarRows<true>),
                 typicalPreviews(resize420, "two-thirds")),
      secondHalf(preview(VEK_NAMED(vekiYCbCr420RszCscRotRGBRows_8u_P3C3R), draw420RgbRows,
                         planarRgbRows<true>),
                 typicalPreviews(rgbOf420, "565-two-thirds")),
      preview(VEK_NAMED(vekiYCbCr422RszCscRotRGB_8u_P3C3R), draw422Rgb, planarRgb<false>),
      preview(VEK_NAMED(vekiResizeCscRotate_8u_C2R), draw422Reduce, reduce422),
      halved<false>(VEK_NAMED(vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R), halvedGroups),
      halved<true>(VEK_NAMED(vekiYCbCr422ToYCbCr420Rotate_8u_P3R), halvedPlanes),
  };
}

}  // namespace vek::test
