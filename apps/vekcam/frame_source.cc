#include "vekcam/frame_source.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <poll.h>
#include <vector>

#include "vekcam/camera_loop.h"
#include "vekcam/files.h"

namespace vekcam {
namespace {

namespace fs = std::filesystem;

/// Frames that are stored one after the other.
class StoredFrames : public FrameSource {
 public:
  StoredFrames(const FrameInfo& info, const DevelopmentSettings& settings)
      : info_(withLevels(info, settings)),
        settings_(settings),
        bytes_(static_cast<size_t>(info.bytes())) {}

  vek::View<const vek::RawByte> frame() const override { return info_.view(bytes_); }
  vek::Isp makeIsp(vek::Rotation rotation, vek::ToneCurve curve, int scale,
                   vek::Size resized) const override {
    DevelopmentSettings settings = settings_;
    settings.rotation = rotation;
    settings.curve = curve;
    settings.scale = scale;
    settings.resized = resized;
    return vekcam::makeIsp(info_, settings, 1);
  }
  bool isBalanced() const override { return !settings_.gains; }

 protected:
  FrameInfo info_;
  DevelopmentSettings settings_;
  std::vector<Vek8u> bytes_;
};

class Stream : public StoredFrames {
 public:
  Stream(const std::string& path, const FrameInfo& info, const DevelopmentSettings& settings)
      : StoredFrames(info, settings),
        name_(path == "-" ? "standard input" : path),
        file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb")) {
    if (!file_) throw Failure("cannot open " + path);
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // so that poll() knows about every byte
  }

  State next(const vek::Exposure&) override {
    pollfd ready = {fileno(file_.get()), POLLIN, 0};
    constexpr int patience = 10;  // milliseconds: the window stays alive meanwhile
    if (poll(&ready, 1, patience) == 0) return State::waiting;
    const size_t got = std::fread(bytes_.data(), 1, bytes_.size(), file_.get());
    if (std::ferror(file_.get())) throw Failure("cannot read " + name_);
    if (got == bytes_.size()) return State::ready;
    if (got > 0) {
      throw Failure(name_ + " ends within a frame: " + std::to_string(got) + " bytes of " +
                    std::to_string(bytes_.size()));
    }
    return State::ended;
  }

 private:
  struct Closer {
    void operator()(std::FILE* file) const {
      if (file != stdin) std::fclose(file);
    }
  };
  std::string name_;
  std::unique_ptr<std::FILE, Closer> file_;
};

class Directory : public StoredFrames {
 public:
  Directory(const std::string& path, const FrameInfo& info, const DevelopmentSettings& settings)
      : StoredFrames(info, settings) {
    std::error_code error;
    for (fs::directory_iterator at(path, error), end; !error && at != end; at.increment(error)) {
      if (at->is_regular_file()) files_.push_back(at->path().string());
    }
    if (error) throw Failure("cannot read " + path + ": " + error.message());
    if (files_.empty()) throw Failure(path + " has no files");
    std::ranges::sort(files_);
  }

  State next(const vek::Exposure&) override {
    if (next_ == files_.size()) return State::ended;
    const std::string& file = files_[next_++];
    const std::string bytes = readFile(file, bytes_.size());
    if (bytes.size() != bytes_.size()) {
      throw Failure(file + " has " + std::to_string(bytes.size()) + " bytes, and a frame " +
                    std::to_string(bytes_.size()));
    }
    bytes_.assign(bytes.begin(), bytes.end());
    return State::ready;
  }

 private:
  std::vector<std::string> files_;
  size_t next_ = 0;
};

class Simulation : public FrameSource {
 public:
  explicit Simulation(vek::Size size) : sensor_(Scene(size), 1), raw_(size) {
    sensor_.illuminate(lightScript()[0]);
  }

  State next(const vek::Exposure& exposure) override {
    Controls controls;
    controls.exposure = static_cast<Vek16u>(std::lround(exposure.time));
    controls.analogueGain = static_cast<Vek16u>(std::lround(16 * exposure.gain));
    sensor_.expose(controls, raw_);
    return State::ready;
  }
  vek::View<const vek::RawByte> frame() const override {
    return {reinterpret_cast<const Vek8u*>(raw_.row(0)),
            {2 * raw_.width(), raw_.height()},
            vek::Bytes(raw_.step())};
  }
  vek::Isp makeIsp(vek::Rotation rotation, vek::ToneCurve curve, int scale,
                   vek::Size resized) const override {
    vek::IspSettings isp;
    isp.size = raw_.size();
    isp.format = vek::Raw::plain16;
    isp.rotation = rotation;
    isp.curve = curve;
    isp.scale = scale;
    isp.output = resized;
    isp.color = {Sensor::colorCorrection(), Sensor::daylightGains(), vek::MatrixPlace::linear};
    isp.deadPixels = sensor_.deadPixels();
    isp.exposure.least = {controlRange.minExposure, controlRange.minGain / 16.};
    isp.exposure.most = {controlRange.maxExposure, controlRange.maxGain / 16.};
    return vek::Isp(isp);
  }
  bool isExposed() const override { return true; }
  std::string nextLight() override {
    light_ = (light_ + 1) % lightScript().size();
    sensor_.illuminate(lightScript()[light_]);
    return lightScript()[light_].name;
  }

 private:
  Sensor sensor_;
  RawFrame raw_;
  size_t light_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> streamSource(const std::string& path, const FrameInfo& info,
                                          const DevelopmentSettings& settings) {
  return std::make_unique<Stream>(path, info, settings);
}

std::unique_ptr<FrameSource> directorySource(const std::string& path, const FrameInfo& info,
                                             const DevelopmentSettings& settings) {
  return std::make_unique<Directory>(path, info, settings);
}

std::unique_ptr<FrameSource> simulatedSource(vek::Size size) {
  return std::make_unique<Simulation>(size);
}

}  // namespace vekcam
