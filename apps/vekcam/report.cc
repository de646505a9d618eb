#include "vekcam/report.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <string_view>

#include "vekcam/report_assets.h"

namespace vekcam {
namespace {

using Json = nlohmann::ordered_json;

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

const std::string& lightName(const FrameRecord& record) {
  return lightScript()[record.light].name;
}

Json lightsOf(const std::vector<FrameRecord>& records) {
  Json lights = Json::array();
  for (size_t first = 0; first < records.size(); first += framesPerLight) {
    lights.push_back({{"name", lightName(records[first])},
                      {"index", records[first].light},
                      {"first", first},
                      {"count", std::min<size_t>(framesPerLight, records.size() - first)}});
  }
  return lights;
}

template <typename Value>
Json series(const std::vector<FrameRecord>& records, const Value& value) {
  Json values = Json::array();
  for (const FrameRecord& record : records)
    values.push_back(std::round(value(record) * 1000) / 1000);
  return values;
}

std::string lawInWords(Metering metering) {
  const std::string law =
      metering == Metering::isp ? "Exposure time and amplification are set in proportion to the "
                                  "brightness that is wanted "
                                  "and the one that was measured, the time first, as amplification "
                                  "adds noise. Inside the "
                                  "green stripe nothing moves."
      : metering == Metering::histogram
          ? "A dark frame doubles the exposure time, and when that is at its limit raises the "
            "amplification by one half. Otherwise the time is set in proportion to target and "
            "brightness, which takes one frame; inside the stripe it follows the brightness, which "
            "therefore swings about the target instead of standing still."
          : "The exposure time is doubled or halved first; the amplification moves in steps of one "
            "half when the time is at its limit. Inside the green stripe nothing moves.";
  return law + " The green stripe is where the brightness should be.";
}

Json runData(const Run& run) {
  const std::vector<FrameRecord>& records = run.records;
  double most = 1;
  for (const FrameRecord& r : records)
    most = std::max({most, r.controls.red / 256., r.controls.blue / 256.});
  return {
      {"metering", name(run.metering)},
      {"law", lawInWords(run.metering)},
      {"brightnessTitle", run.band.fullScale == 1023
                              ? "Measured brightness (mean green, of 1023)"
                              : "Measured brightness (both greens, of 2046)"},
      {"fullScale", run.band.fullScale},
      {"band", {run.band.low, run.band.high}},
      {"brightness", series(records, [](const FrameRecord& r) { return r.brightness; })},
      {"exposure", series(records, [](const FrameRecord& r) { return r.controls.exposure * 1.; })},
      {"gain", series(records, [](const FrameRecord& r) { return r.controls.analogueGain / 16.; })},
      {"red", series(records, [](const FrameRecord& r) { return r.controls.red / 256.; })},
      {"green", series(records, [](const FrameRecord& r) { return r.controls.green / 256.; })},
      {"blue", series(records, [](const FrameRecord& r) { return r.controls.blue / 256.; })},
      {"mostColorGain", std::ceil(most * 2) / 2}};
}

Json timesData(const Report& report) {
  const StageTimes& times = report.times;
  const double samples =
      static_cast<double>(report.settings.size.width) * report.settings.size.height;
  Json rows = Json::array();
  for (const Stage stage : allStages) {
    if (times.calls(stage) == 0) continue;
    const double median = times.median(stage);
    rows.push_back({name(stage), fmt::format("{:.1f}", median),
                    fmt::format("{:.1f}", times.fastest(stage)),
                    fmt::format("{:.2f}", 1000 * median / samples)});
  }
  return {{"heads", {"stage", "median, µs", "fastest, µs", "ns per sample"}}, {"rows", rows}};
}

Json settlingData(const Run& run) {
  const std::vector<int> settled = settlingTimes(run.records);
  Json rows = Json::array();
  for (size_t i = 0; i < settled.size(); ++i) {
    const FrameRecord& first = run.records[i * framesPerLight];
    rows.push_back({lightName(first), fmt::format("{:g}", lightScript()[first.light].level),
                    settled[i] < 0 ? "not yet" : fmt::format("{} frames", settled[i])});
  }
  return {{"heads", {"light", "level", "brightness right, to stay, after"}}, {"rows", rows}};
}

Json accuracyData(const Report& report) {
  Json rows = Json::array();
  for (const ShownPicture& shown : report.pictures) {
    const Accuracy& a = shown.accuracy;
    rows.push_back({shown.light, fmt::format("{:.1f}", a.meanDifference),
                    fmt::format("{:.1f} (patch {})", a.worstDifference, a.worstPatch),
                    fmt::format("{:.1f}", a.greySpread), fmt::format("{:.1f}", a.noise),
                    fmt::format("{:.0f} %", 100 * a.detail)});
  }
  return {{"heads",
           {"light", "color difference, mean", "worst", "tint of greys, codes", "noise, codes",
            "detail"}},
          {"rows", rows}};
}

Json cardsData(const Report& report) {
  const std::vector<int> settled = settlingTimes(report.run.records);
  const int slowest = std::ranges::max(settled);
  const bool isSettled = std::ranges::find(settled, -1) == settled.end();
  double difference = 0, noise = 0, detail = 1;
  for (const ShownPicture& shown : report.pictures) {
    difference = std::max(difference, shown.accuracy.meanDifference);
    noise = std::max(noise, shown.accuracy.noise);
    detail = std::min(detail, shown.accuracy.detail);
  }
  return {
      {{"value", isSettled ? fmt::format("{} frames", slowest) : "not yet"},
       {"meaning", "until the brightness was right again after the light had changed, at most"}},
      {{"value", fmt::format("{:.1f}", difference)},
       {"meaning", "color difference in the worst light; an eye sees 1 side by side"}},
      {{"value", fmt::format("{:.1f} / 255", noise)},
       {"meaning", "noise of a grey, in the worst light"}},
      {{"value", fmt::format("{:.0f} %", 100 * detail)},
       {"meaning", "of their contrast is what lines two pixels wide keep"}},
      {{"value", fmt::format("{:.0f} per second", 1e6 / report.times.totalMedian())},
       {"meaning", "frames that one core could work on"}}};
}

void replace(std::string& text, std::string_view what, std::string_view with) {
  text.replace(text.find(what), what.size(), with);
}

}  // namespace

std::string page(const Report& report) {
  const LoopSettings& settings = report.settings;
  Json pictures = Json::array();
  for (const ShownPicture& shown : report.pictures)
    pictures.push_back({{"caption", shown.caption}, {"png", base64(shown.png)}});
  const Json data = {
      {"summary",
       fmt::format(
           "A simulated camera looked at a test scene for {} frames while the light changed "
           "every {}. From each frame of its sensor, {} x {} samples, the vek library measured "
           "the light, decided how to take the next one, and made a picture of {} x {}.",
           report.run.records.size(), framesPerLight, settings.size.width, settings.size.height,
           settings.preview.width, settings.preview.height)},
      {"cards", cardsData(report)},
      {"contactSheet", base64(report.contactSheet)},
      {"pictures", pictures},
      {"accuracy", accuracyData(report)},
      {"lights", lightsOf(report.run.records)},
      {"mostExposure", controlRange.maxExposure},
      {"mostGain", controlRange.maxGain / 16.},
      {"run", runData(report.run)},
      {"settling", settlingData(report.run)},
      {"times", timesData(report)},
      {"other", runData(report.comparison)}};
  std::string json = data.dump();
  for (size_t at = json.find('<'); at != std::string::npos; at = json.find('<', at))
    json.replace(at, 1, R"(\u003c)");  // no text ends the script
  std::string text = reportPage;
  replace(text, "{{style}}", reportStyle);
  replace(text, "{{script}}", reportScript);
  replace(text, "{{data}}", json);
  return text;
}

}  // namespace vekcam
