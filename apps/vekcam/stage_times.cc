#include "vekcam/stage_times.h"

#include <algorithm>
#include <cstdio>

namespace vekcam {

const char* name(Stage stage) {
  switch (stage) {
    case Stage::exposure:
      return "exposure";
    case Stage::whiteBalance:
      return "white balance";
    case Stage::rawPipeline:
      return "raw pipeline";
    case Stage::preview:
      return "RGB preview";
    case Stage::cameraPath:
      return "camera path";
  }
  return "";
}

double StageTimes::median(Stage stage) const {
  std::vector<double> samples = samples_[static_cast<size_t>(stage)];
  if (samples.empty()) return 0;
  const auto middle = samples.begin() + static_cast<ptrdiff_t>(samples.size() / 2);
  std::ranges::nth_element(samples, middle);
  return *middle;
}

double StageTimes::fastest(Stage stage) const {
  const std::vector<double>& samples = samples_[static_cast<size_t>(stage)];
  return samples.empty() ? 0 : std::ranges::min(samples);
}

double StageTimes::totalMedian() const {
  double sum = 0;
  for (const Stage stage : allStages) sum += median(stage);
  return sum;
}

std::string StageTimes::table() const {
  std::string text;
  for (const Stage stage : allStages) {
    if (calls(stage) == 0) continue;
    char line[80];
    std::snprintf(line, sizeof line, "  %-14s %9.1f us  (median of %zu)\n", name(stage),
                  median(stage), calls(stage));
    text += line;
  }
  return text;
}

}  // namespace vekcam
