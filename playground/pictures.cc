// Pictures and chains of operations for the page: what the worker calls. Pixels come and go as RGBA, all
// else that is not a number as JSON.
#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vek/vek.hpp>

#include "chain/call.h"
#include "chain/chain.h"
#include "chain/code/code.h"
#include "playground.h"

namespace playground {
namespace {

using chain::Color;
using chain::Gray;
using chain::Picture;

constexpr const char* inputName = "in";
constexpr const char* resultName = "out";

/// The input, the result, and other pictures that chains call by their names.
std::map<std::string, Picture, std::less<>> pictures;
/// What run() works on.
std::optional<chain::Chain> prepared;
Picture source;
std::vector<chain::Figures> figures;

const Picture& pictureNamed(std::string_view name) {
  const auto found = pictures.find(name);
  if (found == pictures.end())
    throw std::runtime_error("there is no picture @" + std::string(name));
  return found->second;
}

Picture copyOf(const Picture& picture) {
  return chain::toNew(picture,
                      [](auto src, auto dst) { vek::copy<chain::viewChannels(src)>(src, dst); });
}

std::string sizeAsJson(const Picture& picture) {
  const vek::Size size = chain::sizeOf(picture);
  return "\"width\":" + std::to_string(size.width) + ",\"height\":" + std::to_string(size.height) +
         ",\"channels\":" + (std::holds_alternative<Gray>(picture) ? "1" : "3");
}

std::string parameterAsJson(const chain::Parameter& from) {
  constexpr const char* kinds[] = {"integer", "number",  "size",    "mask", "point",
                                   "color",   "operand", "picture", "list", "word"};
  std::string json = "{\"name\":" + quoted(from.name) +
                     ",\"kind\":" + quoted(kinds[static_cast<size_t>(from.kind)]);
  if (from.fallback != nullptr) json += ",\"default\":" + quoted(from.fallback);
  if (from.words != nullptr) json += ",\"words\":" + quoted(from.words);
  return json + ",\"low\":" + chain::numberText(from.low) +
         ",\"high\":" + chain::numberText(from.high) + "}";
}

std::string figuresAsJson() {
  const auto list = [](const auto& items, const auto& text) {
    std::string json = "[";
    for (const auto& item : items) json += (json.size() == 1 ? "" : ",") + text(item);
    return json + "]";
  };
  return list(figures, [&](const chain::Figures& one) {
    return "{\"step\":" + std::to_string(one.step) + ",\"operation\":" + quoted(one.operation) +
           ",\"labels\":" + list(one.labels, quoted) + ",\"channels\":" +
           list(one.channels,
                [&](const auto& channel) { return list(channel, chain::numberText); }) +
           "}";
  });
}

/// Over white; what is grey has red, green and blue alike.
void fromRgba(const Vek8u* from, Gray& to) {
  for (int y = 0; y < to.height(); ++y) {
    for (int x = 0; x < to.width(); ++x, from += 4) {
      to.row(y)[x] = static_cast<Vek8u>((from[0] * from[3] + 255 * (255 - from[3]) + 127) / 255);
    }
  }
}

void fromRgba(const Vek8u* from, Color& to) {
  for (int y = 0; y < to.height(); ++y) {
    Vek8u* pixel = to.row(y);
    for (int x = 0; x < to.width(); ++x, from += 4, pixel += 3) {
      for (int c = 0; c < 3; ++c) {
        pixel[c] = static_cast<Vek8u>((from[c] * from[3] + 255 * (255 - from[3]) + 127) / 255);
      }
    }
  }
}

}  // namespace

void setPicture(std::string_view name, Picture picture) {
  pictures.insert_or_assign(std::string(name), std::move(picture));
}

/// All operations and their parameters.
PLAYGROUND_EXPORT const char* operations() {
  return answer([] {
    std::string json = "[";
    for (const chain::Operation& operation : chain::operations()) {
      std::string parameters;
      for (const chain::Parameter& parameter : operation.all()) {
        parameters += (parameters.empty() ? "" : ",") + parameterAsJson(parameter);
      }
      json += json.size() == 1 ? "{" : ",{";
      json += "\"group\":" + quoted(operation.group) + ",\"name\":" + quoted(operation.name) +
              ",\"help\":" + quoted(operation.help) +
              ",\"usage\":" + quoted(chain::usage(operation)) + ",\"parameters\":[" + parameters +
              "]}";
    }
    return json + "]";
  });
}

/// Takes a picture from width x height RGBA pixels.
PLAYGROUND_EXPORT const char* setPixels(const char* name, const Vek8u* rgba, int width, int height,
                                        int isGray) {
  return answer([&] {
    const auto take = [&]<class Image>(Image image) {
      fromRgba(rgba, image);
      setPicture(name, std::move(image));
    };
    if (isGray != 0)
      take(chain::made<Gray>({width, height}));
    else
      take(chain::made<Color>({width, height}));
    return "{" + sizeAsJson(pictureNamed(name)) + "}";
  });
}

PLAYGROUND_EXPORT void removePicture(const char* name) {
  pictures.erase(name);
}

PLAYGROUND_EXPORT const char* describePicture(const char* name) {
  return answer([&] { return "{" + sizeAsJson(pictureNamed(name)) + "}"; });
}

/// A picture as RGBA, in memory of the caller's.
PLAYGROUND_EXPORT void getPixels(const char* name, Vek8u* rgba) {
  const Picture& picture = pictureNamed(name);
  const vek::Size size = chain::sizeOf(picture);
  if (const auto* const color = std::get_if<Color>(&picture)) {
    const vek::View<const Vek8u, 3> from = color->view();
    vek::permuteChannels(from, vek::View<Vek8u, 4>(rgba, size), std::array<int, 4>{0, 1, 2, 3},
                         Vek8u{255});
    return;
  }
  const Gray& gray = std::get<Gray>(picture);
  for (int y = 0; y < size.height; ++y) {
    const Vek8u* const row = gray.row(y);
    for (int x = 0; x < size.width; ++x, rgba += 4) {
      rgba[0] = rgba[1] = rgba[2] = row[x];
      rgba[3] = 255;
    }
  }
}

/// How often each value occurs in red, green and blue, or three times in a grey picture.
PLAYGROUND_EXPORT const uint32_t* histogram(const char* name) {
  static std::array<std::array<uint32_t, 256>, 3> counts;
  counts = {};
  std::visit(
      [](const auto& image) {
        constexpr int channels = chain::channelsOf<decltype(image)>;
        const auto view = chain::bytes(image);
        for (int y = 0; y < view.height(); ++y) {
          const Vek8u* const row = view.row(y);
          for (int x = 0; x < view.width(); ++x) {
            for (int c = 0; c < channels; ++c)
              ++counts[static_cast<size_t>(c)][row[x * channels + c]];
          }
        }
        if (channels == 1) counts[1] = counts[2] = counts[0];
      },
      pictureNamed(name));
  return counts[0].data();
}

/// The steps of a chain with the texts of all arguments, or what is wrong with it.
PLAYGROUND_EXPORT const char* parse(const char* text) {
  return answer([&] {
    std::string json = "{\"steps\":[";
    bool isFirst = true;
    for (const chain::Step& step : chain::parse(text)) {
      std::string arguments;
      for (const chain::Argument& argument : step.arguments) {
        arguments += (arguments.empty() ? "" : ",") +
                     quoted((argument.isPicture ? "@" : "") + argument.text);
      }
      json += isFirst ? "" : ",";
      json += "{\"name\":" + quoted(step.operation->name) + ",\"arguments\":[" + arguments + "]}";
      isFirst = false;
    }
    return json + "]}";
  });
}

/// Gets everything ready that run() needs, so that it can be timed. An empty text changes nothing.
PLAYGROUND_EXPORT const char* prepare(const char* text) {
  return answer([&] {
    prepared = *text == '\0' ? chain::Chain() : chain::parse(text);
    source = copyOf(pictureNamed(inputName));
    figures.clear();
    return "{}";
  });
}

/// Runs the chain on the input.
PLAYGROUND_EXPORT const char* run() {
  return answer([] {
    setPicture(resultName, chain::run(prepared.value(), std::move(source), pictureNamed, figures));
    return "{}";
  });
}

/// What the result is like: its size, its digest, and what was measured on the way.
PLAYGROUND_EXPORT const char* describeResult() {
  return answer([] {
    const Picture& result = pictureNamed(resultName);
    return "{" + sizeAsJson(result) + ",\"digest\":" + quoted(hexadecimal(chain::digest(result))) +
           ",\"figures\":" + figuresAsJson() + "}";
  });
}

/// The chain as a program: 0 is C, 1 C++ and 2 Python.
PLAYGROUND_EXPORT const char* code(const char* text, int language) {
  return answer([&] {
    const bool isColor = std::holds_alternative<Color>(pictureNamed(inputName));
    return "{\"code\":" +
           quoted(chain::code(text, static_cast<chain::Language>(language), isColor)) + "}";
  });
}

}  // namespace playground
