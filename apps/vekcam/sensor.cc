#include "vekcam/sensor.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vekcam {
namespace {

constexpr float maxSample = 1023;
constexpr float electronsPerStep = 8;   ///< electrons that make one step of the converter at gain 1
constexpr float readNoise = 4;          ///< electrons
constexpr float electronsPerUnit = 69;  ///< collected by green per row's time from a white, level 1
constexpr size_t noiseLength = 1 << 16;

/// Which part of the scene's red, green and blue each channel sees: neighbouring colours leak in.
constexpr Matrix3 response = {{{{.74, .21, .05}}, {{.13, .75, .12}}, {{.04, .20, .76}}}};
/// Sensitivity to a white in daylight; red and blue filters pass less than green.
constexpr double sensitivity[3] = {.55, 1, .70};

Matrix3 inverse(const Matrix3& m) {
  Matrix3 result;
  double determinant = 0;
  for (size_t i = 0; i < 3; ++i) {
    for (size_t j = 0; j < 3; ++j) {
      const size_t r1 = (j + 1) % 3, r2 = (j + 2) % 3, c1 = (i + 1) % 3, c2 = (i + 2) % 3;
      result[i][j] = m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    }
    determinant += m[0][i] * result[i][0];
  }
  for (auto& row : result) {
    for (double& v : row) v /= determinant;
  }
  return result;
}

/// 0 red, 1 green, 2 blue.
int channelAt(int x, int y) {
  return (x & 1) + (y & 1);
}

/// `noise` is one standard normal number a sample: the photons' noise grows with the square root of
/// their number, and the read noise adds to its square.
void exposeRow(const float* __restrict electrons, const float* __restrict noise, float rows,
               float gain, Vek16u* __restrict out, int n) {
  for (int x = 0; x < n; ++x) {
    const float mean = electrons[x] * rows;
    const float collected = mean + noise[x] * std::sqrt(mean + readNoise * readNoise);
    const float value = collected * gain + .5f;
    out[x] = static_cast<Vek16u>(static_cast<int>(std::clamp(value, 0.f, maxSample)));
  }
}

}  // namespace

const std::vector<Light>& lightScript() {
  static const std::vector<Light> lights = {
      {"daylight", {1, 1, 1}, 1},
      {"lamp at night", {1.75f, 1, .36f}, .007},
      {"noon sun", {1.08f, 1, .88f}, 6},
      {"shade", {.82f, 1, 1.3f}, .3},
  };
  return lights;
}

Sensor::Sensor(Scene scene, uint64_t seed) : scene_(std::move(scene)), randomState_(seed) {
  noise_.reserve(noiseLength + static_cast<size_t>(scene_.size.width));
  while (noise_.size() < noiseLength) {  // in pairs, from two uniform numbers each
    const double u = (static_cast<double>(random() >> 11) + 1) * 0x1p-53;
    const double angle = static_cast<double>(random() >> 11) * 0x1p-53 * 2 * std::numbers::pi;
    const double radius = std::sqrt(-2 * std::log(u));
    noise_.push_back(static_cast<float>(radius * std::cos(angle)));
    noise_.push_back(static_cast<float>(radius * std::sin(angle)));
  }
  for (int i = 0; i < scene_.size.width; ++i) noise_.push_back(noise_[static_cast<size_t>(i)]);

  const auto below = [this](int n) {
    return static_cast<int>(random() % static_cast<uint64_t>(n));
  };
  for (int i = 0; i < 8; ++i)
    dead_.push_back({below(scene_.size.height), below(scene_.size.width)});
  // A pair of the same colour side by side, and one next to the edge.
  const VekiDeadPixel pair = {scene_.size.height / 2, scene_.size.width / 3};
  dead_.insert(dead_.end(), {pair, {pair.row, pair.column + 2}, {scene_.size.height / 3, 1}});
}

Matrix3 Sensor::colorCorrection() {
  return inverse(response);
}

vek::ColorGains Sensor::daylightGains() {
  return {1 / sensitivity[0], 1 / sensitivity[1], 1 / sensitivity[2]};
}

uint64_t Sensor::random() {  // splitmix64
  uint64_t z = randomState_ += 0x9E3779B97F4A7C15;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

void Sensor::illuminate(const Light& light) {
  float weights[3][3];
  for (size_t channel = 0; channel < 3; ++channel) {
    const double scale = sensitivity[channel] * light.level * electronsPerUnit;
    const float colour[3] = {light.colour.r, light.colour.g, light.colour.b};
    for (size_t i = 0; i < 3; ++i) {
      weights[channel][i] = static_cast<float>(scale * response[channel][i]) * colour[i];
    }
  }
  electronsPerRow_.resize(scene_.reflectance.size());
  size_t i = 0;
  for (int y = 0; y < scene_.size.height; ++y) {
    for (int x = 0; x < scene_.size.width; ++x, ++i) {
      const float* const w = weights[channelAt(x, y)];
      const Rgb c = scene_.reflectance[i];
      electronsPerRow_[i] = w[0] * c.r + w[1] * c.g + w[2] * c.b;
    }
  }
}

void Sensor::expose(const Controls& controls, RawFrame& frame) {
  const float gain = static_cast<float>(controls.analogueGain) / 16 / electronsPerStep;
  const int width = scene_.size.width;
  for (int y = 0; y < scene_.size.height; ++y) {
    const float* const noise = noise_.data() + random() % noiseLength;
    exposeRow(electronsPerRow_.data() + static_cast<ptrdiff_t>(y) * width, noise, controls.exposure,
              gain, frame.row(y), width);
  }
  applyGains(controls, frame);
  for (const VekiDeadPixel& p : dead_) frame.row(p.row)[p.column] = p.column % 3 == 0 ? 0 : 1023;
  frame.mirrorBorder();
}

void applyGains(const Controls& controls, RawFrame& frame) {
  const int gains[3] = {controls.red, controls.green, controls.blue};
  for (int y = 0; y < frame.height(); ++y) {
    Vek16u* const row = frame.row(y);
    const int even = gains[channelAt(0, y)];
    const int odd = gains[channelAt(1, y)];
    for (int x = 0; x < frame.width(); x += 2) {
      row[x] = static_cast<Vek16u>(std::min((row[x] * even + 128) >> 8, 1023));
      row[x + 1] = static_cast<Vek16u>(std::min((row[x + 1] * odd + 128) >> 8, 1023));
    }
  }
}

}  // namespace vekcam
