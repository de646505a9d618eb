// DNG and raw files of cameras, through LibRaw.
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <memory>

#include "vekcam/files.h"
#include "vekcam/raw_input.h"

#ifdef VEKCAM_LIBRAW
#include <libraw/libraw.h>
#endif

namespace vekcam {

#ifndef VEKCAM_LIBRAW

RawImage readCameraRaw(const std::string& path) {
  throw Failure(path + " is no plain raw frame, and this build of vekcam is without LibRaw");
}

std::string libRawVersion() {
  return "";
}

#else

namespace {

constexpr size_t mostBytes = size_t{1} << 30;

constexpr int red = 0, blue = 2;  ///< LibRaw's colours; 1 and 3 are green

/// The indices into R, Gr, Gb, B of the four samples at the top left.
struct Pattern {
  vek::Bayer order;
  int place[2][2];
};

Pattern patternOf(LibRaw& raw, const std::string& name) {
  const unsigned filters = raw.imgdata.idata.filters;
  Pattern pattern = {};
  for (int order = 0; order < 4; ++order) {
    const int x = order & 1, y = order >> 1;  // where red is
    if (raw.COLOR(y, x) != red || raw.COLOR(y ^ 1, x ^ 1) != blue) continue;
    // Two rows of four bits each, repeated four times.
    if (filters < 1000 || (filters & 0xFF) * 0x01010101U != filters) break;
    pattern.order = static_cast<vek::Bayer>(order);
    pattern.place[y][x] = 0;
    pattern.place[y][x ^ 1] = 1;
    pattern.place[y ^ 1][x] = 2;
    pattern.place[y ^ 1][x ^ 1] = 3;
    return pattern;
  }
  throw Failure(name + " is not of a Bayer sensor");
}

std::array<int, 4> blackOf(LibRaw& raw, const Pattern& pattern, int shift) {
  const auto& color = raw.imgdata.color;
  const unsigned rows = color.cblack[4], columns = color.cblack[5];
  std::array<int, 4> black = {};
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      uint64_t level = uint64_t{color.black} + color.cblack[raw.COLOR(y, x)];
      if (rows > 0 && columns > 0 && rows * columns < 4096)
        level += color.cblack[6 + static_cast<unsigned>(y) % rows * columns +
                              static_cast<unsigned>(x) % columns];
      black[static_cast<size_t>(pattern.place[y][x])] =
          static_cast<int>(std::min<uint64_t>(level << shift, 65535));
    }
  }
  return black;
}

vek::Rotation rotationOf(int flip) {
  switch (flip) {
    case 3:
      return vek::Rotation::half;
    case 5:
      return vek::Rotation::ccw90;
    case 6:
      return vek::Rotation::cw90;
    default:
      return vek::Rotation::none;
  }
}

/// Gains with green 1, if they are within what the camera path takes.
std::optional<vek::ColorGains> gainsOf(const float* multipliers) {
  const double g = multipliers[1];
  const vek::ColorGains gains = {multipliers[0] / g, 1, multipliers[2] / g};
  const auto isFine = [](double gain) {
    return gain >= 1. / vek::recommended::mostWhiteBalance &&
           gain <= vek::recommended::mostWhiteBalance;
  };
  if (!(g > 0) || !isFine(gains.red) || !isFine(gains.blue)) return std::nullopt;
  return gains;
}

std::optional<vek::CameraColor> colorOf(const libraw_data_t& data) {
  const libraw_colordata_t& color = data.color;
  const auto matrixOf = [](const float(&rows)[3][4]) -> std::optional<vek::Matrix3> {
    vek::Matrix3 matrix;
    for (size_t i = 0; i < 3; ++i) {
      double sum = 0;
      for (size_t j = 0; j < 3; ++j) {
        matrix[i][j] = rows[i][j];
        sum += matrix[i][j];
      }
      if (!(sum > .1 && sum < 10)) return std::nullopt;
    }
    return matrix;
  };
  // A DNG has its matrix with it; of other files LibRaw knows it by the camera's name, or has one that
  // leads nowhere from nothing.
  const bool isKnown = color.cam_xyz[0][0] != 0 || color.cam_xyz[0][1] != 0;
  const auto matrix = data.idata.dng_version != 0 ? matrixOf(color.cmatrix)
                      : isKnown                   ? matrixOf(color.rgb_cam)
                                                  : std::nullopt;
  if (!matrix) return std::nullopt;
  vek::CameraColor camera;
  camera.matrix = *matrix;
  // It holds for daylight, which the multipliers balance.
  if (const auto gains = gainsOf(color.pre_mul)) camera.gains = *gains;
  return camera;
}

}  // namespace

RawImage readCameraRaw(const std::string& path) {
  const std::string name = inputName(path);
  std::vector<Vek8u> file = readBytes(path, mostBytes + 1);
  if (file.size() > mostBytes) throw Failure(name + " is too large");
  if (file.empty()) throw Failure(name + " is empty");
  const auto raw = std::make_unique<LibRaw>();
  const auto succeed = [&](int code) {
    if (code == LIBRAW_UNSUFFICIENT_MEMORY) throw std::bad_alloc();
    if (code != LIBRAW_SUCCESS)
      throw Failure(fmt::format("cannot read {}: {}", name, libraw_strerror(code)));
  };
  succeed(raw->open_buffer(file.data(), file.size()));
  const Pattern pattern = patternOf(*raw, name);
  succeed(raw->unpack());
  const auto& sizes = raw->imgdata.sizes;
  const Vek16u* const samples = raw->imgdata.rawdata.raw_image;
  if (samples == nullptr) throw Failure(name + " is not of a Bayer sensor");
  RawImage image;
  FrameInfo& info = image.info;
  info.size = {sizes.width & ~1, sizes.height & ~1};
  const int pitch = static_cast<int>(sizes.raw_pitch / sizeof(Vek16u));
  if (std::min(info.size.width, info.size.height) < smallestFrameSide ||
      std::max(info.size.width, info.size.height) > largestFrameSide ||
      sizes.left_margin + info.size.width > pitch ||
      sizes.top_margin + info.size.height > sizes.raw_height) {
    throw Failure(fmt::format("{}: a frame of {}x{} cannot be developed", name, info.size.width,
                              info.size.height));
  }
  const int maximum = raw->imgdata.color.maximum == 0
                          ? 65535
                          : static_cast<int>(std::min(raw->imgdata.color.maximum, 65535U));
  int shift = 0;  // words of nine bits are the shortest
  while (maximum << shift < 256) ++shift;
  info.white = maximum << shift;
  info.format = {vek::Raw::plain16, 9, pattern.order};
  while (info.white >> info.format.bits != 0) ++info.format.bits;
  info.black = blackOf(*raw, pattern, shift);
  if (std::ranges::max(info.black) >= info.white) {
    throw Failure(fmt::format("{}: the black level {} is not below the white level {}", name,
                              std::ranges::max(info.black), info.white));
  }
  info.rotation = rotationOf(sizes.flip);
  info.asShot = gainsOf(raw->imgdata.color.cam_mul);
  info.color = colorOf(raw->imgdata);
  image.bytes.resize(static_cast<size_t>(info.bytes()));
  Vek8u* out = image.bytes.data();
  for (int y = 0; y < info.size.height; ++y) {
    const Vek16u* const row =
        samples + static_cast<ptrdiff_t>(sizes.top_margin + y) * pitch + sizes.left_margin;
    for (int x = 0; x < info.size.width; ++x) {
      const int value = std::min<int>(row[x], maximum) << shift;
      *out++ = static_cast<Vek8u>(value & 255);
      *out++ = static_cast<Vek8u>(value >> 8);
    }
  }
  return image;
}

std::string libRawVersion() {
  return LibRaw::version();
}

#endif

}  // namespace vekcam
