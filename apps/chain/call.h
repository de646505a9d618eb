// What an operation of the table gets: the picture and its arguments.
#pragma once

#include <cmath>
#include <utility>
#include <vek/vek.hpp>

#include "chain/chain.h"

namespace chain {

/// What an operation refuses; run() adds where.
struct Refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

template <class Image>
constexpr int channelsOf = std::is_same_v<std::remove_cvref_t<Image>, Gray> ? 1 : 3;

/// The bytes of a picture, whatever its channels are.
template <class Image>
auto bytes(Image& image) {
  return vek::View<std::conditional_t<std::is_const_v<Image>, const Vek8u, Vek8u>,
                   channelsOf<Image>>(image.view());
}

inline vek::Size sizeOf(const Picture& picture) {
  return std::visit([](const auto& image) { return image.size(); }, picture);
}

/// A picture with as many channels, whose samples are not initialised.
template <class Image>
Image made(vek::Size size) {
  if (size.width < 1 || size.height < 1 || size.width > largestSide || size.height > largestSide ||
      int64_t{size.width} * size.height > largestArea) {
    throw Refusal("a picture of " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                  " pixels cannot be made");
  }
  return Image(size);
}

/// f(View<const Vek8u, n>, View<Vek8u, n>) from a picture to a new one of `size`.
template <class F>
Picture toNew(const Picture& picture, vek::Size size, const F& f) {
  return std::visit(
      [&](const auto& source) -> Picture {
        auto result = made<std::remove_cvref_t<decltype(source)>>(size);
        f(bytes(source), bytes(result));
        return result;
      },
      picture);
}

/// The same of the picture's own size.
template <class F>
Picture toNew(const Picture& picture, const F& f) {
  return toNew(picture, sizeOf(picture), f);
}

template <class Pixel, int n>
constexpr int viewChannels(const vek::View<Pixel, n>&) {
  return n;
}

class Call {
 public:
  Call(const Step& step, size_t index, const Picture& source, const Picture& input,
       const Lookup& lookup, std::vector<Figures>& figures)
      : picture(source),
        step_(step),
        index_(index),
        input_(input),
        lookup_(lookup),
        figures_(figures) {}

  const Picture& picture;

  /// The same call on another picture.
  Call with(const Picture& other) const {
    return {step_, index_, other, input_, lookup_, figures_};
  }

  vek::Size size() const { return sizeOf(picture); }

  /// The picture, which must be one in color.
  const Color& color() const {
    if (const auto* const color = std::get_if<Color>(&picture)) return *color;
    throw Refusal("the picture is grey, and this needs color: put 'color' in front");
  }

  const Argument& argument(size_t i) const { return step_.arguments[i]; }
  double number(size_t i) const { return argument(i).numbers[0]; }
  int integer(size_t i) const { return static_cast<int>(number(i)); }
  vek::Size pair(size_t i) const {
    return {static_cast<int>(argument(i).numbers[0]), static_cast<int>(argument(i).numbers[1])};
  }
  template <class Enum>
  Enum word(size_t i) const {
    return static_cast<Enum>(integer(i));
  }
  std::vector<Vek32s> integers(size_t i) const {
    return {argument(i).numbers.begin(), argument(i).numbers.end()};
  }

  /// A number for each channel: one for all of them, or three.
  template <int n, class Number = Vek8u>
  vek::Value<Number, n> value(size_t i) const {
    const std::vector<double>& numbers = argument(i).numbers;
    if constexpr (n == 1) {
      if (numbers.size() != 1) {
        throw Refusal("'" + argument(i).text + "' is a color, but the picture is grey");
      }
      return static_cast<Number>(numbers[0]);
    } else {
      const auto channel = [&](size_t c) {
        return static_cast<Number>(numbers[numbers.size() == 1 ? 0 : c]);
      };
      return {channel(0), channel(1), channel(2)};
    }
  }

  /// Another picture, of the same kind and size.
  template <int n>
  vek::View<const Vek8u, n> other(size_t i) const {
    using Image = std::conditional_t<n == 1, Gray, Color>;
    const std::string& name = argument(i).text;
    const Picture& found = name == "in" ? input_ : lookup_(name);
    const vek::Size size = sizeOf(found);
    if (size.width != this->size().width || size.height != this->size().height) {
      throw Refusal("@" + name + " is " + text(size) + ", but the picture is " +
                    text(this->size()));
    }
    if (const auto* const image = std::get_if<Image>(&found)) return bytes(*image);
    throw Refusal("@" + name +
                  (n == 1 ? " is in color, but the picture is grey"
                          : " is grey, but the picture is in color"));
  }

  /// Tells what was measured.
  void tell(std::vector<std::string> labels, std::vector<std::vector<double>> channels) {
    figures_.push_back({index_, step_.text, std::move(labels), std::move(channels)});
  }

  static std::string text(vek::Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
  }

 private:
  const Step& step_;
  size_t index_;
  const Picture& input_;
  const Lookup& lookup_;
  std::vector<Figures>& figures_;
};

}  // namespace chain
