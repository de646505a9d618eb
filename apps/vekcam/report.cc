#include "vekcam/report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "vekcam/plot.h"

namespace vekcam {
namespace {

constexpr const char* style = R"(
:root { color-scheme: light dark; --ink: #1c2026; --faint: #66707c; --paper: #fcfcfa; --line: #d9dde2; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e4e7eb; --faint: #98a2ae; --paper: #16191d; --line: #343a42; }
}
body { margin: 0 auto; max-width: 62rem; padding: 2rem 1.2rem 4rem; background: var(--paper);
  color: var(--ink); font: 16px/1.55 system-ui, sans-serif; }
h1 { font-size: 1.7rem; margin: 0 0 .3rem; } h2 { font-size: 1.15rem; margin: 2.4rem 0 .6rem; }
p { max-width: 46rem; } .faint, figcaption { color: var(--faint); fill: var(--faint); }
figure { margin: 0; } figcaption { font-size: .85rem; }
img { display: block; max-width: 100%; border-radius: 4px; }
.pictures { display: grid; grid-template-columns: repeat(auto-fit, minmax(19rem, 1fr)); gap: 1rem; }
.pictures img { width: 100%; }
svg { display: block; width: 100%; height: auto; margin: .4rem 0 1rem; font: 12px system-ui, sans-serif; }
svg .title { font-weight: 600; fill: var(--ink); } svg .grid { stroke: var(--line); }
svg .band { fill: #3a9d5d; opacity: .22; } svg polyline { stroke-width: 1.8; stroke-linejoin: round; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
td, th { padding: .3rem 1rem .3rem 0; border-bottom: 1px solid var(--line); text-align: right; }
td:first-child, th:first-child { text-align: left; }
)";

std::string base64(std::string_view bytes) {
  constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (size_t j = 0; j < 3; ++j) {
      group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0u);
    }
    for (size_t j = 0; j < 4; ++j) {
      text += i + j <= bytes.size() ? digits[group >> (18 - 6 * j) & 63] : '=';
    }
  }
  return text;
}

std::string image(const std::string& png, const std::string& caption) {
  return "<figure><img alt=\"" + caption + "\" src=\"data:image/png;base64," + base64(png) +
         "\"><figcaption>" + caption + "</figcaption></figure>\n";
}

std::vector<Span> lightSpans(const std::vector<FrameRecord>& records) {
  constexpr const char* colours[] = {"#7aa7d9", "#e0913a", "#e8cf4a", "#7d83d6"};
  std::vector<Span> spans;
  for (size_t first = 0; first < records.size(); first += framesPerLight) {
    const size_t light = records[first].light;
    spans.push_back({lightScript()[light].name, colours[light % std::size(colours)], first,
                     std::min<size_t>(framesPerLight, records.size() - first)});
  }
  return spans;
}

template <typename Value>
Series series(const char* name, const char* colour, const std::vector<FrameRecord>& records,
              const Value& value) {
  Series result = {name, colour, {}};
  for (const FrameRecord& record : records) {
    result.values.push_back(static_cast<double>(value(record)));
  }
  return result;
}

std::string exposurePlots(const Run& run) {
  const std::vector<FrameRecord>& records = run.records;
  const std::vector<Span> spans = lightSpans(records);
  const auto brightness = [](const FrameRecord& r) { return r.brightness; };
  const auto exposure = [](const FrameRecord& r) { return r.controls.exposure; };
  const auto gain = [](const FrameRecord& r) { return r.controls.analogueGain / 16.; };
  const char* const title = run.band.fullScale == 1023
                                ? "Measured brightness (mean of the green samples)"
                                : "Measured brightness (mean sum of both greens)";
  return svg({.title = title,
              .high = run.band.fullScale,
              .series = {series("brightness", "#3f7fd0", records, brightness)},
              .spans = spans,
              .bandLow = run.band.low,
              .bandHigh = run.band.high}) +
         svg({.title = "Exposure time in rows",
              .low = 10,
              .high = controlRange.maxExposure,
              .logarithmic = true,
              .series = {series("exposure", "#b5559f", records, exposure)},
              .spans = spans}) +
         svg({.title = "Analogue gain",
              .high = controlRange.maxGain / 16.,
              .series = {series("analogue gain", "#c9742c", records, gain)},
              .spans = spans});
}

std::string lawInWords(Metering metering) {
  const std::string law =
      metering == Metering::isp ? "Time and gain are set in proportion to target and brightness, "
                                  "the time first. Inside the "
                                  "band nothing moves. "
      : metering == Metering::histogram
          ? "A dark frame doubles the exposure time, and when that is at its limit raises the "
            "analogue gain by one half. Otherwise the time is set in proportion to target and "
            "brightness, which takes one frame; inside the band it follows the brightness, which "
            "therefore swings about the target instead of standing still. "
          : "The exposure time is doubled or halved first; the analogue gain moves in steps of one "
            "half when the time is at its limit. Inside the band nothing moves. ";
  return "<p>" + law + "The green stripe is the band that the brightness should be in.</p>\n";
}

std::string gainPlot(const Run& run) {
  double highest = 1;
  for (const FrameRecord& r : run.records) {
    highest = std::max({highest, r.controls.red / 256., r.controls.blue / 256.});
  }
  const auto red = [](const FrameRecord& r) { return r.controls.red / 256.; };
  const auto green = [](const FrameRecord& r) { return r.controls.green / 256.; };
  const auto blue = [](const FrameRecord& r) { return r.controls.blue / 256.; };
  return svg({.title = "Channel gains",
              .high = std::ceil(highest * 2) / 2,
              .series = {series("red", "#d04545", run.records, red),
                         series("green", "#3a9d5d", run.records, green),
                         series("blue", "#3f7fd0", run.records, blue)},
              .spans = lightSpans(run.records)});
}

std::string cell(const char* format, double value) {
  char text[48];
  std::snprintf(text, sizeof text, format, value);
  return std::string("<td>") + text + "</td>";
}

std::string stageTable(const Report& report) {
  const StageTimes& times = report.times;
  const double total = times.totalMedian();
  const double samples =
      static_cast<double>(report.settings.size.width) * report.settings.size.height;
  std::string rows;
  for (const Stage stage : allStages) {
    const double median = times.median(stage);
    rows += std::string("<tr><td>") + name(stage) + "</td>" + cell("%.1f", median) +
            cell("%.1f", times.fastest(stage)) + cell("%.0f %%", 100 * median / total) +
            cell("%.2f", 1000 * median / samples) + "</tr>\n";
  }
  return "<div class=\"scroll\"><table><tr><th>stage</th><th>median, &micro;s</th><th>fastest, "
         "&micro;s</th><th>share</th><th>ns per sample</th></tr>\n" +
         rows + "<tr><td>all</td>" + cell("%.1f", total) + "<td></td><td></td>" +
         cell("%.2f", 1000 * total / samples) + "</tr></table></div>\n";
}

std::string settlingTable(const Run& run) {
  const std::vector<int> settled = settlingTimes(run.records);
  std::string rows;
  for (size_t i = 0; i < settled.size(); ++i) {
    const Light& light = lightScript()[run.records[i * framesPerLight].light];
    rows += "<tr><td>" + light.name + "</td>" + cell("%g", light.level) +
            (settled[i] < 0 ? "<td>not settled</td>" : cell("%g frames", settled[i])) + "</tr>\n";
  }
  return "<div class=\"scroll\"><table><tr><th>light</th><th>level</th><th>in the band to stay "
         "after</th></tr>\n" +
         rows + "</table></div>\n";
}

}  // namespace

std::string page(const Report& report) {
  const LoopSettings& settings = report.settings;
  std::string pictures;
  for (const ShownPicture& shown : report.pictures) pictures += image(shown.png, shown.caption);
  char heading[400];
  std::snprintf(
      heading, sizeof heading,
      "<h1>A camera loop on vek</h1>\n<p>%zu frames of a simulated %d x %d sensor, metered "
      "by %s, developed and shown at %d x %d. The library's own work took %.0f &micro;s a "
      "frame: %.0f frames per second on one core.</p>\n",
      report.run.records.size(), settings.size.width, settings.size.height, name(settings.metering),
      settings.preview.width, settings.preview.height, report.times.totalMedian(),
      1e6 / report.times.totalMedian());
  return std::string(
             "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
             "<meta name=\"viewport\" content=\"width=device-width\">\n"
             "<title>vekcam simulate</title><style>") +
         style + "</style></head><body>\n" + heading +
         "<h2>Pictures</h2>\n<p>Every light changes at once; exposure and white balance then find "
         "their way. Captions: frame number and light.</p>\n" +
         image(report.contactSheet, "The run, from left to right and from top to bottom.") +
         "<p></p><div class=\"pictures\">\n" + pictures + "</div>\n" + "<h2>Exposure</h2>\n" +
         lawInWords(report.run.metering) + exposurePlots(report.run) + settlingTable(report.run) +
         "<h2>White balance</h2>\n<p>A new light is balanced by the mean of the scene, then by "
         "what is "
         "nearly white in it; green stays.</p>\n" +
         gainPlot(report.run) + "<h2>Time per stage</h2>\n" + stageTable(report) +
         "<h2>The same lights, metered by " + name(report.comparison.metering) + "</h2>\n" +
         lawInWords(report.comparison.metering) + exposurePlots(report.comparison) +
         "</body></html>\n";
}

}  // namespace vekcam
