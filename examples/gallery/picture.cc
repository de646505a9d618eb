#include "picture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <png.h>
#include <vek/image.h>

namespace gallery {

void Picture::rectangle(int x, int y, int width, int height, Color color) {
  for (int row = y; row < y + height; ++row) {
    for (int column = x; column < x + width; ++column) set(column, row, color);
  }
}

void Picture::line(double x0, double y0, double x1, double y1, Color color) {
  const int points = 1 + static_cast<int>(2 * std::max(std::abs(x1 - x0), std::abs(y1 - y0)));
  for (int i = 0; i <= points; ++i) {
    const double part = double(i) / points;
    set(static_cast<int>(std::lround(x0 + part * (x1 - x0))),
        static_cast<int>(std::lround(y0 + part * (y1 - y0))), color);
  }
}

void Picture::paste(const Picture& other, int x, int y, int zoom) {
  for (int row = 0; row < other.size_.height; ++row) {
    for (int column = 0; column < other.size_.width; ++column) {
      const Vek8u* const from = other.data() + row * other.step() + 3 * column;
      rectangle(x + zoom * column, y + zoom * row, zoom, zoom, {from[0], from[1], from[2]});
    }
  }
}

Picture Grey::picture() const {
  Picture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) result.set(x, y, {at(x, y), at(x, y), at(x, y)});
  }
  return result;
}

Grey greyOf(const Picture& picture) {
  Grey grey(picture.size().width, picture.size().height);
  check(vekiRGBToGray_8u_C3C1R(picture.data(), picture.step(), grey.samples.data(), grey.width,
                               picture.size()));
  return grey;
}

namespace {

struct Vector {
  double x, y, z;
};
Vector operator+(Vector a, Vector b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator*(double s, Vector v) {
  return {s * v.x, s * v.y, s * v.z};
}
double dot(Vector a, Vector b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
Vector unit(Vector v) {
  return (1 / std::sqrt(dot(v, v))) * v;
}

struct Sphere {
  Vector centre;
  double radius;
  Vector color;
};
constexpr Sphere spheres[] = {{{-1.1, 1, 5.2}, 1, {0.9, 0.35, 0.25}},
                              {{1.0, 0.75, 4.4}, 0.75, {0.3, 0.6, 0.9}},
                              {{0.1, 0.35, 3.5}, 0.35, {0.95, 0.8, 0.3}}};
constexpr double nothing = 1e9;

/// How far a ray goes until it meets a sphere or the floor; `sphere` is null at the floor.
double distance(Vector from, Vector direction, const Sphere*& sphere) {
  double nearest = direction.y < 0 ? -from.y / direction.y : nothing;
  sphere = nullptr;
  for (const Sphere& s : spheres) {
    const Vector way = from + -1 * s.centre;
    const double b = dot(way, direction), root = b * b - dot(way, way) + s.radius * s.radius;
    const double t = root > 0 ? -b - std::sqrt(root) : nothing;
    if (t > 1e-6 && t < nearest) nearest = t, sphere = &s;
  }
  return nearest;
}

Vector lightAlong(Vector from, Vector direction) {
  const Sphere* sphere = nullptr;
  const double t = distance(from, direction, sphere);
  if (t >= nothing) return (0.12 + 1.6 * direction.y) * Vector{0.7, 0.85, 1.0};
  const Vector point = from + t * direction;
  const bool darkTile = (std::lround(point.x + 100) + std::lround(point.z)) % 2 == 0;
  const Vector normal = sphere != nullptr ? unit(point + -1 * sphere->centre) : Vector{0, 1, 0};
  const Vector color =
      sphere != nullptr ? sphere->color : (darkTile ? 0.1 : 0.75) * Vector{1, 1, 1};
  double lit = 0;
  for (int i = 0; i < 16; ++i) {  // an area light, for soft shadows
    const Vector light = {-4 + 0.3 * (i % 4), 6, -1 + 0.3 * (i / 4)};
    const Vector towards = unit(light + -1 * point);
    const Sphere* between = nullptr;
    distance(point + 1e-4 * normal, towards, between);
    if (between == nullptr) lit += std::max(0.0, dot(normal, towards)) / 16;
  }
  const double fade = std::exp(-0.04 * t);
  return (fade * (0.04 + 0.96 * lit)) * color + (0.12 * (1 - fade)) * Vector{0.7, 0.85, 1.0};
}

}  // namespace

Picture scene(int width, int height) {
  Picture picture(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Vector sum = {0, 0, 0};
      for (int i = 0; i < 4; ++i) {
        const double column = (x + 0.25 + 0.5 * (i % 2) - width / 2.0) / width;
        const double row = (height / 2.0 - y - 0.25 - 0.5 * (i / 2)) / width;
        sum = sum + lightAlong({0, 1.3, 0}, unit({column, row - 0.1, 1.0}));
      }
      const auto code = [](double light) {
        return static_cast<Vek8u>(
            std::lround(255 * std::pow(std::clamp(light, 0.0, 1.0), 1 / 2.2)));
      };
      picture.set(x, y, {code(sum.x / 4), code(sum.y / 4), code(sum.z / 4)});
    }
  }
  return picture;
}

void writePng(const Picture& picture, const std::string& file) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.size().width);
  image.height = static_cast<png_uint_32>(picture.size().height);
  image.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&image, file.c_str(), 0, picture.data(), 0, nullptr) == 0) {
    throw std::runtime_error(file + ": " + image.message);
  }
}

}  // namespace gallery
