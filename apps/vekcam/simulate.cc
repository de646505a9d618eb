#include "vekcam/simulate.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <map>
#include <utility>

#include "vekcam/files.h"
#include "vekcam/report.h"

namespace vekcam {
namespace {

namespace fs = std::filesystem;

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
  std::string line = "the brightness was in its band to stay at most " +
                     std::to_string(std::max(0, std::ranges::max(settled))) +
                     " frames after each change of light";
  if (missed > 0) {
    line += " (not yet in " + std::to_string(missed) + " of " + std::to_string(settled.size()) +
            " lights)";
  }
  return line + "\n";
}

}  // namespace

std::string simulate(const SimulateSettings& settings, const Console& console) {
  const fs::path directory = settings.directory;
  std::error_code error;
  fs::create_directories(directory / "frames", error);
  if (error) {
    throw Failure("cannot create " + (directory / "frames").string() + ": " + error.message());
  }

  CameraLoop loop(settings.loop);
  Report report = {
      settings.loop, emptyRun(settings.loop.metering, loop), compare(settings), {}, {}, {}};
  std::vector<FrameRecord>& records = report.run.records;
  std::map<size_t, ShownPicture> lastOfLight;
  std::string colours;
  std::vector<Picture> small;
  std::vector<std::string> captions;
  const int thumbnailStride = (settings.frames + thumbnails - 1) / thumbnails;
  {
    Progress progress(console, settings.frames);
    for (int i = 0; i < settings.frames; ++i) {
      records.push_back(loop.step());
      const Picture& picture = loop.picture();
      const std::string png = encodePng(picture);
      char file[32];
      std::snprintf(file, sizeof file, "frame_%04d.png", i);
      writeFile((directory / "frames" / file).string(), png);
      const std::string& light = lightScript()[records.back().light].name;
      if (i % thumbnailStride == 0) {
        small.push_back(reduced(picture, std::max(1, picture.width / thumbnailWidth)));
        captions.push_back(caption(i, light));
      }
      if (i % framesPerLight == framesPerLight - 1 || i == settings.frames - 1) {
        lastOfLight[records.back().light] = {"Frame " + std::to_string(i) + ", " + light, png};
        colours += light + ": " + describe(loop.accuracy()) + "\n";
      }
      progress.advance(light);
    }
  }
  for (const auto& [light, picture] : lastOfLight) report.pictures.push_back(picture);
  report.times = loop.times();
  report.contactSheet = encodePng(contactSheet(small, captions, 6));
  writeFile((directory / "contact_sheet.png").string(), report.contactSheet);
  writeFile((directory / "report.html").string(), page(report));

  char heading[200];
  std::snprintf(
      heading, sizeof heading,
      "%d frames, %d x %d raw to %d x %d: the library's work allows %.0f frames per second\n",
      settings.frames, settings.loop.size.width, settings.loop.size.height,
      settings.loop.preview.width, settings.loop.preview.height, 1e6 / report.times.totalMedian());
  return heading + report.times.table() + settlingLine(report.run) + colours +
         "pictures: " + (directory / "frames").string() +
         "\ncontact sheet: " + (directory / "contact_sheet.png").string() +
         "\nreport: " + (directory / "report.html").string() + "\n";
}

}  // namespace vekcam
