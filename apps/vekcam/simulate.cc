#include "vekcam/simulate.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "vekcam/files.h"
#include "vekcam/report.h"

namespace vekcam {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int thumbnails = 24;
constexpr int thumbnailWidth = 160;
constexpr VekiSize comparisonSize = {320, 180};

Run emptyRun(Metering metering, const CameraLoop& loop) {
  return {metering, loop.band(), {}};
}

/// The same lights with another law, small.
Run compare(const SimulateSettings& settings) {
  LoopSettings other = settings.loop;
  other.size = comparisonSize;
  other.preview = comparisonSize;
  other.metering = settings.loop.metering == Metering::isp ? Metering::frame : Metering::isp;
  CameraLoop loop(other);
  Run run = emptyRun(other.metering, loop);
  for (int i = 0; i < settings.frames; ++i) run.records.push_back(loop.step());
  return run;
}

std::string caption(int frame, const std::string& light) {
  std::string text = std::to_string(frame) + " " + light;
  std::ranges::transform(text, text.begin(),
                         [](char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

std::string settlingLine(const Run& run) {
  const std::vector<int> settled = settlingTimes(run.records);
  const ptrdiff_t missed = std::ranges::count(settled, -1);
  const int slowest = std::ranges::max(settled);
  if (slowest < 0) {
    return fmt::format("the brightness was not yet in its band after {} frames\n",
                       run.records.size());
  }
  return fmt::format(
      "the brightness was in its band, to stay, {} frame{} after the light changed{}{}\n", slowest,
      slowest == 1 ? "" : "s", settled.size() == 1 ? "" : " at most",
      missed == 0 ? "" : fmt::format("; not yet in {} of {} lights", missed, settled.size()));
}

/// Frames of an earlier run.
void removeFrames(const fs::path& directory) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
    const std::string name = entry.path().filename().string();
    if (name.size() == 14 && name.starts_with("frame_") && name.ends_with(".png"))
      fs::remove(entry.path(), error);
  }
}

Json asJson(const SimulateSettings& settings, const Report& report) {
  Json lights = Json::array();
  for (const ShownPicture& shown : report.pictures) {
    const Accuracy& a = shown.accuracy;
    lights.push_back(
        {{"light", shown.light},
         {"colorDifference",
          {{"mean", a.meanDifference}, {"worst", a.worstDifference}, {"worstPatch", a.worstPatch}}},
         {"greySpread", a.greySpread},
         {"noise", a.noise},
         {"detail", a.detail}});
  }
  return {{"frames", settings.frames},
          {"size", {settings.loop.size.width, settings.loop.size.height}},
          {"preview", {settings.loop.preview.width, settings.loop.preview.height}},
          {"microseconds", report.times.totalMedian()},
          {"settled", settlingTimes(report.run.records)},
          {"lights", lights},
          {"report", (fs::path(settings.directory) / "report.html").string()}};
}

}  // namespace

void simulate(const SimulateSettings& settings, const Console& console) {
  const fs::path directory = settings.directory;
  std::error_code error;
  fs::create_directories(directory / "frames", error);
  if (error) {
    throw Failure("cannot create " + (directory / "frames").string() + ": " + error.message());
  }
  removeFrames(directory / "frames");

  std::optional<std::ofstream> raw;
  if (!settings.rawFrames.empty()) {
    raw.emplace(settings.rawFrames, std::ios::binary);
    if (!*raw) throw Failure("cannot write " + settings.rawFrames);
  }
  CameraLoop loop(settings.loop);
  Report report = {
      settings.loop, emptyRun(settings.loop.metering, loop), compare(settings), {}, {}, {}};
  std::vector<FrameRecord>& records = report.run.records;
  std::map<size_t, ShownPicture> lastOfLight;
  std::string colors;
  std::vector<Picture> small;
  std::vector<std::string> captions;
  const int thumbnailStride = (settings.frames + thumbnails - 1) / thumbnails;
  {
    Progress progress(console, settings.frames);
    for (int i = 0; i < settings.frames; ++i) {
      records.push_back(loop.step());
      const Picture& picture = loop.picture();
      const std::string png = encodePng(picture);
      writeFile((directory / "frames" / fmt::format("frame_{:04}.png", i)).string(), png);
      if (raw) loop.writeRaw(*raw);
      const std::string& light = lightScript()[records.back().light].name;
      if (i % thumbnailStride == 0) {
        small.push_back(reduced(picture, std::max(1, picture.width / thumbnailWidth)));
        captions.push_back(caption(i, light));
      }
      if (i % framesPerLight == framesPerLight - 1 || i == settings.frames - 1) {
        const Accuracy accuracy = loop.accuracy();
        lastOfLight[records.back().light] = {light, fmt::format("Frame {}, {}", i, light), png,
                                             accuracy};
        colors += light + ": " + describe(accuracy) + "\n";
      }
      progress.advance(light);
    }
  }
  if (raw && !raw->flush()) throw Failure("cannot write " + settings.rawFrames);
  for (const auto& [light, picture] : lastOfLight) report.pictures.push_back(picture);
  report.times = loop.times();
  report.contactSheet = encodePng(contactSheet(small, captions, 6));
  writeFile((directory / "contact_sheet.png").string(), report.contactSheet);
  writeFile((directory / "report.html").string(), page(report));

  if (settings.json) {
    console.data(asJson(settings, report).dump(2) + "\n");
    return;
  }
  const std::string heading = fmt::format(
      "{} frames, {}x{} raw to {}x{}: the library's work allows {:.0f} frames per second\n",
      settings.frames, settings.loop.size.width, settings.loop.size.height,
      settings.loop.preview.width, settings.loop.preview.height, 1e6 / report.times.totalMedian());
  console.say(heading + report.times.table() + settlingLine(report.run) + colors +
              "pictures: " + (directory / "frames").string() +
              "\ncontact sheet: " + (directory / "contact_sheet.png").string() +
              "\nreport: " + (directory / "report.html").string() + "\n");
}

}  // namespace vekcam
