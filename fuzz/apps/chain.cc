// A fuzz target: chains that can be parsed are run on two small pictures.
#include "chain/chain.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace {

bool isSmall(const chain::Chain& steps) {
  const auto isSmallNumber = [](double number) { return number > -100 && number < 100; };
  const auto small = [&](const chain::Argument& argument) {
    return std::ranges::all_of(argument.numbers, isSmallNumber);
  };
  return steps.size() <= 5 && std::ranges::all_of(steps, [&](const chain::Step& step) {
           return std::ranges::all_of(step.arguments, small);
         });
}

template <class Image>
chain::Picture noise(vek::Size size) {
  Image image(size);
  uint32_t state = 1;
  for (int y = 0; y < size.height; ++y) {
    for (int64_t x = 0; x < image.rowBytes(); ++x) {
      image.row(y)[x] = static_cast<Vek8u>((state = state * 1664525 + 1013904223) >> 24);
    }
  }
  return image;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  chain::Chain steps;
  try {
    steps = chain::parse(text);
  } catch (const chain::Error& error) {
    if (error.position() + error.length() > size) __builtin_trap();
    return 0;
  }
  if (!isSmall(steps)) return 0;
  const chain::Picture other = noise<chain::Gray>({13, 9});
  const auto lookup = [&](const std::string&) -> const chain::Picture& { return other; };
  for (const bool isColor : {false, true}) {
    std::vector<chain::Figures> figures;
    try {
      chain::run(steps, isColor ? noise<chain::Color>({13, 9}) : noise<chain::Gray>({13, 9}),
                 lookup, figures);
    } catch (const chain::Error&) {
    }
  }
  return 0;
}
