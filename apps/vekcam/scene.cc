#include "vekcam/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

#include "vekcam/font.h"

namespace vekcam {
namespace {

// The scene is laid out on a plane of 16 x 9 units, x to the right and y down.

struct Box {
  double x, y, width, height;
  bool holds(double px, double py) const {
    return px >= x && px < x + width && py >= y && py < y + height;
  }
};

constexpr Rgb grey(double v) {
  const float f = static_cast<float>(v);
  return {f, f, f};
}

constexpr Rgb scaled(Rgb c, double by) {
  const float f = static_cast<float>(by);
  return {c.r * f, c.g * f, c.b * f};
}

/// Four rows of six: materials, saturated colours, tints, greys.
constexpr std::array<Rgb, patchCount> patches = {{
    {.35f, .20f, .14f}, {.62f, .36f, .27f}, {.12f, .20f, .38f}, {.10f, .17f, .05f},
    {.24f, .22f, .45f}, {.13f, .50f, .42f}, {.45f, .04f, .04f}, {.06f, .32f, .07f},
    {.04f, .06f, .40f}, {.75f, .55f, .02f}, {.50f, .08f, .30f}, {.02f, .25f, .40f},
    {.75f, .55f, .50f}, {.55f, .72f, .50f}, {.50f, .58f, .78f}, {.78f, .75f, .50f},
    {.70f, .52f, .72f}, {.50f, .72f, .74f}, {.90f, .90f, .90f}, {.58f, .58f, .58f},
    {.36f, .36f, .36f}, {.19f, .19f, .19f}, {.09f, .09f, .09f}, {.03f, .03f, .03f},
}};

Rgb patchBoard(double x, double y) {
  const double column = x * 6;
  const double row = y * 4;
  const double inX = column - std::floor(column);
  const double inY = row - std::floor(row);
  if (inX < .06 || inX > .94 || inY < .06 || inY > .94) return grey(.04);
  return patches[static_cast<size_t>(row) * 6 + static_cast<size_t>(column)];
}

/// Hue from 0 to 1 around the circle, at full saturation.
Rgb hue(double h) {
  const auto channel = [h](double peak) {
    const double away = std::abs(std::remainder(h - peak, 1.0)) * 6;
    return static_cast<float>(.05 + .65 * std::clamp(2.0 - away, 0.0, 1.0));
  };
  return {channel(0), channel(1 / 3.), channel(2 / 3.)};
}

Rgb star(double x, double y) {
  constexpr int spokes = 36;
  return grey(std::sin(std::atan2(y, x) * spokes) > 0 ? .85 : .04);
}

/// Rings that grow finer outwards, up to `finest` radians a unit.
Rgb rings(double distance, double radius, double finest) {
  return grey(Rings::mean *
              (1 + Rings::contrast * std::cos(finest / (2 * radius) * distance * distance)));
}

/// Groups of vertical lines, each twice as fine as the one above it.
Rgb lines(double x, double y) {
  const double group = std::floor(y * 5);
  if (y * 5 - group > .88) return grey(.85);
  return grey(std::fmod(x * 8 * std::exp2(group), 1.0) < .5 ? .04 : .85);
}

/// A ball lit from the upper left, with a highlight several times brighter than white.
std::optional<Rgb> ball(double x, double y, Rgb colour) {
  const double square = x * x + y * y;
  if (square > 1) return std::nullopt;
  const double z = std::sqrt(1 - square);
  const double facing = std::max(0.0, -.5 * x - .55 * y + .67 * z);
  const float shine = static_cast<float>(4 * std::pow(std::max(0.0, facing), 60));
  const Rgb body = scaled(colour, .15 + .85 * facing);
  return Rgb{body.r + shine, body.g + shine, body.b + shine};
}

std::optional<Rgb> text(const Box& box, const char* words, int dots, double x, double y) {
  if (!box.holds(x, y)) return std::nullopt;
  const double dot = box.width / dots;
  if (!textDot(words, static_cast<int>((x - box.x) / dot), static_cast<int>((y - box.y) / dot))) {
    return std::nullopt;
  }
  return grey(.03);
}

constexpr Box board = {.5, .5, 6.9, 4.6};
constexpr double ringsX = 13.2, ringsY = 4.5, ringsRadius = 1.4, finestRings = 150;
constexpr Box wedge = {7.9, 1.3, 7.6, .6};

Rgb at(double x, double y) {
  constexpr Box ramp = {7.9, .5, 7.6, .8};
  constexpr Box rainbow = {7.9, 2.1, 7.6, .8};
  constexpr Box lineGroups = {12.6, 6.1, 2.9, 2.4};
  constexpr Box title = {6.1, 6.3, 5.9, 1.2};
  constexpr Box subtitle = {6.1, 7.8, 5.9, .45};

  if (board.holds(x, y))
    return patchBoard((x - board.x) / board.width, (y - board.y) / board.height);
  if (ramp.holds(x, y)) return grey((x - ramp.x) / ramp.width);
  if (wedge.holds(x, y))
    return grey(std::floor((x - wedge.x) / wedge.width * wedgeSteps) / (wedgeSteps - 1));
  if (rainbow.holds(x, y)) return hue((x - rainbow.x) / rainbow.width);
  if (lineGroups.holds(x, y)) {
    return lines((x - lineGroups.x) / lineGroups.width, (y - lineGroups.y) / lineGroups.height);
  }
  if (std::hypot(x - 9.4, y - 4.6) < 1.4) return star(x - 9.4, y - 4.6);
  const double fromRings = std::hypot(x - ringsX, y - ringsY);
  if (fromRings < ringsRadius) return rings(fromRings, ringsRadius, finestRings);
  constexpr struct {
    double x, radius;
    Rgb colour;
  } balls[] = {
      {1.4, .85, {.6f, .05f, .04f}}, {3.2, .75, {.05f, .35f, .08f}}, {4.8, .65, {.08f, .12f, .6f}}};
  for (const auto& b : balls) {
    if (const auto c = ball((x - b.x) / b.radius, (y - (8.2 - b.radius)) / b.radius, b.colour))
      return *c;
  }
  if (const auto c = text(title, "VEKCAM", 6 * glyphPitch - 1, x, y)) return *c;
  if (const auto c = text(subtitle, "10-BIT RGGB 0123456789", 22 * glyphPitch - 1, x, y)) return *c;
  // The wall, brighter towards the top right, over a darker table.
  return y < 8.2 ? grey(.24 + .012 * x - .008 * y) : scaled({.20f, .17f, .14f}, 1.2 - .02 * x);
}

/// Where a scene of some size lies on the plane.
struct Frame {
  explicit Frame(VekiSize size)
      : scale(std::max(16.0 / size.width, 9.0 / size.height)),
        left(8 - scale * size.width / 2),
        top(4.5 - scale * size.height / 2) {}

  double scale;  ///< units of a sample
  double left, top;
};

/// The middle half of a box.
VekiRect middle(const Box& box, VekiSize size) {
  const Frame frame(size);
  const auto samples = [&](double units) { return static_cast<int>(units / frame.scale); };
  return {samples(box.x + box.width / 4 - frame.left), samples(box.y + box.height / 4 - frame.top),
          std::max(1, samples(box.width / 2)), std::max(1, samples(box.height / 2))};
}

}  // namespace

Rgb patchReflectance(int patch) {
  return patches[static_cast<size_t>(patch)];
}

VekiRect patchArea(int patch, VekiSize size) {
  const double width = board.width / 6;
  const double height = board.height / 4;
  const int row = patch / 6;
  return middle({board.x + patch % 6 * width, board.y + row * height, width, height}, size);
}

VekiRect wedgeArea(int step, VekiSize size) {
  const double width = wedge.width / wedgeSteps;
  return middle({wedge.x + step * width, wedge.y, width, wedge.height}, size);
}

Rings::Rings(VekiSize sceneSize) : size(sceneSize) {
  const Frame frame(size);
  x = (ringsX - frame.left) / frame.scale;
  y = (ringsY - frame.top) / frame.scale;
  radius = ringsRadius / frame.scale;
  phaseScale = finestRings / (2 * ringsRadius) * frame.scale * frame.scale;
}

Scene::Scene(VekiSize sceneSize, SceneKind kind) : size(sceneSize) {
  if (kind != SceneKind::chart) {
    reflectance.assign(static_cast<size_t>(size.width) * static_cast<size_t>(size.height),
                       grey(kind == SceneKind::dark ? 0 : .5));
    return;
  }
  const auto [scale, left, top] = Frame(size);
  // Nine rays, spread over a little more than a sample: the blur of a lens, without which a Bayer
  // sensor turns every edge into coloured dots.
  constexpr double offsets[] = {-.2, .5, 1.2};
  reflectance.reserve(static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      Rgb sum = {0, 0, 0};
      for (const double dy : offsets) {
        for (const double dx : offsets) {
          const Rgb c = at(left + scale * (x + dx), top + scale * (y + dy));
          sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
        }
      }
      reflectance.push_back(scaled(sum, 1 / 9.));
    }
  }
}

}  // namespace vekcam
