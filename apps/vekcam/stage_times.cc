#include "vekcam/stage_times.h"

#include <algorithm>
#include <fmt/format.h>

namespace vekcam {

const char* name(Stage stage) {
  switch (stage) {
    case Stage::exposure:
      return "exposure";
    case Stage::cameraPath:
      return "camera path";
  }
  return "";
}

double StageTimes::median(Stage stage) const {
  const std::vector<double>& all = samples_[static_cast<size_t>(stage)];
  if (all.empty()) return 0;
  // The first call finds nothing in the caches, and the processor at rest.
  std::vector<double> samples(all.begin() + (all.size() > 1 ? 1 : 0), all.end());
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
    text += calls(stage) == 1
                ? fmt::format("  {:14} {:9.1f} us  (the first call, which is the slowest)\n",
                              name(stage), median(stage))
                : fmt::format("  {:14} {:9.1f} us  (median of {}, without the first)\n",
                              name(stage), median(stage), calls(stage) - 1);
  }
  return text;
}

}  // namespace vekcam
