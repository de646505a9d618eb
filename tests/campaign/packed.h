// Functions on packed images whose arguments follow from their signatures: pointwise operations,
// norms, conversions of whole pixels, mirror and gamma.
#pragma once

#include <algorithm>

#include "tests/campaign/campaign.h"
#include "tests/footprint/pixels.h"

namespace vek::test {

/// What a parameter is.
enum class Part {
  source,
  destination,
  step,
  roi,
  number,   ///< an int that is no step: a scale factor, an axis
  byte,     ///< a value or threshold
  bytes,    ///< one for each channel
  amount,   ///< a shift
  amounts,  ///< one for each channel
  results,  ///< of norms, one for each channel
  weights,  ///< three
  matrix,   ///< 3 x 4
};

template <class T>
constexpr Part partOf() {
  if constexpr (std::is_same_v<T, const Vek8u*>) return Part::source;
  if constexpr (std::is_same_v<T, Vek8u*>) return Part::destination;
  if constexpr (std::is_same_v<T, int>) return Part::number;
  if constexpr (std::is_same_v<T, Vek8u>) return Part::byte;
  if constexpr (std::is_same_v<T, Vek32u>) return Part::amount;
  if constexpr (std::is_same_v<T, const Vek32u*>) return Part::amounts;
  if constexpr (std::is_same_v<T, Vek32s*>) return Part::results;
  if constexpr (std::is_same_v<T, const Vek32s*>) return Part::weights;
  if constexpr (std::is_same_v<T, const Vek32s(*)[4]>) return Part::matrix;
  return Part::roi;
}

/// An image is followed by its step; other pointers to bytes lead to constants.
template <class... A>
std::vector<Part> partsOf(VekStatus (*)(A...)) {
  std::vector<Part> parts = {partOf<A>()...};
  for (size_t i = 0; i < parts.size(); ++i) {
    const bool step = i + 1 < parts.size() && parts[i + 1] == Part::number;
    if (parts[i] == Part::source && !step) parts[i] = Part::bytes;
    if ((parts[i] == Part::source || parts[i] == Part::destination) && step) {
      parts[i + 1] = Part::step;
    }
  }
  return parts;
}

/// Steps that are not tested.
inline const Steps anySteps = {1, true, true, {}};

/// What a family's functions have of their own.
struct Manners {
  bool inPlace = false;
  Steps steps = {};
  std::vector<int> numbers = {0};  ///< likely values of its int
  Refused refusedNumbers = {};
  std::vector<Check> order = {};
  std::vector<std::pair<std::string, int>> usual = {{"", 0}};  ///< variants, by its int
};

inline void drawPacked(Case& c, const std::vector<Part>& parts, int srcChannels, int dstChannels,
                       const Manners& manners) {
  Random& random = c.random;
  VekiSize roi = {random.size(300), random.in(1, 5)};
  if (random.chance(2)) roi.width = random.in(300, 6000);
  if (random.chance(5)) roi.height = random.in(6, 70);
  if (c.limits()) roi = c.sizeAcrossSeams(4096);
  const bool ordered = std::count(parts.begin(), parts.end(), Part::byte) == 4 ||
                       std::count(parts.begin(), parts.end(), Part::bytes) == 4;
  const int place = manners.inPlace ? random.in(0, 3) : 0;
  int seen = 0, constants = 0, shared = -1, sharedStep = 0;
  int low[3] = {};  // where constants have an order: what the third is not below
  const auto byte = [&](int channel) {
    const Vek8u likely[] = {0, 1, 127, 128, 254, 255};
    int value = random.in(0, 255);
    if (random.chance(40)) value = random.of(likely);
    if (ordered && constants == 0) low[channel] = value;
    return ordered && constants == 2 ? std::max(value, low[channel]) : value;
  };
  for (Part part : parts) {
    switch (part) {
      case Part::source:
      case Part::destination: {
        const bool source = part == Part::source;
        if (!source && shared >= 0) {
          c.pointer(shared);
          c.number(sharedStep, manners.steps.refused);
          break;
        }
        const Use use = !source ? Use::out : ++seen == place ? Use::inOut : Use::in;
        const int channels = source ? srcChannels : dstChannels;
        const int step =
            c.step(footprint::pixels(roi, channels, 0).bytes, roi.height, manners.steps, use);
        const int block = c.memory(use, footprint::pixels(roi, channels, step));
        if (use == Use::inOut) shared = block, sharedStep = step;
        c.pointer(block);
        c.number(step, manners.steps.refused);
        break;
      }
      case Part::step:
        break;
      case Part::roi:
        c.roi(roi);
        break;
      case Part::number:
        c.number(random.chance(50) ? manners.numbers[static_cast<size_t>(random.in(
                                         0, static_cast<int>(manners.numbers.size()) - 1))]
                 : manners.refusedNumbers.status == 0 ? random.in(-20, 20)
                                                      : manners.numbers[0],
                 manners.refusedNumbers);
        break;
      case Part::byte: {
        const int value = byte(0);
        const bool floor = ordered && constants++ == 2 && low[0] > 0;
        c.number(value, floor ? Refused{vekStsThresholdErr, {low[0] - 1}} : Refused{});
        break;
      }
      case Part::bytes: {
        Vek8u values[3];
        for (int i = 0; i < 3; ++i) values[i] = static_cast<Vek8u>(byte(i));
        const int block = c.object(Use::in, values, 3, 1, 1);
        for (size_t i = 0; i < 3; ++i) {
          if (!ordered || constants != 2 || low[i] == 0) continue;
          c.refuseEntry(block, i, static_cast<Vek8u>(low[i] - 1), vekStsThresholdErr);
        }
        ++constants;
        c.pointer(block);
        break;
      }
      case Part::amount:
      case Part::amounts: {
        const int likely[] = {0, 1, 3, 5, 7, 8, 9, 31, 32, 256, -1};
        std::vector<Vek32u> values;
        const bool equal = random.chance(25);
        for (size_t i = 0; i < 3; ++i) {
          values.push_back(equal && i > 0 ? values[0] : static_cast<Vek32u>(random.of(likely)));
        }
        if (part == Part::amount) {
          c.number(values[0]);
        } else {
          c.pointer(c.objects(values));
        }
        break;
      }
      case Part::results:
        c.pointer(c.memory(Use::out, footprint::normResult(srcChannels), 4, 4));
        break;
      case Part::weights:
      case Part::matrix: {
        std::vector<Vek32s> values;
        const int magnitudes[] = {16384, 32768, 524288, 0x7FFFFFFF};
        const int most = random.of(magnitudes);
        const int bits[] = {15, 19, 31}, mostBits = c.limits() ? random.of(bits) : 0;
        for (int i = 0; i < (part == Part::matrix ? 12 : 3); ++i) {
          const bool anyOffset = i % 4 == 3 && random.chance(30);
          const int limit = anyOffset ? 0x7FFFFFFF : most;
          values.push_back(c.limits()          ? static_cast<Vek32s>(std::clamp<int64_t>(
                                            random.aroundPower(mostBits), INT32_MIN, INT32_MAX))
                           : random.chance(15) ? limit * random.in(-1, 1)
                                               : random.in(-limit, limit));
        }
        c.pointer(c.objects(values));
        break;
      }
    }
  }
}

/// Constants of which the third one of four is not below the first, as thresholds demand.
inline constexpr Vek8u usualBytes[4][3] = {
    {77, 100, 200}, {9, 150, 220}, {99, 150, 220}, {2, 100, 200}};
inline const std::vector<Vek32s> usualWeights = {4899, 9617, 1868};
inline const std::vector<Vek32s> usualMatrix = {9000, 5000,  2384, 0,     -3000, 19000,
                                                384,  81920, 100,  -2000, 18284, -16384};

inline void preparePacked(Arguments& a, const std::vector<Part>& parts, int srcChannels,
                          int dstChannels, int number, const std::vector<Vek32u>& amounts) {
  int constants = 0;
  for (Part part : parts) {
    switch (part) {
      case Part::source:
        a.image(a.plane(srcChannels * a.size.width, a.size.height));
        break;
      case Part::destination:
        a.image(a.plane(dstChannels * a.size.width, a.size.height));
        break;
      case Part::step:
        break;
      case Part::roi:
        a.roi();
        break;
      case Part::number:
        a.number(number);
        break;
      case Part::byte:
        a.number(usualBytes[constants++][0]);
        break;
      case Part::bytes:
        a.pointer(usualBytes[constants++]);
        break;
      case Part::amount:
        a.number(amounts[1]);
        break;
      case Part::amounts:
        a.pointer(a.keep(amounts));
        break;
      case Part::results:
        a.pointer(a.keep(std::vector<Vek32s>(3)));
        break;
      case Part::weights:
        a.pointer(usualWeights.data());
        break;
      case Part::matrix:
        a.pointer(usualMatrix.data());
        break;
    }
  }
}

/// Shifts by three amounts have a variant in which they are equal.
inline std::vector<Typical> typicalPacked(const std::vector<Part>& parts, int srcChannels,
                                          int dstChannels, const Manners& manners) {
  const auto prepare = [=](int number, const std::vector<Vek32u>& amounts) {
    return
        [=](Arguments& a) { preparePacked(a, parts, srcChannels, dstChannels, number, amounts); };
  };
  const auto has = [&](Part part) {
    return std::find(parts.begin(), parts.end(), part) != parts.end();
  };
  const std::vector<Vek32u> different = {1, 3, 4}, equal = {3, 3, 3};
  if (has(Part::amounts)) return {{"", prepare(0, different)}, {"equal", prepare(0, equal)}};
  if (!has(Part::number)) return {{"", prepare(0, different)}};
  std::vector<Typical> all;
  for (const auto& [variant, number] : manners.usual) {
    all.push_back({variant, prepare(number, different)});
  }
  return all;
}

template <int srcChannels, int dstChannels = srcChannels, class... A>
Record packed(const char* name, VekStatus (*f)(A...), const Manners& manners, const Call& define) {
  const auto draw = [=, parts = partsOf(f)](Case& c) {
    drawPacked(c, parts, srcChannels, dstChannels, manners);
  };
  return with({name, bind(f), draw, {}, define, manners.order},
              typicalPacked(partsOf(f), srcChannels, dstChannels, manners));
}

/// The records of a function for both channel counts.
#define VEK_C1_C3(make, name, form, ...)                             \
  make<1>(VEK_NAMED(name##_8u_C1##form) __VA_OPT__(, ) __VA_ARGS__), \
      make<3>(VEK_NAMED(name##_8u_C3##form) __VA_OPT__(, ) __VA_ARGS__)

// What faults are answered with in most orders.
inline constexpr Check pointers = {vekStsNullPtrErr}, sizes = {vekStsSizeErr},
                       steps = {vekStsStepErr};

}  // namespace vek::test
