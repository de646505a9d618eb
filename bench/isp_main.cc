// vek_bench_isp: what a frame takes on its way through vek::Isp, and what each stage has of it, at every
// level. Variants leave one thing out, so that a difference from the first line is what that stage takes.
//
// The frame is packed RAW10 of noise around a slope, the picture 24-bit RGB; a matrix, automatic exposure
// and white balance act on every frame. The variants of a level run alternately in one process, which links
// the static library but not its cpuLevel() (tests/support/levels.h).
#include "vek/isp.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/support/levels.h"
#include "tests/support/random.h"

namespace vek::bench {
namespace {

/// Runs job(1) in a thread that waits for work, and job(0) here.
class TwoThreads {
 public:
  explicit TwoThreads(Level level) : level_(level) {}
  ~TwoThreads() {
    set(quitting);
    thread_.join();
  }

  template <class Job>
  void operator()(int n, Job&& job) {
    work_ = [&] {
      for (int i = 1; i < n; ++i) job(i);
    };
    set(working);
    job(0);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return state_ == idle; });
  }

 private:
  enum State { idle, working, quitting };

  void set(State state) {
    {
      const std::lock_guard lock(mutex_);
      state_ = state;
    }
    changed_.notify_all();
  }
  void run() {
    const test::LevelScope scope(level_);
    for (;;) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return state_ != idle; });
      if (state_ == quitting) return;
      lock.unlock();
      work_();
      set(idle);
    }
  }

  const Level level_;
  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = idle;
  std::function<void()> work_;
  std::thread thread_{[this] { run(); }};
};

enum class Output { rgb24, bgr24, i420 };

struct Variant {
  const char* name;
  void (*change)(IspSettings&);
  Output output = Output::rgb24;
};

const Variant variants[] = {
    {"packed RAW10 to RGB24", [](IspSettings&) {}},
    {"two jobs", [](IspSettings& s) { s.jobs = 2; }},
    {"without the matrix", [](IspSettings& s) { s.color = {}; }},
    {"without exposure and balance",
     [](IspSettings& s) { s.exposure.on = s.whiteBalance = false; }},
    {"to BGR24", [](IspSettings&) {}, Output::bgr24},
    {"to I420", [](IspSettings&) {}, Output::i420},
    {"from 16-bit samples", [](IspSettings& s) { s.format = Raw::plain16; }},
    {"to 640 x 360",
     [](IspSettings& s) {
       s.output = {640, 360};
     }},
    {"to 640 x 360 in two jobs",
     [](IspSettings& s) {
       s.output = {640, 360}, s.jobs = 2;
     }},
};

struct Run {
  const Variant& variant;
  Isp isp;
  Image<Rgb24> rgb{isp.outputSize()};
  Image<Bgr24> bgr{isp.outputSize()};
  Image420 planes{isp.outputSize()};
  std::vector<double> times = {};
};

IspSettings settingsOf(const Variant& variant, Size size) {
  IspSettings settings;
  settings.size = size;
  settings.order = Bayer::bggr;
  settings.black = 64;
  settings.color.matrix = {{{{1.6, -.5, -.1}}, {{-.25, 1.5, -.25}}, {{0, -.7, 1.7}}}};
  settings.color.gains = {1.9, 1, 1.6};
  settings.gains = {1.9, 1, 1.6};
  variant.change(settings);
  return settings;
}

void measure(Level level, Size size, double seconds) {
  const test::LevelScope scope(level);
  std::vector<Vek8u> bytes(2 * static_cast<size_t>(size.width * size.height));
  test::Random random(1);
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<Vek8u>(i % 2 != 0 ? 0 : random.in(40, 60) + i * 40 / bytes.size());
  }
  TwoThreads threads(level);
  std::vector<Run> runs;
  for (const Variant& v : variants) runs.push_back({v, Isp(settingsOf(v, size))});
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  for (int pass = 0; pass < 5 || Clock::now() < end; ++pass) {
    for (Run& run : runs) {
      const IspSettings settings = settingsOf(run.variant, size);
      const View<const RawByte> frame(
          bytes.data(), {static_cast<int>(rawRowBytes(settings.format, size.width)), size.height});
      const auto begin = Clock::now();
      switch (run.variant.output) {
        case Output::rgb24:
          run.isp.process(frame, run.rgb, threads);
          break;
        case Output::bgr24:
          run.isp.process(frame, run.bgr);
          break;
        case Output::i420:
          run.isp.process(frame, run.planes);
          break;
      }
      if (pass > 0) {
        run.times.push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
      }
    }
  }
  for (Run& run : runs) {
    std::sort(run.times.begin(), run.times.end());
    std::printf("  %-30s %7.2f %7.2f\n", run.variant.name, run.times.front(),
                run.times[run.times.size() / 2]);
  }
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  CLI::App app{"Milliseconds that a frame takes through vek::Isp: the least and the median."};
  int width = 1920, height = 1080;
  double seconds = 4;
  app.add_option("--width", width, "Samples of a row");
  app.add_option("--height", height, "Rows");
  app.add_option("--seconds", seconds, "For each level");
  CLI11_PARSE(app, argc, argv);
  for (const vek::Level level : vek::test::levels()) {
    std::printf("%s, %d x %d\n", vek::test::name(level), width, height);
    vek::bench::measure(level, {width, height}, seconds);
  }
}
