#include "vekcam/stream.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <unistd.h>

#include "vekcam/files.h"
#include "vekcam/parallel.h"
#include "vekcam/y4m.h"

namespace vekcam {
namespace {

using Clock = std::chrono::steady_clock;

std::string reason() {
  return std::generic_category().message(errno);
}

/// The descriptor of a file, or of a standard stream.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags, int standard)
      : fd_(path == "-" ? standard : ::open(path.c_str(), flags | O_CLOEXEC, 0666)),
        isOwned_(path != "-") {
    if (fd_ < 0) throw Failure(fmt::format("cannot open {}: {}", path, reason()));
#ifdef F_SETPIPE_SZ
    fcntl(fd_, F_SETPIPE_SZ, 1 << 20);  // a pipe of 64 KB costs 40 changes of context a frame
#endif
  }
  ~Descriptor() {
    if (isOwned_) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  /// As many bytes as there are, up to `count`.
  size_t read(Vek8u* bytes, size_t count) const {
    size_t got = 0;
    while (got < count) {
      const ssize_t n = ::read(fd_, bytes + got, count - got);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) throw Failure("cannot read the frames: " + reason());
      if (n == 0) break;
      got += static_cast<size_t>(n);
    }
    return got;
  }

  /// False if nobody reads any longer.
  bool write(const void* data, size_t count) const {
    const auto* bytes = static_cast<const Vek8u*>(data);
    while (count > 0) {
      const ssize_t n = ::write(fd_, bytes, count);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0 && errno == EPIPE) return false;
      if (n < 0) throw Failure("cannot write the pictures: " + reason());
      bytes += n;
      count -= static_cast<size_t>(n);
    }
    return true;
  }

 private:
  int fd_;
  bool isOwned_;
};

/// Several frames in flight, one a thread. Frame i is worked on by thread i % threads. Threads read in
/// turn and write in turn. White balance is decided by thread 0: its gains after one of its frames are
/// those of its next frame and of the frames up to the one after that, so that the pictures depend on
/// the number of threads but not on their timing.
class Stream {
 public:
  Stream(const StreamSettings& settings, const Console& console)
      : settings_(settings),
        console_(console),
        info_(withLevels(settings.frame, settings.development)),
        in_(settings.input, O_RDONLY, STDIN_FILENO),
        out_(settings.output, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO) {
    if (!settings.statistics.empty())
      statistics_.emplace(settings.statistics, O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
  }

  void run() {
    const auto start = Clock::now();
    inParallel(settings_.threads, settings_.threads, [&](int thread) {
      try {
        work(thread);
      } catch (...) {
        stop(std::current_exception());
      }
    });
    const std::chrono::duration<double> time = Clock::now() - start;
    if (nextWrite_ > 0) {
      report(time.count());
    } else if (std::error_code error; std::filesystem::is_regular_file(settings_.output, error)) {
      std::filesystem::remove(settings_.output, error);  // it is empty
    }
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void work(int thread) {
    vek::Isp isp = makeIsp(info_, settings_.development, 1);
    const bool isBalanced = settings_.development.balancesAnew || !settings_.development.gains;
    if (thread != 0) isp.setWhiteBalance(false);
    std::vector<Vek8u> frame(static_cast<size_t>(info_.bytes()));
    std::vector<Vek8u> picture(planeBytes(isp.outputSize()));
    const vek::Planes420<Vek8u> planes(picture.data(), picture.size(), isp.outputSize());
    for (int64_t i = thread;; i += settings_.threads) {
      const int64_t group = i / settings_.threads;
      if (!waitFor([&] { return nextRead_ == i; })) return;
      if (!readFrame(i, frame)) return;
      advance(nextRead_);
      const auto view = info_.view(frame);
      if (thread == 0 && i == 0) {
        processUntilBalanced(isp, view, planes, vek::OneAfterAnother());
        for (const std::string& doubt : doubtsAbout(info_, frame, isp.results(), isBalanced))
          console_.warn(doubt);
        publish(0, isp.gains());
      }
      if (!waitFor([&] { return groups_ > group; }, true)) return;
      if (thread != 0) isp.setGains(gainsOf(group));
      const auto start = Clock::now();
      isp.process(view, planes);
      const auto time = Clock::now() - start;
      if (thread == 0) publish(group + 1, isp.gains());
      if (!waitFor([&] { return nextWrite_ == i; }, true)) return;
      if (!writePicture(i, picture, isp)) {
        stop(nullptr);
        return;
      }
      processing_ += time;
      advance(nextWrite_);
    }
  }

  bool readFrame(int64_t i, std::vector<Vek8u>& frame) {
    const size_t got =
        settings_.frames != 0 && i >= settings_.frames ? 0 : in_.read(frame.data(), frame.size());
    const size_t padding =
        static_cast<size_t>(info_.stepBytes() - rowBytes(info_.format, info_.size.width));
    if (got > 0 && got + padding >= frame.size()) return true;
    const std::lock_guard lock(mutex_);
    isEnd_ = true;
    turn_.notify_all();
    if (got > 0 || i == 0) {
      const std::string guess =
          i > 0 ? "" : guessOf(static_cast<int64_t>(got), {0, 0}, info_.format.order);
      failure_ = std::make_exception_ptr(Failure(fmt::format(
          "the input ends after {} of the {} bytes of frame {}{}{}",
          withCommas(static_cast<int64_t>(got)), withCommas(static_cast<int64_t>(frame.size())), i,
          guess.empty() ? "" : "; ", guess)));
    }
    return false;
  }

  bool writePicture(int64_t i, const std::vector<Vek8u>& picture, const vek::Isp& isp) {
    if (settings_.isY4m) {
      const std::string header = (i == 0 ? y4mHeader(isp.outputSize(), settings_.development.range,
                                                     settings_.framesPerSecond)
                                         : std::string()) +
                                 y4mFrame;
      if (!out_.write(header.data(), header.size())) return false;
    }
    if (!out_.write(picture.data(), picture.size())) return false;
    pictureSize_ = isp.outputSize();
    last_ = isp.results();
    last_.gains = gainsOf(i / settings_.threads);
    if (!statistics_) return true;
    const std::string line = fmt::format(
        "{{\"frame\": {}, \"brightness\": {:.4f}, \"saturated\": {:.4f}, "
        "\"exposureFactor\": {:.3f}, \"red\": {:.3f}, \"blue\": {:.3f}}}\n",
        i, last_.brightness / 1023, last_.saturated, exposureFactor(), last_.gains.red,
        last_.gains.blue);
    return statistics_->write(line.data(), line.size());
  }

  /// How much more light the sensor should collect for the brightness to be right.
  double exposureFactor() const {
    return vek::recommended::exposureTarget / std::max(last_.brightness, .5);
  }

  void report(double seconds) const {
    const double rate = static_cast<double>(nextWrite_) / seconds;
    const double busy = std::chrono::duration<double, std::milli>(processing_).count();
    const double each = nextWrite_ > 0 ? busy / static_cast<double>(nextWrite_) : 0;
    if (settings_.json) {
      const nlohmann::ordered_json json = {{"frames", nextWrite_},
                                           {"seconds", seconds},
                                           {"framesPerSecond", rate},
                                           {"processingMilliseconds", each},
                                           {"threads", settings_.threads},
                                           {"level", vekLevelName(vekLevel())},
                                           {"picture", {pictureSize_.width, pictureSize_.height}},
                                           {"brightness", last_.brightness / 1023},
                                           {"saturated", last_.saturated},
                                           {"exposureFactor", exposureFactor()},
                                           {"gains", {last_.gains.red, 1, last_.gains.blue}}};
      console_.data(json.dump(2) + "\n");
      return;
    }
    console_.say(fmt::format(
        "{} frames in {:.2f} s: {:.1f} frames/s ({}x{} {} to {}x{}, {} thread{}, level {}; {:.2f} "
        "ms "
        "a frame without reading and writing)\n",
        nextWrite_, seconds, rate, info_.size.width, info_.size.height, nameOf(info_.format),
        pictureSize_.width, pictureSize_.height, settings_.threads,
        settings_.threads == 1 ? "" : "s", vekLevelName(vekLevel()), each));
    if (nextWrite_ == 0) return;
    console_.say(
        fmt::format("last frame: brightness {:.0f} % of the range, {:.1f} % saturated, exposure "
                    "should be {:.2f} "
                    "times as long; gains: red {:.2f}, green 1.00, blue {:.2f}\n",
                    100 * last_.brightness / 1023, 100 * last_.saturated, exposureFactor(),
                    last_.gains.red, last_.gains.blue));
  }

  // ---- Turns ----

  /// False if there will be no more turns. Frames that were read are finished when the input has ended.
  template <class Condition>
  bool waitFor(const Condition& condition, bool isRead = false) {
    std::unique_lock lock(mutex_);
    turn_.wait(lock, [&] { return isStopped_ || condition() || (isEnd_ && !isRead); });
    return !isStopped_ && condition() && (isRead || !isEnd_);
  }

  void advance(int64_t& next) {
    const std::lock_guard lock(mutex_);
    ++next;
    turn_.notify_all();
  }

  void publish(int64_t group, const vek::ColorGains& gains) {
    const std::lock_guard lock(mutex_);
    gains_[static_cast<size_t>(group) % gains_.size()] = gains;
    groups_ = group + 1;
    turn_.notify_all();
  }

  vek::ColorGains gainsOf(int64_t group) {
    const std::lock_guard lock(mutex_);
    return gains_[static_cast<size_t>(group) % gains_.size()];
  }

  void stop(const std::exception_ptr& failure) {
    const std::lock_guard lock(mutex_);
    isStopped_ = true;
    if (!failure_) failure_ = failure;
    turn_.notify_all();
  }

  const StreamSettings& settings_;
  const Console& console_;
  const FrameInfo info_;
  Descriptor in_, out_;
  std::optional<Descriptor> statistics_;

  std::mutex mutex_;
  std::condition_variable turn_;
  int64_t nextRead_ = 0, nextWrite_ = 0;
  bool isEnd_ = false, isStopped_ = false;
  std::exception_ptr failure_;
  /// Of the present group of frames and the next ones: thread 0 is never two groups ahead of another.
  std::array<vek::ColorGains, 4> gains_;
  int64_t groups_ = 0;  ///< whose gains are known

  // Of whoever's turn it is to write.
  vek::Size pictureSize_ = {0, 0};
  vek::IspResults last_;
  Clock::duration processing_{};
};

}  // namespace

void stream(const StreamSettings& settings, const Console& console) {
  std::signal(SIGPIPE, SIG_IGN);  // writes tell
  Stream(settings, console).run();
}

}  // namespace vekcam
