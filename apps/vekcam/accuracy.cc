#include "vekcam/accuracy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <numbers>

namespace vekcam {
namespace {

constexpr int noisePatch = 20;  ///< a grey in the middle of the range

using Triple = std::array<double, 3>;

/// CIE L*, a*, b* of linear sRGB, relative to its own white (D65).
Triple lab(const Triple& rgb) {
  constexpr double toXyz[3][3] = {{.4124564, .3575761, .1804375},
                                  {.2126729, .7151522, .0721750},
                                  {.0193339, .1191920, .9503041}};
  const auto f = [](double t) {
    return t > 216. / 24389 ? std::cbrt(t) : (24389. / 27 * t + 16) / 116;
  };
  Triple v;
  for (size_t i = 0; i < 3; ++i) {
    const double* const row = toXyz[i];
    v[i] = f((row[0] * rgb[0] + row[1] * rgb[1] + row[2] * rgb[2]) / (row[0] + row[1] + row[2]));
  }
  return {116 * v[1] - 16, 500 * (v[0] - v[1]), 200 * (v[1] - v[2])};
}

/// A picture by the samples of the sensor that it shows.
struct Shown {
  const Picture& picture;
  VekiSize sensor, preview;
  vek::Rotation rotation;

  const Vek8u* at(int x, int y) const {
    const auto scaled = [](int i, int from, int to) {
      return std::clamp(static_cast<int>((i + .5) * to / from), 0, to - 1);
    };
    const int column = scaled(x, sensor.width, preview.width);
    const int row = scaled(y, sensor.height, preview.height);
    const int right = preview.width - 1 - column;
    const int below = preview.height - 1 - row;
    const auto pixel = [this](int px, int py) { return picture.row(py) + 3 * px; };
    switch (rotation) {
      case vek::Rotation::cw90:
        return pixel(below, column);
      case vek::Rotation::half:
        return pixel(right, below);
      case vek::Rotation::ccw90:
        return pixel(row, right);
      default:
        return pixel(column, row);
    }
  }

  /// The mean red, green and blue of what `value` makes of each code.
  template <typename Value>
  Triple mean(const VekiRect& area, const Value& value) const {
    Triple sum = {};
    for (int y = area.y; y < area.y + area.height; ++y) {
      for (int x = area.x; x < area.x + area.width; ++x) {
        const Vek8u* const bgr = at(x, y);
        for (size_t i = 0; i < 3; ++i) sum[i] += value(bgr[2 - i]);
      }
    }
    for (double& channel : sum) channel /= static_cast<double>(area.width) * area.height;
    return sum;
  }
};

}  // namespace

double colorDifference(const Triple& a, const Triple& b) {
  const Triple first = lab(a);
  const Triple second = lab(b);
  return std::hypot(first[0] - second[0], first[1] - second[1], first[2] - second[2]);
}

double lightOf(double code, vek::ToneCurve curve) {
  const double x = code / 255;
  if (curve == vek::ToneCurve::linear) return x;
  if (curve == vek::ToneCurve::bt709)
    return x < .081 ? x / 4.5 : std::pow((x + .099) / 1.099, 1 / .45);
  return x <= .04045 ? x / 12.92 : std::pow((x + .055) / 1.055, 2.4);
}

AccuracyMeter::AccuracyMeter(VekiSize sensor, VekiSize preview, vek::Rotation rotation,
                             vek::ToneCurve curve)
    : sensor_(sensor), preview_(preview), rotation_(rotation) {
  for (size_t code = 0; code < light_.size(); ++code) {
    light_[code] = lightOf(static_cast<double>(code), curve);
  }
}

void AccuracyMeter::clear() {
  count_ = 0;
  noise_ = 0;
  rings_ = {};
}

void AccuracyMeter::add(const Picture& picture) {
  const Shown shown = {picture, sensor_, preview_, rotation_};
  const auto addTo = [this](Triple& sum, const Triple& mean) {
    for (size_t i = 0; i < 3; ++i) sum[i] = count_ == 0 ? mean[i] : sum[i] + mean[i];
  };
  for (int i = 0; i < patchCount; ++i) {
    addTo(patches_[static_cast<size_t>(i)],
          shown.mean(patchArea(i, sensor_), [this](Vek8u code) { return light_[code]; }));
  }
  for (int i = 0; i < wedgeSteps; ++i) {
    addTo(wedge_[static_cast<size_t>(i)],
          shown.mean(wedgeArea(i, sensor_), [this](Vek8u code) { return light_[code]; }));
  }
  // A mean and a mean of squares of the codes of one grey.
  const VekiRect grey = patchArea(noisePatch, sensor_);
  const double mean = shown.mean(grey, [](Vek8u code) { return code; })[1];
  const double square = shown.mean(grey, [](Vek8u code) { return code * code; })[1];
  noise_ += std::sqrt(std::max(0., square - mean * mean));
  addRings(picture);
  ++count_;
}

void AccuracyMeter::addRings(const Picture& picture) {
  const Shown shown = {picture, sensor_, preview_, rotation_};
  const Rings rings(sensor_);
  const double samples = static_cast<double>(sensor_.width) / preview_.width;  // of a pixel
  const int reach = static_cast<int>(rings.radius / samples);
  for (int row = -reach; row <= reach; ++row) {
    for (int column = -reach; column <= reach; ++column) {
      // The middle of a pixel, in samples.
      const double x = (std::floor(rings.x / samples) + column + .5) * samples;
      const double y = (std::floor(rings.y / samples) + row + .5) * samples;
      const double distance = std::hypot(x - rings.x, y - rings.y);
      // Cycles a pixel: a quarter for lines two pixels wide.
      const double frequency = rings.phaseScale * distance / std::numbers::pi * samples;
      if (x < 0 || y < 0 || x >= sensor_.width || y >= sensor_.height ||
          distance > .97 * rings.radius || std::abs(frequency - .25) > .05) {
        continue;
      }
      const double light = light_[shown.at(static_cast<int>(x), static_cast<int>(y))[1]];
      const double phase = rings.phaseScale * distance * distance;
      const double terms[4] = {1, std::cos(phase), std::sin(phase), light};
      for (size_t i = 0; i < 3; ++i) {
        for (size_t j = 0; j < 4; ++j) rings_[i][j] += terms[i] * terms[j];
      }
    }
  }
}

double AccuracyMeter::detail() const {
  // Light as a mean and a wave of the rings' phase, by least squares: what has another phase, as noise
  // and aliases have, does not count.
  RingSums m = rings_;
  for (size_t i = 0; i < 3; ++i) {
    if (!(std::abs(m[i][i]) > 1e-9)) return 0;  // there are no such rings
    for (size_t k = 0; k < 3; ++k) {
      if (k == i) continue;
      const double times = m[k][i] / m[i][i];
      for (size_t j = 0; j < 4; ++j) m[k][j] -= times * m[i][j];
    }
  }
  const double mean = m[0][3] / m[0][0];
  return std::hypot(m[1][3] / m[1][1], m[2][3] / m[2][2]) / std::max(mean, 1e-9) / Rings::contrast;
}

Accuracy AccuracyMeter::result() const {
  const auto code = [this](double light) {  // between two codes in proportion
    const auto above = std::upper_bound(light_.begin() + 1, light_.end() - 1, light);
    return static_cast<double>(above - light_.begin()) - (*above - light) / (*above - *(above - 1));
  };
  const auto known = [](size_t i) {
    const Rgb c = patchReflectance(static_cast<int>(i));
    return Triple{c.r, c.g, c.b};
  };
  double product = 0;
  double square = 0;
  for (size_t i = firstGreyPatch; i < patchCount; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      product += patches_[i][j] * known(i)[j];
      square += known(i)[j] * known(i)[j];
    }
  }
  const double brightness = std::max(product / square, 1e-3);
  Accuracy result = {0, 0, 0, 0, true, noise_ / count_, detail()};
  for (size_t i = 0; i < patchCount; ++i) {
    Triple seen = patches_[i];
    for (double& channel : seen) channel /= brightness;
    const double d = colorDifference(seen, known(i));
    result.meanDifference += d / patchCount;
    if (d <= result.worstDifference) continue;
    result.worstDifference = d;
    result.worstPatch = static_cast<int>(i) + 1;
  }
  for (size_t i = 1; i < wedgeSteps; ++i) {
    // Not of the first step, which is black: noise around 0 has but one sign there.
    const auto [low, high] = std::minmax_element(wedge_[i].begin(), wedge_[i].end());
    result.greySpread = std::max(result.greySpread, code(*high / count_) - code(*low / count_));
    result.isMonotonic = result.isMonotonic && wedge_[i][1] >= wedge_[i - 1][1];
  }
  return result;
}

std::string describe(const Accuracy& a) {
  return fmt::format(
      "color difference {:.1f}, at most {:.1f} (patch {}); greys within {:.1f} codes{}; noise "
      "{:.1f} "
      "codes; detail {:.0f} %",
      a.meanDifference, a.worstDifference, a.worstPatch, a.greySpread,
      a.isMonotonic ? "" : ", not monotonic", a.noise, 100 * a.detail);
}

}  // namespace vekcam
