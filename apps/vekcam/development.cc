#include "vekcam/development.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <vek/vek.hpp>

#include "vekcam/failure.h"

namespace vekcam {
namespace {

constexpr std::array orderNames = {"RGGB", "GRBG", "GBRG", "BGGR"};

/// Sums over the 2 x 2 cells of a frame, of 10-bit samples less black.
struct Cells {
  int64_t offDiagonal = 0;  ///< how far top right and bottom left are apart
  int64_t diagonal = 0;     ///< and top left and bottom right
  int64_t counted = 0;      ///< cells without a dark or saturated sample
  int64_t yellow = 0;       ///< of those: red and green far above blue
  int64_t cyan = 0;         ///< blue and green far above red
};

/// Every fourth row of cells is enough.
Cells measure(const FrameInfo& info, const std::vector<Vek8u>& bytes,
              const vek::ColorGains& gains) {
  constexpr int stride = 4;
  constexpr int dark = 40, bright = 900;
  const int width = info.size.width & ~1;
  vek::RawFrontEnd frontEnd;
  frontEnd.format = info.format.packing;
  frontEnd.bits = info.format.bits;
  frontEnd.order = vek::Bayer::rggb;  // samples stay where they are
  const int order = static_cast<int>(info.format.order);
  const int red = order, blue = 3 - order;  // of the four samples of a cell, in reading order
  for (size_t i = 0; i < 4; ++i)
    frontEnd.black[i] = static_cast<Vek16u>(info.black[i ^ static_cast<size_t>(order)]);
  vek::Image<vek::Raw10> rows({width, 2});
  Cells cells;
  for (int y = 0; y + 1 < info.size.height; y += 2 * stride) {
    vek::rawTo10Rggb(info.view(bytes), rows, frontEnd, vek::Point{0, y});
    for (int x = 0; x < width; x += 2) {
      const int cell[4] = {rows.row(0)[x], rows.row(0)[x + 1], rows.row(1)[x], rows.row(1)[x + 1]};
      const auto [least, most] = std::minmax_element(std::begin(cell), std::end(cell));
      if (*least < dark || *most > bright) continue;
      ++cells.counted;
      cells.offDiagonal += std::abs(cell[1] - cell[2]);
      cells.diagonal += std::abs(cell[0] - cell[3]);
      const double g = (cell[red ^ 1] + cell[blue ^ 1]) / 2.;
      const double r = cell[red] * gains.red, b = cell[blue] * gains.blue;
      if (std::min(r, g) > 1.6 * b) ++cells.yellow;
      if (std::min(b, g) > 1.6 * r) ++cells.cyan;
    }
  }
  return cells;
}

/// The bits that the samples take. Only words have room for more than the format says.
int bitsTaken(const FrameInfo& info, const std::vector<Vek8u>& bytes) {
  if (info.format.packing != vek::Raw::plain16) return info.format.bits;
  const auto frame = info.view(bytes);
  unsigned ones = 0;
  for (int y = 0; y < info.size.height; ++y) {
    const Vek8u* const row = frame.row(y);
    for (int x = 0; x < info.size.width; ++x) ones |= row[2 * x] | row[2 * x + 1] * 256U;
  }
  return static_cast<int>(std::bit_width(ones));
}

}  // namespace

FrameInfo withLevels(FrameInfo info, const DevelopmentSettings& settings) {
  if (settings.black) {
    info.black = *settings.black;
  } else if (settings.camera.black) {
    info.black = *settings.camera.black;
  }
  if (settings.white) {
    info.white = *settings.white;
  } else if (settings.camera.white) {
    info.white = *settings.camera.white;
  }
  const int most = std::ranges::max(info.black);
  const int white = info.white != 0 ? info.white : (1 << info.format.bits) - 1;
  if (most >= white) {
    throw Failure(
        fmt::format("the black level {} is not below {}, where samples saturate", most, white));
  }
  return info;
}

vek::Isp makeIsp(const FrameInfo& info, const DevelopmentSettings& settings, int jobs) {
  const CameraFile& camera = settings.camera;
  const auto same = [](vek::Size a, vek::Size b) {
    return a.width == b.width && a.height == b.height;
  };
  if (camera.size && !same(*camera.size, info.size)) {
    throw Failure(fmt::format("the camera's file is of frames of {}x{}, not {}x{}",
                              camera.size->width, camera.size->height, info.size.width,
                              info.size.height));
  }
  vek::IspSettings isp;
  isp.size = info.size;
  isp.format = info.format.packing;
  isp.order = info.format.order;
  isp.bits = info.format.packing == vek::Raw::plain16 ? info.format.bits : 0;
  isp.scale = settings.scale;
  isp.output = settings.resized;
  isp.rotation = settings.rotation.value_or(info.rotation);
  isp.range = settings.range;
  isp.curve = settings.curve;
  isp.exposure.on = false;
  if (settings.matrix) {
    isp.color = {*settings.matrix, {0, 0, 0}, vek::MatrixPlace::linear};
  } else if (camera.matrix) {
    isp.color = {*camera.matrix, camera.gains.value_or(vek::ColorGains{0, 0, 0}),
                 vek::MatrixPlace::linear};
  } else if (info.color) {
    isp.color = *info.color;
  }
  isp.whiteBalance = !settings.gains && (settings.balancesAnew || !info.asShot);
  if (settings.gains) {
    isp.gains = *settings.gains;
  } else if (info.asShot) {
    isp.gains = *info.asShot;
  } else if (camera.gains) {
    isp.gains = *camera.gains;
  }
  isp.deadPixels = camera.dead;
  isp.deadPixels.insert(isp.deadPixels.end(), settings.dead.begin(), settings.dead.end());
  isp.black = info.black;
  isp.white = info.white;
  isp.jobs = jobs;
  return vek::Isp(isp);
}

std::vector<std::string> doubtsAbout(const FrameInfo& info, const std::vector<Vek8u>& bytes,
                                     const vek::IspResults& results, bool isBalanced) {
  std::vector<std::string> doubts;
  if (const int taken = bitsTaken(info, bytes); taken > info.format.bits) {
    RawFormat larger = info.format;
    larger.bits = taken;
    doubts.push_back(fmt::format("there are samples of {} bits, and {} has {}: --format {}?", taken,
                                 nameOf(info.format), info.format.bits, nameOf(larger)));
  }
  if (isBalanced && !results.balanceHasData) {
    doubts.emplace_back("nothing in the frame tells its light: the white balance is as it was");
  } else if (isBalanced && results.balanceAtLimit) {
    doubts.emplace_back(
        "the white balance is at its limit: black level or order of colours may be wrong");
  }
  const Cells cells = measure(info, bytes, results.gains);
  const int order = static_cast<int>(info.format.order);
  // The two greens of a cell differ by detail and noise alone, red and blue by colour as well.
  const bool greensAreOff = order == 0 || order == 3;
  const int64_t greens = greensAreOff ? cells.offDiagonal : cells.diagonal;
  const int64_t others = greensAreOff ? cells.diagonal : cells.offDiagonal;
  constexpr int64_t fewCells = 100;
  if (cells.counted >= fewCells && greens > 2 * others && greens > 8 * cells.counted) {
    doubts.push_back(fmt::format(
        "the greens of {} differ more than its red and blue do: the order of colours looks like "
        "{} or {}",
        orderNames[static_cast<size_t>(order)], orderNames[greensAreOff ? 1 : 0],
        orderNames[greensAreOff ? 2 : 3]));
  } else if (cells.counted >= fewCells && cells.cyan > 3 * cells.yellow &&
             cells.cyan * 40 > cells.counted) {
    // Pigments absorb blue: things are brown, orange and yellow, and hardly ever cyan.
    doubts.push_back(fmt::format(
        "there is much cyan and little yellow in the frame: red and blue may be exchanged, as if "
        "{} were {}",
        orderNames[static_cast<size_t>(3 - order)], orderNames[static_cast<size_t>(order)]));
  }
  return doubts;
}

}  // namespace vekcam
