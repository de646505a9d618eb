#include "vekcam/apply.h"

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "chain/chain.h"
#include "vekcam/files.h"

namespace vekcam {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// Pictures that chains call @NAME: files, each of which is read once.
class OtherPictures {
 public:
  const StoredPicture& operator()(const std::string& name) {
    const auto known = pictures_.find(name);
    if (known != pictures_.end()) return known->second;
    return pictures_.emplace(name, readPicture(name)).first->second;
  }

 private:
  std::map<std::string, StoredPicture> pictures_;
};

/// What there is to tell about one file.
struct Outcome {
  std::string input, output;
  vek::Size size;
  bool isColor;
  uint64_t digest;
  std::vector<chain::Figures> figures;
};

Outcome applyTo(const std::string& input, const std::string& output, PictureFormat format,
                const chain::Chain& steps, const chain::Lookup& others,
                const ApplySettings& settings, const Console& console) {
  using Clock = std::chrono::steady_clock;
  Outcome outcome = {input, output, {}, false, 0, {}};
  StoredPicture picture = readPicture(input);
  const auto start = Clock::now();
  picture = chain::run(steps, std::move(picture), others, outcome.figures);
  const std::chrono::duration<double, std::milli> time = Clock::now() - start;
  console.detail(fmt::format("{}: {:.2f} ms", input, time.count()));
  const PictureView view = picture;
  outcome.size = view.size();
  outcome.isColor = view.order() != PictureView::Order::gray;
  outcome.digest = chain::digest(picture);
  if (!output.empty()) writeFile(output, encodePicture(view, format, settings.quality));
  return outcome;
}

std::string asText(const Outcome& outcome, bool withDigest) {
  std::string text;
  for (const chain::Figures& figures : outcome.figures) {
    text += fmt::format("{}: step {}, {}\n", outcome.input, figures.step + 1, figures.operation);
    for (size_t i = 0; i < figures.labels.size(); ++i) {
      text += fmt::format("  {}:", figures.labels[i]);
      for (const std::vector<double>& channel : figures.channels) {
        text += fmt::format(" {:.10g}", channel[i]);
      }
      text += '\n';
    }
  }
  if (withDigest) text += fmt::format("{}: digest {:016x}\n", outcome.input, outcome.digest);
  if (!outcome.output.empty()) {
    text +=
        fmt::format("{}: {}x{}, {}\n", outcome.output == "-" ? "standard output" : outcome.output,
                    outcome.size.width, outcome.size.height, outcome.isColor ? "color" : "grey");
  }
  return text;
}

Json asJson(const Outcome& outcome) {
  Json figures = Json::array();
  for (const chain::Figures& from : outcome.figures) {
    Json values = Json::object();
    for (size_t i = 0; i < from.labels.size(); ++i) {
      Json& list = values[from.labels[i]] = Json::array();
      for (const std::vector<double>& channel : from.channels) list.push_back(channel[i]);
    }
    figures.push_back({{"step", from.step + 1}, {"operation", from.operation}, {"values", values}});
  }
  Json json = {{"input", outcome.input}};
  if (!outcome.output.empty()) json["output"] = outcome.output;
  json["width"] = outcome.size.width;
  json["height"] = outcome.size.height;
  json["channels"] = outcome.isColor ? 3 : 1;
  json["digest"] = fmt::format("{:016x}", outcome.digest);
  json["figures"] = std::move(figures);
  return json;
}

/// DIR/NAME.png for .../NAME.jpg.
std::string outputIn(const std::string& directory, const std::string& input,
                     std::optional<PictureFormat> format) {
  constexpr const char* extensions[] = {".png", ".jpg", ".ppm", ".pgm"};
  fs::path name = input == "-" ? "stdin.png" : fs::path(input).filename();
  if (format) name.replace_extension(extensions[static_cast<size_t>(*format)]);
  return (fs::path(directory) / name).string();
}

}  // namespace

void apply(const ApplySettings& settings, const Console& console) {
  chain::Chain steps;
  try {
    steps = chain::parse(settings.chain);
  } catch (const chain::Error& error) {
    throw UsageError(error.what());
  }
  if (settings.code) {
    const bool isColor =
        std::holds_alternative<vek::Image<vek::Rgb24>>(readPicture(settings.inputs.at(0)));
    console.data(chain::code(settings.chain, *settings.code, isColor));
    return;
  }
  // All names are looked at before anything is read.
  std::vector<std::pair<std::string, PictureFormat>> outputs;
  std::set<std::string> names;
  for (const std::string& input : settings.inputs) {
    const std::string output = settings.directory.empty()
                                   ? settings.output
                                   : outputIn(settings.directory, input, settings.format);
    const bool isNamed = !output.empty() && output != "-" && !settings.format;
    outputs.emplace_back(output,
                         isNamed ? formatOf(output) : settings.format.value_or(PictureFormat::png));
    if (!settings.directory.empty() && !names.insert(output).second) {
      throw UsageError("two of the files would both become " + output);
    }
  }
  if (!settings.directory.empty()) {
    std::error_code error;
    fs::create_directories(settings.directory, error);
    if (error) throw Failure("cannot create " + settings.directory + ": " + error.message());
  }

  OtherPictures others;
  const chain::Lookup lookup = [&](const std::string& name) -> const StoredPicture& {
    return others(name);
  };
  Json all = Json::array();
  size_t failed = 0;
  const size_t count = settings.inputs.size();
  {
    std::optional<Progress> progress;
    if (count > 1) progress.emplace(console, static_cast<int>(count));
    for (size_t i = 0; i < count; ++i) {
      const std::string& input = settings.inputs[i];
      try {
        const Outcome outcome =
            applyTo(input, outputs[i].first, outputs[i].second, steps, lookup, settings, console);
        if (settings.json)
          all.push_back(asJson(outcome));
        else
          console.say(asText(outcome, settings.withDigest));
      } catch (const std::runtime_error& error) {  // a Failure, or a chain's Error
        if (count == 1) throw Failure(error.what());
        console.warn(input + ": " + error.what());
        ++failed;
      }
      if (progress) progress->advance(input);
    }
  }
  if (settings.json) console.data(all.dump(2) + "\n");
  if (failed > 0) throw Failure(fmt::format("{} of {} files failed", failed, count));
}

std::string listOfOperations() {
  std::string text, group;
  for (const chain::Operation& operation : chain::operations()) {
    if (operation.group != group)
      text += (group.empty() ? "" : "\n") + std::string(operation.group) + "\n";
    group = operation.group;
    text += fmt::format("  {}\n      {}\n", chain::usage(operation), operation.help);
  }
  return text;
}

std::string operationsAsJson() {
  constexpr const char* kinds[] = {"integer", "number",  "size",    "mask", "point",
                                   "color",   "operand", "picture", "list", "word"};
  Json all = Json::array();
  for (const chain::Operation& operation : chain::operations()) {
    Json parameters = Json::array();
    for (const chain::Parameter& from : operation.all()) {
      Json parameter = {{"name", from.name}, {"kind", kinds[static_cast<size_t>(from.kind)]}};
      if (from.fallback != nullptr) parameter["default"] = from.fallback;
      if (from.words != nullptr)
        parameter["words"] = from.words;
      else if (from.kind != chain::Kind::picture)
        parameter["range"] = {from.low, from.high};
      parameters.push_back(std::move(parameter));
    }
    all.push_back({{"group", operation.group},
                   {"name", operation.name},
                   {"usage", chain::usage(operation)},
                   {"help", operation.help},
                   {"parameters", std::move(parameters)}});
  }
  return all.dump(2) + "\n";
}

}  // namespace vekcam
