#include "vekcam/commands/options.h"

#include <charconv>
#include <fmt/format.h>

namespace vekcam {
namespace {

vek::Size parseSize(const std::string& text, SizeLimits limits) {
  vek::Size size = {0, 0};
  const char* const end = text.data() + text.size();
  const auto [x, widthError] = std::from_chars(text.data(), end, size.width);
  const bool hasCross = widthError == std::errc() && x != end && (*x == 'x' || *x == 'X');
  if (!hasCross)
    throw CLI::ValidationError("expected WIDTHxHEIGHT, such as 1920x1080, not " + text);
  const auto [rest, heightError] = std::from_chars(x + 1, end, size.height);
  if (heightError != std::errc() || rest != end)
    throw CLI::ValidationError("expected WIDTHxHEIGHT, such as 1920x1080, not " + text);
  for (const auto& [side, n] : {std::pair{"width", size.width}, {"height", size.height}}) {
    if (n < limits.least || n > limits.most) {
      throw CLI::ValidationError(
          fmt::format("{} {} is outside {}..{}", side, n, limits.least, limits.most));
    }
    if (n % 2 != 0) throw CLI::ValidationError(fmt::format("{} {} is odd", side, n));
  }
  return size;
}

}  // namespace

CLI::Option* addSize(CLI::App& command, const std::string& name, vek::Size& size, SizeLimits limits,
                     const std::string& help) {
  const auto parse = [&size, limits, name](const std::string& text) {
    try {
      size = parseSize(text, limits);
    } catch (const CLI::ValidationError& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
  return command.add_option_function<std::string>(name, parse, help)->type_name("WxH");
}

void addRotation(CLI::App& command, vek::Rotation& rotation) {
  const std::map<std::string, vek::Rotation> rotations = {{"0", vek::Rotation::none},
                                                          {"90", vek::Rotation::cw90},
                                                          {"180", vek::Rotation::half},
                                                          {"270", vek::Rotation::ccw90}};
  command
      .add_option_function<std::string>(
          "--rotate",
          [&rotation, rotations](const std::string& text) { rotation = rotations.at(text); },
          "Rotate the picture clockwise by 0, 90, 180 or 270 degrees")
      ->check(CLI::IsMember({"0", "90", "180", "270"}))
      ->type_name("DEGREES");
}

void addCurve(CLI::App& command, vek::ToneCurve& curve) {
  const std::map<std::string, vek::ToneCurve> curves = {{"srgb", vek::ToneCurve::srgb},
                                                        {"bt709", vek::ToneCurve::bt709},
                                                        {"linear", vek::ToneCurve::linear}};
  command
      .add_option_function<std::string>(
          "--curve", [&curve, curves](const std::string& text) { curve = curves.at(text); },
          "Tone curve: srgb (the default), bt709 or linear")
      ->check(CLI::IsMember({"srgb", "bt709", "linear"}))
      ->type_name("CURVE");
}

}  // namespace vekcam
