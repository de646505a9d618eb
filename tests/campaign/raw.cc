// The raw Bayer pipeline.
#include "tests/footprint/raw.h"

#include "vek/camera.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include "tests/camera/raw/pipeline.h"
#include "tests/campaign/campaign.h"
#include "tests/definition/raw_frame.h"
#include "tests/support/failing_allocator.h"

namespace vek::test {
namespace {

Refused bad(std::initializer_list<int> values) {
  return {vekStsBadArgErr, values};
}

VekiRggbGeometry drawGeometry(Random& random, bool limits) {
  const int scale = 1 << random.in(0, 2), rotation = random.in(0, 3);
  const bool quarterTurn = rotation == 1 || rotation == 2;
  // Reduced destinations are multiples of four pixels wide.
  int width = 2 * scale * random.size(90), height = 2 * scale * random.size(40);
  if (random.chance(2)) width = 2 * scale * random.in(90, 1200);
  // Crosses the seams of strips and of bands; strips of up to 1024 quads have another on both sides.
  if (limits) {
    const bool wide = random.chance(60), three = random.chance(40);
    (wide ? width : height) =
        2 * scale * (wide && three ? random.in(2049, 2100) : random.acrossSeam(wide ? 1024 : 128));
    (wide ? height : width) = 2 * scale * random.in(1, 6);
  }
  int& across = quarterTurn ? height : width;
  if (scale > 1) across = (across + 4 * scale - 1) / (4 * scale) * (4 * scale);
  const int format = random.in(8, 9), border = random.chance(50) ? random.in(-1, 1) : 0;
  VekiRggbGeometry g = rawGeometry(width, height, scale, rotation, format, border);
  g.srcStep += 2 * random.in(0, 3);
  if (random.chance(15)) g.srcStep = -g.srcStep;
  for (int& step : g.dstStep) step += 8 * random.in(0, 2);
  return g;
}

/// A matrix that takes one channel to a component by a factor of about 128 in Q8: with
/// white, the products leave 16 bits or just do not.
void drawLargeMatrix(Random& random, std::vector<Vek16s>& matrix) {
  const int weights[3] = {128, 143, 128}, i = random.in(0, 2);  // the largest of R, G and B
  const int factor = (64 * random.in(120, 134) + random.in(-32, 31)) * 256 / weights[i];
  std::fill(matrix.begin(), matrix.end(), Vek16s{0});
  matrix[static_cast<size_t>(4 * i)] = static_cast<Vek16s>(random.chance(50) ? factor : -factor);
}

/// Parameters with all they point at; `offset` lets a list of dead pixels lie in sensor
/// coordinates. Dead pixels are inside the region, so that they need no memory beyond it.
int drawColor(Case& c, const VekiRggbGeometry& g) {
  Random& random = c.random;
  VekiRggbColorParam p = rawColor();
  std::vector<Vek16s> matrix;
  const int ranges[] = {300, 1500, 32767};
  const int range = random.of(ranges);
  for (int i = 0; i < 9; ++i) matrix.push_back(static_cast<Vek16s>(random.in(-range, range)));
  if (c.limits()) drawLargeMatrix(random, matrix);
  p.colorMatrix = c.data<Vek16s>(c.objects(matrix));
  p.gammaMode = static_cast<Vek32u>(random.in(0, 1));
  p.gammaCurve[0] = static_cast<Vek32u>(random.in(0, 1));
  p.gammaCurve[1] = 77;
  if (p.gammaMode == 1) {
    p.gammaTable[0] = c.data<Vek8u>(c.memory(Use::in, {1024, 1, 0}));
  }
  const int offsets[] = {0, 0, 3, 100};
  p.rowOffset = random.of(offsets);
  p.colOffset = random.of(offsets);
  const bool copied = p.rowOffset != 0 || p.colOffset != 0;
  int dead = -1;
  if (random.chance(40)) {
    std::vector<VekiDeadPixel> list;
    for (int n = random.in(1, 6); n > 0; --n) {
      VekiDeadPixel pixel = {random.in(0, g.srcHeight - 1), random.in(0, g.srcWidth - 1)};
      if (list.empty() && pixel.row == 0 && pixel.column == 0) pixel.column = 1;
      pixel.row += p.rowOffset, pixel.column += p.colOffset;
      if (pixel.column > p.colOffset + 2) list.push_back({pixel.row, pixel.column - 2});  // first
      list.push_back(pixel);
      if (copied && random.chance(20)) list.push_back({p.rowOffset - 1, INT_MIN});
    }
    dead = c.objects(list);
    p.deadPixels = c.data<VekiDeadPixel>(dead);
    p.numDeadPixels = static_cast<int>(list.size());
    c.keptWhenReleased = copied ? 1 : 0;
  }
  const int block = c.objects(std::vector{p});
  using P = VekiRggbColorParam;
  c.refuse(block, &P::gammaMode, 2);
  c.refuse(block, &P::gammaMode, UINT_MAX);
  c.refuse(block, &P::reserved, 1);
  c.refuse(block, &P::rowOffset, -1);
  c.refuse(block, &P::colOffset, INT_MIN);
  c.refuse(block, &P::colorMatrix, nullptr);
  if (p.gammaMode == 0) c.refuseAt(block, offsetof(P, gammaCurve), 2);
  if (p.gammaMode == 1) c.refuseAt(block, offsetof(P, gammaTable), static_cast<Vek8u*>(nullptr));
  if (dead >= 0 && copied) {
    c.refuseEntry(dead, 0, VekiDeadPixel{p.rowOffset, p.colOffset}, vekStsBadArgErr);
  }
  if (dead >= 0 && copied) c.refuse(block, &P::numDeadPixels, 0);
  return block;
}

int drawGeometryBlock(Case& c, const VekiRggbGeometry& g) {
  const int block = c.objects(std::vector{g});
  using G = VekiRggbGeometry;
  c.refuse(block, &G::srcStep, g.srcStep + 1);
  for (auto field : {&G::srcWidth, &G::srcHeight}) {
    for (int size : {INT_MIN, -2, 0, INT_MAX - 1}) c.refuse(block, field, size);
  }
  for (auto field : {&G::dstWidth, &G::dstHeight}) {
    for (int size : {INT_MIN, -1, 0, 1 << 30}) c.refuse(block, field, size);
  }
  for (size_t i = 0; i < 3; ++i) {  // too short, then misaligned
    const int unit = (g.filterMode == 2 ? 8 : 4) / (i == 0 ? 1 : 2);
    const int row = i == 0 ? g.dstWidth : g.dstWidth / 2;
    c.refuseAt(block, offsetof(G, dstStep) + i * sizeof(int), (row - 1) / unit * unit);
    c.refuseAt(block, offsetof(G, dstStep) + i * sizeof(int), g.dstStep[i] + unit / 2);
  }
  for (int rotation : {-1, 4}) c.refuse(block, &G::rotation, rotation);
  for (int format : {7, 10, INT_MIN}) c.refuse(block, &G::chromaFormat, format);
  for (int mode : {5 - g.filterMode, 0, INT_MAX}) c.refuse(block, &G::filterMode, mode);
  return block;
}

VekStatus initAndFree(const Value* v) {
  VekiRggbToYCbCrState** const to = as<VekiRggbToYCbCrState**>(v[2]);
  const VekStatus status = vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(
      as<const VekiRggbColorParam*>(v[0]), as<const VekiRggbGeometry*>(v[1]), to);
  if (status < 0) return status;
  const VekStatus released = vekiFree_10RGGBtoYCbCr_RotRsz_P3R(*to);
  *to = nullptr;
  return released | vekiFree_10RGGBtoYCbCr_RotRsz_P3R(nullptr);
}

void drawInit(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  c.keptWhenRefused = 1;  // the block for the state
  const VekiRggbGeometry g = drawGeometry(c.random, c.limits());
  c.pointer(drawColor(c, g));
  c.pointer(drawGeometryBlock(c, g));
  c.pointer(c.objects(std::vector<void*>{&c}, Use::out));
}

void drawFrame(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  const VekiRggbGeometry g = drawGeometry(c.random, c.limits());
  const int block = drawColor(c, g);
  c.clearFaults();
  c.keptWhenReleased = 0;
  const VekiRggbColorParam p = *c.data<VekiRggbColorParam>(block);
  RawState state = makeState(p, g);
  // Dead pixels are replaced in the frame itself.
  const auto print = footprint::rawFrame(g);
  const Use use = p.deadPixels != nullptr ? Use::inOut : Use::in;
  const int masks[] = {1023, 0xFFFF};
  const int mask = c.random.of(masks);
  c.pointer(c.memory(use, print.src, 2, 2, mask));
  const int luma = g.filterMode == 2 ? 8 : 4, chroma = luma / 2;
  const size_t inset = g.filterMode == 2 && g.srcBorderValid == 0 ? 1 : 0;
  int blocks[3];
  for (int i = 0; i < 3; ++i) {
    const auto unit = static_cast<size_t>(i == 0 ? luma : chroma);
    blocks[i] = c.memory(Use::out, print.dst[i], unit, 1, 0, inset * (unit == 8 ? 6 : 3));
  }
  c.planes(blocks, {luma, chroma, chroma});
  c.state(state.release(), [](void* s) {
    vekiFree_10RGGBtoYCbCr_RotRsz_P3R(static_cast<VekiRggbToYCbCrState*>(s));
    dropAllocations();
  });
}

void drawPixels(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  Random& random = c.random;
  VekiSize size = {2 * random.size(90), 2 * random.in(1, 5)};
  if (c.limits()) size.width = 2 * random.acrossSeam(1024);
  const int border = random.chance(60) ? random.in(-1, 2) : 0, around = border != 0 ? 1 : 0;
  const int srcStep = c.step(2 * (size.width + 2 * around), size.height + 2 * around, {2, false});
  const int masks[] = {1023, 0xFFFF};
  c.pointer(c.memory(Use::in,
                     {2 * (size.width + 2 * around), size.height + 2 * around, srcStep,
                      -ptrdiff_t{around} * (srcStep + 2)},
                     2, 2, random.of(masks)),
            2);
  c.number(srcStep, bad({0, -2, INT_MIN, 2 * size.width - 2, srcStep + 1}));
  const int dstStep = c.step(3 * size.width, size.height, {1});
  c.pointer(c.memory(Use::out, {3 * size.width, size.height, dstStep}));
  c.number(dstStep, bad({0, -1, INT_MIN, 3 * size.width - 1}));
  c.pair(size.width, size.height, bad({1, 0, -2, INT_MIN}));
  c.pointer(c.memory(Use::in, {1024, 1, 0}));
  c.number(random.in(0, 1), bad({-1, 2, INT_MIN, INT_MAX}));
  c.number(border);
}

// ---- Typical calls ------------------------------------------------------------------------------

constexpr Vek16s usualMatrix[9] = {412, -118, -38, -60, 380, -64, 6, -122, 372};

VekiRggbColorParam usualColor() {
  VekiRggbColorParam p = rawColor();
  p.gammaCurve[0] = 1;
  p.colorMatrix = usualMatrix;
  return p;
}

struct UsualFrame {
  const char* variant;
  int scale = 1, rotation = 0, chromaFormat = 9;
  int border = 1;     ///< samples around the region that are valid
  int stepUnit = 64;  ///< the steps of the planes are multiples of this
};

constexpr UsualFrame usualFrames[] = {
    {"420"},
    {.variant = "420-edges", .border = 0},
    {.variant = "420-turned", .rotation = 1},
    {.variant = "420-turned-edges", .rotation = 1, .border = 0},
    {.variant = "420-turned-step4096", .rotation = 1, .stepUnit = 4096},
    {.variant = "422", .chromaFormat = 8},
    {.variant = "422-turned", .rotation = 2, .chromaFormat = 8},
    {.variant = "420-upside-down", .rotation = 3},
    {.variant = "420-half", .scale = 2},
    {.variant = "420-half-turned", .scale = 2, .rotation = 1},
    {.variant = "420-quarter", .scale = 4},
};

/// The source is as large as the size allows, in whole blocks.
VekiRggbGeometry usualGeometry(VekiSize size, const UsualFrame& frame) {
  const int block = 4 * frame.scale;
  VekiRggbGeometry g = rawGeometry(size.width / block * block, size.height / block * block,
                                   frame.scale, frame.rotation, frame.chromaFormat, frame.border);
  const auto step = [unit = frame.stepUnit](int bytes) { return (bytes + unit - 1) / unit * unit; };
  g.srcStep = frame.stepUnit > 64 ? step(2 * (size.width + 2)) : 2 * (size.width + 2);
  for (int i = 0; i < 3; ++i) g.dstStep[i] = step((i == 0 ? g.dstWidth : g.dstWidth / 2) + 64);
  return g;
}

void prepareFrame(Arguments& a, const UsualFrame& frame) {
  const VekiRggbGeometry g = usualGeometry(a.size, frame);
  const auto src = a.plane(2 * (g.srcWidth + 2), g.srcHeight + 2, g.srcStep);
  a.pointer(src.data + g.srcStep + 2);
  // Without a border the planes begin one block before an aligned address.
  const int inset = frame.scale == 1 && frame.border == 0 ? 1 : 0;
  const int chromaRows = frame.chromaFormat == 8 ? g.dstHeight : g.dstHeight / 2;
  std::vector<Arguments::Plane> dst = {a.plane(g.dstWidth, g.dstHeight, g.dstStep[0]),
                                       a.plane(g.dstWidth / 2, chromaRows, g.dstStep[1]),
                                       a.plane(g.dstWidth / 2, chromaRows, g.dstStep[2])};
  for (size_t i = 0; i < 3; ++i) dst[i].data += (i == 0 ? 6 : 3) * inset;
  a.pointers(dst);
  const VekiRggbColorParam p = usualColor();
  VekiRggbToYCbCrState* state = nullptr;
  vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&p, &g, &state);
  a.pointer(a.keep(state, vekiFree_10RGGBtoYCbCr_RotRsz_P3R));
}

void preparePixels(Arguments& a) {
  const VekiSize size = {a.size.width & ~1, a.size.height & ~1};
  a.image(a.bordered(2 * size.width, size.height, 2, 1));
  a.image(a.plane(3 * size.width, size.height));
  a.pair(size.width, size.height);
  std::vector<Vek8u> table;
  for (int i = 0; i < 1024; ++i) table.push_back(static_cast<Vek8u>(i / 4));
  a.pointer(a.keep(table));
  a.number(vekiChannelsRGB);
  a.number(1);
}

void prepareInit(Arguments& a) {
  a.pointer(a.keep(std::vector{usualColor()}));
  a.pointer(a.keep(std::vector{usualGeometry(a.size, usualFrames[0])}));
  a.pointer(a.keep(std::vector<void*>(1)));
}

}  // namespace

std::vector<Record> rawRecords() {
  std::vector<Record> records = {{"veki10RGGBtoYCbCr_RotRsz_8u_P3R",
                                  bind(veki10RGGBtoYCbCr_RotRsz_8u_P3R),
                                  drawFrame,
                                  {},
                                  bind(definition::rawFrame)},
                                 {"vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R",
                                  initAndFree,
                                  drawInit,
                                  {"vekiFree_10RGGBtoYCbCr_RotRsz_P3R"}},
                                 {"vekiDemosaic_10RGGB_16u8u_C1C3R",
                                  bind(vekiDemosaic_10RGGB_16u8u_C1C3R),
                                  drawPixels,
                                  {},
                                  bind(definition::demosaic)}};
  records[0].defineEvery = 1;
  records[1].allocates = true;
  for (const UsualFrame& frame : usualFrames) {
    records[0].typical.push_back({frame.variant, [&](Arguments& a) { prepareFrame(a, frame); }});
  }
  records[1].typical = {{"", prepareInit}};
  records[2].typical = {{"", preparePixels}};
  return records;
}

}  // namespace vek::test
