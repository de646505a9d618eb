// Automatic exposure and white balance.
#include "tests/footprint/aaa.h"

#include "vek/camera.h"

#include <algorithm>
#include <climits>

#include "tests/campaign/campaign.h"
#include "tests/definition/exposure.h"
#include "tests/definition/white_balance.h"

namespace vek::test {
namespace {

Refused bad(std::initializer_list<int> values) {
  return {vekStsBadArgErr, values};
}

template <class T>
T word(Random& random, int low, int high) {
  return static_cast<T>(random.in(low, high));
}

/// Calls Init, and releases what it made, so that only the null pointer is left to compare.
template <class State, class Params, VekStatus (*init)(const Params*, State**),
          VekStatus (*release)(State*), VekStatus ofNull>
VekStatus initAndFree(const Value* v) {
  State** const to = as<State**>(v[1]);
  const VekStatus status = init(as<const Params*>(v[0]), to);
  if (status < 0) return status;
  const VekStatus released = release(*to);
  *to = nullptr;
  return release(nullptr) == ofNull ? released : vekStsContextMatchErr;
}

template <int (*drawParams)(Case&, VekiSize*)>
void drawInit(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  VekiSize reach;
  c.pointer(drawParams(c, &reach));
  c.pointer(c.objects(std::vector<void*>{&c}, Use::out));
}

/// A state that Init makes from the parameters in a block; behind it these themselves, for
/// definitions, which cannot look into the state.
template <class State, class Params>
void drawState(Case& c, int block, VekStatus (*init)(const Params*, State**),
               VekStatus (*release)(State*)) {
  State* state = nullptr;
  init(c.data<const Params>(block), &state);
  c.state(state, [release](void* s) { release(static_cast<State*>(s)); });
  c.pointer(block, 0);
}

/// A frame, its row step and its region; one that windows fill must not be smaller.
void drawFrame(Case& c, const Area& area, int srcStep, VekiSize roi, int unit, bool filled) {
  const int masks[] = {1023, 255, 15, 0xFFFF};
  const int mask = c.random.of(masks);
  c.pointer(c.memory(Use::in, area, static_cast<size_t>(unit), 2, mask), unit);
  c.number(srcStep, bad({0, -unit, INT_MIN, srcStep + unit / 2, 2 * roi.width - unit}));
  c.pair(roi.width, roi.height, bad({0, -1, INT_MIN}));
  c.alsoRefuse(0, INT_MAX);  // wider than the step
  if (filled) c.alsoRefuse(0, roi.width - 1);
  if (filled) c.alsoRefuse(1, roi.height - 1);
}

void drawControl(Case& c, int low, int high) {
  auto value = word<Vek16u>(c.random, low, high);
  if (c.limits() && c.random.chance(60))
    value = static_cast<Vek16u>(c.random.chance(50) ? low : high);
  const int block = c.objects(std::vector{value}, Use::inOut);
  if (low > 0) c.refuseEntry(block, 0, static_cast<Vek16u>(low - 1), vekStsBadArgErr);
  if (high < 65535) c.refuseEntry(block, 0, static_cast<Vek16u>(high + 1), vekStsBadArgErr);
  c.pointer(block);
}

/// Windows whose places and sizes are multiples of `x` and `y`, and their weights.
template <class Weight>
struct Windows {
  std::vector<VekiRect> rects;
  std::vector<Weight> weights;
  int rectBlock, weightBlock;
  VekiSize reach;

  Windows(Case& c, int x, int y, int mostWeight) {
    Random& random = c.random;
    for (int n = random.in(1, 4); n > 0; --n) {
      rects.push_back({x * random.in(0, 40 / x), y * random.in(0, 20 / y), x * random.size(128 / x),
                       y * random.in(1, 40 / y)});
      weights.push_back(word<Weight>(random, 1, mostWeight));
      // Makes halves of flat frames.
      if (c.limits() && mostWeight > 255) weights.back() = static_cast<Weight>(16384);
    }
    const Area area = footprint::windows(rects.data(), count(), 0);
    reach = {static_cast<int>(area.bytes / 2), static_cast<int>(area.rows)};
    rectBlock = c.objects(rects), weightBlock = c.objects(weights);
  }

  int count() const { return static_cast<int>(rects.size()); }

  void refuse(Case& c, std::initializer_list<VekiRect> bad) const {
    for (const VekiRect& w : bad) c.refuseEntry(rectBlock, rects.size() - 1, w, vekStsBadArgErr);
    c.refuseEntry(weightBlock, rects.size() - 1, Weight{0}, vekStsBadArgErr);
  }
};

// ---- Exposure -----------------------------------------------------------------------------------

/// Windows, weights and parameters in memory of the case.
int drawExposureParams(Case& c, VekiSize* reach) {
  Random& random = c.random;
  const Windows<Vek16u> windows(c, 2, 2, 40000);
  *reach = windows.reach;
  VekiAEParams p = {};
  p.mode = random.in(0, 4);
  p.pWindows = c.data<VekiRect>(windows.rectBlock);
  p.pWeights = c.data<Vek16u>(windows.weightBlock);
  p.numWindows = windows.count();
  p.histCountThresh = word<Vek16u>(random, 0, random.chance(50) ? 2 : 50);
  p.histSpreadThresh = word<Vek16u>(random, 0, 1023);
  p.darkThresh = word<Vek16u>(random, 0, 1023);
  p.brightThresh = word<Vek16u>(random, 0, 1023);
  p.target = word<Vek16u>(random, 0, 1023);
  p.tolerance = word<Vek16u>(random, 0, random.chance(70) ? 50 : 1023);
  p.scaleMultiplier = word<Vek16u>(random, 1, random.chance(50) ? 4 : 65535);
  p.stepSize = word<Vek16u>(random, 1, random.chance(50) ? 100 : 65535);
  p.scaleMin = random.in(0, 1000), p.scaleMax = random.in(1001, 65535);
  p.stepMin = random.in(0, 1000), p.stepMax = random.in(1001, 65535);
  if (c.limits()) {  // what flat and extreme frames measure, so that comparisons are of equals
    const int likely[] = {0, 1, 7, 8, 14, 15, 127, 128, 254, 255, 511, 512, 1022, 1023};
    for (auto field : {&VekiAEParams::histSpreadThresh, &VekiAEParams::darkThresh,
                       &VekiAEParams::brightThresh, &VekiAEParams::target}) {
      p.*field = static_cast<Vek16u>(random.of(likely));
    }
    p.tolerance = word<Vek16u>(random, 0, 2), p.stepSize = word<Vek16u>(random, 1, 2000);
  }
  if (p.mode != vekiAECallerWindows && random.chance(50)) {  // of no matter then
    p.pWindows = nullptr, p.pWeights = nullptr, p.numWindows = -1;
  }
  const int block = c.objects(std::vector{p});
  using P = VekiAEParams;
  for (int mode : {-1, 5, INT_MAX}) c.refuse(block, &P::mode, mode);
  for (auto field :
       {&P::histSpreadThresh, &P::darkThresh, &P::brightThresh, &P::target, &P::tolerance}) {
    c.refuse(block, field, 1024);
  }
  c.refuse(block, &P::scaleMax, INT_MIN);
  c.refuse(block, &P::stepMin, INT_MAX);
  c.refuse(block, &P::scaleMultiplier, 0);
  c.refuse(block, &P::stepSize, 0);
  if (p.mode != vekiAECallerWindows) return block;
  c.refuse(block, &P::pWindows, nullptr);
  c.refuse(block, &P::pWeights, nullptr);
  c.refuse(block, &P::numWindows, 0);
  c.refuse(block, &P::numWindows, INT_MIN);
  windows.refuse(c, {{-2, 0, 8, 8}, {0, INT_MIN, 8, 8}, {0, 0, INT_MAX, 8}, {0, 0, 8, 0}});
  return block;
}

void drawExposure(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  Random& random = c.random;
  VekiSize roi;
  const int block = drawExposureParams(c, &roi);
  c.clearFaults();
  const VekiAEParams p = *c.data<VekiAEParams>(block);
  const bool windows = p.mode == vekiAECallerWindows;
  if (!windows) {
    roi.width = random.size(200);
    roi.height = random.size(60);
    if (c.limits()) roi = c.sizeAcrossSeams(2048);
  }
  const int srcStep = (2 * roi.width + 3) / 4 * 4 + 4 * random.in(0, 2);
  const Area area = p.mode == vekiAEHistogram ? footprint::exposureHistogram(roi, srcStep)
                    : windows ? footprint::windows(p.pWindows, p.numWindows, srcStep)
                              : footprint::exposureZones(roi, srcStep);
  // Modes 0 and 2 read some of the padding, too.
  const Area readable = windows ? area : Area{(area.rows - 1) * srcStep + area.bytes, 1, 0};
  drawFrame(c, readable, srcStep, roi, 4, windows);
  drawControl(c, p.stepMin, p.stepMax);
  drawControl(c, p.scaleMin, p.scaleMax);
  drawState(c, block, vekiInitAlloc_AE_10RGGB_8u_C1R, vekiFree_AE_10RGGB_8u_C1R);
}

// ---- White balance ------------------------------------------------------------------------------

int drawBalanceParams(Case& c, VekiSize* reach) {
  Random& random = c.random;
  const Windows<Vek8u> windows(c, 4, 8, 255);
  *reach = windows.reach;
  VekiAWBParams p = {};
  p.method = random.in(0, 1);
  p.pWindows = c.data<VekiRect>(windows.rectBlock);
  p.pWeights = c.data<Vek8u>(windows.weightBlock);
  p.numWindows = windows.count();
  const int farthest = random.chance(50) ? 1200 : 65535;
  for (auto field :
       {&VekiAWBParams::refRatioR, &VekiAWBParams::refRatioB, &VekiAWBParams::holdTolR,
        &VekiAWBParams::holdTolB, &VekiAWBParams::validTolR, &VekiAWBParams::validTolB}) {
    p.*field = word<Vek16u>(random, 0, farthest);
  }
  const int most = random.chance(50) ? 1023 : 16;  // close limits make ties
  p.wpdLimit1 = word<Vek16u>(random, 1, most);
  p.wpdLimit2 = word<Vek16u>(random, 1, most);
  p.wpdLimit3 = word<Vek16u>(random, 1, 2 * most);
  p.wpdLow = word<Vek16u>(random, 1, most - 1);
  p.wpdHigh = word<Vek16u>(random, p.wpdLow + 1, most);
  if (c.limits()) {  // most frames decide, and what they decide shows
    for (auto field : {&VekiAWBParams::wpdLimit1, &VekiAWBParams::wpdLimit2}) {
      p.*field = word<Vek16u>(random, 1, 20);
    }
    p.wpdLimit3 = word<Vek16u>(random, 1, 40), p.wpdLow = 1,
    p.wpdHigh = word<Vek16u>(random, 2, 30);
    p.holdTolR = p.holdTolB = 0, p.validTolR = p.validTolB = 65535;
  }
  p.minWhiteCount = random.in(-10, 100);
  p.maxGainStep = word<Vek16u>(random, 1, random.chance(50) ? 50 : 65535);
  p.gainMin = word<Vek16u>(random, 0, random.chance(50) ? 0 : 300);
  p.gainMax = word<Vek16u>(random, p.gainMin, 65535);
  p.defaultGainR = word<Vek16u>(random, p.gainMin, p.gainMax);
  p.defaultGainG = word<Vek16u>(random, p.gainMin, p.gainMax);
  p.defaultGainB = word<Vek16u>(random, p.gainMin, p.gainMax);
  const int block = c.objects(std::vector{p});
  using P = VekiAWBParams;
  for (int method : {-1, 2, INT_MAX}) c.refuse(block, &P::method, method);
  for (int count : {0, -1, INT_MIN}) c.refuse(block, &P::numWindows, count);
  c.refuse(block, &P::pWindows, nullptr);
  c.refuse(block, &P::pWeights, nullptr);
  for (auto field : {&P::wpdLimit1, &P::wpdLimit2, &P::wpdLow, &P::maxGainStep}) {
    c.refuse(block, field, 0);
  }
  for (auto field : {&P::wpdLimit1, &P::wpdLimit2, &P::wpdHigh}) c.refuse(block, field, 1024);
  c.refuse(block, &P::wpdLimit3, 2048);
  windows.refuse(c, {{-4, 0, 8, 8},
                     {0, INT_MIN, 8, 8},
                     {0, 0, 1 << 30, 1 << 30},
                     {0, 0, 8, 0},
                     {0, 0, 4096, 2048},
                     {2, 0, 8, 8},
                     {0, 4, 8, 8}});
  return block;
}

void drawBalance(Case& c) {
  c.nullStatus = vekStsBadArgErr;
  VekiSize roi;
  const int block = drawBalanceParams(c, &roi);
  c.clearFaults();
  const VekiAWBParams p = *c.data<VekiAWBParams>(block);
  const int srcStep = (2 * roi.width + 7) / 8 * 8 + 8 * c.random.in(0, 2);
  drawFrame(c, footprint::windows(p.pWindows, p.numWindows, srcStep), srcStep, roi, 8, true);
  for (int i = 0; i < 3; ++i) drawControl(c, p.gainMin, p.gainMax);
  drawState(c, block, vekiInitAlloc_AWB_10RGGB_8u_C1R, vekiFree_AWB_10RGGB_8u_C1R);
}

// ---- Typical calls ------------------------------------------------------------------------------

VekiAEParams usualExposure(Vek32s mode, Vek16u histCountThresh) {
  VekiAEParams p = {};
  p.mode = mode;
  p.histCountThresh = histCountThresh, p.histSpreadThresh = 100;
  p.darkThresh = 300, p.brightThresh = 700;
  p.target = 512, p.tolerance = 20;
  p.scaleMultiplier = 2, p.stepSize = 5;
  p.scaleMax = p.stepMax = 65536;
  return p;
}

Typical typicalExposure(const char* variant, Vek32s mode, Vek16u histCountThresh = 10) {
  return {variant, [=](Arguments& a) {
            const VekiAEParams p = usualExposure(mode, histCountThresh);
            VekiAEState* state = nullptr;
            vekiInitAlloc_AE_10RGGB_8u_C1R(&p, &state);
            a.image(a.plane(2 * a.size.width, a.size.height));
            a.roi();
            for (Vek16u control : {100, 1000}) a.pointer(a.keepForEachCall(control));
            a.pointer(a.keep(state, vekiFree_AE_10RGGB_8u_C1R));
          }};
}

/// The whole frame is one window.
VekiAWBParams usualBalance(Arguments& a, Vek32s method) {
  VekiAWBParams p = {};
  p.method = method;
  p.numWindows = 1;
  p.pWindows = a.keep(std::vector<VekiRect>{{0, 0, a.size.width, a.size.height}});
  p.pWeights = a.keep(std::vector<Vek8u>{1});
  p.refRatioR = p.refRatioB = 1024;
  p.validTolR = p.validTolB = 100;
  p.wpdLimit1 = p.wpdLimit2 = p.wpdLimit3 = 200;
  p.wpdLow = 50, p.wpdHigh = 900;
  p.maxGainStep = 50;
  p.gainMax = 65535;
  p.defaultGainR = p.defaultGainG = p.defaultGainB = 256;
  return p;
}

Typical typicalBalance(const char* variant, Vek32s method) {
  return {variant, [=](Arguments& a) {
            const VekiAWBParams p = usualBalance(a, method);
            VekiAWBState* state = nullptr;
            vekiInitAlloc_AWB_10RGGB_8u_C1R(&p, &state);
            const auto frame = a.plane(2 * a.size.width, a.size.height);
            auto* const samples = reinterpret_cast<Vek16u*>(frame.data);
            for (int i = 0; i < frame.step / 2 * a.size.height; ++i) samples[i] &= 1023;
            a.image(frame);
            a.roi();
            for (Vek16u gain : {300, 256, 300}) a.pointer(a.keepForEachCall(gain));
            a.pointer(a.keep(state, vekiFree_AWB_10RGGB_8u_C1R));
          }};
}

}  // namespace

std::vector<Record> aaaRecords() {
  std::vector<Record> records = {
      {"vekiAE_10RGGB_8u_C1R", bind(vekiAE_10RGGB_8u_C1R), drawExposure},
      {"vekiInitAlloc_AE_10RGGB_8u_C1R",
       initAndFree<VekiAEState, VekiAEParams, vekiInitAlloc_AE_10RGGB_8u_C1R,
                   vekiFree_AE_10RGGB_8u_C1R, vekStsNoErr>,
       drawInit<drawExposureParams>,
       {"vekiFree_AE_10RGGB_8u_C1R"}},
      {"vekiAWB_10RGGB_8u_C1R", bind(vekiAWB_10RGGB_8u_C1R), drawBalance},
      {"vekiInitAlloc_AWB_10RGGB_8u_C1R",
       initAndFree<VekiAWBState, VekiAWBParams, vekiInitAlloc_AWB_10RGGB_8u_C1R,
                   vekiFree_AWB_10RGGB_8u_C1R, vekStsBadArgErr>,
       drawInit<drawBalanceParams>,
       {"vekiFree_AWB_10RGGB_8u_C1R"}}};
  records[0].define = [](const Value* v) {
    return definition::expose(*as<const VekiAEParams*>(v[6]), as<const Vek16u*>(v[0]),
                              as<int>(v[1]), as<VekiSize>(v[2]), *as<Vek16u*>(v[3]),
                              *as<Vek16u*>(v[4]));
  };
  records[2].define = [](const Value* v) {
    return definition::balance(*as<const VekiAWBParams*>(v[7]), as<const Vek16u*>(v[0]),
                               as<int>(v[1]), *as<Vek16u*>(v[3]), *as<Vek16u*>(v[4]),
                               *as<Vek16u*>(v[5]));
  };
  for (Record& record : records) record.defineEvery = 1;
  records[0].shareable = false;
  records[1].allocates = records[3].allocates = true;
  records[0].typical = {typicalExposure("histogram", vekiAEHistogram),
                        typicalExposure("histogram-none-populated", vekiAEHistogram, 65535),
                        typicalExposure("whole-frame", vekiAEWholeFrame),
                        typicalExposure("five-zones", vekiAEFiveZones)};
  records[1].typical = {{"", [](Arguments& a) {
                           a.pointer(a.keep(std::vector{usualExposure(vekiAEHistogram, 10)}));
                           a.pointer(a.keep(std::vector<void*>(1)));
                         }}};
  records[2].typical = {typicalBalance("gray-world", vekiAWBGrayWorld),
                        typicalBalance("white-points", vekiAWBWhitePoints)};
  records[3].typical = {{"", [](Arguments& a) {
                           a.pointer(a.keep(std::vector{usualBalance(a, vekiAWBGrayWorld)}));
                           a.pointer(a.keep(std::vector<void*>(1)));
                         }}};
  return records;
}

}  // namespace vek::test
