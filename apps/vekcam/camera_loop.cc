#include "vekcam/camera_loop.h"

#include <cmath>

namespace vekcam {
namespace {

/// The camera of the simulation: its channels balance in daylight with these gains.
vek::IspSettings ispSettings(const LoopSettings& settings, const Sensor& sensor) {
  vek::IspSettings isp;
  isp.size = settings.size;
  isp.format = vek::Raw::plain16;
  for (const int scale : {2, 4}) {
    if (settings.preview.width * scale == settings.size.width && settings.preview.width % 4 == 0 &&
        settings.preview.height * scale == settings.size.height) {
      isp.scale = scale;
    }
  }
  isp.output = settings.preview;
  isp.rotation = settings.rotation;
  isp.curve = settings.curve;
  isp.color = {Sensor::colorCorrection(), Sensor::daylightGains(), vek::MatrixPlace::linear};
  isp.deadPixels = sensor.deadPixels();
  isp.exposure.on = settings.metering == Metering::isp;
  isp.exposure.least = {controlRange.minExposure, controlRange.minGain / 16.};
  isp.exposure.most = {controlRange.maxExposure, controlRange.maxGain / 16.};
  return isp;
}

}  // namespace

CameraLoop::CameraLoop(const LoopSettings& settings)
    : settings_(settings),
      sensor_(Scene(settings.size, settings.scene), settings.seed),
      raw_(settings.size),
      isp_(ispSettings(settings, sensor_)),
      picture_(isp_.outputSize().width, isp_.outputSize().height),
      accuracy_(settings.size, settings.preview, settings.rotation, settings.curve) {
  if (settings.metering != Metering::isp) exposure_.emplace(settings.metering, settings.size);
}

Band CameraLoop::band() const {
  if (exposure_) return {exposure_->low(), exposure_->high(), exposure_->fullScale()};
  const double target = vek::recommended::exposureTarget;
  const double margin = vek::recommended::exposureTolerance * target;
  return {target - margin, target + margin, 1023};
}

void CameraLoop::writeRaw(std::ostream& out) const {
  std::string bytes;
  for (int y = 0; y < raw_.height(); ++y) {
    bytes.clear();
    for (int x = 0; x < raw_.width(); ++x) {
      bytes += static_cast<char>(raw_.row(y)[x] & 255);
      bytes += static_cast<char>(raw_.row(y)[x] >> 8);
    }
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
}

FrameRecord CameraLoop::step() {
  FrameRecord record;
  record.light = static_cast<size_t>(frame_ / framesPerLight) % lightScript().size();
  if (frame_ % framesPerLight == 0) sensor_.illuminate(lightScript()[record.light]);
  ++frame_;
  sensor_.expose(controls_, raw_);
  record.controls = controls_;
  const auto asFactor = [](double gain) { return static_cast<Vek16u>(std::lround(256 * gain)); };
  record.controls.red = asFactor(isp_.gains().red);
  record.controls.blue = asFactor(isp_.gains().blue);
  isp_.setExposure({static_cast<double>(controls_.exposure), controls_.analogueGain / 16.});

  const vek::View<const vek::RawByte> frame(reinterpret_cast<const Vek8u*>(raw_.row(0)),
                                            {2 * raw_.width(), raw_.height()},
                                            vek::Bytes(raw_.step()));
  const vek::View<vek::Bgr24> out(
      vek::View<Vek8u, 3>(picture_.bgr, {picture_.width, picture_.height}));
  times_.measure(Stage::cameraPath, [&] { isp_.process(frame, out); });
  if (frame_ % framesPerLight <= framesPerLight / 2 && frame_ % framesPerLight != 0)
    accuracy_.clear();
  accuracy_.add(picture_);

  const vek::IspResults& results = isp_.results();
  record.balanceStatus = results.balanceAtLimit   ? vekStsAwbGainAtLimit
                         : results.balanceHasData ? vekStsNoErr
                                                  : vekStsAwbNoData;
  if (exposure_) {
    record.brightness = exposure_->brightness(raw_);
    record.exposureStatus =
        times_.measure(Stage::exposure, [&] { return exposure_->update(raw_, controls_); });
  } else {
    record.brightness = results.brightness;
    record.exposureStatus = results.exposureAtLimit ? vekStsAeAtLimit : vekStsNoErr;
    controls_.exposure = static_cast<Vek16u>(std::lround(results.exposure.time));
    controls_.analogueGain = static_cast<Vek16u>(std::lround(16 * results.exposure.gain));
  }
  record.inBand = record.brightness >= band().low && record.brightness <= band().high;
  return record;
}

std::vector<int> settlingTimes(const std::vector<FrameRecord>& records) {
  std::vector<int> times;
  for (size_t start = 0; start < records.size(); start += framesPerLight) {
    int settled = -1;
    for (size_t i = 0; i < framesPerLight && start + i < records.size(); ++i) {
      if (!records[start + i].inBand) {
        settled = -1;
      } else if (settled < 0) {
        settled = static_cast<int>(i);
      }
    }
    times.push_back(settled);
  }
  return times;
}

}  // namespace vekcam
