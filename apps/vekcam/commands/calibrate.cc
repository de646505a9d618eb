#include <algorithm>
#include <fmt/format.h>
#include <memory>
#include <nlohmann/json.hpp>

#include "vekcam/calibration.h"
#include "vekcam/commands/commands.h"
#include "vekcam/commands/options.h"
#include "vekcam/files.h"

namespace vekcam {
namespace {

struct CalibrateSettings {
  std::vector<std::string> dark, flat, chart;
  std::vector<double> corners;  ///< x and y of four
  std::string reference;        ///< of the chart's colours; may be empty
  std::string output;
  double tolerance = 20;  ///< of a flat frame's samples, per cent
  std::optional<std::array<int, 4>> black;
  FrameInfo frame;
  bool isFormatGiven = false;
  bool json = false;
};

/// Frames of one kind; all have the size and the format of the first one.
class Reader {
 public:
  explicit Reader(const FrameInfo& frame) : info_(frame) {}

  MeanFrame mean(const std::vector<std::string>& files) {
    std::optional<MeanFrame> mean;
    for (const std::string& file : files) {
      const bool isRaw = hasCameraRawName(file) || (info_.size.width == 0 && isCameraRaw(file));
      if (!isRaw && info_.size.width == 0)
        throw UsageError("--size is required for " + inputName(file));
      const RawImage image = isRaw ? readCameraRaw(file) : readPlainFrame(file, info_);
      const bool isSame = image.info.size.width == info_.size.width &&
                          image.info.size.height == info_.size.height &&
                          image.info.format == info_.format;
      if (isRaw && isFirst_) {
        info_ = image.info;
      } else if (!isSame) {
        throw Failure(file + " has another size or format than the frames before it");
      }
      isFirst_ = false;
      if (!mean) mean.emplace(image.info);
      mean->add(image.bytes);
    }
    return std::move(*mean);
  }

  const FrameInfo& info() const { return info_; }

 private:
  FrameInfo info_;
  bool isFirst_ = true;
};

bool before(const VekiDeadPixel& a, const VekiDeadPixel& b) {
  return a.row != b.row ? a.row < b.row : a.column < b.column;
}

void calibrate(const CalibrateSettings& settings, const Console& console) {
  Reader reader(settings.frame);
  CameraFile camera;
  std::string text;
  nlohmann::ordered_json json;
  if (settings.black) camera.black = *settings.black;
  size_t inTheDark = 0, inLight = 0;
  if (!settings.dark.empty()) {
    const MeanFrame dark = reader.mean(settings.dark);
    if (!camera.black) camera.black = blackLevels(dark);
    camera.dead = defectsInTheDark(dark, *camera.black);
    inTheDark = camera.dead.size();
    text += fmt::format("dark frames: {}; black level {}; {} pixels are bright in the dark\n",
                        dark.count(), fmt::join(*camera.black, ", "), inTheDark);
  }
  const std::array<int, 4> black = camera.black.value_or(std::array<int, 4>{});
  if (!settings.flat.empty()) {
    const MeanFrame flat = reader.mean(settings.flat);
    const std::vector<VekiDeadPixel> found = defectsInLight(flat, black, settings.tolerance / 100);
    std::vector<VekiDeadPixel> all;
    std::ranges::set_union(camera.dead, found, std::back_inserter(all), before);
    inLight = all.size() - camera.dead.size();
    camera.dead = std::move(all);
    text +=
        fmt::format("flat frames: {}; {} more pixels are off in light\n", flat.count(), inLight);
  }
  if (!settings.chart.empty()) {
    const MeanFrame chart = reader.mean(settings.chart);
    Corners corners;
    for (size_t i = 0; i < 4; ++i)
      corners[i] = {settings.corners[2 * i], settings.corners[2 * i + 1]};
    const ChartColors colors =
        settings.reference.empty()
            ? usualChart()
            : parseChart(readFile(settings.reference, mostTextBytes), settings.reference);
    const ColorFit fit = fitColors(chart, black, camera.dead, corners, colors);
    camera.gains = fit.gains;
    camera.matrix = fit.matrix;
    text += fmt::format(
        "chart: gains red {:.3f}, blue {:.3f}; color difference {:.1f}, at most {:.1f} (patch "
        "{})\n",
        fit.gains.red, fit.gains.blue, fit.meanDifference, fit.worstDifference, fit.worstPatch);
    for (const auto& row : fit.matrix)
      text += fmt::format("  {:7.3f} {:7.3f} {:7.3f}\n", row[0], row[1], row[2]);
    json["colorDifference"] = {{"mean", fit.meanDifference},
                               {"worst", fit.worstDifference},
                               {"worstPatch", fit.worstPatch}};
    if (fit.meanDifference > 10) {
      console.warn(
          fmt::format("the colors are wrong by {:.0f} on average: are these the chart's "
                      "corners, and is this its reference?",
                      fit.meanDifference));
    }
  }
  camera.format = reader.info().format;
  camera.size = reader.info().size;
  json["brightInTheDark"] = inTheDark;
  json["offInLight"] = inLight;
  if (camera.black) json["black"] = *camera.black;
  if (camera.gains) json["gains"] = {camera.gains->red, 1, camera.gains->blue};
  if (camera.matrix) json["matrix"] = *camera.matrix;
  writeFile(settings.output, toJson(camera));
  if (settings.json) {
    console.data(json.dump(2) + "\n");
  } else {
    console.say(text + "camera: " + settings.output + "\n");
  }
}

}  // namespace

void addCalibrate(CLI::App& program, Console& console) {
  CLI::App& app = addCommand(program, console, "calibrate", "Learn about a camera from its frames");
  app.footer(
      "Writes a file that develop, stream and view take with --camera. Dark frames (a cap on the\n"
      "lens) tell the black level and the pixels that are bright in the dark, flat frames (a "
      "white\n"
      "sheet, out of focus, not saturated) those that are off in light. A frame of a chart of 24\n"
      "patches tells the color matrix; its corners are those of patches 1, 6, 24 and 19, in "
      "samples\n"
      "of the frame.");
  const auto state = std::make_shared<CalibrateSettings>();
  CalibrateSettings& s = *state;
  app.add_option("--dark", s.dark, "Frames without light")->type_name("FILE...");
  app.add_option("--flat", s.flat, "Frames of an even light")->type_name("FILE...");
  app.add_option("--chart", s.chart, "Frames of the chart, of the same view")->type_name("FILE...");
  app.add_option("--corners", s.corners, "The chart's corners: x,y of patches 1, 6, 24, 19")
      ->delimiter(',')
      ->expected(8)
      ->check(CLI::Range(0., 65536.))
      ->type_name("X,Y,X,Y,X,Y,X,Y");
  app.add_option("--reference", s.reference,
                 "The chart's colors: 24 lines of red,green,blue in linear sRGB [the usual chart]")
      ->type_name("FILE.csv");
  app.add_option("--tolerance", s.tolerance,
                 "How far samples of flat frames may be off, in per cent")
      ->check(CLI::Range(1., 90.))
      ->type_name("PERCENT")
      ->capture_default_str();
  addBlack(app, s.black);
  app.add_option("-o,--output", s.output, "The camera's file")->required()->type_name("FILE.json");
  addFrame(app, s.frame, s.isFormatGiven);
  addJson(app, s.json);
  app.callback([state, &console] {
    if (state->dark.empty() && state->flat.empty() && state->chart.empty())
      throw UsageError("there are no --dark, --flat or --chart frames to learn from");
    if (!state->chart.empty() && state->corners.empty())
      throw UsageError("--chart needs --corners");
    console.resultsToError = state->output == "-";
    calibrate(*state, console);
  });
}

}  // namespace vekcam
