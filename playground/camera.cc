// The simulated camera for the page, and raw frames as pictures.
#include <cmath>
#include <memory>
#include <vek/isp.hpp>
#include <vek/vek.hpp>

#include "playground.h"
#include "vekcam/sensor.h"

namespace playground {
namespace {

using vek::Size;

/// The sensor and what makes pictures of its frames.
class Camera {
 public:
  Camera(Size size, int scale, vek::Rotation rotation)
      : sensor_(vekcam::Scene(size), 1), raw_(size), isp_(settings(size, scale, rotation)) {
    setLight(0);
  }

  vek::Isp& isp() { return isp_; }
  vekcam::Controls& controls() { return controls_; }
  Size pictureSize() const { return isp_.outputSize(); }

  void setLight(size_t light) {
    sensor_.illuminate(vekcam::lightScript()[light % vekcam::lightScript().size()]);
  }

  /// The sensor takes a frame.
  void expose() { sensor_.expose(controls_, raw_); }

  /// Makes a picture of it. With `isAutomatic` the next one is taken as the exposure control says.
  template <class Out>
  void process(Out&& out, bool isAutomatic) {
    isp_.setExposure({static_cast<double>(controls_.exposure), controls_.analogueGain / 16.});
    isp_.process(frame(), out);
    if (!isAutomatic) return;
    const vek::Exposure next = isp_.results().exposure;
    controls_.exposure = static_cast<Vek16u>(std::lround(next.time));
    controls_.analogueGain = static_cast<Vek16u>(std::lround(16 * next.gain));
  }

  vek::View<const vek::RawByte> frame() const {
    return {reinterpret_cast<const Vek8u*>(raw_.row(0)),
            {2 * raw_.width(), raw_.height()},
            vek::Bytes(raw_.step())};
  }
  const vekcam::RawFrame& raw() const { return raw_; }

 private:
  vek::IspSettings settings(Size size, int scale, vek::Rotation rotation) const {
    vek::IspSettings isp;
    isp.size = size;
    isp.format = vek::Raw::plain16;
    isp.scale = scale;
    isp.rotation = rotation;
    isp.color = {vekcam::Sensor::colorCorrection(), vekcam::Sensor::daylightGains(),
                 vek::MatrixPlace::linear};
    isp.deadPixels = sensor_.deadPixels();
    isp.exposure.least = {vekcam::controlRange.minExposure, vekcam::controlRange.minGain / 16.};
    isp.exposure.most = {vekcam::controlRange.maxExposure, vekcam::controlRange.maxGain / 16.};
    return isp;
  }

  vekcam::Sensor sensor_;
  vekcam::RawFrame raw_;
  vek::Isp isp_;
  vekcam::Controls controls_;
};

std::unique_ptr<Camera> camera;
vek::Image<vek::Rgbx32> shown;
std::vector<Vek8u> packedFrame;

/// A camera that has found exposure and white balance.
std::unique_ptr<Camera> settledCamera(Size size, int light) {
  auto made = std::make_unique<Camera>(size, 1, vek::Rotation::none);
  made->setLight(static_cast<size_t>(light));
  vek::Image<vek::Rgb24> picture(size);
  for (int i = 0; i < 12; ++i) {
    made->expose();
    made->process(picture, true);
  }
  return made;
}

}  // namespace

/// Starts the camera. Its pictures are `scale` times smaller than its frames.
PLAYGROUND_EXPORT const char* startCamera(int width, int height, int scale, int rotation) {
  return answer([&] {
    camera =
        std::make_unique<Camera>(Size{width, height}, scale, static_cast<vek::Rotation>(rotation));
    shown = vek::Image<vek::Rgbx32>(camera->pictureSize());
    for (int y = 0; y < shown.height(); ++y) {
      std::fill_n(shown.row(y), shown.rowBytes(), static_cast<Vek8u>(255));
    }
    return "{\"width\":" + std::to_string(shown.width()) +
           ",\"height\":" + std::to_string(shown.height()) + "}";
  });
}

PLAYGROUND_EXPORT void stopCamera() {
  camera.reset();
  shown = {};
}

PLAYGROUND_EXPORT void setLight(int light) {
  camera->setLight(static_cast<size_t>(light));
}

PLAYGROUND_EXPORT void setCurve(int curve) {
  camera->isp().setCurve(static_cast<vek::ToneCurve>(curve));
}

/// The gains count only if the white balance is not automatic.
PLAYGROUND_EXPORT void setBalance(int isAutomatic, double red, double blue) {
  camera->isp().setWhiteBalance(isAutomatic != 0);
  if (isAutomatic == 0) camera->isp().setGains({red, 1, blue});
}

/// What the sensor takes the next frame with, in rows and in sixteenths.
PLAYGROUND_EXPORT void setControls(int exposure, int gain) {
  camera->controls().exposure = static_cast<Vek16u>(exposure);
  camera->controls().analogueGain = static_cast<Vek16u>(gain);
}

PLAYGROUND_EXPORT void expose() {
  camera->expose();
}

PLAYGROUND_EXPORT void process(int isAutomatic) {
  camera->process(shown, isAutomatic != 0);
}

/// The picture as RGBA, rows of cameraStep() bytes.
PLAYGROUND_EXPORT const Vek8u* cameraPixels() {
  return shown.data();
}
PLAYGROUND_EXPORT int cameraStep() {
  return shown.stepBytes();
}

/// Exposure time in rows, analogue gain, gains of red and blue, mean green sample.
PLAYGROUND_EXPORT const double* cameraState() {
  static double state[5];
  const vek::IspResults& results = camera->isp().results();
  state[0] = camera->controls().exposure;
  state[1] = camera->controls().analogueGain / 16.;
  state[2] = results.gains.red / results.gains.green;
  state[3] = results.gains.blue / results.gains.green;
  state[4] = results.brightness;
  return state;
}

PLAYGROUND_EXPORT const char* lights() {
  return answer([] {
    std::string json = "[";
    for (const vekcam::Light& light : vekcam::lightScript()) {
      json += (json.size() == 1 ? "" : ",") + quoted(light.name);
    }
    return json + "]";
  });
}

/// Makes a picture of the simulated scene.
PLAYGROUND_EXPORT const char* simulatePicture(const char* name, int width, int height, int light) {
  return answer([&] {
    const std::unique_ptr<Camera> taker = settledCamera({width, height}, light);
    chain::Color picture({width, height});
    taker->expose();
    taker->process(picture, true);
    setPicture(name, std::move(picture));
    return "{}";
  });
}

/// A raw frame of the simulated camera, packed RAW10 in the order RGGB: width * height * 5 / 4 bytes.
PLAYGROUND_EXPORT const Vek8u* simulateRaw(int width, int height, int light) {
  const std::unique_ptr<Camera> taker = settledCamera({width, height}, light);
  taker->expose();
  packedFrame.clear();
  for (int y = 0; y < height; ++y) {
    const Vek16u* const row = taker->raw().row(y);
    for (int x = 0; x < width; x += 4) {
      int low = 0;
      for (int i = 0; i < 4; ++i) {
        packedFrame.push_back(static_cast<Vek8u>(row[x + i] >> 2));
        low |= (row[x + i] & 3) << 2 * i;
      }
      packedFrame.push_back(static_cast<Vek8u>(low));
    }
  }
  return packedFrame.data();
}

/// Bytes of a row of samples.
PLAYGROUND_EXPORT double rawRowBytes(int format, int width) {
  return static_cast<double>(vek::rawRowBytes(static_cast<vek::Raw>(format), width));
}

/// Develops a raw frame.
PLAYGROUND_EXPORT const char* develop(const char* name, const Vek8u* bytes, int width, int height,
                                      int step, int format, int bits, int order, int black) {
  return answer([&] {
    vek::IspSettings settings;
    settings.size = {width, height};
    settings.format = static_cast<vek::Raw>(format);
    settings.bits = settings.format == vek::Raw::plain16 ? bits : 0;
    settings.order = static_cast<vek::Bayer>(order);
    settings.black = black;
    settings.exposure.on = false;
    vek::Isp isp(settings);
    const int rowBytes = static_cast<int>(vek::rawRowBytes(settings.format, width));
    const vek::View<const vek::RawByte> frame(bytes, {rowBytes, height}, vek::Bytes(step));
    chain::Color picture(isp.outputSize());
    for (int i = 0; i < 4; ++i)
      isp.process(frame, picture);  // the balance stands after two or three
    setPicture(name, std::move(picture));
    return "{}";
  });
}

}  // namespace playground
