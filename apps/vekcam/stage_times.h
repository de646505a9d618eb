// How long the library's stages take.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace vekcam {

enum class Stage { exposure, cameraPath };
inline constexpr std::array allStages = {Stage::exposure, Stage::cameraPath};

const char* name(Stage stage);

class StageTimes {
 public:
  /// Calls `work`, notes its time, and returns its result.
  template <typename Work>
  auto measure(Stage stage, const Work& work) {
    const Stopwatch stopwatch{samples_[static_cast<size_t>(stage)]};
    return work();
  }

  size_t calls(Stage stage) const { return samples_[static_cast<size_t>(stage)].size(); }
  /// In microseconds, without the first call if there are more; 0 without calls.
  double median(Stage stage) const;
  double fastest(Stage stage) const;  ///< microseconds; 0 without calls
  double totalMedian() const;         ///< sum of the stages' medians

  /// A line for each stage that was called, for a terminal.
  std::string table() const;

 private:
  using Clock = std::chrono::steady_clock;
  struct Stopwatch {
    std::vector<double>& samples;
    Clock::time_point start = Clock::now();
    ~Stopwatch() {
      samples.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
  };

  std::array<std::vector<double>, allStages.size()> samples_;
};

}  // namespace vekcam
