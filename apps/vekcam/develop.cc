#include "vekcam/develop.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <nlohmann/json.hpp>

#include "vekcam/files.h"
#include "vekcam/parallel.h"
#include "vekcam/picture_files.h"
#include "vekcam/y4m.h"

namespace vekcam {
namespace {

namespace fs = std::filesystem;

struct Job {
  std::string input, output;
  OutputKind kind;
};

struct Outcome {
  FrameInfo info;
  vek::Size size = {0, 0};  ///< of the picture
  vek::Rect crop = {0, 0, 0, 0};
  vek::IspResults results;
  double milliseconds = 0;
  std::vector<std::string> doubts;
  std::exception_ptr failure;
};

const char* extensionOf(OutputKind kind) {
  switch (kind) {
    case OutputKind::png:
      return ".png";
    case OutputKind::jpeg:
      return ".jpg";
    case OutputKind::ppm:
      return ".ppm";
    case OutputKind::yuv:
      return ".yuv";
    case OutputKind::y4m:
      return ".y4m";
  }
  return "";
}

std::string lowerExtension(const fs::path& path) {
  std::string text = path.extension().string();
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

/// Files, with the raw files of directories in their place.
std::vector<std::string> expanded(const std::vector<std::string>& inputs) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) {
    std::error_code error;
    if (input == "-" || !fs::is_directory(input, error)) {
      files.push_back(input);
      continue;
    }
    std::vector<std::string> found;
    fs::directory_iterator entries(input, error);
    if (error) throw Failure(fmt::format("cannot read {}: {}", input, error.message()));
    for (const fs::directory_entry& entry : entries) {
      const std::string extension = lowerExtension(entry.path());
      const bool isRaw =
          extension == ".raw" || extension == ".bin" || hasCameraRawName(entry.path().string());
      if (isRaw && entry.is_regular_file(error)) found.push_back(entry.path().string());
    }
    if (found.empty()) {
      throw Failure(input + " has no raw files: neither .raw nor .bin nor those of cameras");
    }
    std::ranges::sort(found);
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

/// What is made of what. One file may become a file of any name; several go into a directory.
std::vector<Job> plan(const DevelopSettings& settings) {
  const std::vector<std::string> files = expanded(settings.inputs);
  const std::string& output = settings.output;
  std::error_code error;
  const bool isDirectory = output.ends_with('/') || fs::is_directory(output, error);
  if (!isDirectory) {
    if (files.size() > 1) {
      throw UsageError(fmt::format("{} files need a directory to go to, not {}", files.size(),
                                   output == "-" ? "standard output" : output));
    }
    const auto kind = settings.kind   ? settings.kind
                      : output == "-" ? OutputKind::ppm
                                      : outputKindNamed(fs::path(output).extension().string());
    if (!kind) {
      throw UsageError(fmt::format(
          "output {} ends in none of .png, .jpg, .ppm, .yuv and .y4m, and there is no --type",
          output));
    }
    return {{files[0], output, *kind}};
  }
  const OutputKind kind = settings.kind.value_or(OutputKind::png);
  std::vector<Job> jobs;
  std::map<fs::path, std::string> inputOf;
  for (const std::string& file : files) {
    const fs::path stem = file == "-" ? fs::path("stdin") : fs::path(file).stem();
    const fs::path target = fs::path(output) / (stem.string() + extensionOf(kind));
    const auto [other, isNew] = inputOf.emplace(target, file);
    if (!isNew) {
      throw UsageError(
          fmt::format("{} and {} would both become {}", other->second, file, target.string()));
    }
    jobs.push_back({file, target.string(), kind});
  }
  fs::create_directories(output, error);
  if (error) throw Failure(fmt::format("cannot create {}: {}", output, error.message()));
  return jobs;
}

RawImage readFrame(const std::string& path, const DevelopSettings& settings) {
  const FrameInfo& frame = settings.frame;
  if (hasCameraRawName(path) || (frame.size.width == 0 && isCameraRaw(path)))
    return readCameraRaw(path);
  if (frame.size.width != 0) return readPlainFrame(path, frame);
  std::error_code error;
  const auto bytes = path == "-" ? 0 : fs::file_size(path, error);
  if (error) throw Failure(fmt::format("cannot open {}: {}", path, error.message()));
  const std::string guess = guessOf(static_cast<int64_t>(bytes), {0, 0}, frame.format.order);
  throw UsageError(fmt::format("--size is required for {}{}{}", inputName(path),
                               guess.empty() ? "" : "; ", guess));
}

/// The picture's bytes as a file holds them.
std::string developFrame(const RawImage& image, const DevelopSettings& settings, OutputKind kind,
                         int threads, Outcome& outcome) {
  outcome.info = image.info;
  vek::Isp isp = makeIsp(image.info, settings.development, threads);
  outcome.size = isp.outputSize();
  outcome.crop = isp.crop();
  const auto frame = image.info.view(image.bytes);
  const auto process = [&](auto&& out) {
    const auto start = std::chrono::steady_clock::now();
    processUntilBalanced(isp, frame, out, InThreads());
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    outcome.milliseconds = time.count();
    outcome.results = isp.results();
  };
  if (kind == OutputKind::yuv || kind == OutputKind::y4m) {
    std::string file = kind == OutputKind::y4m
                           ? y4mHeader(outcome.size, settings.development.range, 25) + y4mFrame
                           : "";
    const size_t header = file.size(), bytes = planeBytes(outcome.size);
    file.resize(header + bytes);
    process(
        vek::Planes420<Vek8u>(reinterpret_cast<Vek8u*>(file.data()) + header, bytes, outcome.size));
    return file;
  }
  vek::Image<vek::Rgb24> picture(outcome.size);
  process(picture);
  const PictureFormat format = kind == OutputKind::png    ? PictureFormat::png
                               : kind == OutputKind::jpeg ? PictureFormat::jpeg
                                                          : PictureFormat::ppm;
  return encodePicture(vek::View<const vek::Rgb24>(picture), format, settings.quality);
}

Outcome developFile(const Job& job, const DevelopSettings& settings, int threads) {
  Outcome outcome;
  try {
    RawImage image = readFrame(job.input, settings);
    image.info = withLevels(image.info, settings.development);
    const std::string file = developFrame(image, settings, job.kind, threads, outcome);
    const bool isBalanced =
        !settings.development.gains && (settings.development.balancesAnew || !image.info.asShot);
    outcome.doubts = doubtsAbout(image.info, image.bytes, outcome.results, isBalanced);
    writeFile(job.output, file);
  } catch (...) {
    outcome.failure = std::current_exception();
  }
  return outcome;
}

nlohmann::ordered_json asJson(const Job& job, const Outcome& outcome) {
  const auto rounded = [](double x, double unit) { return std::round(x * unit) / unit; };
  const vek::IspResults& results = outcome.results;
  return {{"file", job.input},
          {"output", job.output},
          {"format", nameOf(outcome.info.format)},
          {"frame", {outcome.info.size.width, outcome.info.size.height}},
          {"crop", {outcome.crop.x, outcome.crop.y, outcome.crop.width, outcome.crop.height}},
          {"picture", {outcome.size.width, outcome.size.height}},
          {"black", outcome.info.black},
          {"gains", {rounded(results.gains.red, 1e4), 1, rounded(results.gains.blue, 1e4)}},
          {"brightness", rounded(results.brightness / 1023, 1e4)},
          {"saturated", rounded(results.saturated, 1e4)},
          {"warnings", outcome.doubts}};
}

std::string asText(const Job& job, const Outcome& outcome) {
  const FrameInfo& info = outcome.info;
  std::string text =
      fmt::format("{} ({}, {}x{}) -> {} ({}x{}); gains: red {:.2f}, green 1.00, blue {:.2f}\n",
                  inputName(job.input), nameOf(info.format), info.size.width, info.size.height,
                  job.output == "-" ? "standard output" : job.output, outcome.size.width,
                  outcome.size.height, outcome.results.gains.red, outcome.results.gains.blue);
  if (outcome.crop.width != info.size.width || outcome.crop.height != info.size.height) {
    text += fmt::format("  of the frame {}x{} at ({}, {}) are shown\n", outcome.crop.width,
                        outcome.crop.height, outcome.crop.x, outcome.crop.y);
  }
  return text;
}

}  // namespace

std::optional<OutputKind> outputKindNamed(std::string name) {
  std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
  if (name.starts_with('.')) name.erase(0, 1);
  if (name == "png") return OutputKind::png;
  if (name == "jpg" || name == "jpeg") return OutputKind::jpeg;
  if (name == "ppm") return OutputKind::ppm;
  if (name == "yuv") return OutputKind::yuv;
  if (name == "y4m") return OutputKind::y4m;
  return std::nullopt;
}

void develop(const DevelopSettings& settings, const Console& console) {
  const std::vector<Job> jobs = plan(settings);
  const int count = static_cast<int>(jobs.size());
  std::vector<Outcome> outcomes(jobs.size());
  {
    Progress progress(console, count);
    inParallel(count, coreCount(), [&](int i) {
      const auto at = static_cast<size_t>(i);
      outcomes[at] = developFile(jobs[at], settings, count == 1 ? coreCount() : 1);
      progress.advance(jobs[at].input);
    });
  }
  if (count == 1 && outcomes[0].failure) std::rethrow_exception(outcomes[0].failure);
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  int failures = 0;
  for (size_t i = 0; i < jobs.size(); ++i) {
    const Outcome& outcome = outcomes[i];
    const std::string& input = jobs[i].input;
    if (outcome.failure) {
      ++failures;
      try {
        std::rethrow_exception(outcome.failure);
      } catch (const std::exception& error) {
        console.warn(error.what());
      }
      continue;
    }
    for (const std::string& doubt : outcome.doubts) console.warn(inputName(input) + ": " + doubt);
    if (settings.json) {
      json.push_back(asJson(jobs[i], outcome));
    } else {
      console.say(asText(jobs[i], outcome));
    }
    console.detail(
        fmt::format("{}: {:.1f} ms, of the first frames, which are slower than later ones",
                    inputName(input), outcome.milliseconds));
  }
  if (settings.json) console.data(json.dump(2) + "\n");
  if (failures > 0)
    throw Failure(fmt::format("{} of {} files could not be developed", failures, count));
}

}  // namespace vekcam
